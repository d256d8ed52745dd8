#pragma once

#include <QString>
#include <QVector>

/// Numbers from the texts of a data log. Pure functions, which take any text: what is no finite number is
/// absent, and an absent number is a NaN. The decimal point is a point in every locale.
namespace trendvalue {

using Parser = QVector<double> (*)(const QString& text);

/// "230.9/231.2/229.9" gives three, "230.9" one.
QVector<double> phases(const QString& text);

/// "270.0-268.5", the positive and the negative half run into one, gives the size of each: 270.0 and 268.5.
QVector<double> halves(const QString& text);

/// "100.0" gives one.
QVector<double> single(const QString& text);

} // namespace trendvalue
