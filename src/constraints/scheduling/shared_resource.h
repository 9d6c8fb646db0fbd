// SPDX-License-Identifier: MIT
// Tasks that share a resource, as numbers: at each time those that run take no more than the capacity. The rules:
//
//   time table   what is certainly taken at a time leaves room for a task, or that does not run then; to the fixpoint
//                (Gay, Hartert, Schaus, Simple and scalable time-table filtering for the cumulative constraint, 2015)
//   overload     tasks that take more in all, use times length, than there is between their earliest start and latest
//                end (Vilim, Max energy filtering algorithm for discrete cumulative resources, 2009), and what others
//                certainly take there counts as well
//   edges        constraints/scheduling/time_table_edges.h
//
// A task that may be left out bounds no other one; it is out when its own times leave it no place.
// Cost: O(n log n) a round of the time table, and a step for each stretch of it that a task is moved past; overload
// O(n log n).  State: none but sorted orders.
// Deliberate: overload and edges are not looked for where capacity times time, or all energies, need 60 bits or more.
#pragma once

#include "constraints/scheduling/time_table_edges.h"

namespace koru::scheduling {

class SharedResource {
 public:
  SharedResource() = default;
  // False as a bool when memory is exhausted (reported).
  explicit SharedResource(int count);
  explicit operator bool() const { return static_cast<bool>(loads_); }

  // All loads are set before a filter: use and capacity are of at most 34 bits, not negative, and times
  // sums of two ints.
  Load &operator[](int i) { return loads_[i]; }
  const Load &operator[](int i) const { return loads_[i]; }

  // Narrows the times of the tasks by the time table, to its fixpoint, and overload. False when there is no schedule.
  [[nodiscard]] bool filter(Time capacity);
  // One look at edges. False when there is no schedule. When times have moved, a filter may find more, and the edges
  // after it.
  [[nodiscard]] bool edges(Time capacity);
  // After a filter: whether edges may find anything. A task that makes a window too small needs more than is left of
  // it.
  bool mayHaveEdges() const { return most_ > energy_.leastRoom(); }

  // After a filter: what is certainly taken at some time, how much a task can take, and by when it has ended.
  Time highest() const { return table_.highest(); }
  Time mostUse(int i) const;
  static constexpr Time kNoEnd = OneMachine::kNoEnd;
  Time latestEnd(int i, Time latestStart) const;

 private:
  [[nodiscard]] bool dropTooLarge();
  [[nodiscard]] bool pass();
  [[nodiscard]] bool raise(Load &load);
  void mirror();
  bool energiesFit() const;
  [[nodiscard]] bool overload();

  int count_ = 0;
  bool changed_ = false;
  Time capacity_ = 0;
  Time most_ = 0;  // the greatest energy beside the table
  TimeTable table_;
  OneMachine energy_;
  TimeTableEdges edges_;
  Buffer<Load> loads_;
};

}  // namespace koru::scheduling
