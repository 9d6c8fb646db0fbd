// SPDX-License-Identifier: MIT
// cs_Reservoir: a level begins at `start`; event i, if it is there, adds changes[i] to it at times[i]. At no time,
// before all events included, is the level below `low` or above `high`. Consistency: bounds of one variable at a time,
// against the greatest level that the others may make, and the least (after Laborie, Algorithms for propagating
// resource constraints in AI planning and scheduling, 2003). Complete assignments are told exactly. Cost: a run of O(n
// log n) and of O(n) for each event, until it finds nothing.  State: none. Wakes: when a bound of any variable moves.
#include <algorithm>

#include "constraints/scheduling/tasks.h"
#include "koru_extras.h"

namespace koru::scheduling {

// From a time on, a level; while they are gathered, a change.
struct Step {
  Time time;
  Time level;
};

struct Reservoir : Deferred {
  Buffer<CSint *> times;
  Buffer<CSint *> changes;
  Present present;
  int n;
  Time start;
  Time low;
  Time high;
  Buffer<Step> steps;
  int stepCount;

  std::int64_t size() const {
    return sizeOf(times.get(), n) + sizeOf(changes.get(), n) + sizeOf(present.variables.get(), n);
  }
};

// Levels are looked at from below; from above, all of them with the other sign.
struct Side {
  Reservoir &c;
  int sign;
  Time low;

  Time most(int i) const { return sign > 0 ? Time{c.changes[i]->max} : -Time{c.changes[i]->min}; }
  bool raise(int i, Time least) const {
    return sign > 0 ? narrowMin64(c.changes[i], least) : narrowMax64(c.changes[i], -least);
  }
  Time endOf(int k) const { return k + 1 < c.stepCount ? c.steps[k + 1].time : -ThetaTree::kNever; }
};

// ----- the greatest level that there may be

static int gather(const Side &side) {
  Reservoir &c = side.c;
  int count = 0;
  c.steps[count++] = {ThetaTree::kNever, side.sign * c.start};
  for (int i = 0; i < c.n; ++i) {
    const Presence presence = c.present.of(i);
    const Time most = side.most(i);
    if (presence == Presence::kOut || most == 0) continue;
    if (most > 0)
      c.steps[count++] = {c.times[i]->min, most};
    else if (presence == Presence::kIn)
      c.steps[count++] = {c.times[i]->max, most};
  }
  return count;
}

// Adds up what is gathered. False when there is too little at some time.
static bool addUp(const Side &side) {
  Reservoir &c = side.c;
  const int count = gather(side);
  std::sort(c.steps.get(), c.steps.get() + count, [](const Step &a, const Step &b) { return a.time < b.time; });
  int last = 0;
  for (int k = 1; k < count; ++k) {
    const Step step = c.steps[k];
    if (step.time == c.steps[last].time) {
      c.steps[last].level += step.level;
      continue;
    }
    if (c.steps[last].level < side.low) return false;
    c.steps[last + 1] = {step.time, c.steps[last].level + step.level};
    ++last;
  }
  c.stepCount = last + 1;
  return c.steps[last].level >= side.low;
}

// ----- one event

// From some time on it may be counted: where there would be too little without it, it is, and where it has happened.
static bool keepNeeded(const Side &side, int i) {
  const Reservoir &c = side.c;
  const Time most = side.most(i);
  const Time from = most > 0 ? c.times[i]->min : c.times[i]->max;
  Time least = INT64_MAX;
  Time needed = INT64_MAX;
  for (int k = c.stepCount - 1; k >= 0 && side.endOf(k) > from; --k) {
    const bool isNeeded = most > 0 && c.steps[k].level < side.low + most;
    if (isNeeded) needed = std::max(from, c.steps[k].time);
    if (isNeeded || side.endOf(k) > c.times[i]->max) least = std::min(least, c.steps[k].level);
  }
  if (needed != INT64_MAX && !(c.present.takeIn(i) && narrowMax64(c.times[i], needed))) return false;
  return c.present.of(i) != Presence::kIn || side.raise(i, side.low + most - least);
}

// While there is no room for it, it has not happened.
static bool keepBack(const Side &side, int i) {
  const Reservoir &c = side.c;
  const CSint *time = c.times[i];
  const bool isIn = c.present.of(i) == Presence::kIn;
  int k = c.stepCount - 1;
  while (k >= 0 && (c.steps[k].level + side.most(i) >= side.low || (isIn && c.steps[k].time >= time->max))) --k;
  if (k < 0 || side.endOf(k) <= time->min) return true;
  if (isIn) return narrowMin64(c.times[i], std::min<Time>(side.endOf(k), time->max));
  return side.endOf(k) <= time->max || c.present.leaveOut(i);
}

static bool follow(const Side &side) {
  if (!addUp(side)) return false;
  const Reservoir &c = side.c;
  for (int i = 0; i < c.n; ++i) {
    const Presence presence = c.present.of(i);
    if (presence == Presence::kOut) continue;
    if ((side.most(i) > 0 || presence == Presence::kIn) && !keepNeeded(side, i)) return false;
    if (side.most(i) < 0 && !keepBack(side, i)) return false;
  }
  return true;
}

static bool filter(Reservoir &c) { return follow({c, 1, c.low}) && follow({c, -1, -c.high}); }

constexpr auto kTable = deferred<toFixpoint<Reservoir, filter>>(Rank::kQuadratic, kBoundsMove);

struct Events {
  CSint **times;
  CSint **changes;
  CSint **present;
};

static bool post(const Poster &poster, const Events &given, int n, int start, int low, int high) {
  Reservoir record{{}, {}, {}, {}, n, start, low, high, {}, 0};
  record.times = copyVariables(given.times, n);
  if (!record.times) return false;
  record.changes = copyVariables(given.changes, n);
  if (!record.changes || !record.present.copy(given.present, n)) return false;
  Posting posting{poster};
  if (!posting || !make(record.steps, static_cast<unsigned>(n) + 1U)) return false;
  auto c = posting.add(kTable, std::move(record));
  for (int i = 0; posting && i < n; ++i) {
    c.attach(given.times[i], i, kBoundsMove);
    c.attach(given.changes[i], i, kBoundsMove);
    if (given.present != nullptr) c.attach(given.present[i], i, kBoundsMove);
  }
  return posting && runSoon(*c);
}

}  // namespace koru::scheduling

bool cs_Reservoir(CSint **times, CSint **changes, CSint **present, int n, int start, int low, int high) {
  return koru::leftOut("cs_Reservoir") ||
         koru::door(koru::scheduling::post("cs_Reservoir", {times, changes, present}, n, start, low, high));
}
