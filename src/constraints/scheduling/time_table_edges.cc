// SPDX-License-Identifier: MIT
#include "constraints/scheduling/time_table_edges.h"

#include <algorithm>
#include <numeric>

namespace koru::scheduling {

TimeTableEdges::TimeTableEdges(int count) : count_(count) {
  const auto n = static_cast<unsigned>(count);
  if (make(rest_, n) && make(byEarliest_, n) && make(byLatest_, n) && make(leafOf_, n) && make(behind_, n))
    tree_ = ThetaTree(count);
}

void TimeTableEdges::gather(const Buffer<Load> &loads, const TimeTable &table, Time capacity) {
  const auto freeUntil = [&](Time time) { return time * capacity - table.takenUntil(time); };
  rests_ = 0;
  for (int i = 0; i < count_; ++i) {
    const Task &task = loads[i].task;
    const Time energy = loads[i].energyBesideTable();
    if (task.isOut() || energy == 0) continue;
    rest_[rests_++] = {i,
                       task.isIn(),
                       task.earliest,
                       task.latest,
                       task.length,
                       loads[i].use,
                       energy,
                       freeUntil(task.earliest),
                       freeUntil(task.latest),
                       task.earliest};
  }
}

void TimeTableEdges::sort() {
  const auto sortBy = [&](int *order, Time Rest::*key) {
    std::iota(order, order + rests_, 0);
    std::sort(order, order + rests_,
              [&](int i, int j) { return rest_[i].*key != rest_[j].*key ? rest_[i].*key < rest_[j].*key : i < j; });
  };
  sortBy(byEarliest_.get(), &Rest::earliest);
  sortBy(byLatest_.get(), &Rest::latest);
}

// From now on time runs the other way.
void TimeTableEdges::mirror() {
  for (int i = 0; i < rests_; ++i) {
    Rest &rest = rest_[i];
    rest.earliest = -std::exchange(rest.latest, -rest.earliest);
    rest.from = -std::exchange(rest.to, -rest.from);
    rest.bound = rest.earliest;
  }
  std::swap(byEarliest_, byLatest_);
  std::reverse(byEarliest_.get(), byEarliest_.get() + rests_);
  std::reverse(byLatest_.get(), byLatest_.get() + rests_);
}

// It takes all the room between its start and the end, and what of it is in the table there.
void TimeTableEdges::raise(Rest &rest, Time end, Time room) {
  const Time partEnd = std::min(rest.earliestEnd(), end);
  const Time inTable = rest.isIn ? rest.use * std::max<Time>(0, partEnd - rest.latestStart()) : 0;
  rest.bound = std::max(rest.bound, end - (room + inTable) / rest.use);
}

// All windows that end where the task must have ended, the latest begin first. Of those that are not within a window
// the one that needs most of it speaks for all: once that has moved, there will be another look.
void TimeTableEdges::scan(const Rest &last) {
  Time energy = 0;
  Time most = 0;
  Rest *largest = rest_.get();
  for (int k = rests_ - 1; k >= 0; --k) {
    Rest &rest = rest_[byEarliest_[k]];
    if (rest.earliest >= last.latest) continue;
    if (rest.isIn && rest.latest <= last.latest) {
      energy += rest.energy;
    } else if (const Time needed = std::min(rest.energy, rest.use * (last.latest - rest.earliest)); needed > most) {
      most = needed;
      largest = &rest;
    }
    const Time room = last.to - rest.from - energy;
    if (most > room) raise(*largest, last.latest, room);
  }
}

void TimeTableEdges::findStarts() {
  Time most = 0;
  for (int i = 0; i < rests_; ++i)
    if (!rest_[i].isIn) most = std::max(most, rest_[i].energy);
  for (int k = rests_ - 1; k >= 0; --k) {
    behind_[k] = most;
    most = std::max(most, rest_[byLatest_[k]].energy);
    leafOf_[byEarliest_[k]] = k;
  }
  tree_.clear(rests_, false);
  for (int k = 0; k < rests_; ++k) {
    const Rest &rest = rest_[byLatest_[k]];
    if (!rest.isIn) continue;
    tree_.makeWhite(leafOf_[byLatest_[k]], rest.from, rest.energy);
    if (behind_[k] > rest.to - tree_.completion()) scan(rest);
  }
}

// A task with no place left. False when it must be there.
static bool holds(Task &task) {
  if (task.earliestEnd() <= task.latest) return true;
  const bool optional = !task.isIn();
  task.presence = Presence::kOut;
  return optional;
}

bool TimeTableEdges::takeStarts(Buffer<Load> &loads) const {
  for (int i = 0; i < rests_; ++i) {
    Task &task = loads[rest_[i].load].task;
    task.earliest = std::max(task.earliest, rest_[i].bound);
    if (!holds(task)) return false;
  }
  return true;
}

bool TimeTableEdges::takeEnds(Buffer<Load> &loads) const {
  for (int i = 0; i < rests_; ++i) {
    Task &task = loads[rest_[i].load].task;
    task.latest = std::min(task.latest, -rest_[i].bound);
    if (!holds(task)) return false;
  }
  return true;
}

bool TimeTableEdges::filter(Buffer<Load> &loads, const TimeTable &table, Time capacity) {
  gather(loads, table, capacity);
  if (rests_ < 2) return true;
  sort();
  findStarts();
  if (!takeStarts(loads)) return false;
  mirror();
  findStarts();
  return takeEnds(loads);
}

}  // namespace koru::scheduling
