#include "settingstext.h"

#include "baudtable.h"

#include <QStringList>

#include <optional>

namespace {
constexpr int PartCount = 4;

BaudRateType baudRateOf(int baud)
{
    const BaudRow* row = baudTable;
    while (row->baud != 0 && row->baud != baud)
        ++row;
    return row->value;
}

std::optional<ParityType> parityOf(const QString& part)
{
    static constexpr char letters[] = "nosem";
    static constexpr ParityType values[] = {ParityNone, ParityOdd, ParitySpace, ParityEven, ParityMark};
    for (int i = 0; letters[i]; ++i) {
        if (part.compare(QLatin1String(letters + i, 1), Qt::CaseInsensitive) == 0)
            return values[i];
    }
    return std::nullopt;
}

// A single digit from first to last, as its distance from first.
std::optional<int> digitOf(const QString& part, char first, char last)
{
    if (part.size() != 1 || part.at(0) < QLatin1Char(first) || part.at(0) > QLatin1Char(last))
        return std::nullopt;
    return part.at(0).unicode() - first;
}

ParsedSettings parseReadable(const QStringList& parts)
{
    ParsedSettings result;
    result.settings.BaudRate = baudRateOf(parts.at(0).toInt());
    const std::optional<ParityType> parity = parityOf(parts.at(1));
    const std::optional<int> dataBits = digitOf(parts.at(2), '5', '8');
    const std::optional<int> stopBits = digitOf(parts.at(3), '1', '2');
    if (!parity)
        return {SettingsError::Parity, {}};
    if (!dataBits)
        return {SettingsError::DataBits, {}};
    if (!stopBits)
        return {SettingsError::StopBits, {}};
    result.settings.Parity = *parity;
    result.settings.DataBits = static_cast<DataBitsType>(*dataBits);
    result.settings.StopBits = static_cast<StopBitsType>(*stopBits);
    return result;
}

ParsedSettings parseNumbers(const QStringList& parts)
{
    ParsedSettings result;
    result.settings.BaudRate = static_cast<BaudRateType>(parts.at(0).toInt());
    result.settings.DataBits = static_cast<DataBitsType>(parts.at(1).toInt());
    result.settings.Parity = static_cast<ParityType>(parts.at(2).toInt());
    result.settings.StopBits = static_cast<StopBitsType>(parts.at(3).toInt());
    return result;
}
} // namespace

ParsedSettings parseSettings(const QString& text)
{
    if (text.isEmpty())
        return {SettingsError::Empty, {}};
    const bool readable = text.contains(QLatin1Char(','));
    const QStringList parts = text.split(QLatin1Char(readable ? ',' : '#'));
    if (parts.size() < PartCount)
        return {SettingsError::Form, {}};
    return readable ? parseReadable(parts) : parseNumbers(parts);
}
