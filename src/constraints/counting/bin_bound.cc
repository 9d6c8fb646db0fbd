// SPDX-License-Identifier: MIT
#include "constraints/counting/bin_bound.h"

#include <algorithm>
#include <numeric>

namespace koru::counting {

BinBound::BinBound(const int *sizes, int n, int m) : n_(n), m_(m) {
  const auto items = static_cast<unsigned>(n);
  const auto bins = static_cast<unsigned>(m);
  if (!make(order_, items) || !make(freeSizes_, items) || !make(spaces_, bins) ||
      !make(sizes_, std::uint64_t{items} + bins))
    return;
  std::iota(order_.get(), order_.get() + n, 0);
  std::stable_sort(order_.get(), order_.get() + n, [sizes](int a, int b) { return sizes[a] > sizes[b]; });
  sums_ = Buffer<std::int64_t>(std::uint64_t{items} + bins + 1);
}

void BinBound::collect(CSint *const *bins, const int *sizes, CSint *const *loads) {
  for (int j = 0; j < m_; ++j) spaces_[j] = loads[j]->max;
  free_ = 0;
  for (int k = 0; k < n_; ++k) {
    const int i = order_[k];
    if (isBound(bins[i]))
      spaces_[valueOf(bins[i])] -= sizes[i];
    else
      freeSizes_[free_++] = sizes[i];
  }
  std::sort(spaces_.get(), spaces_.get() + m_);
}

// As if each bin had the space of the one with the most: what it has less is an item. Items as large as the bins were
// when they were empty do not help: the smaller the bins, the more items are too large to be together.
void BinBound::merge(std::int64_t space) {
  int count = 0;
  for (int i = 0, j = 0; i < free_ || j < m_;) {
    const bool isItem = j == m_ || (i < free_ && freeSizes_[i] > space - spaces_[j]);
    sizes_[count++] = isItem ? freeSizes_[i++] : space - spaces_[j++];
  }
  sums_[0] = 0;
  for (int k = 0; k < count; ++k) sums_[k + 1] = sums_[k] + sizes_[k];
}

// No two of the large items, those of more than half a bin, are together. For each size of a small one: this one and
// those between it and half a bin have the space beside the large ones with which it fits, and need bins for the rest.
bool BinBound::fits(std::int64_t space) const {
  const int count = free_ + m_;
  int large = 0;
  while (large < count && 2 * sizes_[large] > space) ++large;
  int alone = large;
  for (int k = large; k < count; ++k) {
    while (alone > 0 && sizes_[alone - 1] + sizes_[k] <= space) --alone;
    const std::int64_t beside = (large - alone) * space - (sums_[large] - sums_[alone]);
    const std::int64_t rest = sums_[k + 1] - sums_[large] - beside;
    if (rest > (m_ - large) * space) return false;
  }
  return large <= m_;
}

bool BinBound::allows(CSint *const *bins, const int *sizes, CSint *const *loads) {
  if (m_ == 0) return true;
  collect(bins, sizes, loads);
  const std::int64_t space = spaces_[m_ - 1];
  merge(space);
  return fits(space);
}

}  // namespace koru::counting
