#include "porthandle.h"

// Defined by the test program, and left undefined here as real drivers leave the plugin's helpers.
int scriptedQuery(PortHandle* handle, int address, void (*callback)(int, float, void*), void* context);
int scriptedControl(PortHandle* handle, int address, const char* command, void* context);

extern "C" {
__attribute__((visibility("default"))) int Query(PortHandle* handle, int address,
                                                 void (*callback)(int, float, void*), void* context)
{
    return scriptedQuery(handle, address, callback, context);
}

__attribute__((visibility("default"))) int Control(PortHandle* handle, int address, const char* command,
                                                   void* context)
{
    return scriptedControl(handle, address, command, context);
}
}
