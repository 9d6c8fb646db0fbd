// SPDX-License-Identifier: MIT
// The energetic checks of a sweep; energetic reasoning after Erschler, Lopez and Thuriot (1991), on the windows of the
// tasks themselves.
//
// Each window takes two passes over the tasks that may move. Their bounds are noted before the first, with the energy
// of the profile up to their latest start and earliest end, so that a pass asks no variable and searches nothing. Notes
// are renewed when a use was narrowed and the change may have reached them (Resource::afterNarrowing). Deliberate: the
// terms of a window's energy are 32-bit products, whose wrapping decides what is found for huge tasks.
#include "constraints/global/cumulative_windows.h"

#include <new>

#include "core/queue.h"

namespace koru::cumulative {

namespace {

struct Check {
  Time a;
  Time b;
  Energy toA;  // of the profile
  Energy toB;
  Energy available;  // beside compulsory parts
  Energy enclosed;   // that the tasks need of it, wherever they start
};

// What a task needs of the window. Deliberate: computed once, while everything else is read again after a narrowing,
// so that both bounds of the task follow from the same figures.
struct Share {
  Time least;
  Energy slack;
  Energy early;
  Energy late;
  Time part;  // of the compulsory part
};

Time overlap(Time from, Time to, Time a, Time b) { return std::max(std::min(to, b) - std::max(from, a), Time{0}); }

// ----- notes

Candidate note(const Resource &r, int i) {
  const Task task = r.tasks[i];
  const Time free = std::min(task.dmin(), task.lst() - task.est());
  return {.est = task.est(),
          .lst = task.lst(),
          .ect = task.ect(),
          .leastEnd = task.leastEnd(),
          .lct = task.lct(),
          .earlyEnd = task.est() + free,
          .lateStart = task.leastEnd() - free,
          .windowMin = r.earliestStart(i),
          .windowMax = r.latestEnd(i),
          .reach = task.est(),
          .energyToLst = r.notes.profile.energyTo(task.lst()),
          .energyToEct = r.notes.profile.energyTo(task.ect()),
          .dmin = task.duration->min,
          .use = task.umin(),
          .useMax = task.use->max,
          .task = i,
          .position = 0};
}

// Notes the candidates from a position on, those that lie outside the range left out. The reach covers the other tasks
// too: a pass ends at the first of all.
void noteFrom(Resource &r, int position) {
  Notes &notes = r.notes;
  notes.count = 0;
  notes.from = position;
  Time reach = kIntMin;
  for (int k = position; k < r.tasks.n && reach < notes.range.to; ++k) {
    const int i = r.order[k].task;
    const Task task = r.tasks[i];
    reach = std::max(reach, task.est());
    if (task.isFixed() || !task.demands() || task.lct() <= notes.range.from) continue;
    Candidate *candidate = new (&notes.candidates[notes.count++]) Candidate(note(r, i));  // made in its place
    candidate->reach = reach;
    candidate->position = k;
  }
}

void readProfile(const Resource &r, Check &c) {
  c.toA = r.notes.profile.energyTo(c.a);
  c.toB = r.notes.profile.energyTo(c.b);
}

// ----- rules

bool addEnclosed(const Resource &r, Check &c) {
  for (int k = 0; k < r.notes.count && r.notes.candidates[k].reach < c.b; ++k) {
    const Candidate &t = r.notes.candidates[k];
    if (t.leastEnd <= c.a) continue;
    const Time least = std::min(overlap(t.est, t.earlyEnd, c.a, c.b), overlap(t.lateStart, t.leastEnd, c.a, c.b));
    c.enclosed = wrapAdd64(c.enclosed, wrap(least * t.use));
    if (wrapSub64(c.available, c.enclosed) < 0) return false;
  }
  return true;
}

Share shareOf(const Check &c, const Candidate &t) {
  const Time left = overlap(t.est, t.earlyEnd, c.a, c.b);
  const Time right = overlap(t.lateStart, t.leastEnd, c.a, c.b);
  const Time least = std::min(left, right);
  return {least, wrapAdd64(wrapSub64(c.available, c.enclosed), least * t.use), left * t.use, right * t.use,
          overlap(t.lst, t.ect, c.a, c.b)};
}

// The quotient energy / divisor is an int and at least `wanted`: known without a division. Lengths of time stay below
// 2^33 and divisors below 2^31.
bool yields(Energy energy, Time divisor, Time wanted) {
  return energy >= 0 && energy <= kIntMax &&
         static_cast<std::uint64_t>(wanted) * static_cast<std::uint64_t>(divisor) <= static_cast<std::uint64_t>(energy);
}

// The quotient energy / divisor is an int and at most `most`: likewise.
bool staysWithin(Energy energy, Time divisor, Time most) {
  return energy >= 0 && energy <= kIntMax && most >= 0 &&
         static_cast<std::uint64_t>(energy) <
             static_cast<std::uint64_t>(most + 1) * static_cast<std::uint64_t>(divisor);
}

bool useFits(const Check &c, const Candidate &t, const Share &share) {
  if (c.a > t.est || t.leastEnd > c.b || share.least == 0) return true;
  return yields(share.slack, share.least, t.useMax) || t.useMax <= quotient(share.slack, share.least);
}

// Where another task may end next, at or after t, within [a, b]; t when none does.
Time nextPoint(const Resource &r, int i, Time a, Time t, Time b) {
  Time best = kFar;
  for (int j = 0; j < r.tasks.n; ++j) {
    const Task task = r.tasks[j];
    if (j == i || !task.demands()) continue;
    const Time ect = task.ect();
    const Time latest = task.est() + task.dmax();
    if (ect != latest && latest >= t && ect <= b) return t;
    if (ect >= std::max(t, a) && ect <= b) best = std::min(best, ect);
  }
  return best < kFar ? best : t;
}

// The last latest start of another task at or before t, within [a, b]; t when there is none.
Time prevPoint(const Resource &r, int i, Time a, Time t, Time b) {
  Time best = -kFar;
  for (int j = 0; j < r.tasks.n; ++j) {
    const Task task = r.tasks[j];
    if (j == i || !task.demands()) continue;
    if (task.lst() >= a && task.lst() <= std::min(t, b)) best = std::max(best, task.lst());
  }
  return best > -kFar ? best : t;
}

bool raiseStart(const Resource &r, const Check &c, Candidate &t, Time bound) {
  if (t.windowMin >= bound) return true;
  if (!r.startNoEarlier(t.task, std::max(nextPoint(r, t.task, c.a, bound, c.b), bound))) return false;
  t.windowMin = r.earliestStart(t.task);
  return true;
}

// `before`: where to look for the point from which on the task cannot run.
bool lowerEnd(const Resource &r, const Check &c, Candidate &t, Time bound, Time before) {
  if (t.windowMax <= bound) return true;
  if (!r.endNoLater(t.task, std::min(prevPoint(r, t.task, c.a, before, c.b), bound))) return false;
  t.windowMax = r.latestEnd(t.task);
  return true;
}

// Deliberate: an earlier end is looked for before the end as late as can be, not before the bound; hosts see where it
// lands.
bool boundByShare(const Resource &r, const Check &c, Candidate &t, const Share &share) {
  if (share.slack < share.early && !raiseStart(r, c, t, c.b - share.part - quotient(share.slack, t.use))) return false;
  if (share.slack >= share.late) return true;
  return lowerEnd(r, c, t, c.a + share.part + quotient(share.slack, t.use), t.leastEnd);
}

// Placed late, the task must fit into what compulsory parts leave up to b;
bool boundEnd(const Resource &r, const Check &c, Candidate &t) {
  if (t.lst >= c.b) return true;
  const Time from = std::max(c.a, t.lst);
  const Time part = overlap(from, t.ect, from, c.b);
  const Energy free = r.freeEnergy(from, c.b, t.lst > c.a ? t.energyToLst : c.toA, c.toB);
  if (yields(free, t.use, c.b - from - part)) return true;
  const Time bound = quotient(free, t.use) + part + from;
  return bound >= c.b || lowerEnd(r, c, t, bound, bound);
}

// placed early, into what they leave from a on.
bool boundStart(const Resource &r, const Check &c, Candidate &t) {
  if (t.ect <= c.a) return true;
  const Time to = std::min(c.b, t.ect);
  const Time part = overlap(t.lst, to, c.a, to);
  const Energy free = r.freeEnergy(c.a, to, c.toA, t.ect < c.b ? t.energyToEct : c.toB);
  if (yields(free, t.use, to - part - c.a)) return true;
  const Time bound = to - quotient(free, t.use) - part;
  return bound <= c.a || raiseStart(r, c, t, bound);
}

bool boundWindow(const Resource &r, const Check &c, Candidate &t, const Share &share) {
  return boundByShare(r, c, t, share) && boundEnd(r, c, t) && boundStart(r, c, t) &&
         t.windowMax - t.windowMin >= t.dmin;
}

// Narrows the use of the k-th candidate. When that may have changed other tasks, its window is bound here as well, and
// only the candidates behind it are noted anew.
bool lowerUse(Resource &r, Check &c, int k, const Share &share) {
  const Candidate &t = r.notes.candidates[k];
  const int i = t.task;
  const int next = t.position + 1;
  if (!narrowMax64(r.tasks[i].use, quotient(share.slack, share.least))) return false;
  if (!r.afterNarrowing()) return boundWindow(r, c, r.notes.candidates[k], share);
  readProfile(r, c);
  Candidate now = note(r, i);
  noteFrom(r, next);
  return boundWindow(r, c, now, share);
}

bool boundTasks(Resource &r, Check &c) {
  for (int k = 0; k < r.notes.count && r.notes.candidates[k].reach < c.b; ++k) {
    Candidate &t = r.notes.candidates[k];
    if (t.lct <= c.a) continue;
    const Share share = shareOf(c, t);
    if (useFits(c, t, share)) {
      if (!boundWindow(r, c, t, share)) return false;
      continue;
    }
    const int position = t.position;
    if (!lowerUse(r, c, k, share)) return false;
    if (r.notes.from > position) k = -1;
  }
  return true;
}

bool checkWindow(Resource &r, Time a, Time b, Time &least) {
  if (mustEnd()) return false;
  if (r.notes.from > 0) noteFrom(r, 0);
  Check c{a, b, 0, 0, 0, 0};
  readProfile(r, c);
  c.available = r.freeEnergy(a, b, c.toA, c.toB);
  if (!addEnclosed(r, c)) return false;
  const Energy all = wrapAdd64(wrapAdd64(wrapSub64(c.toB, c.toA), b - a - 1), c.enclosed);
  if (!staysWithin(all, b - a, least)) least = std::max(least, quotient(all, b - a));
  return boundTasks(r, c);
}

}  // namespace

bool checkWindows(Resource &r, Time a, Time b, Time &least) {
  noteFrom(r, 0);
  Time previousA = kIntMin;
  Time previousB = kIntMin;
  for (int k = 0; k < r.tasks.n; ++k) {
    const Task task = r.tasks[r.order[k].task];
    const Time from = task.est();
    const Time to = task.leastEnd();
    if (!qualifies(task, a, b)) continue;
    if ((from != previousA || to != previousB) && !checkWindow(r, from, to, least)) return false;
    previousA = from;
    previousB = to;
  }
  return true;
}

}  // namespace koru::cumulative
