#pragma once

#include "eventkind.h"

#include <QIcon>

/// The mark in front of an event: shape and colour tell how severe it is, so that it reads without colours
/// as well. Drawn anew at each call. GUI thread.
namespace eventmark {

QIcon icon(EventKinds::Kind kind);

} // namespace eventmark
