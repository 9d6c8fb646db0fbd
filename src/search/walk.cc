// SPDX-License-Identifier: MIT
// cs_openWalk, cs_goWalk, cs_closeWalk: depth-first labelling that can stop anywhere between two values.
//
// Choice by choice what the recursive searches and search objects do, the order of selection, contexts, counting and
// the look at a cancel included.
// Cost: that of cs_findAll; a level is some 100 bytes, of which 1024 are allocated at a time.
// Deliberate: after a cancel the levels are left from the newest to the first, as the recursive searches leave them:
// one that has another value counts it and keeps its context open, whatever the base.
#include "search/walk.h"

#include <limits>
#include <new>

#include "core/post.h"

namespace koru::walk {

Choice chooseNext(CSwalk &w) { return w.object == nullptr ? Choice{w.selection.next()} : chooseOfObject(*w.object); }

Level *openLevel(CSwalk &w, const Choice &choice) {
  if (!w.levels.makeRoom() || !openContext()) return nullptr;
  const CSint *v = choice.variable;
  const Values values = choice.branchesInTwo ? Values(0, 1) : Values(v);
  return new (w.levels.pushInRoom()) Level{choice, values, v->min, v->max, v->count, w.counts.choicePoints, 0};
}

bool impose(const CSwalk &w, Level &level, const Bound &bound) {
  if (w.object == nullptr) return cs_EQ(level.choice.variable, level.values.current());
  level.bound = bound;
  return imposeOfObject(*w.object, level);
}

namespace {

// cs_cancelSearch is not for search objects.
bool isCancelled(const CSwalk &w) { return searchState.cancelled && w.object == nullptr; }

CSstatus ended(CSwalk &w, CSstatus status) {
  w.lost = status == CS_STATUS_MEMORY;
  w.atSolution = status == CS_STATUS_SOLUTION;
  return status;
}

// The present value of the newest level; the level is closed when it has none left.
void tryPresent(CSwalk &w, Level &level) {
  if (!level.values.more()) {
    cs_acceptContext();
    w.levels.pop();
    return;
  }
  if (!level.isOpposite()) ++w.counts.choicePoints;
  ++level.tried;
  if (isCancelled(w)) {
    w.base = 0;
    w.levels.pop();
    return;
  }
  w.down = impose(w, level, w.bound);
  if (!w.down) ++w.counts.fails;
}

// A level for the variable that comes next; none at a solution, and where postings of the selection fail.
Level *descend(CSwalk &w) {
  w.down = false;
  if (w.object != nullptr && isRefuted(*w.object)) return nullptr;
  const Choice choice = chooseNext(w);
  if (choice.variable != nullptr) return openLevel(w, choice);
  if (postingHolds()) ++w.counts.solutions;
  return nullptr;
}

// Whether nobody would notice that a context is opened and accepted.
bool isQuiet() {
  const bool told = !solver::events.empty(), busy = solver::agenda.busy();
  return !(told | busy | solver::ports.watched);
}

// The newest level with its next value. Null when it has none and is closed: without the context that the recursive
// searches open before they see that, which is some 80 instructions for each level.
Level *goOn(CSwalk &w) {
  Level &level = newest(w);
  cs_restoreContext();
  const bool quiet = isQuiet();
  if (!quiet) cs_saveContext();
  level.values.advance();
  if (!quiet) return &level;
  if (level.values.more()) {
    cs_saveContext();
    return &level;
  }
  w.levels.pop();
  return nullptr;
}

CSstatus go(CSwalk &w, long long until, bool stops) {
  while (w.counts.choicePoints < until) {
    const long long solutions = w.counts.solutions;
    if (!w.down && w.levels.count() == w.base) return isCancelled(w) ? CS_STATUS_STOPPED : CS_STATUS_EXHAUSTED;
    Level *level = w.down ? descend(w) : goOn(w);
    if (level != nullptr) tryPresent(w, *level);
    if (w.down) continue;
    if (memoryExhausted(w)) return CS_STATUS_MEMORY;
    if (stops && w.counts.solutions != solutions) return CS_STATUS_SOLUTION;
  }
  return CS_STATUS_CHOICE_POINTS;
}

void releaseAtEnd(void *walk) { destroy(static_cast<CSwalk *>(walk)); }

}  // namespace

bool enter(CSwalk &w) {
  if (!w.levels.create()) return false;
  w.root = w.now = BranchStamp::now();
  w.atEnd = {nullptr, releaseAtEnd, &w, false, nullptr};
  solver::ports.add(&w.atEnd);
  return true;
}

void destroy(CSwalk *w) {
  w->levels.destroy();
  w->passed.destroy();
  w->~CSwalk();
  deallocate(w);
}

}  // namespace koru::walk

using namespace koru;
using namespace koru::walk;

CSwalk *cs_openWalk(CSint **array, int size, CSfindFreeVar f) {
  if (!solver::initialised || solver::trail.undoing() || !Selection::canChoose(array, size, f)) return nullptr;
  if (cs_findConstraintWithMemory() != nullptr) return nullptr;
  BranchSet positions(Selection::isBuiltIn(f) && size > 0 ? size : 0);
  void *memory = positions ? allocate(sizeof(CSwalk)) : nullptr;
  if (memory == nullptr) return nullptr;
  auto *w = new (memory) CSwalk(array, size, f, std::move(positions));
  if (!enter(*w)) {
    destroy(w);
    return nullptr;
  }
  searchState.cancelled = false;
  return w;
}

CSstatus cs_goWalk(CSwalk *walk, long long choicePoints, bool stops) {
  const Turn turn(walk, Turn::From::kWhereItStands);
  if (!turn || choicePoints < 1) return CS_STATUS_REFUSED;
  constexpr long long most = std::numeric_limits<long long>::max();
  const long long before = walk->counts.choicePoints;
  return ended(*walk, go(*walk, choicePoints < most - before ? before + choicePoints : most, stops));
}

CSwalkCounts cs_getWalkCounts(const CSwalk *walk) { return walk != nullptr ? walk->counts : CSwalkCounts{}; }

bool cs_closeWalk(CSwalk *walk) {
  if (walk == nullptr || walk->running) return false;
  if (walk->object != nullptr) leaveObject(*walk);
  solver::ports.remove(&walk->atEnd);
  destroy(walk);
  return true;
}

bool cs_isSearchCancelled(void) { return searchState.cancelled; }
