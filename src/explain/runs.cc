// SPDX-License-Identifier: MIT
// Deliberate: after a refusal nothing is left out or recorded any more: what follows cannot be what the model has no
// solution for.
#include "explain/runs.h"

#include "core/solver.h"
#include "search/state.h"

namespace koru::explain {

namespace {

// The model may have ended it, and begun others.
class SolverOfARun {
 public:
  explicit SolverOfARun(const Errors &handlers) {
    cs_init();
    if (!solver::initialised) return;
    solver::errors.notInstantiated = handlers.notInstantiated;
    solver::errors.overflow = handlers.overflow;
    solver::errors.memory = handlers.memory;
    searchState.status = CS_STATUS_READY;
  }
  SolverOfARun(const SolverOfARun &) = delete;
  SolverOfARun &operator=(const SolverOfARun &) = delete;
  ~SolverOfARun() { cs_end(); }
};

bool wasGivenUp(CSstatus status) { return status == CS_STATUS_FAILS || status == CS_STATUS_STOPPED; }

}  // namespace

Runs::Runs(CSmodel model, void *extra, const Errors &handlers) : model_(model), extra_(extra), handlers_(handlers) {
  setCensor({leavesOut, this});
}

Runs::~Runs() { setCensor({}); }

bool Runs::leavesOut(void *self, const Poster &poster) { return static_cast<Runs *>(self)->leavesOut(poster); }

bool Runs::leavesOut(const Poster &poster) {
  if (what_ == What::kMakeAll || solver::refusals > 0) return false;
  const char *text = solver::ports.locatorText();
  if (what_ == What::kRecord) {
    if (!calls_.record(poster, text)) memory_ = true;
    return leaveOut_;
  }
  const int call = calls_.lookUp(poster, text);
  return call == Calls::kNone ? !othersToo_ : !on_[call];
}

Answer Runs::ask() const {
  if (solver::errors.memoryReports > 0) return Answer::kMemory;
  const int said = model_(extra_);
  // cppcheck-suppress identicalConditionAfterEarlyExit; the model has run in between
  if (memory_ || solver::errors.memoryReports > 0) return Answer::kMemory;
  if (said == CS_MODEL_STOP) return Answer::kStop;
  if (solver::refusals > 0) return Answer::kNone;
  if (said == CS_MODEL_NONE) return wasGivenUp(searchState.status) ? Answer::kUnknown : Answer::kNone;
  return said > 0 ? Answer::kSolution : Answer::kUnknown;
}

Answer Runs::go(What what) {
  what_ = what;
  ++count_;
  const SolverOfARun own(handlers_);
  return solver::initialised ? ask() : Answer::kMemory;
}

Answer Runs::record(bool leaveOut) {
  leaveOut_ = leaveOut;
  return go(What::kRecord);
}

Answer Runs::run(const bool *on, bool othersToo) {
  on_ = on;
  othersToo_ = othersToo;
  calls_.rewind();
  return go(What::kChoose);
}

Answer Runs::runAll() { return go(What::kMakeAll); }

}  // namespace koru::explain
