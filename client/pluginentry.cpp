#include "porthandle.h"
#include "vek5client.h"

#include <cstddef>
#include <cstring>
#include <type_traits>

// The plugin's file. vek5Client carries the metadata and is the exported object; this file only makes the
// compiler check what a host and a driver, compiled apart from us, take for granted.

static_assert(std::is_base_of_v<CollectThread, vek5Client>, "a host casts the instance to its interface");
static_assert(!std::is_abstract_v<vek5Client>, "a host asks the instance for working collectors");
static_assert(std::is_standard_layout_v<PortHandle> && sizeof(PortHandle) == 3 * sizeof(void*) &&
                  offsetof(PortHandle, readEntry) == sizeof(void*) &&
                  offsetof(PortHandle, writeEntry) == 2 * sizeof(void*),
              "a driver reads the handle as three pointers");
