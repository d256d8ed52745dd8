#include "collectthread.h"

// All bodies are inline: host and plugin each compile their own copy and must agree on the layout.
#include "moc_collectthread.cpp"
