// SPDX-License-Identifier: MIT
// cs_CumulativeTasks: at each time, the uses of the tasks that run then add up to no more than the capacity.
// Consistency: that of the rules of SharedResource, on the bounds of starts, the least durations and uses and the
// greatest capacity; the capacity is what is certainly taken, or more; uses and durations are as large as that leaves
// them; a task that has no place is left out. Complete assignments are told exactly.
// Cost: a run of O(n log n) a round, until none finds anything; then, behind all other constraints' runs of that kind,
// one of the edges (constraints/scheduling/time_table_edges.h).  State: none.
// Wakes: when a bound of a start moves, a duration or use grows, the capacity shrinks, a task has to be there.
// Deliberate: the start of a task that may be left out is not narrowed, as it then says nothing.
#include "constraints/scheduling/shared_resource.h"
#include "constraints/scheduling/tasks.h"
#include "koru_extras.h"

namespace koru::scheduling {

struct CumulativeTasks : Deferred {
  Buffer<CSint *> starts;
  Buffer<CSint *> durations;
  Buffer<CSint *> uses;
  Present present;
  int n;
  CSint *capacity;
  SharedResource resource;
  Deferred *edges;  // asked for when the rest has found all it can; null until both have been posted
};

struct Edges : Deferred {
  CumulativeTasks *tasks;
};

static bool noneNegative(const CumulativeTasks &c) {
  for (int i = 0; i < c.n; ++i)
    if (!narrowMin(c.durations[i], 0) || !narrowMin(c.uses[i], 0)) return false;
  return narrowMin(c.capacity, 0);
}

static void readTasks(CumulativeTasks &c) {
  for (int i = 0; i < c.n; ++i) c.resource[i] = {taskOf(c.starts[i], c.durations[i], c.present.of(i)), c.uses[i]->min};
}

static bool writeTasks(const CumulativeTasks &c) {
  for (int i = 0; i < c.n; ++i) {
    const Task &task = c.resource[i].task;
    if (!keepStart(task, c.starts[i])) return false;
    if (task.isOut() && task.length > 0 && !c.present.leaveOut(i)) return false;
  }
  return true;
}

static bool allKept(const CumulativeTasks &c) {
  for (int i = 0; i < c.n; ++i)
    if (!isKept(c.resource[i].task, c.starts[i])) return false;
  return true;
}

// A task that runs takes what the others leave where it certainly runs; one that takes anything ends before there is
// too little.
static bool narrowTask(const CumulativeTasks &c, int i) {
  const auto &[task, use] = c.resource[i];
  if (task.isIn() && !isBound(c.uses[i]) && !narrowMax64(c.uses[i], c.resource.mostUse(i))) return false;
  if (c.present.of(i) != Presence::kIn || use == 0 || isBound(c.durations[i])) return true;
  const Time end = c.resource.latestEnd(i, c.starts[i]->max);
  return end == SharedResource::kNoEnd || narrowMax64(c.durations[i], end - task.earliest);
}

static bool filter(CumulativeTasks &c) {
  if (!noneNegative(c)) return false;
  do {
    readTasks(c);
    if (!c.resource.filter(c.capacity->max) || !writeTasks(c)) return false;
  } while (!allKept(c));
  for (int i = 0; i < c.n; ++i)
    if (!narrowTask(c, i)) return false;
  if (!narrowMin64(c.capacity, c.resource.highest())) return false;
  return c.edges == nullptr || !c.resource.mayHaveEdges() || ask(*c.edges);
}

// What it narrows wakes the other run, which asks for this one again.
static bool filterEdges(Edges &edges) {
  CumulativeTasks &c = *edges.tasks;
  readTasks(c);
  return c.resource.edges(c.capacity->max) && writeTasks(c);
}

constexpr auto kTable = deferred<filter>(Rank::kSorting, kBoundsMove);
constexpr auto kEdges = deferred<filterEdges>(Rank::kQuadratic, 0);

struct Arrays {
  CSint **starts;
  CSint **durations;
  CSint **uses;
  CSint **present;
};

static bool post(const Poster &poster, const Arrays &given, int n, CSint *capacity) {
  CumulativeTasks record{{}, {}, {}, {}, {}, n, capacity, {}, nullptr};
  record.starts = copyVariables(given.starts, n);
  if (!record.starts || capacity == nullptr) return false;
  record.durations = copyVariables(given.durations, n);
  if (!record.durations) return false;
  record.uses = copyVariables(given.uses, n);
  if (!record.uses || !record.present.copy(given.present, n)) return false;
  Posting posting{poster};
  if (!posting) return false;
  record.resource = SharedResource(n);
  if (!record.resource) return false;
  auto c = posting.add(kTable, std::move(record));
  for (int i = 0; posting && i < n; ++i) {
    c.attach(given.starts[i], i, kBoundsMove);
    c.attach(given.durations[i], i, kMinRises);
    c.attach(given.uses[i], i, kMinRises);
    if (given.present != nullptr) c.attach(given.present[i], i, kMinRises);
  }
  c.attach(capacity, n, kMaxFalls);
  if (!posting) return false;
  auto edges = posting.add(kEdges, Edges{{}, &*c});
  edges.attach(capacity, n, 0);
  if (!posting) return false;
  c->edges = &*edges;
  return runSoon(*c);
}

}  // namespace koru::scheduling

bool cs_CumulativeTasks(CSint **starts, CSint **durations, CSint **uses, CSint **present, int n, CSint *capacity) {
  return koru::leftOut("cs_CumulativeTasks") ||
         koru::door(koru::scheduling::post("cs_CumulativeTasks", {starts, durations, uses, present}, n, capacity));
}
