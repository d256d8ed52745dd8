#pragma once

namespace simulation {

/// How long the inverter carries a load above a percentage. Shorter than in the works' tables, so that a
/// demonstration need not last for minutes.
struct OverloadLimit
{
    double abovePercent;
    int allowedMs;
};

// clang-format off
constexpr OverloadLimit overloadLimits[] = {
    {150,   200},
    {125, 10000},
    {110, 60000},
};
// clang-format on

/// The inverter takes the load back when it has been below this for so long.
constexpr double overloadEndPercent = 95;
constexpr int overloadEndMs = 5000;

/// How long the inverter carries this load; 0 for as long as one likes.
constexpr int allowedOverloadMs(double percent)
{
    for (const OverloadLimit& limit : overloadLimits)
        if (percent > limit.abovePercent)
            return limit.allowedMs;
    return 0;
}

} // namespace simulation
