#pragma once

/// A lead-acid block of six cells, as far as its voltage tells its charge. Currents are given as a rate: 1 is
/// a discharge by the whole capacity in one hour.
namespace simulation::block {

constexpr int cells = 6;

/// Voltage without a load at so much charge (0 to 1): nearly straight, with the knee of an empty battery.
double openVoltageV(double charge);

/// Voltage under a discharge at this rate.
double loadedVoltageV(double charge, double rate);

/// The charge at which the voltage under this rate falls to `voltageV`; 0 when it never does.
double chargeAtVoltage(double voltageV, double rate);

/// The cell voltage that ends a discharge at this rate, between the two that a unit is set for: a quick
/// discharge may go lower.
double endVoltagePerCellV(double rate, double slowEndV, double quickEndV);

} // namespace simulation::block
