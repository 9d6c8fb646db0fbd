// SPDX-License-Identifier: MIT
#include "parallel/ground.h"

#include <climits>
#include <cstring>

namespace koru::parallel {

static unsigned long long digestOf(const Task &task) {
  unsigned long long h = 0x9e3779b97f4a7c15ULL;
  const auto add = [&h](int n) { h = (h ^ static_cast<unsigned>(n)) * 0xbf58476d1ce4e5b9ULL, h ^= h >> 31; };
  const auto addVariable = [&add](CSint *v) {
    for (const int n : {cs_getMin(v), cs_getMax(v), cs_getNbElements(v), cs_getNbConstraints(v)}) add(n);
  };
  add(static_cast<int>(task.mode));
  add(task.size);
  for (int i = 0; task.array != nullptr && i < task.size; ++i) addVariable(task.array[i]);
  addVariable(task.cost);
  return h;
}

Ground::Ground(const Task &task) : task_(task) {
  if (task.mode == Mode::kMinimize && task.cost == nullptr) return;
  cs_initErr();
  if (!open() || task.mode != Mode::kMinimize) return;
  close();
  root_ = cs_saveContext();
  open();
}

unsigned long long Ground::digest() const { return task_.isObject() ? digest_ : digestOf(task_); }

Ground::~Ground() { cs_closeWalk(walk_); }

void Ground::close() {
  triedBefore_ = tried();
  cs_closeWalk(walk_);
  walk_ = nullptr;
}

bool Ground::open() {
  close();
  if (task_.isObject()) {
    CSwalkSubject subject = {};
    walk_ = cs_openSearchWalk(task_.search, &subject);
    task_.improves = subject.improves;
    digest_ = subject.digest;
  } else {
    walk_ = cs_openWalk(task_.array, task_.size, task_.select);
  }
  noteMemory();
  if (walk_ == nullptr) noteConstraint();
  return walk_ != nullptr;
}

void Ground::noteConstraint() {
  if (const char *option = cs_findUnwalkableOption(task_.search)) {
    failure_ = std::string("the search object has the option ") + option + ": such a search cannot be shared";
    return;
  }
  const char *name = cs_findConstraintWithMemory();
  if (name == nullptr) return;
  failure_ = std::string("the model has a constraint of ") + name +
             ", whose conclusions depend on what was searched before: such a search cannot be shared";
  if (std::strcmp(name, "cs_VarElement") == 0) failure_ += " (cs_VarElementOf has no such memory)";
}

void Ground::failOfMemory() { failure_ = "memory is exhausted"; }

void Ground::noteMemory() {
  if (cs_getErr() == CS_ERR_MEMORY) failOfMemory();
}

bool Ground::goTo(const Piece &piece) {
  if (walk_ == nullptr) return false;
  const CSwalkPosition position = piece.position();
  cs_initErr();
  const int reached = cs_setWalkPosition(walk_, piece.steps.data(), &position);
  if (reached == position.depth) return true;
  if (cs_getErr() == CS_ERR_MEMORY) {
    noteMemory();
  } else if (reached < 0) {
    failure_ = "the contexts of the search were closed by others";
  } else if (task_.isObject()) {
    failure_ = "at level " + std::to_string(reached + 1) +
               " of the search another process has made another decision, or come further: the model, the options, a " +
               "choice of the host's or a constraint depends on more than what has been decided";
  } else {
    const CSwalkStep &step = piece.steps[static_cast<std::size_t>(reached)];
    failure_ = "at level " + std::to_string(reached + 1) +
               " of the search another process has chosen a variable over " + std::to_string(step.least) + ".." +
               std::to_string(step.greatest) + " and given it the value " + std::to_string(step.value) +
               ", which is not possible here: the model, the selection or a constraint " +
               "depends on more than what has been decided";
  }
  return false;
}

Piece Ground::here() const {
  CSwalkPosition position = cs_getWalkPosition(walk_, nullptr, 0);
  if (position.depth < 0) position.depth = 0;
  Piece piece{Steps(static_cast<std::size_t>(position.depth)), position.base, position.done};
  cs_getWalkPosition(walk_, piece.steps.data(), position.depth);
  return piece;
}

Counts Ground::counts() const {
  const CSwalkCounts c = cs_getWalkCounts(walk_);
  return {c.choicePoints, c.fails, c.solutions};
}

static CSwalkCounts countsOf(const Counts &c) { return {c.choicePoints, c.fails, c.solutions}; }

bool Ground::keep(const Counts &counts) {
  const CSwalkCounts c = countsOf(counts);
  if (cs_keepWalkSolution(walk_, &c)) return true;
  failure_ = "no solution stands where another process has found one";
  noteMemory();
  return false;
}

void Ground::endObject(CSstatus status, const Counts &counts) {
  const CSwalkCounts c = countsOf(counts);
  triedBefore_ = tried();
  cs_endSearchWalk(walk_, status, &c);
  walk_ = nullptr;
}

// As cs_minimize: the context of the beginning is closed with the first solution, the bound stays.
bool Ground::beginPass(int bound) {
  goTo({});
  if (root_ > 0) {
    close();
    cs_restoreContextUntil(root_);
    root_ = 0;
  }
  if (!open()) return false;
  const bool possible = bound > INT_MIN && cs_LT(task_.cost, bound);
  noteMemory();
  return possible;
}

bool Ground::end(const Ending &ending) {
  if (ending.kind == Ending::kCancelled) {
    const bool minimizing = task_.mode == Mode::kMinimize;
    if (!goTo(minimizing ? Piece{} : Piece{ending.path, 0, false})) return false;
    cs_cancelSearch();
    cs_goWalk(walk_, LLONG_MAX, false);
    return true;
  }
  return goTo(ending.kind == Ending::kAtSolution ? Piece{ending.path, 0, false} : Piece{});
}

}  // namespace koru::parallel
