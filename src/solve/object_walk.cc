// SPDX-License-Identifier: MIT
// cs_openSearchWalk and what goes with it: the tree of a search object as a walk.
//
// Where an opposite of a decision holds in the context of the step before it while a search object searches, it has a
// context of its own here; that changes no domain.
// Deliberate: orders and options whose choice depends on what was searched before, and limits, are refused, though what
// CS_ORDER_SET_TIMES has put off could be found out from the path. Observers of searches are not told.
#include <algorithm>
#include <iterator>
#include <new>
#include <utility>

#include "core/solver.h"
#include "nogood/no_good.h"
#include "search/walk.h"
#include "solve/choose.h"
#include "solve/limits.h"

namespace koru::solve {

namespace {

template <int order>
bool uses(const CSsearch &s) {
  return s.labelled.usesOrder(order);
}
template <auto option>
bool isSet(const CSsearch &s) {
  return s.options.*option != 0;
}

bool goesDown(const CSsearch &s) {
  return s.options.branching == CS_BRANCH_VALUES &&
         (s.labelled.usesValue(CS_VALUE_MAX) || s.options.maximize != nullptr);
}

constexpr struct {
  bool (*stands)(const CSsearch &s);
  const char *name;
} kRefused[] = {
    {isSet<&CSsearchOptions::neighbours>, "neighbours"},
    {isSet<&CSsearchOptions::restarts>, "restarts"},
    {isSet<&CSsearchOptions::lastConflict>, "lastConflict"},
    {isSet<&CSsearchOptions::randomTies>, "randomTies"},
    {isSet<&CSsearchOptions::guided>, "guided"},
    {isSet<&CSsearchOptions::milliseconds>, "milliseconds"},
    {isSet<&CSsearchOptions::fails>, "fails"},
    {isSet<&CSsearchOptions::choicePoints>, "choicePoints"},
    {isSet<&CSsearchOptions::solutions>, "solutions"},
    {isSet<&CSsearchOptions::memory>, "memory"},
    {[](const CSsearch &s) { return s.options.progress != nullptr; }, "progress"},
    {uses<CS_ORDER_DOM_WDEG>, "CS_ORDER_DOM_WDEG"},
    {uses<CS_ORDER_ACTIVITY>, "CS_ORDER_ACTIVITY"},
    {uses<CS_ORDER_SET_TIMES>, "CS_ORDER_SET_TIMES"},
    {uses<CS_ORDER_SLACK_WDEG>, "CS_ORDER_SLACK_WDEG"},
    {[](const CSsearch &s) { return s.labelled.usesValue(CS_VALUE_RANDOM); }, "CS_VALUE_RANDOM"},
    {goesDown, "CS_BRANCH_VALUES with CS_VALUE_MAX"},
};

// Of what is labelled, and how, at the root.
unsigned long long digestOf(const CSsearch &s) {
  walk::Digest digest;
  digest.add(s.labelled.size());
  digest.add(s.options.branching);
  digest.add(s.objective == nullptr ? 0 : minimizes(s) ? 1 : 2);
  for (int i = 0; i < s.labelled.size(); ++i) {
    const CSint *v = s.labelled[i];
    const Phase &phase = s.labelled.phaseOf(i);
    for (const int n : {v->min, v->max, v->count, v->constraintCount, phase.order, phase.value}) digest.add(n);
  }
  return digest.value();
}

void count(CSsearch &s, const CSwalkCounts &counts) {
  s.stats.choicePoints = counts.choicePoints;
  s.stats.fails = counts.fails;
  s.stats.solutions = counts.solutions;
}

void end(CSsearch &s, CSstatus status) {
  s.status = status;
  if (status == CS_STATUS_OPTIMAL) s.stats.bound = s.stats.objective;
  if (s.root.stands()) closeRoot(s);
  s.openContexts = solver::contexts.count();
  s.clock.pause();
  s.stats.seconds = s.clock.seconds();
  noteWakings(s);
  s.running = false;
}

// What comes has to be better than what stands. False when memory is exhausted (reported).
bool pass(CSwalk &w) {
  w.passed.destroy();
  if (!w.passed.create()) return false;
  for (int i = 0; i < w.levels.count(); ++i) {
    walk::PassedStep *passed = w.passed.push();
    if (passed == nullptr) return false;
    *passed = {walk::stepOf(w.levels.at(i)), w.levels.at(i).bound};
  }
  w.bound = w.object->objective->min;
  return true;
}

void keep(CSsearch &s, const CSwalkCounts &counts) {
  s.labelled.keepSolution();
  count(s, counts);
  s.status = CS_STATUS_SOLUTION;
  if (s.objective != nullptr) s.stats.objective = s.objective->min;
  s.stats.secondsToBest = s.clock.seconds();
  if (s.stats.secondsToFirst < 0) s.stats.secondsToFirst = s.stats.secondsToBest;
}

// Without memory the object ends, as cs_nextSolution ends it.
bool begin(CSsearch &s) {
  if (!prepare(s)) {
    s.status = CS_STATUS_MEMORY;
    closeRoot(s);
    s.openContexts = solver::contexts.count();
    return false;
  }
  s.running = true;
  s.status = CS_STATUS_STOPPED;
  s.wakingsNoted = solver::queue.wakings;
  s.clock.resume();
  if (s.objective != nullptr) s.stats.bound = minimizes(s) ? s.objective->min : s.objective->max;
  return true;
}

CSwalk *open(CSsearch &s) {
  BranchSet none(0);  // the object has one
  void *memory = none ? allocate(sizeof(CSwalk)) : nullptr;
  if (memory == nullptr) return nullptr;
  auto *w = new (memory) CSwalk(nullptr, 0, cs_findFreeVar, std::move(none));
  if (!walk::enter(*w)) {
    walk::destroy(w);
  } else if (!begin(s)) {
    cs_closeWalk(w);
  } else {
    w->object = &s;
    return w;
  }
  return nullptr;
}

}  // namespace
}  // namespace koru::solve

namespace koru::walk {

Choice chooseOfObject(CSsearch &s) {
  const int position = solve::choosePosition(s);
  if (position < 0) return {nullptr};
  const solve::Phase &phase = s.labelled.phaseOf(position);
  CSint *v = s.labelled[position];
  if (solve::goesByValues(s, phase)) return {v};
  return {v, true, solve::chooseDecision(s, phase, position)};
}

bool imposeOfObject(const CSsearch &s, const Level &level) {
  if (level.bound.has_value() && !solve::postBetter(s, *level.bound)) return false;
  const Choice &choice = level.choice;
  if (!choice.branchesInTwo) return cs_EQ(choice.variable, level.values.current());
  const CSvalueSelection decision = level.isOpposite() ? negationOf(choice.decision) : choice.decision;
  return cs_selectValue(choice.variable, &decision);
}

bool isRefuted(const CSsearch &s) { return s.refuted; }

void leaveObject(CSwalk &w) {
  if (!w.object->running) return;
  solve::count(*w.object, w.counts);
  solve::end(*w.object, CS_STATUS_STOPPED);
}

}  // namespace koru::walk

using namespace koru;
using namespace koru::solve;

const char *cs_findUnwalkableOption(const CSsearch *search) {
  if (search == nullptr) return nullptr;
  const auto *found = std::ranges::find_if(kRefused, [&](const auto &option) { return option.stands(*search); });
  return found != std::end(kRefused) ? found->name : nullptr;
}

CSwalk *cs_openSearchWalk(CSsearch *search, CSwalkSubject *subject) {
  if (search == nullptr || hasBegun(*search) || !isItsTurn(*search)) return nullptr;
  if (cs_findUnwalkableOption(search) != nullptr || cs_findConstraintWithMemory() != nullptr) return nullptr;
  CSwalk *walk = open(*search);
  if (walk != nullptr && subject != nullptr) *subject = {digestOf(*search), search->objective != nullptr};
  return walk;
}

bool cs_keepWalkSolution(CSwalk *walk, const CSwalkCounts *counts) {
  const walk::Turn turn(walk, walk::Turn::From::kWhereItStands);
  if (!turn || counts == nullptr || counts->solutions < 1 || walk->object == nullptr) return false;
  CSsearch &s = *walk->object;
  if ((!walk->down && !walk->atSolution) || choosePosition(s) != kAllBound) return false;
  if (s.objective != nullptr && !pass(*walk)) return false;
  keep(s, *counts);
  return true;
}

bool cs_endSearchWalk(CSwalk *walk, CSstatus status, const CSwalkCounts *counts) {
  if (walk == nullptr || walk->running || walk->object == nullptr || counts == nullptr) return false;
  count(*walk->object, *counts);
  end(*walk->object, status);
  return cs_closeWalk(walk);
}
