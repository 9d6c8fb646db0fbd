// SPDX-License-Identifier: MIT
// For constraints whose rules look at all their variables at once, in a run (core/agenda.h).
//
// bool filter(Record &) narrows as far as one walk over the variables gets; here it walks until a walk changes nothing,
// so that the run need not hear of its own changes. A Record derives from Deferred and has
//   std::int64_t size() const;     values in all its domains
#pragma once

#include "core/post.h"

namespace koru::relational {

template <class Record, bool (*filter)(Record &)>
bool toFixpoint(Record &c) {
  std::int64_t before;
  do {
    before = c.size();
    if (!filter(c)) return false;
  } while (c.size() != before);
  return true;
}

template <class Record, bool (*filter)(Record &), Rank rank = Rank::kLinear>
constexpr auto kTable = deferred<toFixpoint<Record, filter>>(rank);

inline std::int64_t sizeOf(CSint *const *vars, int n) {
  std::int64_t size = 0;
  for (int i = 0; i < n; ++i) size += vars[i]->count;
  return size;
}

// A copy of the host's array; empty for n < 0, a null array or variable, or exhausted memory (reported).
inline Shared<CSint *> copyOf(CSint *const *vars, int n) {
  if (n < 0 || (n > 0 && (vars == nullptr || !allPresent(vars, n)))) return {};
  Shared<CSint *> copy(n);
  for (int i = 0; copy && i < n; ++i) copy.get()[i] = vars[i];
  return copy;
}

}  // namespace koru::relational
