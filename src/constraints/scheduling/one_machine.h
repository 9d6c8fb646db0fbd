// SPDX-License-Identifier: MIT
// Tasks that are done one at a time, as numbers: between which times each can be done. The rules, to their common
// fixpoint (Vilim 2007; Vilim, Bartak, Cepek, Extension of O(n log n) filtering algorithms for the unary resource
// constraint to optional activities, 2005):
//
//   overload              tasks that need more time than there is between their earliest start and latest end: failure
//   detectable precedence when i cannot end before j must have begun, then all such j come before i
//   not-first/not-last    when i cannot begin after all of a set have ended, then one of the set begins after i
//   edge finding          when a set with i cannot end by the set's latest end, then i comes after the whole set
//
// and their mirror images, for which the same code looks at time from the other end. A task that may be left out bounds
// no other one; it is out when its own times leave it no place.
// Each rule costs O(n log n).  State: none but the sorted orders, which are merely faster to sort again.
#pragma once

#include "constraints/scheduling/theta_tree.h"

namespace koru::scheduling {

enum class Presence : std::uint8_t { kOut, kOptional, kIn };

struct Task {
  Time earliest = 0;  // start
  Time latest = 0;    // end
  Time length = 0;
  Presence presence = Presence::kOut;

  Time earliestEnd() const { return earliest + length; }
  Time latestStart() const { return latest - length; }
  bool isIn() const { return presence == Presence::kIn; }
  bool isOut() const { return presence == Presence::kOut; }
  bool operator==(const Task &) const = default;
};

class OneMachine {
 public:
  OneMachine() = default;
  // False as a bool when memory is exhausted (reported).
  explicit OneMachine(int count);
  explicit operator bool() const { return static_cast<bool>(orders_); }

  // All tasks are set before a filter; times and lengths are of at most 60 bits, and so is the sum of the lengths.
  Task &operator[](int i) { return tasks_[i]; }
  const Task &operator[](int i) const { return tasks_[i]; }

  // Narrows the times of the tasks to the fixpoint of all rules. False when there is no schedule.
  [[nodiscard]] bool filter();
  // Tells of overload alone, and which tasks are left out then.
  [[nodiscard]] bool overloadOnly();
  // After that: how much time is left, at least, between the earliest start and latest end of some that are in.
  Time leastRoom() const { return leastRoom_; }
  // After a filter: by when each task must have ended because of one that is in and comes after it, or kNoEnd.
  static constexpr Time kNoEnd = INT64_MAX;
  void findEnds(Buffer<Time> &ends);

 private:
  enum Key : int { kByEarliest, kByLatest, kByEarliestEnd, kByLatestStart };
  static constexpr int kKeys = 4;

  Time key(Key by, int i) const;
  const int *sorted(Key by);
  void startTree(bool usesGrey);
  void mirror();
  template <bool (OneMachine::*rule)()>
  [[nodiscard]] bool bothWays();
  bool anyOptional() const;
  [[nodiscard]] bool overload();
  [[nodiscard]] bool precedences();
  [[nodiscard]] bool notLast();
  [[nodiscard]] bool edges();
  void makeWhite(int i) { tree_.makeWhite(leafOf_[i], tasks_[i].earliest, tasks_[i].length); }
  void makeGrey(int i) { tree_.makeGrey(leafOf_[i], tasks_[i].earliest, tasks_[i].length); }
  Time completionWithout(int i, bool isWhite) const {
    return isWhite ? tree_.completionWithout(leafOf_[i]) : tree_.completion();
  }
  void startBounds(bool ofStarts);
  [[nodiscard]] bool take(bool ofStarts);

  int count_ = 0;
  bool mirrored_ = false;
  bool changed_ = false;
  Time leastRoom_ = kNoEnd;
  Buffer<Task> tasks_;
  Buffer<Time> bounds_;  // what a rule has found: new earliest starts, or latest ends
  Buffer<int> leafOf_;
  Buffer<int> taskOf_;  // by leaf
  Buffer<int> orders_;  // by direction and key
  ThetaTree tree_;
};

}  // namespace koru::scheduling
