// SPDX-License-Identifier: MIT
#include "parallel/alone.h"

#include <climits>

namespace koru::parallel {

// Whether a solution stands.
static bool isAtSolution(Ground &ground, CSstatus status) {
  if (status == CS_STATUS_MEMORY) ground.failOfMemory();
  return status == CS_STATUS_SOLUTION;
}

static bool go(Ground &ground, bool stops) { return isAtSolution(ground, cs_goWalk(ground.walk(), LLONG_MAX, stops)); }

static bool tell(CSwalk * /*walk*/, void *task) {
  const Task &of = *static_cast<const Task *>(task);
  of.found(of.array, of.size);
  return true;
}

static void findAll(Ground &ground) {
  Task task = ground.task();
  isAtSolution(ground, cs_goWalkTelling(ground.walk(), LLONG_MAX, task.found == nullptr ? nullptr : tell, &task));
}

static Outcome minimize(Ground &ground) {
  const Task &task = ground.task();
  Outcome all;
  while (go(ground, true)) {
    all.result = true;
    all.counts.add(ground.counts());
    const int bound = cs_getMin(task.cost);
    if (task.foundCost != nullptr) task.foundCost(task.array, task.size, task.cost);
    const bool cancelled = cs_isSearchCancelled();
    if (!ground.beginPass(bound)) return all;
    if (cancelled) cs_cancelSearch();
  }
  all.counts.add(ground.counts());
  return all;
}

static Outcome solve(Ground &ground) {
  const Task &task = ground.task();
  CSstatus status = CS_STATUS_EXHAUSTED;
  while (status == CS_STATUS_EXHAUSTED && go(ground, task.wantsPaths())) {
    if (!ground.keep(ground.counts())) break;
    if (task.foundByObject != nullptr && !task.foundByObject(task.search, task.extra)) status = CS_STATUS_STOPPED;
  }
  const Counts counts = ground.counts();
  const bool result = counts.solutions > 0;
  if (task.improves && result && status == CS_STATUS_EXHAUSTED) status = CS_STATUS_OPTIMAL;
  ground.endObject(status, counts);
  return {result, counts};
}

Outcome searchAlone(Ground &ground) {
  const Mode mode = ground.task().mode;
  if (mode == Mode::kMinimize) return minimize(ground);
  if (mode == Mode::kObject) return solve(ground);
  if (mode == Mode::kAll) {
    findAll(ground);
  } else {
    go(ground, true);
  }
  const Counts counts = ground.counts();
  return {counts.solutions > 0, counts};
}

}  // namespace koru::parallel
