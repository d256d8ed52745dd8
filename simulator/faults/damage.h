#pragma once

#include "framing.h"
#include "injector.h"
#include "reply.h"

namespace simulation::faults {

/// Whether the unit gets the request: a fault of its answer leaves it what it was told, a fault of the line
/// on the way there does not, and a unit that refuses carries nothing out.
bool reachesUnit(Kind kind);

/// What goes over the wire in place of the sound `reply`, which is empty where the unit never got the
/// request.
Reply damaged(const Fault& fault, Framing framing, const Bytes& request, const Bytes& reply);

} // namespace simulation::faults
