#pragma once

#include "registerimage.h"

#include <map>

namespace simulation {

/// Points whose value is imposed on a unit, whatever its model says: alarms (2000-2511) and live values
/// (4000-4275).
class ForcedPoints
{
public:
    static bool canForce(int point)
    {
        return (point >= 2000 && point < 2512) || (point >= 4000 && point < 4276);
    }

    void force(int point, double value) { m_values[point] = value; }
    /// Gives the point back to the model.
    void release(int point) { m_values.erase(point); }

    void applyTo(RegisterImage& image) const
    {
        for (const auto& [point, value] : m_values)
            image.set(point, value);
    }

private:
    std::map<int, double> m_values;
};

} // namespace simulation
