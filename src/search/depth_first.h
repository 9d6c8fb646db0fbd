// SPDX-License-Identifier: MIT
// The depth-first engine, for the searches that label with it. It counts on the shared counters, which it does not
// reset; see depth_first.cc for what it leaves behind.
#pragma once

#include "koru.h"

namespace koru {

// A fail limit below 1 is none. `select` must not be null. What observers are told of a solution is its objective.
[[nodiscard]] bool labelDepthFirst(CSint **array, int size, CSfindFreeVar select, int failLimit,
                                   const CSint *objective = nullptr);

}  // namespace koru
