// SPDX-License-Identifier: MIT
// How often propagation changes each labelled variable: Michel, Van Hentenryck, "Activity-Based Search for Black-Box
// Constraint Programming Solvers", CPAIOR 2012.
//
// A propagation adds to each variable that it has changed, whether it failed or not; all activities fade by a
// thousandth each time, which is to say that the addend grows by one. Integers, so that every platform comes to the
// same order. Deliberate: all begin equal; there are no probes before the search, whose number would be one more thing
// to choose. Cost: a look at each undo record of a propagation, and a look into a table for each.
#pragma once

#include "core/alloc.h"
#include "core/variable.h"

namespace koru::solve {

class Activity {
 public:
  // Of variables[0..n-1]. False when memory is exhausted (reported).
  [[nodiscard]] bool create(CSint *const *variables, int n);
  bool created() const { return static_cast<bool>(activities_); }

  // A propagation has left the undo records from `mark` on.
  void notePropagation(int mark);
  std::uint64_t of(int position) const { return activities_[position]; }

 private:
  struct Place {
    const CSint *variable;  // null: none
    int position;           // the last one
  };

  int placeOf(const CSint *v) const;
  void add(int position);
  void fade();

  int count_ = 0;
  int mask_ = 0;  // places, a power of two, less one
  Buffer<Place> places_;
  Buffer<int> same_;  // the position before that has the same variable; negative: none
  Buffer<std::uint64_t> activities_;
  Buffer<unsigned> lastCounted_;  // in which propagation
  unsigned propagations_ = 0;
  std::uint64_t addend_ = 1 << 14;
  bool tooLarge_ = false;
};

}  // namespace koru::solve
