// SPDX-License-Identifier: MIT
// cs_getWalkPosition, cs_setWalkPosition, cs_splitWalk: where a walk stands, and how it comes to stand elsewhere.
//
// The way to a position is made by choosing and trying the values of its steps, uncounted. What the present path has in
// common with it is kept.  Cost: a context and a propagation for each step that is not in common.
#include <algorithm>

#include "core/create.h"
#include "search/walk.h"

namespace koru::walk {

namespace {

// Of what a level was chosen from: a different choice, or a different state, is unlikely to have the same.
unsigned checkOf(const Level &level) {
  Digest digest;
  const Choice &choice = level.choice;
  for (const int part : {solver::variables.indexOf(choice.variable), level.count}) digest.add(part);
  if (choice.branchesInTwo)
    for (const int part : {level.least, level.greatest, choice.decision.method, choice.decision.value})
      digest.add(part);
  return static_cast<unsigned>(digest.value() >> 16);
}

// The steps of the first `depth` levels, as far as there is room.
void writeSteps(const CSwalk &w, int depth, CSwalkStep *steps, int room) {
  for (int i = 0; i < std::min(depth, room); ++i) steps[i] = stepOf(w.levels.at(i));
}

// Which bound goes with the steps of a position, one after the other.
class Bounds {
 public:
  explicit Bounds(const CSwalk &w) : w_(w) {}

  Bound next(const CSwalkStep &step) {
    isPassed_ = isPassed_ && at_ < w_.passed.count() && isSame(w_.passed.at(at_).step, step);
    return isPassed_ ? w_.passed.at(at_++).bound : w_.bound;
  }

 private:
  const CSwalk &w_;
  int at_ = 0;
  bool isPassed_ = true;
};

// How many levels stand with the value that a position has there. That of the newest level stands only on the way down,
// and none when somebody else has closed contexts.
int inCommon(const CSwalk &w, const CSwalkStep *steps, const CSwalkPosition &position, Bounds bounds) {
  if (w.lost || !w.now.stands()) return 0;
  const int most = std::min(w.levels.count() - (w.down ? 0 : 1), position.depth - (position.done ? 1 : 0));
  int n = 0;
  while (n < most && isSame(stepOf(w.levels.at(n)), steps[n]) && w.levels.at(n).bound == bounds.next(steps[n])) ++n;
  return std::max(n, 0);
}

void backTo(CSwalk &w, int depth) {
  const int open = w.root.level + depth;
  if (solver::contexts.count() > open) cs_restoreContextUntil(open + 1);
  w.levels.popTo(std::min(depth, w.levels.count()));
}

// A level as the step says. Its value is tried, unless it is `done`.
bool take(CSwalk &w, const CSwalkStep &step, bool done, const Bound &bound) {
  const Choice choice = chooseNext(w);
  Level *level = choice.variable != nullptr ? openLevel(w, choice) : nullptr;
  if (level == nullptr || !level->values.goTo(step.value) || !isSame(stepOf(*level), step)) return false;
  return done || impose(w, *level, bound);
}

bool isPosition(const CSwalkStep *steps, const CSwalkPosition *position) {
  if (position == nullptr) return false;
  const CSwalkPosition &p = *position;
  return p.depth >= 0 && p.base >= 0 && p.base <= p.depth && (steps != nullptr || p.depth == 0) &&
         (!p.done || p.depth > 0);
}

}  // namespace

CSwalkStep stepOf(const Level &level) {
  const bool inTwo = level.choice.branchesInTwo;
  return {level.values.current(), inTwo ? 0 : level.least, inTwo ? 1 : level.greatest, checkOf(level)};
}

bool isSame(const CSwalkStep &a, const CSwalkStep &b) {
  return a.value == b.value && a.least == b.least && a.greatest == b.greatest && a.check == b.check;
}

}  // namespace koru::walk

using namespace koru;
using namespace koru::walk;

CSwalkPosition cs_getWalkPosition(const CSwalk *walk, CSwalkStep *steps, int room) {
  if (walk == nullptr || walk->lost) return {-1, 0, false};
  if (steps != nullptr) writeSteps(*walk, walk->levels.count(), steps, room);
  return {walk->levels.count(), walk->base, !walk->down};
}

int cs_setWalkPosition(CSwalk *walk, const CSwalkStep *steps, const CSwalkPosition *position) {
  const Turn turn(walk, Turn::From::kTheRoot);
  if (!turn || !isPosition(steps, position)) return -1;
  CSwalk &w = *walk;
  Bounds bounds(w);
  int reached = inCommon(w, steps, *position, bounds);
  backTo(w, reached);
  w.lost = true;
  w.atSolution = false;
  for (int i = 0; i < reached; ++i) bounds.next(steps[i]);
  for (; reached < position->depth; ++reached) {
    const bool done = position->done && reached + 1 == position->depth;
    if (!take(w, steps[reached], done, bounds.next(steps[reached]))) return reached;
  }
  w.base = position->base;
  w.down = !position->done;
  w.lost = false;
  return reached;
}

int cs_splitWalk(CSwalk *walk, long long least, CSwalkStep *steps, int room) {
  const Turn turn(walk, Turn::From::kWhereItStands);
  if (!turn || steps == nullptr) return 0;
  CSwalk &w = *walk;
  // The newest level's own values, once one is finished with, are all that the walk has.
  const int most = w.levels.count() - (w.down ? 0 : 1);
  for (int i = w.base; i < most; ++i) {
    const Level &level = w.levels.at(i);
    if (!level.values.anyAfterCurrent()) continue;
    if (i >= room || (w.counts.choicePoints - level.choicePoints) / std::max(level.tried, 1LL) < least) return 0;
    writeSteps(w, i + 1, steps, room);
    w.base = i + 1;
    return i + 1;
  }
  return 0;
}
