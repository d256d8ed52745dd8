#include "battery.h"

#include <algorithm>
#include <cmath>

namespace simulation::block {

namespace {

constexpr double dropPerRateV = 0.5; ///< inner resistance
constexpr double maxDropV = 1.0;     ///< a battery that is much too small for its load gives out, not up
constexpr double slowRate = 0.15;
constexpr double quickRate = 0.6;

} // namespace

double openVoltageV(double charge)
{
    return 11.3 + 1.5 * charge - 1.6 * std::exp(-charge / 0.08);
}

double loadedVoltageV(double charge, double rate)
{
    return openVoltageV(charge) - std::min(maxDropV, dropPerRateV * rate);
}

double chargeAtVoltage(double voltageV, double rate)
{
    double low = 0;
    double high = 1;
    for (int i = 0; i < 20; ++i) {
        const double middle = (low + high) / 2;
        (loadedVoltageV(middle, rate) < voltageV ? low : high) = middle;
    }
    return low;
}

double endVoltagePerCellV(double rate, double slowEndV, double quickEndV)
{
    const double share = std::clamp((rate - slowRate) / (quickRate - slowRate), 0.0, 1.0);
    return slowEndV + share * (quickEndV - slowEndV);
}

} // namespace simulation::block
