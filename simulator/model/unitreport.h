#pragma once

#include "registerimage.h"
#include "unitstate.h"

namespace simulation {

/// What sets one unit apart from another.
struct UnitIdentity
{
    int address = 1;           ///< Modbus address, 1 to 247
    QByteArray name = "UPS-1"; ///< at most 16 bytes
};

/// Rated apparent power of the unit in kVA: 10, 20 or 30, by its address.
int ratedKva(int address);

/// Puts the texts and numbers that never change into the registers, settings included.
void reportIdentity(const UnitIdentity& identity, RegisterImage& image);

/// Puts a unit's state into the registers: live values, states, flow points, alarms, and what follows from
/// the settings that `image` already holds.
void reportState(const UnitState& state, RegisterImage& image);

} // namespace simulation
