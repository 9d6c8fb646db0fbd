// SPDX-License-Identifier: MIT
// The measures of the twin of cs_Cumulative: each asks all tasks anew, the profile by splitting its window again and
// again. Slow, and near enough to the definitions to be checked by eye. The figures of a task are defined here once
// more: a twin that took the library's would share its faults.
#pragma once

#include <algorithm>

#include "core/alloc.h"
#include "core/int_math.h"
#include "core/private_variable.h"

namespace koru::test::twin_cumulative {

using Time = std::int64_t;
using Energy = std::int64_t;

// One task, with its bounds as they are at each question.
struct Task {
  CSint *start;
  CSint *duration;
  CSint *use;

  Time est() const { return start->min; }
  Time lst() const { return start->max; }
  Time dmin() const { return duration->min; }
  Time dmax() const { return duration->max; }
  int umin() const { return use->min; }
  Time ect() const { return est() + dmin(); }
  Time lct() const { return lst() + dmax(); }
  Time leastEnd() const { return lst() + dmin(); }  // of the task placed as late as it can be
  bool hasCompulsoryPart() const { return lst() < ect(); }
  bool isFixed() const { return isInstantiated(start); }
  bool demands() const { return dmin() >= 1 && umin() >= 1; }
};

// What the four constraints of one posting share.
struct Resource {
  CSint **starts;
  CSint **durations;
  CSint **uses;
  CSint *capacity;
  int n;
  PrivateVariables windows;  // per task: earliest start, latest end
  Buffer<int> order;
  bool jumps = true;  // off: bounds stop at what the energy says

  Task task(int i) const { return {starts[i], durations[i], uses[i]}; }
};

// The parts of the window that the first counting task splits off are looked at alone; without a split all counting
// tasks cover the whole window and their uses add up.
inline std::int64_t profile(const Resource &r, Time a, Time b) {
  std::int64_t height = 0;
  for (int i = 0; i < r.n; ++i) {
    const Task task = r.task(i);
    const Time from = task.lst();
    const Time to = task.ect();
    if (from >= to || to <= a || from >= b || task.umin() == 0) continue;
    if (from > a && to < b) return std::max({profile(r, from, to), profile(r, a, from), profile(r, to, b)});
    if (from > a) return std::max(profile(r, a, from), profile(r, from, b));
    if (to < b) return std::max(profile(r, a, to), profile(r, to, b));
    height += task.umin();
  }
  return height;
}

inline Energy compulsoryEnergy(const Resource &r, Time a, Time b) {
  Energy energy = 0;
  if (a >= b) return energy;
  for (int i = 0; i < r.n; ++i) {
    const Task task = r.task(i);
    const Time from = std::max(a, task.lst());
    const Time to = std::min(b, task.ect());
    if (task.hasCompulsoryPart() && from < to) energy = wrapAdd64(energy, (to - from) * task.umin());
  }
  return energy;
}

inline Energy freeEnergy(const Resource &r, Time a, Time b) {
  if (a >= b) return 0;
  return wrapSub64(wrapMul64(b - a, r.capacity->max), compulsoryEnergy(r, a, b));
}

inline Time freeTime(const Task &task) { return task.lst() >= task.ect() ? task.dmin() : task.lst() - task.est(); }

inline bool mayLeave(const Task &task, Time a, Time b) { return a > task.est() || task.leastEnd() > b; }

inline Time leftOverlap(const Task &task, Time a, Time b) {
  if (b <= task.est() || task.ect() <= a) return 0;
  if (!mayLeave(task, a, b)) return freeTime(task);
  return std::max(std::min({task.ect(), b, task.lst()}) - std::max(a, task.est()), Time{0});
}

inline Time rightOverlap(const Task &task, Time a, Time b) {
  if (b <= task.lst() || task.leastEnd() <= a) return 0;
  if (!mayLeave(task, a, b)) return freeTime(task);
  return std::max(std::min(b, task.leastEnd()) - std::max({task.lst(), a, task.ect()}), Time{0});
}

inline Time minOverlap(const Task &task, Time a, Time b) {
  return std::min(std::max(leftOverlap(task, a, b), Time{0}), std::max(rightOverlap(task, a, b), Time{0}));
}

inline Time nextPoint(const Resource &r, int i, Time a, Time t, Time b) {
  if (!r.jumps) return t;
  Time best = b + 1;
  for (int j = 0; j < r.n; ++j) {
    const Task task = r.task(j);
    if (j == i || !task.demands()) continue;
    const Time latest = task.est() + task.dmax();
    if (task.ect() != latest && latest >= t && task.ect() <= b) return t;
    if (task.ect() >= std::max(t, a) && task.ect() <= b) best = std::min(best, task.ect());
  }
  return best <= b ? best : t;
}

inline Time prevPoint(const Resource &r, int i, Time a, Time t, Time b) {
  if (!r.jumps) return t;
  Time best = a - 1;
  for (int j = 0; j < r.n; ++j) {
    const Task task = r.task(j);
    if (j == i || !task.demands()) continue;
    if (task.lst() >= a && task.lst() <= std::min(t, b)) best = std::max(best, task.lst());
  }
  return best >= a ? best : t;
}

}  // namespace koru::test::twin_cumulative
