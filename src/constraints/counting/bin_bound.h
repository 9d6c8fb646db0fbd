// SPDX-License-Identifier: MIT
// Whether there may be bins enough for what is not placed yet: the bound L2 of Martello and Toth (Lower bounds and
// reduction procedures for the bin packing problem, 1990), with what a bin has less of space than the others as one
// more item (Shaw, A constraint for bin packing, 2004; Dupuis, Schaus, Deville, Consistency check for the bin packing
// constraint revisited, 2010).
#pragma once

#include "core/alloc.h"
#include "core/variable.h"

namespace koru::counting {

class BinBound {
 public:
  BinBound() = default;
  // For n items of these sizes and m bins. False as a bool when memory is exhausted (reported).
  BinBound(const int *sizes, int n, int m);
  explicit operator bool() const { return static_cast<bool>(sums_); }

  // Each item must be in one of the bins 0..m-1. False when they cannot hold all. O(n + m log m).
  [[nodiscard]] bool allows(CSint *const *bins, const int *sizes, CSint *const *loads);

 private:
  void collect(CSint *const *bins, const int *sizes, CSint *const *loads);
  void merge(std::int64_t space);
  bool fits(std::int64_t space) const;

  int n_ = 0;
  int m_ = 0;
  int free_ = 0;                    // items without a bin
  Buffer<int> order_;               // items, the largest first
  Buffer<std::int64_t> freeSizes_;  // descending
  Buffer<std::int64_t> spaces_;     // left in each bin, ascending
  Buffer<std::int64_t> sizes_;      // descending: of items without a bin, and what bins lack
  Buffer<std::int64_t> sums_;       // of the sizes before each
};

}  // namespace koru::counting
