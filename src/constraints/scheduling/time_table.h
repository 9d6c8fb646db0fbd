// SPDX-License-Identifier: MIT
// How much of a resource is certainly taken at each time: a task that must have begun by some time, and cannot have
// ended before another one, runs in between wherever it is put (its compulsory part).
#pragma once

#include "constraints/scheduling/one_machine.h"

namespace koru::scheduling {

// What a task takes while it runs.
struct Load {
  Task task;
  Time use = 0;

  bool operator==(const Load &) const = default;

  // There is a time at which it certainly runs.
  bool hasPart() const { return task.isIn() && task.latestStart() < task.earliestEnd(); }
  // Use times the length of the rest.
  Time energyBesideTable() const { return use * (hasPart() ? task.latestStart() - task.earliest : task.length); }
};

class TimeTable {
 public:
  TimeTable() = default;
  // False as a bool when memory is exhausted (reported).
  explicit TimeTable(int count);
  explicit operator bool() const { return static_cast<bool>(levels_); }

  // Of as many loads as the constructor was told. O(n log n), O(n) when the order is the one of the last time.
  void build(const Buffer<Load> &loads);

  // Stretches of one level follow one another; 0 is before all parts, the last one behind them.
  int at(Time time) const;  // O(log n)
  Time beginOf(int stretch) const { return begins_[stretch]; }
  Time levelOf(int stretch) const { return levels_[leaves_ + stretch]; }
  // The first one from `stretch` on above the level, or kNone. O(log n).
  static constexpr int kNone = -1;
  int firstAbove(int stretch, Time level) const;
  // The greatest level between two times, first < last. O(log n).
  Time highest(Time first, Time last) const;
  Time highest() const { return levels_[1]; }

  // Makes takenUntil ready: levels times lengths must need less than 60 bits in all. O(n).
  void sumUp();
  // Of the resource, from the beginning on. O(log n).
  Time takenUntil(Time time) const;

 private:
  void sort(const Buffer<Load> &loads);
  void append(Time time, Time change);

  int count_ = 0;
  int stretches_ = 0;
  int leaves_ = 1;
  Buffer<int> byStart_;  // of the parts: latest starts
  Buffer<int> byEnd_;    // earliest ends
  Buffer<Time> begins_;  // of the stretches
  Buffer<Time> sums_;    // taken until a stretch begins
  Buffer<Time> levels_;  // from leaves_ on by stretch; above them the greater one of 2 k and 2 k + 1
};

}  // namespace koru::scheduling
