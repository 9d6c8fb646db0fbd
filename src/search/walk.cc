// SPDX-License-Identifier: MIT
// cs_openWalk, cs_goWalk, cs_goWalkTelling, cs_closeWalk: depth-first labelling that can stop anywhere between two
// values.
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
#include "core/trial.h"

namespace koru::walk {

namespace {

// Whose tree is walked. The loop is written out for each of the two, and on the way down in one piece: a variable and
// its value stay in registers until the value is tried, and need not come back from the level that was just written.
// Where solutions are many that is 3 % of the time.
enum class Tree { kOfLabelling, kOfObject };

template <Tree tree>
Choice choose(CSwalk &w) {
  if constexpr (tree == Tree::kOfObject) return chooseOfObject(*w.object);
  return {w.selection.next()};
}

template <Tree tree>
[[gnu::always_inline]] inline Level *open(CSwalk &w, const Choice &choice) {
  if (!w.levels.makeRoom() || !openContext()) return nullptr;
  const CSint *v = choice.variable;
  const bool inTwo = tree == Tree::kOfObject && choice.branchesInTwo;
  const Values values = inTwo ? Values(0, 1) : Values(v);
  Level *level = w.levels.pushInRoom();
  *level = {choice, values, v->min, v->max, v->count, w.counts.choicePoints, 0};
  return level;
}

// `hostLooks`: at what a refused value leaves.
template <Tree tree>
bool tryCurrent(const CSwalk &w, Level &level, const Bound &bound, bool hostLooks) {
  const Trial trial(hostLooks);
  if constexpr (tree == Tree::kOfLabelling) return cs_EQ(level.choice.variable, level.values.current());
  level.bound = bound;
  return imposeOfObject(*w.object, level);
}

// cs_cancelSearch is not for search objects.
template <Tree tree>
bool isCancelled() {
  return tree == Tree::kOfLabelling && searchState.cancelled;
}

CSstatus ended(CSwalk &w, CSstatus status) {
  w.lost = status == CS_STATUS_MEMORY;
  w.atSolution = status == CS_STATUS_SOLUTION;
  return status;
}

// The present value of the newest level; the level is closed when it has none left. Where the walk may stand still
// after it, the host looks.
template <Tree tree>
[[gnu::always_inline]] inline void tryPresent(CSwalk &w, Level &level, long long until) {
  if (!level.values.more()) {
    cs_acceptContext();
    w.levels.pop();
    return;
  }
  if (tree == Tree::kOfLabelling || !level.isOpposite()) ++w.counts.choicePoints;
  ++level.tried;
  if (isCancelled<tree>()) {
    w.base = 0;
    w.levels.pop();
    return;
  }
  w.down = tryCurrent<tree>(w, level, w.bound, w.counts.choicePoints >= until);
  if (!w.down) ++w.counts.fails;
}

// On with a level for the variable that comes next. True at a solution; there is no level there, and none where
// postings of the selection fail.
template <Tree tree>
bool descend(CSwalk &w, long long until) {
  w.down = false;
  if (tree == Tree::kOfObject && isRefuted(*w.object)) return false;
  const Choice choice = choose<tree>(w);
  if (choice.variable == nullptr) return postingHolds();
  if (Level *level = open<tree>(w, choice)) tryPresent<tree>(w, *level, until);
  return false;
}

// Whether nobody would notice that a context is opened and accepted.
bool isQuiet() {
  const bool told = !solver::events.empty(), busy = solver::agenda.busy();
  return !(told | busy | solver::ports.watched);
}

// On with the next value of the newest level. When it has none the level is closed: without the context that the
// recursive searches open before they see that, which is some 80 instructions for each level.
template <Tree tree>
void goOn(CSwalk &w, long long until) {
  Level &level = w.levels.newest();
  cs_restoreContext();
  if (!level.values.anyAfterCurrent() && isQuiet()) {
    w.levels.pop();
    return;
  }
  cs_saveContext();
  level.values.advance();
  tryPresent<tree>(w, level, until);
}

template <Tree tree>
CSstatus go(CSwalk &w, long long until, CSwalkFound found, void *extra) {
  while (w.counts.choicePoints < until) {
    bool solved = false;
    if (w.down) {
      solved = descend<tree>(w, until);
    } else if (w.levels.count() == w.base) {
      return isCancelled<tree>() ? CS_STATUS_STOPPED : CS_STATUS_EXHAUSTED;
    } else {
      goOn<tree>(w, until);
    }
    if (w.down) continue;
    w.counts.solutions += solved ? 1 : 0;
    if (memoryExhausted(w)) return CS_STATUS_MEMORY;
    if (!solved || found == nullptr) continue;
    if (!found(&w, extra)) return CS_STATUS_SOLUTION;
    noteMemory(w);
  }
  return CS_STATUS_CHOICE_POINTS;
}

bool stop(CSwalk * /*walk*/, void * /*extra*/) { return false; }

void releaseAtEnd(void *walk) { destroy(static_cast<CSwalk *>(walk)); }

}  // namespace

bool enter(CSwalk &w) {
  if (!w.levels.create()) return false;
  w.root = w.now = BranchStamp::now();
  w.atEnd = {nullptr, releaseAtEnd, &w, false, nullptr};
  solver::ports.add(&w.atEnd);
  return true;
}

Choice chooseNext(CSwalk &w) {
  return w.object == nullptr ? choose<Tree::kOfLabelling>(w) : choose<Tree::kOfObject>(w);
}

Level *openLevel(CSwalk &w, const Choice &choice) {
  return w.object == nullptr ? open<Tree::kOfLabelling>(w, choice) : open<Tree::kOfObject>(w, choice);
}

bool impose(const CSwalk &w, Level &level, const Bound &bound) {
  return w.object == nullptr ? tryCurrent<Tree::kOfLabelling>(w, level, bound, true)
                             : tryCurrent<Tree::kOfObject>(w, level, bound, true);
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

CSstatus cs_goWalkTelling(CSwalk *walk, long long choicePoints, CSwalkFound found, void *extra) {
  const Turn turn(walk, Turn::From::kWhereItStands);
  if (!turn || choicePoints < 1) return CS_STATUS_REFUSED;
  constexpr long long most = std::numeric_limits<long long>::max();
  const long long before = walk->counts.choicePoints;
  const long long until = choicePoints < most - before ? before + choicePoints : most;
  const auto go = walk->object == nullptr ? walk::go<Tree::kOfLabelling> : walk::go<Tree::kOfObject>;
  return ended(*walk, go(*walk, until, found, extra));
}

CSstatus cs_goWalk(CSwalk *walk, long long choicePoints, bool stops) {
  return cs_goWalkTelling(walk, choicePoints, stops ? stop : nullptr, nullptr);
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
