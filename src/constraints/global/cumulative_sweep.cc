// SPDX-License-Identifier: MIT
// The sweep: sort the tasks, bring their windows up to date, tighten these by the energy left beside compulsory parts
// and by that left in the window of each task, raise the capacity, and write the windows back.
// Cost: O(n log n) and two passes over all tasks for each window, O(n^2).
// Deliberate: the keys of the sort are 32-bit products; for huge tasks they wrap, which changes the order of work
// alone. Deliberate: one of three write-backs per task and sweep; what is left is done when the change comes round.
#include "constraints/global/cumulative_sweep.h"

#include "constraints/global/cumulative_windows.h"

namespace koru::cumulative {

namespace {

// ----- order

// Of tasks with the same earliest start, the one with more energy outside its compulsory part comes first.
int outsideOf(const Task &task) { return wrap(std::min(task.dmin(), task.lst() - task.est()) * task.umin()); }

// By insertion: stable, and linear for an order that hardly changes from sweep to sweep. The keys of a task stay in
// registers: to copy a record that has just been written in parts takes as long as a mispredicted jump.
void sortOrder(Resource &r) {
  for (int k = 0; k < r.tasks.n; ++k) {
    const int i = r.order[k].task;
    const Task task = r.tasks[i];
    const int est = task.start->min;
    const int outside = outsideOf(task);
    const auto belongsBefore = [=](const Rank &q) { return est != q.est ? est < q.est : outside > q.outside; };
    int place = k;
    for (; place > 0 && belongsBefore(r.order[place - 1]); --place) r.order[place] = r.order[place - 1];
    Rank &rank = r.order[place];
    rank.est = est;
    rank.outside = outside;
    rank.task = i;
  }
}

// ----- windows

bool refreshWindows(const Resource &r) {
  for (int i = 0; i < r.tasks.n; ++i) {
    const Task task = r.tasks[i];
    if (!r.startNoEarlier(i, task.est()) || !r.endNoLater(i, task.lct())) return false;
  }
  return true;
}

bool windowHolds(const Resource &r, int i) { return r.latestEnd(i) - r.earliestStart(i) >= r.tasks[i].dmin(); }

// Deliberate: only the first that applies: its event brings the next sweep.
bool writeBack(const Resource &r, int i) {
  const Task task = r.tasks[i];
  if (task.est() < r.earliestStart(i)) return narrowMin64(task.start, r.earliestStart(i));
  const Time end = r.latestEnd(i);
  if (task.leastEnd() > end) return narrowMax64(task.start, end - task.dmin());
  return narrowMax64(task.duration, end - task.est());
}

// ----- beside compulsory parts

Energy freeEnergy(const Resource &r, Time a, Time b) {
  return r.freeEnergy(a, b, r.notes.profile.energyTo(a), r.notes.profile.energyTo(b));
}

// A task that starts at its latest must have room before its compulsory part, or start later;
bool boundBefore(const Resource &r, int i, const Task &task) {
  const Time use = task.umin();
  const Energy free = freeEnergy(r, task.est(), task.lst());
  return free >= (task.lst() - task.est()) * use || r.startNoEarlier(i, task.lst() - quotient(free, use));
}

// and in [from, to) after it, or end earlier.
bool boundAfter(const Resource &r, int i, const Task &task, Time from, Time to) {
  const Time use = task.umin();
  const Energy free = freeEnergy(r, from, to);
  return free >= (to - from) * use || r.endNoLater(i, from + quotient(free, use));
}

bool mayMoveAroundPart(const Task &task) { return task.hasCompulsoryPart() && !task.isFixed() && task.demands(); }

bool boundBesideParts(const Resource &r) {
  for (int i = 0; i < r.tasks.n; ++i) {
    const Task task = r.tasks[i];
    if (!mayMoveAroundPart(task)) continue;
    // GCOVR_EXCL_BR_START: neither fails, since a task keeps the place of its compulsory part
    if (!boundBefore(r, i, task) || !boundAfter(r, i, task, task.ect(), task.leastEnd())) return false;
    if (task.leastEnd() < task.lct() &&
        (!boundAfter(r, i, task, task.ect(), task.lct()) || !boundAfter(r, i, task, task.leastEnd(), task.lct())))
      return false;  // GCOVR_EXCL_LINE
    // GCOVR_EXCL_BR_STOP
    if (!windowHolds(r, i)) return false;
  }
  return true;
}

// The time that anything will be asked about: far less than all of it when most tasks are fixed.
Range rangeOfInterest(const Resource &r, Time a, Time b) {
  Range range;
  for (int i = 0; i < r.tasks.n; ++i) {
    const Task task = r.tasks[i];
    if (qualifies(task, a, b)) range.include(task.est(), task.leastEnd());
    if (mayMoveAroundPart(task)) range.include(task.est(), task.lct());
  }
  return range;
}

}  // namespace

bool sweep(Resource &r, Time a, Time b) {
  Time least = r.capacity->min;
  sortOrder(r);
  if (!refreshWindows(r)) return false;
  r.notes.coverProfile(r.tasks, rangeOfInterest(r, a, b));
  if (!boundBesideParts(r) || !checkWindows(r, a, b, least)) return false;
  if (!narrowMin64(r.capacity, least)) return false;
  for (int i = 0; i < r.tasks.n; ++i)
    if (!writeBack(r, i)) return false;
  return true;
}

}  // namespace koru::cumulative
