// SPDX-License-Identifier: MIT
#include "solve/neighbourhood.h"

#include <algorithm>

namespace koru::solve {

bool Neighbourhood::create(int n, int share, int places) {
  relaxed_ = Buffer<bool>(n);
  order_ = Buffer<int>(n);
  visited_ = Buffer<bool>(places);
  count_ = n;
  places_ = places;
  share_ = share * (kWhole / 100);
  return relaxed_ && order_ && visited_;
}

bool Neighbourhood::isRelaxed(int position) const { return relaxed_[position]; }

void Neighbourhood::noteExhausted() { share_ = std::min(share_ + share_ / 8 + 1, kMostShare); }
void Neighbourhood::noteLeft() { share_ = std::max(share_ - share_ / 16, kLeastShare); }

void Neighbourhood::clear() const { std::fill_n(relaxed_.get(), count_, false); }

// At least one variable, when there is any.
int Neighbourhood::sizeWanted() const {
  const std::int64_t size = std::int64_t{count_} * share_ / kWhole;
  return static_cast<int>(std::clamp<std::int64_t>(size, count_ > 0 ? 1 : 0, count_));
}

// The first elements of a random permutation.
void Neighbourhood::relaxRandom(Random &random) const {
  for (int i = 0; i < count_; ++i) order_[i] = i;
  for (int i = 0; i < sizeWanted(); ++i) {
    const auto other = i + static_cast<int>(random.below(static_cast<std::uint32_t>(count_ - i)));
    std::swap(order_[i], order_[other]);
    relaxed_[order_[i]] = true;
  }
}

// Breadth first from a variable drawn at random; where nothing is linked any more, from another one.
void Neighbourhood::relaxLinked(Random &random, const Weights &weights) const {
  const int wanted = sizeWanted();
  std::fill_n(visited_.get(), places_, false);
  int known = 0;
  const auto relax = [&](int position) {
    if (position >= count_ || known >= wanted || relaxed_[position]) return;  // the objective is labelled as well
    relaxed_[position] = true;
    order_[known++] = position;
  };
  int next = 0;
  while (known < wanted) {
    if (next < known) {
      weights.forEachNeighbour(order_[next++], visited_.get(), relax);
    } else {
      int from = static_cast<int>(random.below(static_cast<std::uint32_t>(count_)));
      while (relaxed_[from]) from = from + 1 < count_ ? from + 1 : 0;
      relax(from);
    }
  }
}

}  // namespace koru::solve
