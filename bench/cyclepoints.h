#pragma once

#include "unitmap.h"

/// The 952 points that a unit made of nothing has. Both variants are 0 or 1: changing one changes every value
/// or every alarm.
namespace cyclepoints {

constexpr int count = unitmap::alarmPointCount + unitmap::inputRegisterCount + unitmap::holdingRegisterCount;

/// Read by the driver, which a program loads as a file of its own.
extern "C" __attribute__((visibility("default"))) int valueVariant;
extern "C" __attribute__((visibility("default"))) int alarmVariant;

template <typename Take>
void each(Take take)
{
    for (const unitmap::Block& block : unitmap::blocks) {
        const bool isAlarm = block.function == unitmap::ReadDiscreteInputs;
        for (int point = block.firstPoint; point < block.firstPoint + block.count; ++point)
            take(point,
                 static_cast<float>(isAlarm ? (point + alarmVariant) % 2 : point % 211 + valueVariant));
    }
}

} // namespace cyclepoints
