// SPDX-License-Identifier: MIT
#pragma once

#include "constraints/global/cumulative_energy.h"
#include "core/post.h"
#include "core/private_variable.h"

namespace koru::cumulative {

// What the disjunctive form brings along: the uses, all of them one private variable, which is the capacity as well.
struct Unit {
  PrivateVariables variable;
  Buffer<CSint *> uses;
};

// Posts under the posting's site on n >= 1 tasks. The arrays are kept. `unit` is empty when the uses are the host's.
[[nodiscard]] bool post(Posting &posting, const Tasks &tasks, CSint *capacity, Unit unit);

}  // namespace koru::cumulative
