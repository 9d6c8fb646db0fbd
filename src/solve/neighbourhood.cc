// SPDX-License-Identifier: MIT
#include "solve/neighbourhood.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <utility>

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
int Neighbourhood::shareOf(int count) const {
  const std::int64_t size = std::int64_t{count} * share_ / kWhole;
  return static_cast<int>(std::clamp<std::int64_t>(size, count > 0 ? 1 : 0, count));
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

// ----- orders of tasks

static std::int64_t distanceFrom(int moment, const PlacedOrder &order) {
  const auto from = [&](int time) { return std::abs(std::int64_t{time} - moment); };
  return std::max(from(order.times[0]), from(order.times[1]));
}

// Those whose two tasks both start nearest to the moment.
void Neighbourhood::relaxAround(int moment, const Labelled &labelled, int wanted) {
  const auto distance = [&](int k) { return distanceFrom(moment, labelled.placedOrder(k)); };
  const auto isNearer = [&](int i, int j) { return distance(i) != distance(j) ? distance(i) < distance(j) : i < j; };
  int *first = order_.get();
  std::iota(first, first + labelled.orderCount(), 0);
  std::nth_element(first, first + wanted - 1, first + labelled.orderCount(), isNearer);
  for (int k = 0; k < wanted; ++k) relaxed_[labelled.placedOrder(first[k]).position] = true;
}

// How many these are that were not let go before.
template <class Belongs>
int Neighbourhood::relaxThose(const Labelled &labelled, Belongs belongs) const {
  int more = 0;
  for (int k = 0; k < labelled.orderCount(); ++k) {
    const PlacedOrder &order = labelled.placedOrder(k);
    if (belongs(order) && !std::exchange(relaxed_[order.position], true)) ++more;
  }
  return more;
}

void Neighbourhood::relaxOrders(Random &random, const Labelled &labelled, int which) {
  std::fill_n(relaxed_.get(), count_, true);
  for (int k = 0; k < labelled.orderCount(); ++k) relaxed_[labelled.placedOrder(k).position] = false;
  const int wanted = shareOf(labelled.orderCount());
  for (int left = wanted; left > 0;) {
    const auto any = static_cast<int>(random.below(static_cast<unsigned>(labelled.orderCount())));
    const PlacedOrder &chosen = labelled.placedOrder(any);
    const std::uint32_t side = random.below(2);
    if (which == CS_NEIGHBOURS_WINDOW) return relaxAround(chosen.times[side], labelled, wanted);
    const CSint *task = chosen.starts[side];
    left -= relaxThose(labelled, [&](const PlacedOrder &o) {
      if (which == CS_NEIGHBOURS_MACHINES) return o.machine == chosen.machine;
      return o.starts[0] == task || o.starts[1] == task;
    });
  }
}

}  // namespace koru::solve
