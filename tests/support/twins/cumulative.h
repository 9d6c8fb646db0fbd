// SPDX-License-Identifier: MIT
// The twin of cs_Cumulative: the same rules in the same order, without anything that makes them fast.
#pragma once

#include "core/post.h"
#include "core/shared_record.h"
#include "support/twins/cumulative_sweep.h"

namespace koru::test::twin_cumulative {

struct OnTasks {
  SharedRecord<Resource> resource;
};
struct OnStarts : OnTasks {};
struct OnDurations : OnTasks {};
struct OnUses : OnTasks {};
struct OnCapacity : OnTasks {};

// ----- rules

inline bool canRun(const Task &task) { return task.use->max >= 1 && task.dmax() >= 1; }

inline bool capUse(const Resource &r, const Task &task) {
  return task.use->max <= r.capacity->max || narrowMax(task.use, r.capacity->max);
}

// No time for a task that needs more than there is.
inline bool refuseTooLarge(const Resource &r, const Task &task) {
  return task.umin() <= r.capacity->max || narrowMax(task.duration, 0);
}

inline bool raiseCapacity(const Resource &r, std::int64_t height) { return narrowMin64(r.capacity, height); }

// Task j beside what else is in the profile where its compulsory part meets that of task i.
inline bool boundUse(const Resource &r, int i, int j) {
  const Task task = r.task(j);
  const Time from = std::max(r.task(i).lst(), task.lst());
  const Time to = std::min(r.task(i).ect(), task.ect());
  if (from >= to) return true;
  return narrowMax64(task.use, task.umin() + std::int64_t{r.capacity->max} - profile(r, from, to));
}

inline bool checkPart(const Resource &r, int i) {
  const Task task = r.task(i);
  if (!task.hasCompulsoryPart() || task.umin() < 1) return true;
  const std::int64_t height = profile(r, task.lst(), task.ect());
  if (!raiseCapacity(r, height) || r.capacity->max < height) return false;
  for (int j = 0; j < r.n; ++j)
    if (!boundUse(r, i, j)) return false;
  return true;
}

inline bool checkAndSweep(const Resource &r, int i) {
  return checkPart(r, i) && sweep(r, r.task(i).est(), r.task(i).lct());
}

struct Horizon {
  Time from = kIntMax;
  Time to = std::int64_t{kIntMin} * 2;

  void include(const Task &task) {
    from = std::min(from, task.est());
    to = std::max(to, task.lct());
  }
};

inline bool capAll(const Resource &r, Horizon &horizon) {
  for (int i = 0; i < r.n; ++i) {
    const Task task = r.task(i);
    if (task.dmin() > 0 && !capUse(r, task)) return false;
    if (task.dmax() > 0 && !refuseTooLarge(r, task)) return false;
    horizon.include(task);
  }
  return true;
}

// Deliberate: aborts when nothing is left for a task although the whole profile was found to fit. That takes a change
// made by this very loop: a variable in several roles, or uses that may be negative.
inline bool boundUses(const Resource &r) {
  for (int i = 0; i < r.n; ++i) {
    const Task task = r.task(i);
    if (!task.hasCompulsoryPart() || task.use->count < 2 || task.use->max < 1) continue;
    const std::int64_t slack = r.capacity->max - profile(r, task.lst(), task.ect());
    if (slack < 0) gaveUp = true;
    if (gaveUp) return false;
    if (!narrowMax64(task.use, task.umin() + slack)) return false;
  }
  return true;
}

inline bool recheckAndSweep(const Resource &r) {
  Horizon horizon;
  if (!capAll(r, horizon) || profile(r, horizon.from, horizon.to) > r.capacity->max) return false;
  return boundUses(r) && sweep(r, horizon.from, horizon.to);
}

// ----- handlers

inline bool startMoved(OnStarts &c, const Event &e) {
  const Resource &r = *c.resource;
  return !canRun(r.task(e.index)) || checkAndSweep(r, e.index);
}

inline bool durationRaised(OnDurations &c, const Event &e) {
  const Resource &r = *c.resource;
  const Task task = r.task(e.index);
  if (!canRun(task)) return true;
  if (task.dmin() > 0 && (!capUse(r, task) || !raiseCapacity(r, task.umin()))) return false;
  return checkAndSweep(r, e.index);
}

inline bool useRaised(OnUses &c, const Event &e) {
  const Resource &r = *c.resource;
  const Task task = r.task(e.index);
  const int use = task.umin();
  if (!canRun(task)) return true;
  if (use > 0 && task.dmin() > 0 && !raiseCapacity(r, use)) return false;
  if (use > 0 && use > r.capacity->max) return narrowMax(task.duration, 0);
  return checkAndSweep(r, e.index);
}

inline bool capacityLowered(OnCapacity &c, const Event &) { return recheckAndSweep(*c.resource); }

inline constexpr auto kStartTable = handlers<OnStarts>({.newMin = on<startMoved>,
                                                        .newMax = on<startMoved>,
                                                        .minBound = on<startMoved>,
                                                        .maxBound = on<startMoved>,
                                                        .bound = on<startMoved>});
inline constexpr auto kDurationTable =
    handlers<OnDurations>({.newMin = on<durationRaised>, .minBound = on<durationRaised>, .bound = on<durationRaised>});
inline constexpr auto kUseTable =
    handlers<OnUses>({.newMin = on<useRaised>, .minBound = on<useRaised>, .bound = on<useRaised>});
inline constexpr auto kCapacityTable = handlers<OnCapacity>(
    {.newMax = on<capacityLowered>, .maxBound = on<capacityLowered>, .bound = on<capacityLowered>});

// ----- posting

// Before anything is attached. Deliberate: no task is too early for its use to count, only too short.
inline bool capAtPosting(const Resource &r) {
  int greatest = kIntMin;
  for (int i = 0; i < r.n; ++i) {
    const Task task = r.task(i);
    if (task.dmin() > 0) greatest = std::max(greatest, task.umin());
    if (task.dmin() > 0 && !capUse(r, task)) return false;
    if (!refuseTooLarge(r, task)) return false;
  }
  return raiseCapacity(r, greatest);
}

inline bool allocateState(Resource &r) {
  r.windows = PrivateVariables(r.n);
  if (!r.windows) return false;
  r.order = Buffer<int>(r.n);
  if (!r.order) return false;
  for (int i = 0; i < r.n; ++i) {
    const Task task = r.task(i);
    r.order[i] = i;
    r.windows.init(i, task.start->min, clampToInt(std::max(task.est(), task.lct())));
  }
  return true;
}

inline void attachAll(Posting &posting, const SharedRecord<Resource> &resource) {
  const Resource &r = *resource;
  auto onStarts = posting.add(kStartTable, OnStarts{{resource}});
  auto onDurations = posting.add(kDurationTable, OnDurations{{resource}});
  auto onUses = posting.add(kUseTable, OnUses{{resource}});
  for (int i = 0; i < r.n; ++i) {
    onStarts.attach(r.starts[i], i);
    onDurations.attach(r.durations[i], i);
    onUses.attach(r.uses[i], i);
  }
  auto onCapacity = posting.add(kCapacityTable, OnCapacity{{resource}});
  onCapacity.attach(r.capacity);
}

inline bool post(Posting &posting, CSint **starts, CSint **durations, CSint **uses, int n, CSint *capacity,
                 bool jumps) {
  Resource data{starts, durations, uses, capacity, n, {}, {}, jumps};
  if (!posting || !capAtPosting(data)) return false;
  Horizon horizon;
  for (int i = 0; i < n; ++i) horizon.include(data.task(i));
  if (!allocateState(data)) return false;
  const SharedRecord<Resource> resource(std::move(data));
  if (!resource || !raiseCapacity(*resource, profile(*resource, horizon.from, horizon.to))) return false;
  attachAll(posting, resource);
  return posting && recheckAndSweep(*resource);
}

inline bool post(CSint **starts, CSint **durations, CSint **uses, int n, CSint *capacity, bool jumps = true) {
  Posting posting{"cs_Cumulative"};
  return post(posting, starts, durations, uses, n, capacity, jumps);
}

struct Holder {};
inline constexpr auto kHolderTable = handlers<Holder>({});

// The disjunctive form: all uses are one variable fixed to 1, which is the capacity as well.
inline bool postDisjunctive(CSint **starts, CSint **durations, CSint **uses, int n, CSint *capacity) {
  Posting posting{"cs_Disjunctive"};
  auto holder = posting.add(kHolderTable, Holder{});
  holder.attach(starts[0]);
  return post(posting, starts, durations, uses, n, capacity, true);
}

}  // namespace koru::test::twin_cumulative
