// SPDX-License-Identifier: MIT
// cs_Cumulative: the tasks that run at any instant use no more than the capacity together.
// Consistency: profile of compulsory parts, energies beside them and in the windows of tasks; docs/cumulative.md.
// Cost: per event a sweep.  State: a window per task, trailed.
// Wakes: starts when a bound moves, durations and uses when the minimum is raised, the capacity when the maximum is
// lowered, each when bound; four constraints under one site.
// Deliberate: the energetic rules jump to the next point at which something may change, and may so refuse a schedule
// that is feasible; the recheck aborts when a use has been left less than nothing. Hosts see both, in their trees.
// Deliberate: a use variable that stands for other roles as well is narrowed like any other, since a rule knows roles,
// not variables.
#include "constraints/global/cumulative.h"

#include <algorithm>
#include <cstdlib>
#include <functional>

#include "constraints/global/cumulative_sweep.h"
#include "core/shared_record.h"

namespace koru::cumulative {

namespace {

// The unit dies with the last constraint that does not hang on it. Those on uses and capacity may, and hold no share.
struct OnTasks {
  SharedRecord<Resource> resource;
  PrivateVariables unit;
};
struct OnStarts : OnTasks {};
struct OnDurations : OnTasks {};
struct OnUses {
  SharedRecord<Resource> resource;
};
struct OnCapacity : OnUses {};

// ----- rules

bool canRun(const Task &task) { return task.use->max >= 1 && task.dmax() >= 1; }

bool capUse(const Resource &r, const Task &task) { return narrowMax(task.use, r.capacity->max); }

// No time for a task that needs more than there is.
bool refuseTooLarge(const Resource &r, const Task &task) {
  return task.umin() <= r.capacity->max || narrowMax(task.duration, 0);
}

bool raiseCapacity(const Resource &r, std::int64_t height) { return narrowMin64(r.capacity, height); }

// The profile where the compulsory part of a task meets that of task i.
class PartCheck {
 public:
  PartCheck(Resource &r, int i) : r_(r), task_(r.tasks[i]) {
    r_.notes.coverProfile(r_.tasks, {task_.lst(), task_.ect()});
    readHeight();
  }

  bool run() {
    const int before = r_.capacity->min;
    if (!raiseCapacity(r_, height_)) return false;
    if (r_.capacity->min != before) renew();
    for (int j = 0; j < r_.tasks.n; ++j)
      if (!boundUse(r_.tasks[j])) return false;
    return true;
  }

 private:
  void readHeight() { height_ = r_.notes.profile.height(task_.lst(), task_.ect()); }
  void renew() {
    if (r_.afterNarrowing()) readHeight();
  }

  // Task j has what the capacity leaves beside the others. Its own part of the profile is no higher than the whole.
  bool boundUse(const Task &task) {
    const Time from = std::max(task_.lst(), task.lst());
    const Time to = std::min(task_.ect(), task.ect());
    if (from >= to) return true;
    const std::int64_t capacity = r_.capacity->max;
    const std::int64_t range = std::int64_t{task.use->max} - task.umin();
    if (range <= capacity - height_) return true;
    const std::int64_t slack = capacity - r_.notes.profile.height(from, to);
    if (range <= slack) return true;
    if (!narrowMax64(task.use, task.umin() + slack)) return false;
    renew();
    return true;
  }

  Resource &r_;
  Task task_;
  std::int64_t height_ = 0;
};

bool checkPart(Resource &r, int i) {
  const Task task = r.tasks[i];
  return !task.hasCompulsoryPart() || task.umin() < 1 || PartCheck(r, i).run();
}

bool checkAndSweep(Resource &r, int i) { return checkPart(r, i) && sweep(r, r.tasks[i].est(), r.tasks[i].lct()); }

struct Horizon {
  Time from = kIntMax;
  Time to = std::int64_t{kIntMin} * 2;

  void include(const Task &task) {
    from = std::min(from, task.est());
    to = std::max(to, task.lct());
  }
};

bool capAll(const Resource &r, Horizon &horizon) {
  for (int i = 0; i < r.tasks.n; ++i) {
    const Task task = r.tasks[i];
    if (task.dmin() > 0 && !capUse(r, task)) return false;
    if (!refuseTooLarge(r, task)) return false;
    horizon.include(task);
  }
  return true;
}

// Deliberate: aborts when nothing is left for a task although the whole profile was found to fit. That takes a change
// made by this very loop: a variable in several roles, or uses that may be negative.
bool boundUses(Resource &r) {
  for (int i = 0; i < r.tasks.n; ++i) {
    const Task task = r.tasks[i];
    if (!task.hasCompulsoryPart() || !isFree(task.use) || task.use->max < 1) continue;
    const std::int64_t slack = r.capacity->max - r.notes.profile.height(task.lst(), task.ect());
    if (slack < 0) std::abort();
    const int before = task.use->max;
    if (!narrowMax64(task.use, task.umin() + slack)) return false;
    if (task.use->max != before) r.afterNarrowing();
  }
  return true;
}

bool recheckAndSweep(Resource &r) {
  Horizon horizon;
  if (!capAll(r, horizon)) return false;
  r.notes.coverProfile(r.tasks, {-kFar, kFar});
  return r.notes.profile.height(horizon.from, horizon.to) <= r.capacity->max && boundUses(r) &&
         sweep(r, horizon.from, horizon.to);
}

// ----- handlers

bool startMoved(OnStarts &c, const Event &e) {
  Resource &r = *c.resource;
  return !canRun(r.tasks[e.index]) || checkAndSweep(r, e.index);
}

bool durationRaised(OnDurations &c, const Event &e) {
  Resource &r = *c.resource;
  const Task task = r.tasks[e.index];
  if (!canRun(task)) return true;
  if (task.dmin() > 0 && (!capUse(r, task) || !raiseCapacity(r, task.umin()))) return false;
  return checkAndSweep(r, e.index);
}

bool useRaised(OnUses &c, const Event &e) {
  Resource &r = *c.resource;
  const Task task = r.tasks[e.index];
  const int use = task.umin();
  if (!canRun(task)) return true;
  if (use > 0 && task.dmin() > 0 && !raiseCapacity(r, use)) return false;
  if (use > 0 && use > r.capacity->max) return narrowMax(task.duration, 0);
  return checkAndSweep(r, e.index);
}

bool capacityLowered(OnCapacity &c, const Event &) { return recheckAndSweep(*c.resource); }

constexpr auto kStartTable = handlers<OnStarts>({.newMin = on<startMoved>,
                                                 .newMax = on<startMoved>,
                                                 .minBound = on<startMoved>,
                                                 .maxBound = on<startMoved>,
                                                 .bound = on<startMoved>});
constexpr auto kDurationTable =
    handlers<OnDurations>({.newMin = on<durationRaised>, .minBound = on<durationRaised>, .bound = on<durationRaised>});
constexpr auto kUseTable =
    handlers<OnUses>({.newMin = on<useRaised>, .minBound = on<useRaised>, .bound = on<useRaised>});
constexpr auto kCapacityTable = handlers<OnCapacity>(
    {.newMax = on<capacityLowered>, .maxBound = on<capacityLowered>, .bound = on<capacityLowered>});

// ----- posting

// Before anything is attached. Deliberate: no task is too early for its use to count, only too short, for
// all of them run at some time.
bool capAtPosting(const Resource &r) {
  int greatest = kIntMin;
  for (int i = 0; i < r.tasks.n; ++i) {
    const Task task = r.tasks[i];
    if (task.dmin() > 0) greatest = std::max(greatest, task.umin());
    if (task.dmin() > 0 && !capUse(r, task)) return false;
    if (!refuseTooLarge(r, task)) return false;
  }
  return raiseCapacity(r, greatest);
}

// Whether narrowing a use or the capacity leaves everything else as it is.
bool findDisjoint(Resource &r) {
  const int n = r.tasks.n;
  const Buffer<CSint *> narrowed(n);
  if (!narrowed) return false;
  CSint **end = std::copy(r.tasks.uses, r.tasks.uses + n, narrowed.get());
  std::sort(narrowed.get(), end, std::less<>());
  const auto stands = [&](CSint *v) { return std::binary_search(narrowed.get(), end, v, std::less<>()); };
  r.rolesDisjoint = !stands(r.capacity);
  for (int i = 0; i < n && r.rolesDisjoint; ++i) {
    for (CSint *v : {r.tasks.starts[i], r.tasks.durations[i]})
      if (v == r.capacity || stands(v)) r.rolesDisjoint = false;
  }
  return true;
}

bool allocateState(Resource &r) {
  const int n = r.tasks.n;
  r.windows = PrivateVariables(n);
  if (!r.windows) return false;
  r.order = Buffer<Rank>(n);
  if (!r.order) return false;
  r.notes.profile = Profile(n);
  if (!r.notes.profile) return false;
  r.notes.candidates = Buffer<Candidate>(n);
  if (!r.notes.candidates) return false;
  for (int i = 0; i < n; ++i) {
    const Task task = r.tasks[i];
    r.order[i] = {0, 0, i};
    r.windows.init(i, task.start->min, clampToInt(std::max(task.est(), task.lct())));
  }
  return true;
}

void attachAll(Posting &posting, const SharedRecord<Resource> &resource, const PrivateVariables &unit) {
  const Resource &r = *resource;
  auto onStarts = posting.add(kStartTable, OnStarts{{resource, unit}});
  auto onDurations = posting.add(kDurationTable, OnDurations{{resource, unit}});
  auto onUses = posting.add(kUseTable, OnUses{resource});
  for (int i = 0; i < r.tasks.n; ++i) {
    onStarts.attach(r.tasks.starts[i], i);
    onDurations.attach(r.tasks.durations[i], i);
    onUses.attach(r.tasks.uses[i], i);
  }
  auto onCapacity = posting.add(kCapacityTable, OnCapacity{{resource}});
  onCapacity.attach(r.capacity);
}

// The capacity holds the parts that stand already.
bool raiseToProfile(Resource &r, const Horizon &horizon) {
  r.notes.coverProfile(r.tasks, {-kFar, kFar});
  return raiseCapacity(r, r.notes.profile.height(horizon.from, horizon.to));
}

}  // namespace

bool post(Posting &posting, const Tasks &tasks, CSint *capacity, Unit unit) {
  Resource data;
  data.tasks = tasks;
  data.capacity = capacity;
  data.ownUses = std::move(unit.uses);
  if (!posting || !capAtPosting(data)) return false;
  Horizon horizon;
  for (int i = 0; i < tasks.n; ++i) horizon.include(tasks[i]);
  if (!allocateState(data)) return false;
  // A unit is bound, and nothing can change with it.
  data.rolesDisjoint = static_cast<bool>(unit.variable);
  if (!data.rolesDisjoint && !findDisjoint(data)) return false;
  const SharedRecord<Resource> resource(std::move(data));
  if (!resource || !raiseToProfile(*resource, horizon)) return false;
  attachAll(posting, resource, unit.variable);
  return posting && recheckAndSweep(*resource);
}

// Deliberate: the site is made for no task as well, since the host's locator is asked once per call.
static bool postArrays(const Poster &poster, const Tasks &tasks, CSint *capacity) {
  Posting posting{poster};
  if (tasks.n < 1) return posting.holdsOfNothing();
  if (!posting || capacity == nullptr) return false;
  for (CSint **array : {tasks.starts, tasks.durations, tasks.uses})
    if (array == nullptr || !allPresent(array, tasks.n)) return false;
  return post(posting, tasks, capacity, {});
}

}  // namespace koru::cumulative

using koru::door;
using koru::leftOut;
using namespace koru::cumulative;

bool cs_Cumulative(CSint **starts, CSint **durations, CSint **uses, int n, CSint *capacity) {
  return leftOut("cs_Cumulative") || door(postArrays("cs_Cumulative", {starts, durations, uses, n}, capacity));
}
