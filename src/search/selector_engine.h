// SPDX-License-Identifier: MIT
// The selector-driven engine, for the searches that run it once or again and again.
//
// Each level asks the selector of its variable for decisions and tries them in turn; the engine looks one decision
// ahead, so a level knows while it tries a decision whether that is its last. Levels are linked towards the root, for a
// search that learns from the path on which the fail limit was reached.
#pragma once

#include "koru.h"

namespace koru {

// One for each level, on the stack.
struct LevelNode {
  const LevelNode *parent;       // null at depth 0
  int index;                     // of the level's variable
  CSvalueSelection decision;     // being tried
  CSvalueSelection firstFailed;  // the first decision tried here that failed, if hasFirstFailed
  bool hasFirstFailed;
  bool isLast;  // the decision being tried is the level's last
};

// Told, when `record` is set, of the path to the level whose refused decision reached the fail limit. The contexts of
// the path are still open then.
struct PathRecorder {
  void (*record)(void *argument, const LevelNode &deepest, int depth) = nullptr;
  void *argument = nullptr;
};

// A record without hooks, for searches that are given none.
const CSsearchNotify &noHooks();

// One run. It resets no counter and calls neither searchStart nor searchEnd, which is left to the entry points.
struct SelectorRun {
  CSint **array;
  CSvalueSelector **selectors;  // selectors[i] serves array[i]
  int size;
  CSfindFreeVarIndex select;
  const CSsearchNotify *notify;  // never null
  int failLimit;                 // none when < 1
  PathRecorder recorder;
  int fails = 0;  // of this run; the shared counter goes on as well

  bool search() { return label(nullptr, 0); }

 private:
  struct Level;

  bool label(const LevelNode *parent, int depth);
  bool acceptSolution(int depth);
  bool next(Level &level, CSvalueSelection &decision) const;
  bool end(Level &level) const;
  bool open(const Level &level, int depth) const;
  bool post(const Level &level, int depth);
  void giveUp(Level &level, int depth, bool refusedAtLimit) const;
  void countFail();
  bool limitReached() const { return failLimit > 0 && fails >= failLimit; }
};

}  // namespace koru
