#pragma once

#include "unitmap.h"

#include <QByteArray>

#include <array>
#include <cstdint>

namespace simulation {

/// Everything a reader of a unit can get, as the registers carry it. A plain value: copies are snapshots.
struct RegisterImage
{
    std::array<std::uint8_t, unitmap::alarmPointCount> alarms{};
    std::array<std::uint16_t, unitmap::inputRegisterCount> inputs{};
    std::array<std::uint16_t, unitmap::holdingRegisterCount> settings{};

    /// Puts a value into the register of a mapped point (2000-2511, 3000-3163, 4000-4275), rounded as unitmap
    /// does.
    void set(int point, double value);
    /// The same for three consecutive points, one for each phase.
    void set(int firstPoint, const std::array<double, 3>& phases);
    /// Puts a text into the run of points that begins there, cut at the run's end, the rest filled with 0.
    void setText(int firstPoint, const QByteArray& text);
    /// Puts a point in time into six points: year within the century to second. `civilMs` counts from the
    /// epoch in the unit's own civil time, without any time zone.
    void setDate(int firstPoint, std::int64_t civilMs);

    /// What a reader makes of a mapped point, rounding included. 0 for a point outside the map.
    double value(int point) const;
    /// Raw register of a mapped point outside the alarms.
    std::uint16_t raw(int point) const;
    std::uint16_t& raw(int point);
};

} // namespace simulation
