// SPDX-License-Identifier: MIT
// cs_searchValueSelectorRestartNG: the selector engine in runs of limited fails, with what it learns from each.
//
// Deliberate: fails and choice points are those of all runs.  The context that is opened before the first run is gone
// when the second begins, so a solution of a later run leaves one context less.  A limit below 1 is none and keeps the
// total from being looked at before the run has ended; such a run is the last.
#include <algorithm>

#include "core/solver.h"
#include "nogood/record.h"
#include "nogood/shorten.h"
#include "search/branching.h"

namespace koru {

namespace {

struct Restarts {
  SelectorRun run;
  CSfailLimit limitOf;
  void *argument;
  int totalLimit;  // none when < 1
  CSnoGoodSet *set;

  bool totalReached() const { return totalLimit > 0 && searchState.fails >= totalLimit; }
  bool exhausted() const { return run.failLimit < 1 || run.fails < run.failLimit; }

  bool runOnce(int limit) {
    tellRun();
    run.fails = 0;
    run.failLimit = totalLimit > 0 ? std::min(totalLimit - searchState.fails, limit) : limit;
    const CSsearchNotify &hooks = *run.notify;
    if (hooks.searchStart != nullptr) hooks.searchStart(run.failLimit, run.array, run.size, hooks.extra);
    const bool found = run.search();
    if (hooks.searchEnd != nullptr) hooks.searchEnd(found, run.fails, run.failLimit, run.array, run.size, hooks.extra);
    return found;
  }

  bool search() {
    Recorder recorder(set);
    run.recorder = recorder.hook();
    int limit = limitOf(argument);
    if (!openContext()) return false;
    const int label = solver::contexts.count();
    resetCounters();
    for (;; limit = limitOf(argument), shortenSet()) {
      recorder.beginRun();
      if (runOnce(limit)) return true;
      if (totalReached()) return false;
      cs_restoreContextUntil(label);
      if (exhausted()) return false;
    }
  }

  void shortenSet() const {
    if (set != nullptr) shortenNewest(*set);
  }
};

}  // namespace
}  // namespace koru

bool cs_searchValueSelectorRestartNG(CSint **array, CSvalueSelector **selectors, int size, CSfindFreeVarIndex f,
                                     CSfailLimit nbFailsMaxFunc, void *arg, int nbFailsMaxTotal, CSnoGoodSet *set,
                                     const CSsearchNotify *notify) {
  const koru::SearchRun run(koru::SearchRun::Counters::kKeep);
  if (f == nullptr || nbFailsMaxFunc == nullptr) return run.refused();
  const CSsearchNotify *hooks = notify != nullptr ? notify : &koru::noHooks();
  koru::Restarts restarts{{array, selectors, size, f, hooks, 0, {}}, nbFailsMaxFunc, arg, nbFailsMaxTotal, set};
  const bool found = restarts.search();
  return run.ended(found, restarts.totalReached());
}
