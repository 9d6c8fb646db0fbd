// SPDX-License-Identifier: MIT
// cs_minimize: branch and bound in restart form.
//
// Each solution is told to `found` where it stands, everything is restored, and the cost has to become less before the
// depth-first engine labels anew from the root.  Cost: that of the passes; nothing is allocated.
// Deliberate: the context saved at the start is restored with the first solution, so the bounds on the cost belong to
// the caller and stay; without a solution it remains open.  A pass that is cancelled ends the search as if it were
// exhausted.  Below the smallest int there is no cost to look for, though cs_LT would accept that bound.
#include "search/branching.h"
#include "search/depth_first.h"
#include "search/selection.h"

namespace koru {

namespace {

struct Minimize {
  CSint **array;
  int size;
  CSfindFreeVar select;
  CSint *cost;
  CSfoundCostCallback found;

  bool label() const {
    tellRun();
    return labelDepthFirst(array, size, select, 0, cost);
  }

  // Returns false when no cost is less than that of the solution which now stands.
  bool improveOnSolution(int root) const {
    const int bound = cost->min;
    if (found != nullptr) found(array, size, cost);
    cs_restoreContextUntil(root);
    return bound > kIntMin && cs_LT(cost, bound);
  }

  bool search() const {
    if (!openContext()) return false;
    const int root = solver::contexts.count();
    if (!label()) return false;
    while (improveOnSolution(root) && label()) continue;
    return true;
  }
};

}  // namespace
}  // namespace koru

bool cs_minimize(CSint **array, int size, CSfindFreeVar f, CSint *cost, CSfoundCostCallback found) {
  const koru::SearchRun run;
  if (!koru::Selection::canChoose(array, size, f) || cost == nullptr) return run.refused();
  return run.ended(koru::Minimize{array, size, f, cost, found}.search(), false, CS_STATUS_OPTIMAL);
}
