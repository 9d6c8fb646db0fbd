// SPDX-License-Identifier: MIT
#include "constraints/counting/bin_bound.h"

#include <algorithm>
#include <functional>

namespace koru::counting {

BinBound::BinBound(int items, int bins) {
  const std::uint64_t most = std::uint64_t{static_cast<unsigned>(items)} + static_cast<unsigned>(bins);
  if (make(sizes_, most)) sums_ = Buffer<std::int64_t>(most + 1);
}

// As if all bins were as large as the largest, whose size is the result.
std::int64_t BinBound::collect(CSint *const *bins, const int *sizes, int n, CSint *const *loads, int m) {
  std::int64_t largest = 0;
  for (int j = 0; j < m; ++j) largest = std::max<std::int64_t>(largest, loads[j]->max);
  for (int j = 0; j < m; ++j) sizes_[j] = largest - loads[j]->max;
  count_ = m;
  for (int i = 0; i < n; ++i) {
    if (isBound(bins[i]))
      sizes_[valueOf(bins[i])] += sizes[i];
    else
      sizes_[count_++] = sizes[i];
  }
  std::sort(sizes_.get(), sizes_.get() + count_, std::greater<>());
  sums_[0] = 0;
  for (int k = 0; k < count_; ++k) sums_[k + 1] = sums_[k] + sizes_[k];
  return largest;
}

// No two of the large items, those of more than half a bin, are together. For each size of a small one: this one and
// those between it and half a bin have the space beside the large ones with which it fits, and need bins for the rest.
bool BinBound::allows(CSint *const *bins, const int *sizes, int n, CSint *const *loads, int m) {
  const std::int64_t space = collect(bins, sizes, n, loads, m);
  int large = 0;
  while (large < count_ && 2 * sizes_[large] > space) ++large;
  int alone = large;
  for (int k = large; k < count_; ++k) {
    while (alone > 0 && sizes_[alone - 1] + sizes_[k] <= space) --alone;
    const std::int64_t beside = (large - alone) * space - (sums_[large] - sums_[alone]);
    const std::int64_t rest = sums_[k + 1] - sums_[large] - beside;
    if (rest > (m - large) * space) return false;
  }
  return large <= m;
}

}  // namespace koru::counting
