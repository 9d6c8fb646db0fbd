// SPDX-License-Identifier: MIT
// The least and greatest values that variables which all differ can take, seen as intervals: the algorithm of
// Lopez-Ortiz, Quimper, Tromp and van Beek (A fast and simple algorithm for bounds consistency of the alldifferent
// constraint, 2003). An interval with as many variables inside as it has values (a Hall interval) is theirs alone.
#pragma once

#include "core/alloc.h"
#include "core/variable.h"

namespace koru {

class HallBounds {
 public:
  HallBounds() = default;
  // For `count` variables; false as a bool when memory is exhausted (reported).
  explicit HallBounds(int count);
  explicit operator bool() const { return static_cast<bool>(room_); }

  // Narrows the bounds of `count` variables, at least one, to their fixpoint. False when there is no solution or memory
  // is exhausted (reported). O(n log n), and as much again for each time that a bound falls into a hole of its domain.
  [[nodiscard]] bool filter(CSint *const *vars, int count);

 private:
  struct Interval {
    CSint *variable;
    int position;
    int min;  // at the last sort
    int max;
    int minRank;
    int maxRank;
  };
  // A point between bounds: the search structures of the algorithm.
  struct Point {
    std::int64_t bound;
    std::int64_t left;  // room in the critical capacity
    int tree;
    int hall;
  };

  void sort(int count);
  void rank(int count);
  void resetLower();
  void resetUpper();
  [[nodiscard]] bool filterLower(int count);
  [[nodiscard]] bool filterUpper(int count);
  [[nodiscard]] bool raise(const Interval &interval, std::int64_t bound);
  [[nodiscard]] bool lower(const Interval &interval, std::int64_t bound);

  int follow(int Point::*link, int from, bool up) const;
  void redirect(int Point::*link, int from, int to, int target) const;

  Buffer<Interval> room_;
  Buffer<Interval *> byMin_;
  Buffer<Interval *> byMax_;
  Buffer<Point> points_;
  int last_ = 0;           // the last of the points but the one that guards them
  bool fellInto_ = false;  // a hole
};

}  // namespace koru
