// SPDX-License-Identifier: MIT
#include "parallel/alone.h"

#include <climits>

namespace koru::parallel {

// Whether a solution stands.
static bool go(Ground &ground, bool stops) {
  cs_initErr();
  const CSstatus status = cs_goWalk(ground.walk(), LLONG_MAX, stops);
  if (status == CS_STATUS_MEMORY) ground.noteMemory();
  return status == CS_STATUS_SOLUTION;
}

static void findAll(Ground &ground) {
  const Task &task = ground.task();
  if (task.found == nullptr) {
    go(ground, false);
    return;
  }
  while (go(ground, true)) task.found(task.array, task.size);
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

Outcome searchAlone(Ground &ground) {
  const Mode mode = ground.task().mode;
  if (mode == Mode::kMinimize) return minimize(ground);
  if (mode == Mode::kAll) {
    findAll(ground);
  } else {
    go(ground, true);
  }
  const Counts counts = ground.counts();
  return {counts.solutions > 0, counts};
}

}  // namespace koru::parallel
