#pragma once

#include "registerimage.h"

#include <cstdint>
#include <vector>

namespace simulation {

/// Why a write is refused; the values are the Modbus exception codes that say so.
enum class Refusal : std::uint8_t
{
    None = 0,
    IllegalFunction = 1,
    IllegalAddress = 2,
    IllegalValue = 3,
    Busy = 6
};

/// Whether a unit would take these raw values, the first of them into holding register `firstRegister`.
/// Nothing of a refused write may land. IllegalAddress: a reserved or unknown register, or a part of the
/// system time (it is written whole, so that the clock never shows half a date). IllegalValue: out of the
/// setting's range.
Refusal checkSettings(int firstRegister, const std::vector<std::uint16_t>& values);

/// Fills the settings of a unit as it comes from the works; texts and the system time stay empty.
void fillInitialSettings(RegisterImage& image);

} // namespace simulation
