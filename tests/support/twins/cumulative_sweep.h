// SPDX-License-Identifier: MIT
// The sweep of the twin of cs_Cumulative: every quantity computed where it is used.
#pragma once

#include "core/narrow.h"
#include "support/twins/cumulative_energy.h"

namespace koru::test::twin_cumulative {

// Set where the library aborts, and when there is no end to be seen of bounds moving step by step. The twin then fails,
// and the library is not to be asked.
inline bool gaveUp = false;
inline std::int64_t sweepsLeft = INT64_MAX;

inline Time quotient(Energy energy, Time divisor) { return wrap(energy / divisor); }

// ----- windows

inline bool startNoEarlier(const Resource &r, int i, Time t) { return narrowMin64(r.windows[i], t); }
inline bool endNoLater(const Resource &r, int i, Time t) { return narrowMax64(r.windows[i], t); }

inline Time earliestStart(const Resource &r, int i) { return r.windows[i]->min; }

// A window that was made for an end beyond all ints and has not been narrowed since ends where its task may.
inline Time latestEnd(const Resource &r, int i) {
  const Time max = r.windows[i]->max;
  return max < kIntMax ? max : std::max(max, r.task(i).lct());
}

inline bool windowHolds(const Resource &r, int i) { return latestEnd(r, i) - earliestStart(r, i) >= r.task(i).dmin(); }

inline bool refreshWindows(const Resource &r) {
  for (int i = 0; i < r.n; ++i) {
    const Task task = r.task(i);
    if (!startNoEarlier(r, i, task.est()) || !endNoLater(r, i, task.lct())) return false;
  }
  return true;
}

// Deliberate: only the first that applies.
inline bool writeBack(const Resource &r, int i) {
  const Task task = r.task(i);
  if (task.est() < earliestStart(r, i)) return narrowMin64(task.start, earliestStart(r, i));
  const Time end = latestEnd(r, i);
  if (task.leastEnd() > end) return narrowMax64(task.start, end - task.dmin());
  return task.est() + task.dmax() <= end || narrowMax64(task.duration, end - task.est());
}

// ----- order

// Of tasks with the same earliest start, the one with more energy outside its compulsory part comes first.
inline int outsideEnergy(const Task &task) {
  return wrap(std::min(task.dmin(), task.lst() - task.est()) * task.umin());
}

inline bool belongsAfter(const Task &first, const Task &second) {
  if (first.est() != second.est()) return first.est() > second.est();
  return outsideEnergy(first) < outsideEnergy(second);
}

inline bool exchange(const Resource &r, int k) {
  if (!belongsAfter(r.task(r.order[k]), r.task(r.order[k + 1]))) return false;
  std::swap(r.order[k], r.order[k + 1]);
  return true;
}

inline bool passForward(const Resource &r) {
  bool exchanged = false;
  for (int k = 0; k + 1 < r.n; ++k) exchanged |= exchange(r, k);
  return exchanged;
}

inline bool passBackward(const Resource &r) {
  bool exchanged = false;
  for (int k = r.n - 2; k >= 0; --k) exchanged |= exchange(r, k);
  return exchanged;
}

inline void sortOrder(const Resource &r) {
  while (passForward(r) && passBackward(r)) {
  }
}

// ----- beside compulsory parts

// The task outside its compulsory part must fit into what other parts leave: before it, after it, and when it takes
// longest.
inline bool boundBesideParts(const Resource &r, int i, const Task &task) {
  const Time lst = task.lst();
  const Time ect = task.ect();
  const Time use = task.umin();
  const Energy outside = (lst - task.est()) * use;
  const Energy before = freeEnergy(r, task.est(), lst);
  if (before < outside && !startNoEarlier(r, i, lst - quotient(before, use))) return false;
  const Energy after = freeEnergy(r, ect, task.leastEnd());
  if (after < outside && !endNoLater(r, i, ect + quotient(after, use))) return false;
  if (task.leastEnd() >= task.lct()) return true;
  const Energy all = freeEnergy(r, ect, task.lct());
  if (all < (task.lct() - ect) * use && !endNoLater(r, i, ect + quotient(all, use))) return false;
  const Energy last = freeEnergy(r, task.leastEnd(), task.lct());
  return last >= (task.lct() - task.leastEnd()) * use || endNoLater(r, i, task.leastEnd() + quotient(last, use));
}

inline bool boundAllBesideParts(const Resource &r) {
  for (int i = 0; i < r.n; ++i) {
    const Task task = r.task(i);
    if (task.isFixed() || !task.demands() || !task.hasCompulsoryPart()) continue;
    if (!boundBesideParts(r, i, task) || !windowHolds(r, i)) return false;
  }
  return true;
}

// ----- energy of a time window

struct Check {
  Time a;
  Time b;
  Energy available = 0;  // beside compulsory parts
  Energy enclosed = 0;   // that the tasks need of it, wherever they start
};

// What the task needs of the window; the values of one task are computed once.
struct Share {
  Time left;
  Time right;
  Time least;
  Energy slack;
  Time part;
};

inline bool addEnclosed(const Resource &r, Check &c) {
  for (int k = 0; k < r.n && r.task(r.order[k]).est() < c.b; ++k) {
    const Task task = r.task(r.order[k]);
    if (task.leastEnd() <= c.a || task.isFixed() || !task.demands()) continue;
    c.enclosed = wrapAdd64(c.enclosed, wrap(minOverlap(task, c.a, c.b) * task.umin()));
    if (wrapSub64(c.available, c.enclosed) < 0) return false;
  }
  return true;
}

inline bool boundUse(const Check &c, const Task &task, const Share &share) {
  if (c.a > task.est() || task.leastEnd() > c.b || share.least <= 0) return true;
  const Time most = quotient(share.slack, share.least);
  return task.use->max <= most || narrowMax64(task.use, most);
}

inline bool boundByShare(const Resource &r, const Check &c, int i, const Share &share, Energy early, Energy late) {
  const Task task = r.task(i);
  if (share.slack < early) {
    const Time t = c.b - share.part - quotient(share.slack, task.umin());
    if (earliestStart(r, i) < t && !startNoEarlier(r, i, std::max(nextPoint(r, i, c.a, t, c.b), t))) return false;
  }
  if (share.slack < late) {
    const Time t = c.a + share.part + quotient(share.slack, task.umin());
    // Deliberate: the point before the end as late as can be, not before t.
    if (latestEnd(r, i) > t && !endNoLater(r, i, std::min(prevPoint(r, i, c.a, task.leastEnd(), c.b), t))) return false;
  }
  return true;
}

inline bool boundEnd(const Resource &r, const Check &c, int i, const Task &task) {
  if (task.lst() >= c.b) return true;
  const Time from = std::max(c.a, task.lst());
  const Time part = std::max(std::min(c.b, task.ect()) - from, Time{0});
  const Time t = quotient(freeEnergy(r, from, c.b), task.umin()) + part + from;
  return t >= c.b || latestEnd(r, i) <= t || endNoLater(r, i, std::min(prevPoint(r, i, c.a, t, c.b), t));
}

inline bool boundStart(const Resource &r, const Check &c, int i, const Task &task) {
  if (task.ect() <= c.a) return true;
  const Time to = std::min(c.b, task.ect());
  const Time part = std::max(to - std::max(c.a, task.lst()), Time{0});
  const Time t = to - quotient(freeEnergy(r, c.a, to), task.umin()) - part;
  return t <= c.a || earliestStart(r, i) >= t || startNoEarlier(r, i, std::max(nextPoint(r, i, c.a, t, c.b), t));
}

inline bool boundInWindow(const Resource &r, const Check &c, int i) {
  const Task task = r.task(i);
  const Time least = minOverlap(task, c.a, c.b);
  const Share share{leftOverlap(task, c.a, c.b), rightOverlap(task, c.a, c.b), least,
                    wrapAdd64(wrapSub64(c.available, c.enclosed), least * task.umin()),
                    std::max(std::min(c.b, task.ect()) - std::max(c.a, task.lst()), Time{0})};
  const Energy early = share.left * task.umin();
  const Energy late = share.right * task.umin();
  return boundUse(c, task, share) && boundByShare(r, c, i, share, early, late) && boundEnd(r, c, i, task) &&
         boundStart(r, c, i, task) && windowHolds(r, i);
}

// `least` is the capacity that the energies seen so far demand.
inline bool checkWindow(const Resource &r, Time a, Time b, Time &least) {
  Check c{a, b};
  c.available = freeEnergy(r, a, b);
  if (!addEnclosed(r, c)) return false;
  const Energy all = wrapAdd64(wrapAdd64(compulsoryEnergy(r, a, b), b - a - 1), c.enclosed);
  least = std::max(least, quotient(all, b - a));
  for (int k = 0; k < r.n && r.task(r.order[k]).est() < b; ++k) {
    const Task task = r.task(r.order[k]);
    if (task.lct() <= a || task.isFixed() || !task.demands()) continue;
    if (!boundInWindow(r, c, r.order[k])) return false;
  }
  return true;
}

inline bool checkWindows(const Resource &r, Time a, Time b, Time &least) {
  Time previousA = kIntMin;
  Time previousB = kIntMin;
  for (int k = 0; k < r.n; ++k) {
    const Task task = r.task(r.order[k]);
    const Time from = task.est();
    const Time to = task.leastEnd();
    if (to <= a || from >= b || !task.demands()) continue;
    if ((from != previousA || to != previousB) && !checkWindow(r, from, to, least)) return false;
    previousA = from;
    previousB = to;
  }
  return true;
}

inline bool sweep(const Resource &r, Time a, Time b) {
  if (--sweepsLeft < 0) gaveUp = true;
  if (gaveUp) return false;
  Time least = r.capacity->min;
  sortOrder(r);
  if (!refreshWindows(r) || !boundAllBesideParts(r) || !checkWindows(r, a, b, least)) return false;
  if (r.capacity->min < least && !narrowMin64(r.capacity, least)) return false;
  for (int i = 0; i < r.n; ++i)
    if (!writeBack(r, i)) return false;
  return true;
}

}  // namespace koru::test::twin_cumulative
