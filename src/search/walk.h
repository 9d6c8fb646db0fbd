// SPDX-License-Identifier: MIT
// CSwalk: the labelling of cs_search and cs_findAll with its levels in a stack of its own, so that it can stand still,
// be told where to go on, and hand out what is left.
//
// Each level has a context, the newest one the newest level's. Where a walk stands is the values of its levels, and
// whether the newest of them is finished with (walk.cc) or everything below it is still to come. Levels below `base`
// keep their value: the walk ends when it would need another one for them.
#pragma once

#include "core/block_stack.h"
#include "core/branch_set.h"
#include "core/ports.h"
#include "koru_extras.h"
#include "search/branching.h"
#include "search/selection.h"

namespace koru::walk {

struct Level {
  CSint *variable;
  Values values;
  int least, greatest, count;  // the variable's on entry
  long long choicePoints;      // of the walk, when the level was opened
  long long tried;             // values since then
};

}  // namespace koru::walk

struct CSwalk {
  CSwalk(CSint **array, int size, CSfindFreeVar select, koru::BranchSet &&positions)
      : unsettled(std::move(positions)), selection(array, size, select, unsettled) {}

  koru::BranchSet unsettled;  // the storage; the selection works on a copy of its head
  koru::Selection selection;
  koru::BlockStack<koru::walk::Level> levels;
  int base = 0;
  bool down = true;          // the newest level's value stands, and what is below it is still to come
  bool lost = false;         // it stands nowhere
  bool running = false;      // one of its functions
  koru::BranchStamp root{};  // the newest context when it was opened
  koru::BranchStamp now{};   // and when a call returned
  unsigned memoryReports = 0;
  CSwalkCounts counts{};
  koru::Observer atEnd{};  // frees it when the solver ends
};

namespace koru::walk {

// While one lives, the walk is at work. False as a bool when it may not go on: one of its functions is running, or the
// contexts are not those that it left.
class Turn {
 public:
  enum class From { kWhereItStands, kTheRoot };

  Turn(CSwalk *w, From from);
  Turn(const Turn &) = delete;
  Turn &operator=(const Turn &) = delete;
  ~Turn();
  explicit operator bool() const { return walk_ != nullptr; }

 private:
  AtWork atWork_;
  CSwalk *walk_;
};

// Opens a level for a variable, with a context. Null when the postings before it fail, and when there is no memory.
Level *openLevel(CSwalk &w, CSint *variable);

inline bool memoryExhausted(const CSwalk &w) { return solver::errors.memoryReports != w.memoryReports; }
inline Level &newest(CSwalk &w) { return w.levels.at(w.levels.count() - 1); }

}  // namespace koru::walk
