// SPDX-License-Identifier: MIT
// Variables that a search for schedules has put off: it does not choose them while their minimum is what it was then.
#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "core/alloc.h"
#include "core/variable.h"

namespace koru::solve {

class Postponed {
 public:
  using Minimum = std::optional<int>;

  // None of positions 0..n-1. False when memory is exhausted (reported).
  [[nodiscard]] bool create(int n) {
    count_ = n;
    minima_ = Buffer<Minimum>(n);
    if (isUsed()) std::uninitialized_fill_n(minima_.get(), count_, Minimum{});
    return isUsed();
  }
  bool isUsed() const { return static_cast<bool>(minima_); }
  void clear() const {
    if (isUsed()) std::fill_n(minima_.get(), count_, std::nullopt);
  }

  bool holds(int position, const CSint *v) const { return isUsed() && minima_[position] == v->min; }
  // Returns what there was, to be put back.
  Minimum put(int position, Minimum minimum) const { return std::exchange(minima_[position], minimum); }

 private:
  Buffer<Minimum> minima_;
  int count_ = 0;
};

}  // namespace koru::solve
