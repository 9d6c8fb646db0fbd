// SPDX-License-Identifier: MIT
// A process's own solver in a search that is shared: what is searched for, the walk, and the passes of a minimisation.
#pragma once

#include <string>

#include "parallel/piece.h"

namespace koru::parallel {

enum class Mode { kAll, kFirst, kMinimize, kObject };

// Whether to go on.
using FoundByObject = bool (*)(CSsearch *search, void *extra);

struct Task {
  Mode mode;
  CSint **array;
  int size;
  CSfindFreeVar select;
  CSint *cost = nullptr;
  CSfoundCallback found = nullptr;
  CSfoundCostCallback foundCost = nullptr;
  // Of a search object.
  CSsearch *search = nullptr;
  bool improves = false;  // it has an objective
  FoundByObject foundByObject = nullptr;
  void *extra = nullptr;

  bool isObject() const { return mode == Mode::kObject; }
  bool firstOnly() const { return isObject() ? improves : mode != Mode::kAll; }
  // Whether paths to solutions are of interest, and not only how many there are.
  bool wantsPaths() const { return firstOnly() || found != nullptr || foundByObject != nullptr; }
};

// How a search ends, in every process alike.
struct Ending {
  enum Kind { kRestored, kAtSolution, kCancelled, kObject };

  Kind kind = kRestored;
  Steps path;  // to the solution, where it is left in place or was the last one before a cancel
  CSstatus status = CS_STATUS_EXHAUSTED;  // of a search object
};

class Ground {
 public:
  explicit Ground(const Task &task);
  Ground(const Ground &) = delete;
  Ground &operator=(const Ground &) = delete;
  ~Ground();

  const Task &task() const { return task_; }
  // False when the search refuses its arguments; where there is no memory for a walk, or a constraint that a walk
  // refuses, failure() says so.
  bool ready() const { return walk_ != nullptr; }
  CSwalk *walk() const { return walk_; }
  // Of the model as it is at the beginning, as far as it is labelled; to be asked for before anything else.
  unsigned long long digest() const;

  // False when that cannot be: failure() says how.
  bool goTo(const Piece &piece);
  Piece here() const;
  Counts counts() const;
  // Choice points of all walks: what was counted, and what was searched in vain.
  long long tried() const { return triedBefore_ + counts().choicePoints; }

  // The solution that stands is one of the search object's; false when failure() tells of memory.
  bool keep(const Counts &counts);
  // The search object ends.
  void endObject(CSstatus status, const Counts &counts);

  // From the root on, all solutions cost less; false when that cannot be, or failure() tells of memory. The walk begins
  // anew.
  bool beginPass(int bound);
  // Choice points and fails that a cancel counts are in the counts then.
  bool end(const Ending &ending);
  const std::string &failure() const { return failure_; }
  void failOfMemory();

 private:
  void noteMemory();  // a failure when the error code tells of it
  bool open();
  void close();
  void noteConstraint();  // a failure when there is one that a walk refuses

  Task task_;
  unsigned long long digest_ = 0;  // of a search object
  CSwalk *walk_ = nullptr;
  long long triedBefore_ = 0;  // by walks that are closed
  int root_ = 0;               // the context that a minimisation opens; 0 when it is closed again
  std::string failure_;
};

}  // namespace koru::parallel
