// SPDX-License-Identifier: MIT
#include "constraints/scheduling/time_table.h"

#include <algorithm>
#include <bit>
#include <numeric>

namespace koru::scheduling {

// A begin and an end for each task, and what is before them all.
TimeTable::TimeTable(int count) : count_(count) {
  const std::uint64_t most = std::uint64_t{2} * static_cast<unsigned>(count) + 1;
  if (!make(byStart_, most) || !make(byEnd_, most) || !make(begins_, most) || !make(sums_, most)) return;
  std::iota(byStart_.get(), byStart_.get() + count, 0);
  std::iota(byEnd_.get(), byEnd_.get() + count, 0);
  make(levels_, 2 * std::bit_ceil(most));
}

template <class Key>
static void sortBy(int *first, int count, Key key) {
  const auto before = [&](int i, int j) { return key(i) != key(j) ? key(i) < key(j) : i < j; };
  if (!std::is_sorted(first, first + count, before)) std::sort(first, first + count, before);
}

void TimeTable::sort(const Buffer<Load> &loads) {
  sortBy(byStart_.get(), count_, [&](int i) { return loads[i].task.latestStart(); });
  sortBy(byEnd_.get(), count_, [&](int i) { return loads[i].task.earliestEnd(); });
}

void TimeTable::append(Time time, Time change) {
  if (begins_[stretches_ - 1] != time) {
    begins_[stretches_] = time;
    levels_[leaves_ + stretches_] = levels_[leaves_ + stretches_ - 1];
    ++stretches_;
  }
  levels_[leaves_ + stretches_ - 1] += change;
}

void TimeTable::build(const Buffer<Load> &loads) {
  sort(loads);
  leaves_ = static_cast<int>(std::bit_ceil(2 * static_cast<unsigned>(count_) + 1));
  begins_[0] = ThetaTree::kNever;
  levels_[leaves_] = 0;
  stretches_ = 1;
  for (int start = 0, end = 0; end < count_;) {
    const int i = start < count_ ? byStart_[start] : byEnd_[end];
    const int j = byEnd_[end];
    const Time begins = loads[i].task.latestStart();
    if (start < count_ && begins <= loads[j].task.earliestEnd()) {
      if (loads[i].hasPart()) append(begins, loads[i].use);
      ++start;
    } else {
      if (loads[j].hasPart()) append(loads[j].task.earliestEnd(), -loads[j].use);
      ++end;
    }
  }
  std::fill(levels_.get() + leaves_ + stretches_, levels_.get() + std::ptrdiff_t{2} * leaves_, 0);
  for (int k = leaves_ - 1; k >= 1; --k) levels_[k] = std::max(levels_[2 * k], levels_[2 * k + 1]);
}

void TimeTable::sumUp() {
  sums_[0] = 0;
  for (int k = 1; k < stretches_; ++k)
    sums_[k] = k == 1 ? 0 : sums_[k - 1] + (begins_[k] - begins_[k - 1]) * levelOf(k - 1);
}

Time TimeTable::takenUntil(Time time) const {
  const int k = at(time);
  return sums_[k] + (time - begins_[k]) * levelOf(k);
}

int TimeTable::at(Time time) const {
  return static_cast<int>(std::upper_bound(begins_.get(), begins_.get() + stretches_, time) - begins_.get()) - 1;
}

// Up and to the right until a subtree has one, then down to the first one in it.
int TimeTable::firstAbove(int stretch, Time level) const {
  int k = leaves_ + stretch;
  while (levels_[k] <= level) {
    while (k % 2 != 0) k /= 2;
    if (k == 0) return kNone;
    ++k;
  }
  while (k < leaves_) k = levels_[2 * k] > level ? 2 * k : 2 * k + 1;
  return k - leaves_;
}

Time TimeTable::highest(Time first, Time last) const {
  Time most = 0;
  for (int low = leaves_ + at(first), high = leaves_ + at(last - 1); low <= high; low /= 2, high /= 2) {
    if (low % 2 != 0) most = std::max(most, levels_[low++]);
    if (high % 2 == 0) most = std::max(most, levels_[high--]);
  }
  return most;
}

}  // namespace koru::scheduling
