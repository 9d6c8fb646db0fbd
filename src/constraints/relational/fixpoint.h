// SPDX-License-Identifier: MIT
// Constraints that walk over all their variables in a run, until a walk changes nothing (core/fixpoint.h).
#pragma once

#include "core/fixpoint.h"
#include "core/post.h"

namespace koru::relational {

template <class Record, bool (*filter)(Record &), Rank rank = Rank::kLinear>
constexpr auto kTable = deferred<toFixpoint<Record, filter>>(rank);

// A copy of the host's array; empty for n < 0, a null array or variable, or exhausted memory (reported).
inline Shared<CSint *> copyOf(CSint *const *vars, int n) {
  if (n < 0 || (n > 0 && (vars == nullptr || !allPresent(vars, n)))) return {};
  Shared<CSint *> copy(n);
  for (int i = 0; copy && i < n; ++i) copy.get()[i] = vars[i];
  return copy;
}

}  // namespace koru::relational
