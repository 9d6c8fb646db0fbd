// SPDX-License-Identifier: MIT
// What test builds check: the state's invariants, at moments when all of them hold, and the rules for callbacks. The
// first thing that is not as it must be ends the process with a message. In release builds the functions are neither
// compiled nor called, and the state is left alone.
//
// The walk over the whole state, core/invariants, stands above everything that it looks at and is installed by cs_init.
#pragma once

#include <type_traits>

#include "core/build_mode.h"
#include "core/state.h"

namespace koru::check {

struct State {
  int posters = 0;            // postings under way: they hold references of their own
  bool countsMayLag = false;  // an inner context was accepted: an outer restore may write back too high a count
  int period = 1;             // check every so many times
  int untilNext = 1;
  int startsAndEnds = 0;  // calls of cs_init and cs_end
  void (*walk)() = nullptr;
};

// Ends the process with a message when the condition does not hold.
void require(bool holds, const char *what);

// After each outermost propagation, restore and accept; does nothing while handlers run.
void invariantsWhenIdle();

// To be called after contexts were accepted: if others remain open, counts may lag from now on.
void noteAccept();

// Rules that callbacks are bound by: no cs_init and cs_end, and no context closed that was open before. Made before a
// handler is called, asked when it returns; a handler that leaves by an exception or longjmp is never asked.
class CallbackRules {
 public:
  CallbackRules();
  void requireKept() const;

 private:
  int startsAndEnds_;
  int contexts_;
};

// Ends the process with a message when two threads are inside the state at the same time. A thread may take over from
// another that is outside.
class EnteredState {
 public:
  EnteredState();
  EnteredState(const EnteredState &) = delete;
  EnteredState &operator=(const EnteredState &) = delete;
  ~EnteredState();

 private:
  const void *before_;
};
struct NothingEntered {};
using Entered = std::conditional_t<kChecked && !kThreads, EnteredState, NothingEntered>;

void noteStartOrEnd();
void afterEnd();

}  // namespace koru::check

namespace koru::solver {

inline KORU_STATE check::State checked;

}  // namespace koru::solver
