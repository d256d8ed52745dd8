#pragma once

#include "eventhistory.h"
#include "unitreport.h"

namespace simulation {

/// The history that a unit brings along: what past weeks did to it, up to `startMs` of its own civil time.
/// The same seed and address give the same minutes.
EventHistory pastOf(const UnitIdentity& identity, std::uint32_t seed, std::int64_t startMs);

} // namespace simulation
