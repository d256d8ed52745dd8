#pragma once

#include "trendvalue.h"

#include <QtGlobal>

/// What trends show: one row for each plot. Texts are translated in the context of Trends.
namespace trendrows {

constexpr int maxCurves = 3;

struct Row
{
    const char* column; ///< of table data_log
    const char* title;
    const char* unit;
    trendvalue::Parser parse;
    const char* curves[maxCurves]; ///< null behind the last one
    double lowest;                 ///< the axis reaches from here ...
    double highest;                ///< ... to here at least, unless lowest is highest
    double leastSpan;              ///< less than this is never blown up to the height of the plot
};

// clang-format off
constexpr Row all[] = {
    {"input_voltage",    QT_TRANSLATE_NOOP("Trends", "Input voltage"),    "V",  trendvalue::phases, {"R", "S", "T"}, 0, 0, 20},
    {"output_voltage",   QT_TRANSLATE_NOOP("Trends", "Output voltage"),   "V",  trendvalue::phases, {"R", "S", "T"}, 0, 0, 20},
    {"output_load",      QT_TRANSLATE_NOOP("Trends", "Load"),             "%",  trendvalue::phases, {"R", "S", "T"}, 0, 100, 0},
    {"battery_voltage",  QT_TRANSLATE_NOOP("Trends", "Battery voltage"),  "V",  trendvalue::halves, {"+", "\u2212", nullptr}, 0, 0, 10},
    // The column's heading says percent, but units log the size of the battery in it.
    {"battery_capacity", QT_TRANSLATE_NOOP("Trends", "Battery capacity"), "Ah", trendvalue::single, {"", nullptr, nullptr}, 0, 0, 10},
};
// clang-format on

constexpr int count = sizeof(all) / sizeof(all[0]);

int curveCount(const Row& row);

/// The ends of a value axis.
struct Range
{
    double low = 0;
    double high = 0;
};

/// For values between low and high.
Range axisRange(const Row& row, double low, double high);

} // namespace trendrows
