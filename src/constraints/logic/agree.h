// SPDX-License-Identifier: MIT
// What two variables that are to be equal have in common.
#pragma once

#include <algorithm>

#include "core/domain_walk.h"
#include "core/narrow.h"

namespace koru {

// The least value from `value` on that is in both, or one past `last`.
inline std::int64_t nextShared(const CSint *x, const CSint *y, int value, int last) {
  while (value < last) {
    if (!contains(x, value))
      value = valueAfter(x, value);
    else if (!contains(y, value))
      value = valueAfter(y, value);
    else
      return value;
  }
  return value == last && contains(x, value) && contains(y, value) ? value : std::int64_t{last} + 1;
}

[[nodiscard]] inline bool shareValue(const CSint *x, const CSint *y, int &shared) {
  if (contains(x, shared) && contains(y, shared)) return true;
  const int first = std::max(x->min, y->min);
  const int last = std::min(x->max, y->max);
  if (first > last) return false;
  const std::int64_t value = nextShared(x, y, first, last);
  if (value <= last) shared = static_cast<int>(value);
  return value <= last;
}

[[nodiscard]] inline bool alignBounds(CSint *x, CSint *y) {
  return narrowMin(x, y->min) && narrowMin(y, x->min) && narrowMax(x, y->max) && narrowMax(y, x->max);
}

[[nodiscard]] inline bool keepWhatIsIn(CSint *x, const CSint *y) {
  return forEachValue(x, [=](int value) { return contains(y, value) || removeValue(x, value); });
}

[[nodiscard]] inline bool equalise(CSint *x, CSint *y) {
  if (isBound(x)) return contains(y, valueOf(x)) && bindValue(y, valueOf(x));
  if (isBound(y)) return contains(x, valueOf(y)) && bindValue(x, valueOf(y));
  return alignBounds(x, y) && (y->bits == nullptr || keepWhatIsIn(x, y)) && (x->bits == nullptr || keepWhatIsIn(y, x));
}

}  // namespace koru
