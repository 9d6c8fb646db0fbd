// SPDX-License-Identifier: MIT
// Neighbourhoods of the best solution: which variables are let go while the others keep their values (Shaw, "Using
// Constraint Programming and Local Search Methods to Solve Vehicle Routing Problems", CP 1998). Their size adapts to
// how the last ones ended, by counts alone.
#pragma once

#include "core/alloc.h"
#include "solve/labelled.h"
#include "solve/random.h"
#include "solve/weights.h"

namespace koru::solve {

class Neighbourhood {
 public:
  // Over positions 0..n-1; `share` is in per cent, `places` those of the weights, for linked ones. False when memory is
  // exhausted (reported).
  [[nodiscard]] bool create(int n, int share, int places);

  bool isRelaxed(int position) const;
  bool *relaxed() const { return relaxed_.get(); }
  void clear() const;
  void relaxRandom(Random &random) const;
  void relaxLinked(Random &random, const Weights &weights) const;
  // Everything but orders, and of those some: CS_NEIGHBOURS_WINDOW, _MACHINES or _TASKS.
  void relaxOrders(Random &random, const Labelled &labelled, int which);

  // One was searched through, or left at its limit.
  void noteExhausted();
  void noteLeft();

 private:
  static constexpr int kWhole = 10000;  // shares are kept in hundredths of a per cent
  static constexpr int kLeastShare = 100;
  static constexpr int kMostShare = 9000;

  int shareOf(int count) const;
  int sizeWanted() const { return shareOf(count_); }
  void relaxAround(int moment, const Labelled &labelled, int wanted);
  template <class Belongs>
  int relaxThose(const Labelled &labelled, Belongs belongs) const;

  Buffer<bool> relaxed_;
  Buffer<int> order_;
  Buffer<bool> visited_;  // constraints, by place: all that they concern was offered already
  int places_ = 0;
  int count_ = 0;
  int share_ = 0;
};

}  // namespace koru::solve
