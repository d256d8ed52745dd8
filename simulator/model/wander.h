#pragma once

#include <algorithm>
#include <cmath>
#include <random>

namespace simulation {

/// A measured quantity's slow wandering about 0, never beyond +-1. The course follows from the generator
/// alone, so that the same seed gives the same course on every machine (the distributions of the standard
/// library do not promise that).
class Wander
{
public:
    /// Moves on by `seconds` (virtual time); returns the new value.
    double step(double seconds, std::mt19937& random)
    {
        const double kick = static_cast<double>(random()) / 2147483648.0 - 1.0;
        const double pull = std::min(1.0, seconds / timeConstantS);
        m_value += -m_value * pull + kick * std::sqrt(pull) * 0.8;
        m_value = std::clamp(m_value, -1.0, 1.0);
        return m_value;
    }

private:
    static constexpr double timeConstantS = 8;

    double m_value = 0;
};

} // namespace simulation
