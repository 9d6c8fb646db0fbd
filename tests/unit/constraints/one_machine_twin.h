// SPDX-License-Identifier: MIT
// A twin of OneMachine that goes through all sets of tasks for the rules as they were published.
#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include "constraints/scheduling/one_machine.h"

namespace koru::scheduling::naive {

using Tasks = std::vector<Task>;

struct Set {
  Time earliest = INT64_MAX;
  Time latest = INT64_MIN;
  Time length = 0;
  Time leastEnd = INT64_MAX;       // of the earliest ends
  Time greatestStart = INT64_MIN;  // of the latest starts

  Time completion() const { return earliest + length; }
  void add(const Task &t) {
    earliest = std::min(earliest, t.earliest);
    latest = std::max(latest, t.latest);
    length += t.length;
    leastEnd = std::min(leastEnd, t.earliestEnd());
    greatestStart = std::max(greatestStart, t.latestStart());
  }
};

inline bool isIn(unsigned set, std::size_t i) { return (set >> i & 1) != 0; }

// All sets of tasks that are in; 0 is the empty one.
inline std::vector<Set> setsOf(const Tasks &tasks) {
  std::vector<Set> sets(std::size_t{1} << tasks.size());
  for (unsigned set = 1; set < sets.size(); ++set)
    for (std::size_t i = 0; i < tasks.size(); ++i)
      if (isIn(set, i)) sets[set].add(tasks[i]);
  return sets;
}

inline bool allIn(const Tasks &tasks, unsigned set) {
  for (std::size_t i = 0; i < tasks.size(); ++i)
    if (isIn(set, i) && !tasks[i].isIn()) return false;
  return true;
}

// The rules that raise earliest starts; of the others one is told by the mirror image.
struct Found {
  Time earliest;
  Time latest;
};

inline bool mustPrecede(const Tasks &tasks, unsigned set, const Task &task) {
  for (std::size_t j = 0; j < tasks.size(); ++j)
    if (isIn(set, j) && task.earliestEnd() <= tasks[j].latestStart()) return false;
  return true;
}

inline void ruleOut(const Tasks &tasks, const std::vector<Set> &sets, unsigned set, const Task &task, Found &found) {
  const Set &omega = sets[set];
  Set with = omega;
  with.add(task);
  if (with.completion() > with.latest) found.earliest = found.latest;  // overload: no place
  if (mustPrecede(tasks, set, task)) found.earliest = std::max(found.earliest, omega.completion());
  if (omega.completion() > task.latestStart()) found.latest = std::min(found.latest, omega.greatestStart);
  if (with.completion() <= omega.latest) return;
  for (unsigned part = set; part != 0; part = (part - 1) & set)
    found.earliest = std::max(found.earliest, sets[part].completion());
}

inline Tasks mirrored(Tasks tasks) {
  for (Task &t : tasks) t.earliest = -std::exchange(t.latest, -t.earliest);
  return tasks;
}

inline Found findFor(const Tasks &tasks, std::size_t i) {
  Found found{tasks[i].earliest, tasks[i].latest};
  const std::vector<Set> sets = setsOf(tasks);
  for (unsigned set = 1; set < sets.size(); ++set)
    if (!isIn(set, i) && allIn(tasks, set)) ruleOut(tasks, sets, set, tasks[i], found);
  return found;
}

// One round of all rules for all tasks. False when one that is in has no place.
inline bool round(Tasks &tasks) {
  const Tasks before = tasks;
  const Tasks mirror = mirrored(tasks);
  for (std::size_t i = 0; i < tasks.size(); ++i) {
    if (tasks[i].isOut()) continue;
    const Found found = findFor(before, i);
    const Found fromEnd = findFor(mirror, i);
    tasks[i].earliest = std::max(found.earliest, -fromEnd.latest);
    tasks[i].latest = std::min(found.latest, -fromEnd.earliest);
    if (tasks[i].earliestEnd() <= tasks[i].latest) continue;
    if (tasks[i].isIn()) return false;
    tasks[i].presence = Presence::kOut;
  }
  return true;
}

inline bool same(const Task &a, const Task &b) {
  return a.presence == b.presence && (a.isOut() || (a.earliest == b.earliest && a.latest == b.latest));
}

inline bool filterNaively(Tasks &tasks) {
  for (;;) {
    const Tasks before = tasks;
    if (!round(tasks)) return false;
    if (std::ranges::equal(before, tasks, same)) return true;
  }
}

}  // namespace koru::scheduling::naive
