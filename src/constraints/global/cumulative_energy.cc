// SPDX-License-Identifier: MIT
#include "constraints/global/cumulative_energy.h"

#include <algorithm>

namespace koru::cumulative {

// The parts of the window that the first counting task splits off are looked at alone; without a split all counting
// tasks cover the whole window and their uses add up.
std::int64_t profile(const Resource &r, Time a, Time b) {
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

Energy compulsoryEnergy(const Resource &r, Time a, Time b) {
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

Energy freeEnergy(const Resource &r, Time a, Time b) {
  if (a >= b) return 0;
  return wrapSub64(wrapMul64(b - a, r.capacity->max), compulsoryEnergy(r, a, b));
}

static Time freeTime(const Task &task) { return task.lst() >= task.ect() ? task.dmin() : task.lst() - task.est(); }

static bool mayLeave(const Task &task, Time a, Time b) { return a > task.est() || task.leastEnd() > b; }

Time leftOverlap(const Task &task, Time a, Time b) {
  if (b <= task.est() || task.ect() <= a) return 0;
  if (!mayLeave(task, a, b)) return freeTime(task);
  return std::max(std::min({task.ect(), b, task.lst()}) - std::max(a, task.est()), Time{0});
}

Time rightOverlap(const Task &task, Time a, Time b) {
  if (b <= task.lst() || task.leastEnd() <= a) return 0;
  if (!mayLeave(task, a, b)) return freeTime(task);
  return std::max(std::min(b, task.leastEnd()) - std::max({task.lst(), a, task.ect()}), Time{0});
}

Time minOverlap(const Task &task, Time a, Time b) {
  return std::min(std::max(leftOverlap(task, a, b), Time{0}), std::max(rightOverlap(task, a, b), Time{0}));
}

Time nextPoint(const Resource &r, int i, Time a, Time t, Time b) {
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

Time prevPoint(const Resource &r, int i, Time a, Time t, Time b) {
  Time best = a - 1;
  for (int j = 0; j < r.n; ++j) {
    const Task task = r.task(j);
    if (j == i || !task.demands()) continue;
    if (task.lst() >= a && task.lst() <= std::min(t, b)) best = std::max(best, task.lst());
  }
  return best >= a ? best : t;
}

}  // namespace koru::cumulative
