// SPDX-License-Identifier: MIT
// Attaching: ties a constraint to a variable, so that it is woken by the variable's changes. Undone by the trail.
#pragma once

#include "core/constraint.h"

namespace koru {

// Makes v's changes wake c; of the events that c's table listens to, only those in `concerned` say anything to it about
// this variable. On failure (memory, reported) v is as before, and a constraint that was held by nobody else may be
// gone.
[[nodiscard]] bool attachConstraint(Constraint *c, CSint *v, int index, std::uint8_t concerned = kHearsAnything);

// The same for a constraint whose table listens to all events, as a KeyedEntry.
[[nodiscard]] bool attachKeyed(Constraint *c, CSint *v, int index, int key);

}  // namespace koru
