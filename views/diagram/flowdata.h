#pragma once

#include "flowtexts.h"

#include <QMap>
#include <QStringList>
#include <QVariant>

#include <array>

/// What the energy-flow diagram makes of a data map: functions without a widget.
namespace flowdata {

using Data = QMap<int, QVariant>;
using Flows = std::array<bool, 6>;
using Texts = std::array<QString, flowtexts::textCount>;
using Tables = std::array<QStringList, flowtexts::tableCount>;

/// Which paths power takes; a point that the map lacks turns its flows off.
Flows flows(const Data& data);

/// Brings the texts up to date, numbers in the C locale. A text stays as it was when its point is absent, is
/// no index into its table, or when its phase count is neither 1 nor 3.
void updateTexts(Texts& texts, const Data& data, const Tables& tables);

/// The battery's charge in percent, 0 to 100, or -1 while it is unknown.
int chargePercent(const Data& data);

} // namespace flowdata
