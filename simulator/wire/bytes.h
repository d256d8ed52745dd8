#pragma once

#include <cstdint>
#include <vector>

namespace simulation {

using Bytes = std::vector<std::uint8_t>;

} // namespace simulation
