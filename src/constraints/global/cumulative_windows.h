// SPDX-License-Identifier: MIT
#pragma once

#include "constraints/global/cumulative_resource.h"

namespace koru::cumulative {

// Quotients of energies are ints. Deliberate: those that are not are truncated to 32 bits, as the products
// they are made of.
inline Time quotient(Energy energy, Time divisor) { return wrap(energy / divisor); }

// The window of a task is checked when it meets [a, b).
inline bool qualifies(const Task &task, Time a, Time b) {
  return task.leastEnd() > a && task.est() < b && task.demands();
}

// The energetic checks: for the window [est, lst + dmin) of each task that meets [a, b), what the others need of it.
// Narrows uses and time windows. `least` rises to the capacity that the energies demand. False: fail.
// Expects the tasks sorted and the profile built over all these windows.
[[nodiscard]] bool checkWindows(Resource &r, Time a, Time b, Time &least);

}  // namespace koru::cumulative
