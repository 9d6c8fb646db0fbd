// SPDX-License-Identifier: MIT
// cs_searchValueSelectorFail and the engine under it.
//
// A level opens a context for each decision, posts it and goes down; what fails is restored before the next decision.
// Cost: one stack frame per level, no allocation.
// Deliberate: `next` is called once more than there are decisions, so that the last is known.  A cancel, a selector
// that refuses to begin or to end, and the fail limit leave contexts as they are, for the host to look at; `leave` is
// then not called, nor is `end` after a cancel.  A solution that `found` rejects counts as a fail, but is never what
// the path is recorded for.
#include "search/selector_engine.h"

#include "search/branching.h"

namespace koru {

// What the selector is asked with, beside the node that others see.
struct SelectorRun::Level : LevelNode {
  CSint *variable;
  CSvalueSelector *selector;
  void *word;  // the selector's scratch storage

  // The decision failed: on to the following one.
  void advance(const CSvalueSelection &following) {
    if (!hasFirstFailed) firstFailed = decision;
    hasFirstFailed = true;
    decision = following;
  }
};

bool SelectorRun::acceptSolution(int depth) {
  const bool accepted = notify->found == nullptr || notify->found(depth, array, size, notify->extra);
  tellSolution(accepted);
  if (!accepted) countFail();
  return accepted;
}

void SelectorRun::countFail() {
  ++fails;
  ++searchState.fails;
}

bool SelectorRun::next(Level &level, CSvalueSelection &decision) const {
  return cs_selectNextValue(&decision, level.selector, level.index, array, size, &level.word);
}

bool SelectorRun::end(Level &level) const {
  return cs_endValueSelector(level.selector, level.index, array, size, &level.word);
}

// False when the search has to stop at once.
bool SelectorRun::open(const Level &level, int depth) const {
  if (!openContext()) return false;
  ++searchState.choicePoints;
  if (notify->beforeValueSelection != nullptr)
    notify->beforeValueSelection(depth, level.index, &level.decision, array, size, notify->extra);
  return !searchState.cancelled;
}

bool SelectorRun::post(const Level &level, int depth) {
  const bool consistent = tellTried(level.decision, cs_selectValue(level.variable, &level.decision));
  if (!consistent) countFail();
  if (notify->afterValueSelection != nullptr)
    notify->afterValueSelection(consistent, depth, level.index, &level.decision, array, size, notify->extra);
  return consistent;
}

// The level has failed; `refusedAtLimit` says that its last decision was the fail that reached the limit.
void SelectorRun::giveUp(Level &level, int depth, bool refusedAtLimit) const {
  if (!end(level)) return;
  if (limitReached()) {
    if (refusedAtLimit && recorder.record != nullptr) recorder.record(recorder.argument, level, depth);
  } else if (notify->leave != nullptr) {
    notify->leave(depth, level.index, array, size, notify->extra);
  }
}

bool SelectorRun::label(const LevelNode *parent, int depth) {
  const int index = select(array, size);
  if (index < 0) return postingHolds() && acceptSolution(depth - 1);
  if (notify->enter != nullptr) notify->enter(depth, index, array, size, notify->extra);
  CSvalueSelector *selector = selectors != nullptr ? selectors[index] : nullptr;
  Level level{{parent, index, {}, {}, false, false}, nullptr, selector, nullptr};
  if (!cs_initValueSelector(selector, index, array, size, &level.word)) return false;
  if (array != nullptr) level.variable = array[index];
  tellEnter(level.variable);
  bool refusedAtLimit = false;
  for (bool more = next(level, level.decision); more;) {
    CSvalueSelection following{};
    more = next(level, following);
    level.isLast = !more;
    if (!open(level, depth)) return leave();
    if (post(level, depth)) {
      if (label(&level, depth + 1)) return end(level) || leave();
    } else {
      refusedAtLimit = fails == failLimit;
    }
    if (limitReached()) break;
    cs_restoreContext();
    level.advance(following);
  }
  giveUp(level, depth, refusedAtLimit);
  return leave();
}

}  // namespace koru

bool cs_searchValueSelectorFail(CSint **array, CSvalueSelector **selectors, int size, CSfindFreeVarIndex f,
                                int nbFailsMax, const CSsearchNotify *notify) {
  const koru::SearchRun searching;
  if (f == nullptr) return searching.refused();
  const CSsearchNotify &hooks = notify != nullptr ? *notify : koru::noHooks();
  if (hooks.searchStart != nullptr) hooks.searchStart(nbFailsMax, array, size, hooks.extra);
  koru::SelectorRun run{array, selectors, size, f, &hooks, nbFailsMax, {}};
  const bool result = run.search();
  if (hooks.searchEnd != nullptr)
    hooks.searchEnd(result, koru::searchState.fails, nbFailsMax, array, size, hooks.extra);
  return searching.ended(result, nbFailsMax > 0 && run.fails >= nbFailsMax);
}
