#include "registerimage.h"

#include "civiltime.h"

namespace simulation {

void RegisterImage::set(int point, double value)
{
    if (point < 3000)
        alarms[static_cast<std::size_t>(point - 2000)] = value != 0;
    else
        raw(point) = unitmap::rawOf(*unitmap::rowOfPoint(point), value);
}

void RegisterImage::set(int firstPoint, const std::array<double, 3>& phases)
{
    for (std::size_t phase = 0; phase < phases.size(); ++phase)
        set(firstPoint + static_cast<int>(phase), phases[phase]);
}

void RegisterImage::setText(int firstPoint, const QByteArray& text)
{
    const unitmap::Row* row = unitmap::rowOfPoint(firstPoint);
    for (int i = 0; i < row->pointCount; ++i)
        raw(firstPoint + i) = i < text.size() ? static_cast<std::uint8_t>(text.at(i)) : 0;
}

void RegisterImage::setDate(int firstPoint, std::int64_t civilMs)
{
    for (std::uint16_t field : dateRegistersOf(civilMs))
        raw(firstPoint++) = field;
}

double RegisterImage::value(int point) const
{
    const unitmap::Row* row = unitmap::rowOfPoint(point);
    if (!row)
        return 0;
    if (point < 3000)
        return alarms[static_cast<std::size_t>(point - 2000)];
    return static_cast<double>(unitmap::valueOf(*row, raw(point)));
}

std::uint16_t RegisterImage::raw(int point) const
{
    return point < 4000 ? settings[static_cast<std::size_t>(point - 3000)]
                        : inputs[static_cast<std::size_t>(point - 4000)];
}

std::uint16_t& RegisterImage::raw(int point)
{
    return point < 4000 ? settings[static_cast<std::size_t>(point - 3000)]
                        : inputs[static_cast<std::size_t>(point - 4000)];
}

} // namespace simulation
