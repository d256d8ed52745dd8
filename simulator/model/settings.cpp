#include "settings.h"

#include "civiltime.h"
#include "settinglimits.h"

#include <algorithm>
#include <iterator>

namespace simulation {

namespace {

constexpr int dateRegisterCount = 6;

const SettingLimit* limitOf(int point)
{
    const SettingLimit* found =
        std::lower_bound(std::begin(settingLimits), std::end(settingLimits), point,
                         [](const SettingLimit& limit, int wanted) { return limit.point < wanted; });
    return found != std::end(settingLimits) && found->point == point ? found : nullptr;
}

bool takes(const SettingLimit& limit, std::uint16_t raw)
{
    if (limit.choices) {
        const std::uint16_t* end = limit.choices->values + limit.choices->count;
        return std::find(limit.choices->values, end, raw) != end;
    }
    return raw >= limit.minRaw && raw <= limit.maxRaw;
}

/// One byte of a text: printable in ASCII or a byte of UTF-8, or the 0 that ends the text.
bool isTextByte(std::uint16_t raw)
{
    return raw == 0 || (raw >= 0x20 && raw <= 0xFF && raw != 0x7F);
}

Refusal checkSetting(int point, std::uint16_t raw)
{
    const unitmap::Row* row = unitmap::rowOfPoint(point);
    if (row && row->kind == unitmap::Kind::Text)
        return isTextByte(raw) ? Refusal::None : Refusal::IllegalValue;
    const SettingLimit* limit = limitOf(point);
    if (!limit)
        return Refusal::IllegalAddress;
    return takes(*limit, raw) ? Refusal::None : Refusal::IllegalValue;
}

} // namespace

Refusal checkSettings(int firstRegister, const std::vector<std::uint16_t>& values)
{
    const int count = static_cast<int>(values.size());
    if (firstRegister < 0 || firstRegister + count > unitmap::holdingRegisterCount)
        return Refusal::IllegalAddress;
    for (int i = 0; i < count; ++i) {
        const int point = 3000 + firstRegister + i;
        const unitmap::Row* row = unitmap::rowOfPoint(point);
        if (row->kind == unitmap::Kind::Date) {
            if (point != row->firstPoint || i + dateRegisterCount > count)
                return Refusal::IllegalAddress;
            if (!civilMsOf(&values[static_cast<std::size_t>(i)]))
                return Refusal::IllegalValue;
            i += dateRegisterCount - 1;
            continue;
        }
        const Refusal refusal = checkSetting(point, values[static_cast<std::size_t>(i)]);
        if (refusal != Refusal::None)
            return refusal;
    }
    return Refusal::None;
}

void fillInitialSettings(RegisterImage& image)
{
    for (const SettingLimit& limit : settingLimits)
        image.raw(limit.point) = limit.initialRaw;
}

} // namespace simulation
