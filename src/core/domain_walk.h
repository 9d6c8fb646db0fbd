// SPDX-License-Identifier: MIT
// Walks over the values of a domain.
#pragma once

#include <algorithm>

#include "core/variable.h"

namespace koru {

// Visits the values within [low, high] in increasing order while `visit` returns true. False when it has returned
// false. The walk is live: bounds and bits are read anew at each step, so `visit` may change the domain.
template <class Visit>
bool forEachValue(const CSint *v, int low, int high, Visit visit) {
  int value = std::max(v->min, low);
  while (value <= v->max && value <= high) {
    if (contains(v, value) && !visit(value)) return false;
    if (value >= v->max) break;  // before a step past the largest int
    value = valueAfter(v, value);
  }
  return true;
}

template <class Visit>
bool forEachValue(const CSint *v, Visit visit) {
  return forEachValue(v, kIntMin, kIntMax, visit);
}

}  // namespace koru
