// A driver that answers at once, with points that the program decides on.

#include "cyclepoints.h"
#include "porthandle.h"

extern "C" {

__attribute__((visibility("default"))) int Query(PortHandle*, int, void (*callback)(int, float, void*),
                                                 void* context)
{
    cyclepoints::each([=](int point, float value) { callback(point, value, context); });
    return 1;
}

__attribute__((visibility("default"))) int Control(PortHandle*, int, const char*, void*)
{
    return 0;
}
}
