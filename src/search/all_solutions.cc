// SPDX-License-Identifier: MIT
// cs_findAll: depth-first labelling that visits every solution.
//
// The same n-ary branching as cs_search, without a fail limit; each solution is handed to `found` while it stands.
#include "search/branching.h"
#include "search/selection.h"

namespace koru {

namespace {

struct AllSolutions {
  CSint **array;
  int size;
  Selection selection;
  CSfoundCallback found;

  void reportSolution() const {
    if (!postingHolds()) return;
    tellSolution();
    if (found != nullptr) found(array, size);
    searchState.solutionFound = true;
  }

  void label() {
    CSint *v = selection.next();
    if (v == nullptr) return reportSolution();
    Values values(v);
    if (!openContext()) return;
    tellEnter(v);
    for (; values.more(); values.advance()) {
      ++searchState.choicePoints;
      if (searchState.cancelled) return tellLeave();
      if (tryValue(v, values.current(), 0)) label();
      renewContext();
    }
    cs_acceptContext();
    tellLeave();
  }
};

}  // namespace
}  // namespace koru

bool cs_findAll(CSint **array, int size, CSfindFreeVar f, CSfoundCallback found) {
  const koru::SearchRun run;
  koru::searchState.solutionFound = false;
  if (!koru::Selection::canChoose(array, size, f)) return run.refused();
  koru::AllSolutions{array, size, {array, size, f}, found}.label();
  return run.ended(koru::searchState.solutionFound, false, CS_STATUS_EXHAUSTED);
}
