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

Turn::Turn(CSwalk *w, From from) : walk_(nullptr) {
  if (w == nullptr || w->running || !w->root.stands() || solver::trail.undoing()) return;
  const BranchStamp now = BranchStamp::now();
  if (from == From::kWhereItStands && (w->lost || now.level != w->now.level || now.serial != w->now.serial)) return;
  walk_ = w;
  w->running = true;
  w->memoryReports = solver::errors.memoryReports;
}

Turn::~Turn() {
  if (walk_ == nullptr) return;
  walk_->running = false;
  walk_->now = BranchStamp::now();
}

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

// On to the next value of the newest level; the level is closed when there is none.
void tryNext(CSwalk &w) {
  Level &level = newest(w);
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
bool descend(CSwalk &w) {
  w.down = false;
  if (w.object != nullptr && isRefuted(*w.object)) return false;
  const Choice choice = chooseNext(w);
  if (choice.variable != nullptr) return openLevel(w, choice) != nullptr;
  if (!postingHolds()) return false;
  ++w.counts.solutions;
  return false;
}

CSstatus go(CSwalk &w, long long until, bool stops) {
  while (w.counts.choicePoints < until) {
    if (w.down) {
      const long long solutions = w.counts.solutions;
      if (descend(w)) {
        tryNext(w);
      } else if (memoryExhausted(w)) {
        return CS_STATUS_MEMORY;
      } else if (stops && w.counts.solutions != solutions) {
        return CS_STATUS_SOLUTION;
      }
      continue;
    }
    if (w.levels.count() == w.base) return isCancelled(w) ? CS_STATUS_STOPPED : CS_STATUS_EXHAUSTED;
    restoreAndSave();
    newest(w).values.advance();
    tryNext(w);
    if (!w.down && memoryExhausted(w)) return CS_STATUS_MEMORY;
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
