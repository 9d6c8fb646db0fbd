// SPDX-License-Identifier: MIT
#include "constraints/scheduling/one_machine.h"

#include <algorithm>
#include <numeric>

namespace koru::scheduling {

OneMachine::OneMachine(int count) : count_(count), tree_(count) {
  const auto n = static_cast<unsigned>(count);
  if (!tree_ || !make(tasks_, n) || !make(bounds_, n) || !make(leafOf_, n) || !make(taskOf_, n) ||
      !make(orders_, std::uint64_t{2} * kKeys * n))
    return;
  std::fill_n(tasks_.get(), count, Task{});
  for (int order = 0; order < 2 * kKeys; ++order) {
    int *first = orders_.get() + static_cast<std::ptrdiff_t>(order) * count;
    std::iota(first, first + count, 0);
  }
}

Time OneMachine::key(Key by, int i) const {
  const Task &task = tasks_[i];
  switch (by) {  // GCOVR_EXCL_BR_LINE: there is no other key
    case kByEarliest:
      return task.earliest;
    case kByLatest:
      return task.latest;
    case kByEarliestEnd:
      return task.earliestEnd();
    case kByLatestStart:
      return task.latestStart();
  }
  return 0;  // GCOVR_EXCL_LINE: not reached
}

// Ascending. Mostly it is sorted already, from the last time.
const int *OneMachine::sorted(Key by) {
  int *first = orders_.get() + static_cast<std::ptrdiff_t>(by + (mirrored_ ? kKeys : 0)) * count_;
  const auto before = [&](int i, int j) {
    const Time a = key(by, i);
    const Time b = key(by, j);
    return a != b ? a < b : i < j;
  };
  if (!std::is_sorted(first, first + count_, before)) std::sort(first, first + count_, before);
  return first;
}

void OneMachine::startTree(bool usesGrey) {
  const int *order = sorted(kByEarliest);
  for (int leaf = 0; leaf < count_; ++leaf) {
    taskOf_[leaf] = order[leaf];
    leafOf_[order[leaf]] = leaf;
  }
  tree_.clear(count_, usesGrey);
}

// From now on time runs the other way.
void OneMachine::mirror() {
  mirrored_ = !mirrored_;
  for (int i = 0; i < count_; ++i) {
    Task &task = tasks_[i];
    task.earliest = -std::exchange(task.latest, -task.earliest);
  }
}

template <bool (OneMachine::*rule)()>
bool OneMachine::bothWays() {
  if (!(this->*rule)()) return false;
  mirror();
  const bool consistent = (this->*rule)();
  mirror();
  return consistent;
}

// ----- what a rule finds is taken when it is through, so that it has looked at one state of the tasks

void OneMachine::startBounds(bool ofStarts) {
  for (int i = 0; i < count_; ++i) bounds_[i] = ofStarts ? tasks_[i].earliest : tasks_[i].latest;
}

bool OneMachine::take(bool ofStarts) {
  for (int i = 0; i < count_; ++i) {
    Task &task = tasks_[i];
    Time &bound = ofStarts ? task.earliest : task.latest;
    if (bound == bounds_[i]) continue;
    changed_ = true;
    bound = bounds_[i];
    if (task.earliestEnd() <= task.latest) continue;
    if (task.isIn()) return false;
    task.presence = Presence::kOut;
  }
  return true;
}

// ----- the rules

bool OneMachine::anyOptional() const {
  return std::any_of(tasks_.get(), tasks_.get() + count_,
                     [](const Task &task) { return !task.isIn() && !task.isOut(); });
}

bool OneMachine::overload() {
  const int *byLatest = sorted(kByLatest);
  startTree(anyOptional());
  leastRoom_ = kNoEnd;
  for (int k = 0; k < count_; ++k) {
    const Task &task = tasks_[byLatest[k]];
    if (task.isOut()) continue;
    task.isIn() ? makeWhite(byLatest[k]) : makeGrey(byLatest[k]);
    if (tree_.completion() > task.latest) return false;
    leastRoom_ = std::min(leastRoom_, task.latest - tree_.completion());
    while (tree_.greyCompletion() > task.latest) {
      const int leaf = tree_.greyLeaf();
      tasks_[taskOf_[leaf]].presence = Presence::kOut;
      tree_.remove(leaf);
    }
  }
  return true;
}

bool OneMachine::precedences() {
  const int *byEnd = sorted(kByEarliestEnd);
  const int *byStart = sorted(kByLatestStart);
  startTree(false);
  startBounds(true);
  int next = 0;
  for (int k = 0; k < count_; ++k) {
    const int i = byEnd[k];
    const Task &task = tasks_[i];
    for (; next < count_ && task.earliestEnd() > tasks_[byStart[next]].latestStart(); ++next)
      if (tasks_[byStart[next]].isIn()) makeWhite(byStart[next]);
    if (task.isOut()) continue;
    const bool isWhite = task.isIn() && task.earliestEnd() > task.latestStart();
    bounds_[i] = std::max(bounds_[i], completionWithout(i, isWhite));
  }
  return take(true);
}

// The set of those that may begin before i must have ended: the latest of them but i is the last that was entered.
bool OneMachine::notLast() {
  const int *byLatest = sorted(kByLatest);
  const int *byStart = sorted(kByLatestStart);
  startTree(false);
  startBounds(false);
  int next = 0;
  int last = ThetaTree::kNobody;
  int lastButOne = ThetaTree::kNobody;
  for (int k = 0; k < count_; ++k) {
    const int i = byLatest[k];
    const Task &task = tasks_[i];
    for (; next < count_ && task.latest > tasks_[byStart[next]].latestStart(); ++next) {
      if (!tasks_[byStart[next]].isIn()) continue;
      makeWhite(byStart[next]);
      lastButOne = std::exchange(last, byStart[next]);
    }
    if (task.isOut() || completionWithout(i, task.isIn()) <= task.latestStart()) continue;
    const int other = last == i ? lastButOne : last;
    bounds_[i] = std::min(bounds_[i], tasks_[other].latestStart());
  }
  return take(false);
}

// What the mirror image has moved may overload the machine. Where it does not, it is always a grey task that makes it
// late.
bool OneMachine::edges() {
  const int *byLatest = sorted(kByLatest);
  startTree(true);
  startBounds(true);
  for (int i = 0; i < count_; ++i)
    if (tasks_[i].isIn()) tree_.placeWhite(leafOf_[i], tasks_[i].earliest, tasks_[i].length);
  tree_.allPlaced();
  for (int k = count_ - 1; k >= 0; --k) {
    const int j = byLatest[k];
    if (tasks_[j].isOut()) continue;
    if (tasks_[j].isIn() && tree_.completion() > tasks_[j].latest) return false;
    while (tasks_[j].isIn() && tree_.greyCompletion() > tasks_[j].latest) {
      const int leaf = tree_.greyLeaf();
      const int i = taskOf_[leaf];
      bounds_[i] = std::max(bounds_[i], tree_.completion());
      tree_.remove(leaf);
    }
    makeGrey(j);
  }
  return take(true);
}

bool OneMachine::overloadOnly() { return overload(); }

bool OneMachine::filter() {
  do {
    do {
      do {
        changed_ = false;
        if (!overload() || !bothWays<&OneMachine::precedences>()) return false;
      } while (changed_);
      if (!bothWays<&OneMachine::notLast>()) return false;
    } while (changed_);
    if (!bothWays<&OneMachine::edges>()) return false;
  } while (changed_);
  return true;
}

void OneMachine::findEnds(Buffer<Time> &ends) {
  const int *byEnd = sorted(kByEarliestEnd);
  const int *byStart = sorted(kByLatestStart);
  int next = count_ - 1;
  Time least = kNoEnd;
  Time second = kNoEnd;
  int leastBy = ThetaTree::kNobody;
  for (int k = count_ - 1; k >= 0; --k) {
    const int i = byStart[k];
    for (; next >= 0 && tasks_[byEnd[next]].earliestEnd() > tasks_[i].latestStart(); --next) {
      const int j = byEnd[next];
      if (!tasks_[j].isIn()) continue;
      const Time start = tasks_[j].latestStart();
      second = std::min(second, std::max(start, least));
      if (start < least) {
        least = start;
        leastBy = j;
      }
    }
    ends[i] = leastBy == i ? second : least;
  }
}

}  // namespace koru::scheduling
