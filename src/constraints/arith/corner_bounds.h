// SPDX-License-Identifier: MIT
// Interval bounds of products and exact quotients, from the four corners of the operands' box.
#pragma once

#include <algorithm>

#include "core/int_math.h"
#include "core/variable.h"

namespace koru {

// 64 bits: one quotient of ints, INT_MIN / -1, is no int. Empty when low > high.
struct Bounds {
  std::int64_t low;
  std::int64_t high;
};

// Each corner is clamped into the int range.
inline Bounds productBounds(const CSint *a, const CSint *b) {
  const auto corner = [](int p, int q) { return std::int64_t{clampToInt(std::int64_t{p} * q)}; };
  const auto [low, high] =
      std::minmax({corner(a->min, b->min), corner(a->min, b->max), corner(a->max, b->min), corner(a->max, b->max)});
  return {low, high};
}

inline bool excludesZero(const CSint *v) { return v->min > 0 || v->max < 0; }

inline std::int64_t ceilDiv(std::int64_t n, std::int64_t d) { return n / d + (n % d != 0 && (n < 0) == (d < 0)); }
inline std::int64_t floorDiv(std::int64_t n, std::int64_t d) { return n / d - (n % d != 0 && (n < 0) != (d < 0)); }

// The integers t with t * d = n for some n and d of the intervals lie within; the divisor must exclude 0.
inline Bounds quotientBounds(const CSint *n, const CSint *d) {
  return {
      std::min({ceilDiv(n->min, d->min), ceilDiv(n->min, d->max), ceilDiv(n->max, d->min), ceilDiv(n->max, d->max)}),
      std::max(
          {floorDiv(n->min, d->min), floorDiv(n->min, d->max), floorDiv(n->max, d->min), floorDiv(n->max, d->max)})};
}

}  // namespace koru
