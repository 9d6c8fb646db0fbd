// SPDX-License-Identifier: MIT
// Three movements: down (choose a decision, open a context, post it), back (restore the newest decision that stands and
// impose its opposite, or the next value), and anew (give the run up, learn at the root, begin another one).
//
// With an objective, whatever is tried after a solution has to be better: the bound is posted where the search goes on,
// so a solution never makes it begin again.
// A refusal for want of memory proves nothing: it is told from others by the number of reports, and ends the search.
#include "solve/engine.h"

#include <algorithm>

#include "core/solver.h"
#include "core/trial.h"
#include "nogood/no_good.h"
#include "search/branching.h"
#include "solve/choose.h"
#include "solve/learn.h"
#include "solve/limits.h"

namespace koru::solve {

namespace {

bool memoryExhausted(const CSsearch &s) { return solver::errors.memoryReports != s.memoryReports; }

[[gnu::noinline]] bool lookClosely(CSsearch &s) {
  if (s.ending == CS_STATUS_READY) s.ending = memoryExhausted(s) ? CS_STATUS_MEMORY : limitReached(s);
  return s.ending == CS_STATUS_READY;
}

// Asked before each thing that is tried. When the search has to end, `ending` says why.
inline bool mayGoOn(CSsearch &s) {
  const bool looks =
      s.stats.choicePoints >= s.nextLook || memoryExhausted(s) || s.stopped.load(std::memory_order_relaxed);
  return !looks || lookClosely(s);
}

// ----- posting

// Better than the last solution, when there is an objective.
bool postBound(const CSsearch &s) {
  if (s.objective == nullptr || !hasSolution(s)) return true;
  return postBetter(s, s.stats.objective);
}

// A propagation that was cut short is no fail.
bool noteRefusal(CSsearch &s) {
  if (s.ending != CS_STATUS_READY) return false;
  if (++s.stats.fails >= s.failLimit) s.nextLook = 0;
  ++s.runFails;
  return false;
}

// Callbacks of search objects may do no more than query; a refused decision is undone before the host goes on.
template <class Select>
[[gnu::always_inline]] inline bool isAccepted(const CSsearch &s, Select select) {
  const Trial trial(hostLooks());
  return (s.objective == nullptr || postBound(s)) && select();
}

// Imposes a decision, with the bound on the objective, by calling `select`.
template <class Select>
[[gnu::always_inline]] inline bool post(CSsearch &s, Select select) {
  const bool counts = s.activity.created();
  const int mark = counts ? solver::trail.count() : 0;
  const bool accepted = isAccepted(s, select);
  if (counts) s.activity.notePropagation(mark);
  return accepted || noteRefusal(s);
}

// Most decisions are equalities.
[[gnu::always_inline]] inline bool postDecision(CSsearch &s, CSint *v, const CSvalueSelection &decision) {
  return post(
      s, [&] { return decision.method == CS_METHOD_EQ ? cs_EQ(v, decision.value) : cs_selectValue(v, &decision); });
}

// ----- down

// When the context of a decision cannot be had, there is none to restore.
enum class Try { kAccepted, kRefused, kNoContext };

// Without memory, the search ends: all is restored, whether there is a context or not.
bool openContextOf(const CSsearch &s) {
  if (solver::agenda.postingUnsettled() && !endPosting()) return false;
  cs_saveContext();
  return !memoryExhausted(s);
}

// Tries the decision of the newest step, which `post` imposes, in a context of its own.
template <class Post>
[[gnu::always_inline]] inline Try tryStep(CSsearch &s, const Step &step, Post post) {
  if (!openContextOf(s)) return Try::kNoContext;
  ++s.stats.choicePoints;
  if (post()) return Try::kAccepted;
  if (s.options.lastConflict) s.conflict = step.position;
  return Try::kRefused;
}

// The first decision on a variable, and how it goes on.
Step firstStep(CSsearch &s, int position) {
  const Phase &phase = s.labelled.phaseOf(position);
  if (!goesByValues(s, phase)) return {position, chooseDecision(s, phase, position), false};
  const CSint *v = s.labelled[position];
  const bool upwards = phase.value == CS_VALUE_MIN;
  return {position, {CS_METHOD_EQ, upwards ? v->min : v->max}, true, upwards};
}

Try descend(CSsearch &s, int position) {
  Step *step = s.path.push();
  if (step == nullptr) return Try::kNoContext;
  *step = firstStep(s, position);
  CSint *v = s.labelled[position];
  tellEnter(v);
  const Try result = tryStep(s, *step, [&] { return tellTried(step->decision, postDecision(s, v, step->decision)); });
  if (result != Try::kNoContext) return result;
  s.path.pop();
  tellLeave();
  return result;
}

bool goDown(CSsearch &s, int position) {
  if (position == kAllPostponed) return noteRefusal(s);
  return descend(s, position) == Try::kAccepted;
}

// ----- back

// The next value of the step's variable, whose domain is back as it was when the step was made.
bool nextValue(const CSint *v, Step &step) {
  const int value = step.decision.value;
  if (step.upwards ? value >= v->max : value <= v->min) return false;
  step.leftBehind = true;
  step.lastTried = value;
  const int next = step.upwards ? value + 1 : value - 1;
  step.decision.value = contains(v, next) ? next : step.upwards ? valueAfter(v, value) : valueBefore(v, value);
  return true;
}

// What is left to the newest step, which has been restored and is off the path: unless nothing is, or the search has to
// end, it goes back, which needs no memory, as its place was kept.
bool retryValues(CSsearch &s, Step &step) {
  CSint *v = s.labelled[step.position];
  while (nextValue(v, step)) {
    const Try result = tryStep(
        s, step, [&] { return tellTried(step.decision, post(s, [&] { return cs_EQ(v, step.decision.value); })); });
    if (result == Try::kAccepted) return s.path.push() != nullptr;
    if (!mayGoOn(s)) return false;
    if (result == Try::kRefused) cs_restoreContext();
  }
  return false;
}

// Instead of the opposite of its decision, the variable waits until its minimum grows.
bool postpone(CSsearch &s, Step &step) {
  if (!post(s, [] { return true; })) return false;
  step.putOff = true;
  step.before = s.postponed.put(step.position, step.decision.value);
  return s.path.push() != nullptr;
}

bool isPutOff(const CSsearch &s, int position) {
  return s.postponed.isUsed() && s.labelled.phaseOf(position).order == CS_ORDER_SET_TIMES;
}

bool retryOpposite(CSsearch &s, Step &step) {
  step.refuted = true;
  const CSvalueSelection opposite = negationOf(step.decision);
  const bool accepted = isPutOff(s, step.position)
                            ? postpone(s, step)
                            : postDecision(s, s.labelled[step.position], opposite) && s.path.push() != nullptr;
  return tellTried(opposite, accepted, Tried::kOpposite);
}

void notePeaks(CSsearch &s) {
  s.stats.peakDepth = std::max<long long>(s.stats.peakDepth, s.path.count());
  s.stats.peakTrail = std::max<long long>(s.stats.peakTrail, solver::trail.count());
}

// On to a state in which something is left to try. False when there is none in this run, or the search has to end.
bool back(CSsearch &s) {
  notePeaks(s);
  while (!s.path.empty() && mayGoOn(s)) {
    Step &step = *s.path.pop();
    if (step.putOff) s.postponed.put(step.position, step.before);
    if (step.hasContext()) {
      cs_restoreContext();
      if (step.byValues ? retryValues(s, step) : retryOpposite(s, step)) return true;
    }
    tellLeave();
  }
  return false;
}

// ----- anew

void toRoot(const CSsearch &s) {
  if (solver::contexts.count() > s.root.level) cs_restoreContextUntil(s.root.level + 1);
}

// Fixes what the neighbourhood does not let go. False when no better solution has these values.
bool enterNeighbourhood(CSsearch &s) {
  Neighbourhood &n = s.neighbourhood;
  n.clear();
  switch (s.options.neighbours) {
    case CS_NEIGHBOURS_WINDOW:
    case CS_NEIGHBOURS_MACHINES:
    case CS_NEIGHBOURS_TASKS:
      n.relaxOrders(s.random, s.labelled, s.options.neighbours);
      break;
    case CS_NEIGHBOURS_LINKED:
      n.relaxLinked(s.random, s.weights);
      break;
    case CS_NEIGHBOURS_HOST:
      s.options.chooseRelaxed(n.relaxed(), s.labelled.solution(), s.hostSize, s.options.extra);
      break;
    default:
      n.relaxRandom(s.random);
  }
  ++s.stats.neighbourhoods;
  if (!openContext()) return false;
  for (int i = 0; i < s.hostSize; ++i) {
    if (!n.isRelaxed(i) && !cs_EQ(s.labelled[i], s.labelled.solution()[i])) return false;
  }
  return true;
}

// Complete runs and neighbourhoods take turns, the one that has tried less so far.
bool isNeighbourhoodsTurn(const CSsearch &s) {
  return s.options.neighbours != CS_NEIGHBOURS_NONE && hasSolution(s) && s.triedNearby <= s.triedComplete;
}

void closeRun(CSsearch &s) {
  const long long tried = s.stats.choicePoints - s.runBegan + 1;
  (s.inNeighbourhood ? s.triedNearby : s.triedComplete) += tried;
  s.runBegan = s.stats.choicePoints;
}

// What the root knows of the objective.
void noteBound(CSsearch &s) {
  if (s.objective != nullptr) s.stats.bound = minimizes(s) ? s.objective->min : s.objective->max;
}

// Begins a run at the root. False when nothing is left there.
bool beginRun(CSsearch &s) {
  while (mayGoOn(s)) {
    s.runFails = 0;
    s.conflict = -1;
    if (!postBound(s)) return false;
    noteBound(s);
    s.inNeighbourhood = isNeighbourhoodsTurn(s);
    tellRun(s.inNeighbourhood ? RunKind::kNeighbourhood : RunKind::kComplete);
    if (!s.inNeighbourhood) {
      s.runLimit = s.runLimits.next();
      return true;
    }
    s.runLimit = s.options.neighbourFails;
    if (enterNeighbourhood(s)) return true;
    s.neighbourhood.noteExhausted();
    toRoot(s);
    closeRun(s);
  }
  return false;
}

// The run has reached its limit, or (`exhausted`) there is nothing left in it. False when that is the end.
bool anew(CSsearch &s, bool exhausted) {
  if (!mayGoOn(s) || (exhausted && !s.inNeighbourhood)) return false;
  toRoot(s);
  closeRun(s);
  if (s.inNeighbourhood) {
    exhausted ? s.neighbourhood.noteExhausted() : s.neighbourhood.noteLeft();
  } else {
    ++s.stats.restarts;
    if (!learnFromPath(s)) return false;
  }
  s.path.popTo(0);
  s.postponed.clear();
  return beginRun(s);
}

// A satisfaction problem keeps the run that has found a solution: another run could find it again.
bool runIsUp(const CSsearch &s) { return s.runFails >= s.runLimit && (s.objective != nullptr || !hasSolution(s)); }

// ----- the whole

CSstatus atSolution(CSsearch &s) {
  notePeaks(s);
  tellSolution(true, s.objective);
  s.labelled.keepSolution();
  if (s.objective != nullptr) s.stats.objective = s.objective->min;
  if (s.inNeighbourhood) ++s.stats.neighbourhoodsBetter;
  s.stats.secondsToBest = s.clock.seconds();
  if (++s.stats.solutions == 1) s.stats.secondsToFirst = s.stats.secondsToBest;
  return CS_STATUS_SOLUTION;
}

CSstatus reasonOfEnd(CSsearch &s) {
  if (memoryExhausted(s)) return CS_STATUS_MEMORY;
  if (s.ending != CS_STATUS_READY) return s.ending;
  if (s.objective == nullptr || !hasSolution(s)) return CS_STATUS_EXHAUSTED;
  s.stats.bound = s.stats.objective;
  return CS_STATUS_OPTIMAL;
}

CSstatus ended(CSsearch &s) {
  const CSstatus reason = reasonOfEnd(s);
  tellEnd(reason);
  return reason;
}

bool begin(CSsearch &s) {
  if (s.status == CS_STATUS_READY) tellBegin(Engine::kObject);
  if (!lookClosely(s) || s.refuted) return false;
  if (s.status == CS_STATUS_READY) return beginRun(s);
  return back(s) || anew(s, true);
}

}  // namespace

bool postBetter(const CSsearch &s, int best) {
  if (minimizes(s)) return best > kIntMin && cs_LE(s.objective, best - 1);
  return best < kIntMax && cs_GE(s.objective, best + 1);
}

CSstatus goOn(CSsearch &s) {
  for (bool alive = begin(s); alive;) {
    if (!mayGoOn(s)) break;
    if (runIsUp(s)) {
      alive = anew(s, false);
      continue;
    }
    const int position = choosePosition(s);
    if (position == kAllBound) return atSolution(s);
    if (!goDown(s, position)) alive = back(s) || anew(s, true);
  }
  return ended(s);
}

}  // namespace koru::solve
