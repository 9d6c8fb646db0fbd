// SPDX-License-Identifier: MIT
// The totals of c1 * x1 + ... + cn * xn: one pass over the terms, with the same result on every machine.
#pragma once

#include <cstdint>

#include "core/variable.h"

namespace koru::scal_prod {

// The least and greatest total, and the widest of the terms: one that is no wider than a margin cannot be narrowed by
// it.
struct Totals {
  std::int64_t low = 0;
  std::int64_t high = 0;
  std::int64_t widest = 0;
};

struct Terms {
  const int *coefficients;
  CSint *const *vars;
  int n;
};

// The totals must fit 64 bits. Many terms are taken four at a time where the processor can, which takes 7 instructions
// a term in place of 18.
void computeTotals(const Terms &terms, Totals &totals);

}  // namespace koru::scal_prod
