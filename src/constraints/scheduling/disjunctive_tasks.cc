// SPDX-License-Identifier: MIT
// cs_DisjunctiveTasks: of any two tasks that are there and take time, one ends before the other one starts.
// Consistency: that of the rules of OneMachine to their common fixpoint, on the bounds of starts and on the least
// durations; a duration is no longer than what must come behind it leaves; a task that has no place is left out.
// Complete assignments are told exactly.
// Cost: a run of O(n log n) for each time that one rule has given another one work.  State: none.
// Wakes: when a bound of a start moves, a duration grows, a task has to be there.
// Deliberate: the start of a task that may be left out is not narrowed, as it then says nothing.
#include <algorithm>

#include "constraints/scheduling/tasks.h"
#include "koru_extras.h"

namespace koru::scheduling {

struct DisjunctiveTasks : Deferred {
  Buffer<CSint *> starts;
  Buffer<CSint *> durations;
  Present present;
  int n;
  OneMachine machine;
  Buffer<Time> ends;
};

static void readTasks(DisjunctiveTasks &c) {
  for (int i = 0; i < c.n; ++i) c.machine[i] = taskOf(c.starts[i], c.durations[i], c.present.of(i));
}

static bool writeTasks(const DisjunctiveTasks &c) {
  for (int i = 0; i < c.n; ++i) {
    const Task &task = c.machine[i];
    if (!keepStart(task, c.starts[i])) return false;
    if (task.isOut() && task.length > 0 && !c.present.leaveOut(i)) return false;
  }
  return true;
}

static bool allKept(const DisjunctiveTasks &c) {
  for (int i = 0; i < c.n; ++i)
    if (!isKept(c.machine[i], c.starts[i])) return false;
  return true;
}

// One that must come before another one ends by then, or takes no time at all.
static bool shorten(DisjunctiveTasks &c) {
  if (std::all_of(c.durations.get(), c.durations.get() + c.n, isBound)) return true;
  c.machine.findEnds(c.ends);
  for (int i = 0; i < c.n; ++i) {
    if (c.ends[i] == OneMachine::kNoEnd || c.present.of(i) != Presence::kIn) continue;
    if (!narrowMax64(c.durations[i], std::max<Time>(0, c.ends[i] - c.machine[i].earliest))) return false;
  }
  return true;
}

static bool filter(DisjunctiveTasks &c) {
  for (int i = 0; i < c.n; ++i)
    if (!narrowMin(c.durations[i], 0)) return false;
  do {
    readTasks(c);
    if (!c.machine.filter() || !writeTasks(c)) return false;
  } while (!allKept(c));
  return shorten(c);
}

constexpr auto kTable = deferred<filter>(Rank::kSorting, kBoundsMove);

static bool post(const Poster &poster, CSint **starts, CSint **durations, CSint **present, int n) {
  DisjunctiveTasks record{{}, {}, {}, {}, n, {}, {}};
  record.starts = copyVariables(starts, n);
  if (!record.starts) return false;
  record.durations = copyVariables(durations, n);
  if (!record.durations || !record.present.copy(present, n)) return false;
  Posting posting{poster};
  if (!posting) return false;
  if (n == 0) return true;
  record.machine = OneMachine(n);
  if (!record.machine || !make(record.ends, static_cast<unsigned>(n))) return false;
  auto c = posting.add(kTable, std::move(record));
  for (int i = 0; posting && i < n; ++i) {
    c.attach(starts[i], i, kBoundsMove);
    c.attach(durations[i], i, kMinRises);
    if (present != nullptr) c.attach(present[i], i, kMinRises);
  }
  return posting && runSoon(*c);
}

}  // namespace koru::scheduling

bool cs_DisjunctiveTasks(CSint **starts, CSint **durations, CSint **present, int n) {
  return koru::leftOut("cs_DisjunctiveTasks") ||
         koru::door(koru::scheduling::post("cs_DisjunctiveTasks", starts, durations, present, n));
}
