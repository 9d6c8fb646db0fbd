// SPDX-License-Identifier: MIT
// For runs (core/agenda.h) whose rules look at all their variables at once.
//
// bool filter(Record &) narrows as far as one walk over the variables gets; here it walks until a walk changes nothing,
// so that the run need not hear of its own changes. A Record has
//   std::int64_t size() const;     values in all its domains
#pragma once

#include <cstdint>

#include "core/variable.h"

namespace koru {

template <class Record, bool (*filter)(Record &)>
bool toFixpoint(Record &c) {
  std::int64_t before;
  do {
    before = c.size();
    if (!filter(c)) return false;
  } while (c.size() != before);
  return true;
}

// Of no variables when there is no array.
inline std::int64_t sizeOf(CSint *const *vars, int n) {
  std::int64_t size = 0;
  for (int i = 0; vars != nullptr && i < n; ++i) size += vars[i]->count;
  return size;
}

}  // namespace koru
