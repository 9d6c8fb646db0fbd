// SPDX-License-Identifier: MIT
#include "core/check.h"

#include "core/build_mode.h"

#if defined(KORU_CHECKED) && KORU_CHECKED

#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "core/context_stack.h"

// GCOVR_EXCL_START: the tests' own checks, whose other branches end the process uncounted
namespace koru::check {

void require(bool holds, const char *what) {
  if (holds) return;
  std::fprintf(stderr, "koru: invariant violated: %s\n", what);
  std::abort();
}

void invariantsWhenIdle() {
  if (solver::checked.walk != nullptr) solver::checked.walk();
}

void noteAccept() {
  if (solver::contexts.count() > 0) solver::checked.countsMayLag = true;
}

CallbackRules::CallbackRules() : startsAndEnds_(solver::checked.startsAndEnds), contexts_(solver::contexts.count()) {}

void CallbackRules::requireKept() const {
  require(solver::checked.startsAndEnds == startsAndEnds_, "cs_init and cs_end are not called from a callback");
  require(solver::contexts.count() >= contexts_, "a callback closes only contexts that it opened");
}

static constinit std::atomic<const void *> insider{nullptr};
static constinit thread_local char self = 0;

EnteredState::EnteredState() : before_(insider.exchange(&self)) {
  require(before_ == nullptr || before_ == &self,
          "two threads are in the solver at once; koru_threads gives each thread a solver of its own");
}
EnteredState::~EnteredState() { insider.store(before_); }

void noteStartOrEnd() { ++solver::checked.startsAndEnds; }

void afterEnd() {
  const State old = solver::checked;
  solver::checked = State{};
  solver::checked.period = old.period;
  solver::checked.startsAndEnds = old.startsAndEnds;
}

}  // namespace koru::check
// GCOVR_EXCL_STOP

#endif
