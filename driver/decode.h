#pragma once

#include "unitmap.h"

namespace driver {

/// One value as the plugin gets it.
struct PointValue
{
    int point;
    float value;
};

/// Turns the data of a checked reply into the values of its block, in point order. `values` has room for the
/// block's count; returns the end of what was written.
PointValue* decodeBlock(const unitmap::Block& block, const unsigned char* reply, PointValue* values);

} // namespace driver
