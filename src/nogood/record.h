// SPDX-License-Identifier: MIT
// Recording: what a run that gave up at its fail limit has refuted, read off the path of decisions that it stood on
// (nld-nogoods: Lecoutre, Sais, Tabary, Vidal, "Nogood Recording from Restarts", IJCAI 2007).
//
// A decision that is its level's last follows from those above it, the others having been refuted. So with the
// decisions that are not last as a prefix, root first, these are no-goods:
//   1. all of them: the deepest level's decision was refused;
//   2. for each last decision above the deepest that is not, those above it and its negation, from the deepest such
//      level towards the root;
//   3. at the level nearest the root that has a refuted decision and is at another one that is not last, those above
//      it and the first decision that was refuted there.
// Cost: the depth of the path for each no-good.  State: the scratch array, which grows to the longest path.
#pragma once

#include "nogood/no_good_set.h"
#include "search/selector_engine.h"

namespace koru {

class Recorder {
 public:
  explicit Recorder(CSnoGoodSet *set) : set_(set) {}

  // To be called before each run. Refusals for want of memory prove nothing: nothing is recorded of a run with one.
  void beginRun();

  PathRecorder hook();  // without a set, one that does nothing

 private:
  void record(const LevelNode &deepest, int depth);
  bool reserve(int count);
  int collect(const LevelNode *deepest) const;
  void recordDecisions(const LevelNode &deepest);
  void recordAlternatives(const LevelNode &deepest);
  void recordFirstFailed(const LevelNode &deepest);
  void recordWith(const LevelNode &level, const CSvalueSelection &decision);

  CSnoGoodSet *set_;
  Buffer<NoGoodElement> scratch_;
  int capacity_ = 0;
  unsigned reportsBefore_ = 0;
};

}  // namespace koru
