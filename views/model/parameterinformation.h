#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

/// Display type codes of ParameterInformation::type. The codes between them are free: such a record shows an
/// empty text.
namespace displaytype {
constexpr int integer = 0;       ///< "%d"
constexpr int threeIntegers = 1; ///< "%d/%d/%d" of three consecutive points
constexpr int tenths = 4;        ///< "%.1f"
constexpr int threeTenths = 5;
constexpr int hundredths = 6; ///< "%.2f"
constexpr int threeHundredths = 7;
constexpr int text = 9;    ///< one byte for each point, or a date and time
constexpr int option = 11; ///< a text of comboMap
} // namespace displaytype

/// The two texts that are dates and times: six points from the year within the century to the second.
constexpr int systemTimePoint = 3103;
constexpr int lastDischargePoint = 4268;

/// One value that the pages show or let the user set.
struct ParameterInformation
{
    QString label;     ///< caption, translated; five captions occur twice, so it is no key
    QString valueText; ///< what a settings table shows before a value is known, later what was last set
    QString unit;      ///< behind the value, may be empty
    float ratio = 0;   ///< shown value for one raw unit; for ranges and entries, never for measurements
    int maxRaw = 0;    ///< greatest value in raw units; without a range both limits are 0
    int minRaw = 0;    ///< least value in raw units
    int type = displaytype::integer;
    int pointId = 0; ///< point of the data map, or the first of consecutive ones
    QString extraText;
    int pointCount = 0; ///< points that make up a text; 0 for every other type
    int flag = 1;
    QMap<QString, int> comboMap; ///< options by text, empty for what is no option

    bool hasRange() const { return minRaw != 0 || maxRaw != 0; }

    /// Adds options whose raw values are their positions. Of two equal texts the later one wins.
    void addCombo(const QStringList& texts);
    /// Adds options with raw values, cut to integers. Nothing happens if a list is empty; a text without a
    /// value is not added.
    void addCombo(const QStringList& texts, const QList<float>& values);
};
