// SPDX-License-Identifier: MIT
// Edges of tasks that share a resource, beside what the time table takes for certain: a task that begins as early as
// it can, and so leaves too little of a window to those that must be done within it, begins later (Vilim, Timetable
// edge finding filtering algorithm for discrete cumulative resources, 2011; on windows that begin no later than the
// task, as in Schutt, Feydy, Stuckey, Explaining time-table-edge-finding propagation for the cumulative resource
// constraint, 2013); and the mirror image.
//
// What is free of the resource, summed up from the beginning, is a time of its own, in which a task takes what of it is
// not in the table: then those within a window need no more than there is between its ends, as on a single machine.
// Cost: O(n log n), and n for each end of a window that leaves less than the largest of the other tasks may need.
// State: none.
#pragma once

#include "constraints/scheduling/time_table.h"

namespace koru::scheduling {

class TimeTableEdges {
 public:
  TimeTableEdges() = default;
  // False as a bool when memory is exhausted (reported).
  explicit TimeTableEdges(int count);
  explicit operator bool() const { return static_cast<bool>(tree_); }

  // One look at the loads, of which the table is, with sums up to date. False when there is no schedule. What is found
  // is right whatever the loads; nothing is missed when the table has nothing to add and there is no overload.
  [[nodiscard]] bool filter(Buffer<Load> &loads, const TimeTable &table, Time capacity);

 private:
  // A task, as far as it is not in the table.
  struct Rest {
    int load;
    bool isIn;
    Time earliest;  // start
    Time latest;    // end
    Time length;    // of all of it
    Time use;
    Time energy;
    Time from;  // its earliest start and latest end, in what is free
    Time to;
    Time bound;  // the earliest start that has been found

    Time latestStart() const { return latest - length; }
    Time earliestEnd() const { return earliest + length; }
  };

  void gather(const Buffer<Load> &loads, const TimeTable &table, Time capacity);
  void sort();
  void mirror();
  void findStarts();
  void scan(const Rest &last);
  static void raise(Rest &rest, Time end, Time room);
  bool takeStarts(Buffer<Load> &loads) const;
  bool takeEnds(Buffer<Load> &loads) const;

  int count_ = 0;  // of all loads
  int rests_ = 0;
  Buffer<Rest> rest_;
  Buffer<int> byEarliest_;
  Buffer<int> byLatest_;
  Buffer<int> leafOf_;
  Buffer<Time> behind_;  // by place in byLatest_: the greatest energy of those behind it, or not sure to be there
  ThetaTree tree_;
};

}  // namespace koru::scheduling
