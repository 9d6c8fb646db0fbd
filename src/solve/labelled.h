// SPDX-License-Identifier: MIT
// The variables that a search labels, in phases, with the last solution and the values wished for.
#pragma once

#include "core/alloc.h"
#include "core/variable.h"
#include "koru_extras.h"

namespace koru::solve {

// Positions begin..end-1, labelled when none before them is left. The position of an order of tasks tells which it is:
// orderAt + position.
struct Phase {
  int begin;
  int end;
  int order;
  int value;
  int orderAt;
  bool ofOrders;
};

struct Wish {
  int value;
  bool made;
};

// An order of tasks in the last solution.
struct PlacedOrder {
  int position;
  int machine;
  const CSint *starts[2];
  int times[2];  // at which they start
};

class Labelled {
 public:
  // Adds a phase of copies. False, with nothing changed, when memory is exhausted (reported).
  [[nodiscard]] bool add(CSint *const *vars, int n, int order, int value);

  // Adds a phase of orders of tasks. As above.
  [[nodiscard]] bool addOrders(const CSorder *orders, int n, int order, int value);

  int size() const { return size_; }
  CSint **variables() const { return vars_.get(); }
  CSint *operator[](int i) const { return vars_[i]; }

  const Phase &phaseOf(int position) const {
    int i = 0;
    while (phases_[i].end <= position) ++i;
    return phases_[i];
  }
  bool usesOrder(int order) const {
    for (int i = 0; i < phaseCount_; ++i)
      if (phases_[i].order == order) return true;
    return false;
  }
  bool usesValue(int value) const {
    for (int i = 0; i < phaseCount_; ++i)
      if (phases_[i].value == value) return true;
    return false;
  }
  Phase &firstPhase() const { return phases_[0]; }

  int orderCount() const { return orderCount_; }
  const CSorder &orderOf(const Phase &phase, int position) const { return orders_[phase.orderAt + position]; }
  const PlacedOrder &placedOrder(int k) const { return placed_[k]; }

  const Wish &wish(int i) const { return wishes_[i]; }
  void setWish(int i, int value) const { wishes_[i] = {value, true}; }
  const int *solution() const { return solution_.get(); }

  // Takes over the values that the variables have now.
  void keepSolution() const;

 private:
  Buffer<CSint *> vars_;
  Buffer<Wish> wishes_;
  Buffer<int> solution_;
  Buffer<Phase> phases_;
  Buffer<CSorder> orders_;
  Buffer<PlacedOrder> placed_;
  int size_ = 0;
  int orderCount_ = 0;
  int phaseCount_ = 0;
};

}  // namespace koru::solve
