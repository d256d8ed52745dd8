#pragma once

#include <cstdint>
#include <functional>
#include <vector>

namespace simulation {

using Bytes = std::vector<std::uint8_t>;

/// Gives the reply to one request as it came over the wire; empty where nobody answers.
using RequestHandler = std::function<Bytes(const Bytes& request)>;

} // namespace simulation
