// SPDX-License-Identifier: MIT
// CSwalk: the labelling of cs_search and cs_findAll with its levels in a stack of its own, so that it can stand still,
// be told where to go on, and hand out what is left.
//
// Each level has a context, the newest one the newest level's. Where a walk stands is the values of its levels, and
// whether the newest of them is finished with (walk.cc) or everything below it is still to come. Levels below `base`
// keep their value: the walk ends when it would need another one for them.
//
// A walk of a search object (solve/object_walk) has its choices: a level that branches in two has the values 0, the
// decision, and 1, its opposite. The bound on an objective that was imposed with a value belongs to the level: on the
// way to a position, levels that are on the path to the last solution get the bound that they had there.
#pragma once

#include <cstdint>
#include <optional>

#include "core/block_stack.h"
#include "core/branch_set.h"
#include "core/ports.h"
#include "koru_extras.h"
#include "search/branching.h"
#include "search/selection.h"

namespace koru::walk {

using Bound = std::optional<int>;  // the objective of the solution that has to be improved

// What comes next. No variable: a solution, or no choice is left.
struct Choice {
  CSint *variable;
  bool branchesInTwo = false;
  CSvalueSelection decision{};  // then
};

struct Level {
  Choice choice;
  Values values;
  int least, greatest, count;  // the variable's on entry
  long long choicePoints;      // of the walk, when the level was opened
  long long tried;             // values since then
  Bound bound{};               // imposed with the present value

  bool isOpposite() const { return choice.branchesInTwo && values.current() == 1; }
};

using Levels = BlockStack<Level>;

// The path to the last solution of a search with an objective.
struct PassedStep {
  CSwalkStep step;
  Bound bound;
};

}  // namespace koru::walk

struct CSwalk {
  CSwalk(CSint **array, int size, CSfindFreeVar select, koru::BranchSet &&positions)
      : unsettled(std::move(positions)), selection(array, size, select, unsettled) {}

  koru::BranchSet unsettled;  // the storage; the selection works on a copy of its head
  koru::Selection selection;
  koru::walk::Levels levels;
  int base = 0;
  bool down = true;          // the newest level's value stands, and what is below it is still to come
  bool lost = false;         // it stands nowhere
  bool atSolution = false;   // it has come to one, and nothing else
  bool running = false;      // one of its functions
  koru::BranchStamp root{};  // the newest context when it was opened
  koru::BranchStamp now{};   // and when a call returned
  unsigned memoryReports = 0;
  CSwalkCounts counts{};
  CSsearch *object = nullptr;                       // whose search it is, if it is one's
  koru::walk::Bound bound{};                        // of what comes
  koru::BlockStack<koru::walk::PassedStep> passed;  // created with the first bound
  koru::Observer atEnd{};                           // frees it when the solver ends
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

// Where it begins. False when memory is exhausted (reported).
[[nodiscard]] bool enter(CSwalk &w);
// Frees it, with nothing restored.
void destroy(CSwalk *w);

// What comes next where it stands.
Choice chooseNext(CSwalk &w);
// Opens a level for a choice, with a context. Null when the postings before it fail, and when there is no memory.
Level *openLevel(CSwalk &w, const Choice &choice);
// Tries the value of the newest level. False when propagation refuses it.
bool impose(const CSwalk &w, Level &level, const Bound &bound);

// Of numbers, one after the other.
class Digest {
 public:
  void add(int part) {
    value_ = (value_ ^ static_cast<unsigned>(part)) * 0xbf58476d1ce4e5b9ULL;
    value_ ^= value_ >> 29;
  }
  std::uint64_t value() const { return value_; }

 private:
  std::uint64_t value_ = 0x9e3779b97f4a7c15ULL;
};

CSwalkStep stepOf(const Level &level);
bool isSame(const CSwalkStep &a, const CSwalkStep &b);

// The parts that search objects play in these.
Choice chooseOfObject(CSsearch &s);
bool imposeOfObject(const CSsearch &s, const Level &level);
bool isRefuted(const CSsearch &s);
void leaveObject(CSwalk &w);

// What is reported from now on is the walk's.
inline void noteMemory(CSwalk &w) { w.memoryReports = solver::errors.memoryReports; }
inline bool memoryExhausted(const CSwalk &w) { return solver::errors.memoryReports != w.memoryReports; }

inline Turn::Turn(CSwalk *w, From from) : walk_(nullptr) {
  if (w == nullptr || w->running || !w->root.stands() || solver::trail.undoing()) return;
  const BranchStamp now = BranchStamp::now();
  if (from == From::kWhereItStands && (w->lost || now.level != w->now.level || now.serial != w->now.serial)) return;
  walk_ = w;
  w->running = true;
  noteMemory(*w);
}

inline Turn::~Turn() {
  if (walk_ == nullptr) return;
  walk_->running = false;
  walk_->now = BranchStamp::now();
}

}  // namespace koru::walk
