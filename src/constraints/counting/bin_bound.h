// SPDX-License-Identifier: MIT
// Whether there may be bins enough for what is not placed yet: the bound L2 of Martello and Toth (Lower bounds and
// reduction procedures for the bin packing problem, 1990), with what is in a bin as one more item (Shaw, A constraint
// for bin packing, 2004).
#pragma once

#include "core/alloc.h"
#include "core/variable.h"

namespace koru::counting {

class BinBound {
 public:
  BinBound() = default;
  // False as a bool when memory is exhausted (reported).
  BinBound(int items, int bins);
  explicit operator bool() const { return static_cast<bool>(sums_); }

  // Each item must be in one of the bins 0..m-1. False when they cannot hold all. O((n + m) log(n + m)).
  bool allows(CSint *const *bins, const int *sizes, int n, CSint *const *loads, int m);

 private:
  std::int64_t collect(CSint *const *bins, const int *sizes, int n, CSint *const *loads, int m);

  int count_ = 0;
  Buffer<std::int64_t> sizes_;  // descending: of items without a bin, and of what is in a bin or too much for it
  Buffer<std::int64_t> sums_;   // of the sizes before each
};

}  // namespace koru::counting
