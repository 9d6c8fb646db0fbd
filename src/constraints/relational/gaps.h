// SPDX-License-Identifier: MIT
// Gaps between the values that a result may have.
#pragma once

#include "core/domain_walk.h"
#include "core/narrow.h"

namespace koru::relational {

// A variable over a wider range keeps its inner values: a walk over them would not end, and the bits take memory.
constexpr std::uint32_t kWidest = 1U << 20;

// Removes the values strictly between two.
[[nodiscard]] inline bool dropBetween(CSint *v, int low, int high) {
  if (high - std::int64_t{low} < 2 || distance(v->min, v->max) > kWidest) return true;
  return forEachValue(v, low + 1, high - 1, [v](int value) { return removeValue(v, value); });
}

}  // namespace koru::relational
