// SPDX-License-Identifier: MIT
// Refusals: postings and relations that returned their failure value to the host itself, which may have overlooked it.
//
// Each door to them, the exported function at the bottom of its file, hands its result through door(). A refusal counts
// while the solver is at rest; inside a search or a callback it is that one's to deal with. A restored context takes
// the refusals since it was opened away, with what was refused.
// Cost: a test of the result; the rest only when it is a refusal.
//
// The doors of all that restrict, and return no variable, ask before whether they are to be left out:
//
//   bool cs_Le(CSint *x, CSint *y) { return leftOut("cs_Le") || door(post("cs_Le", x, y)); }
#pragma once

#include "core/ports.h"
#include "core/state.h"

namespace koru {

namespace solver {

inline KORU_STATE int refusals = 0;
inline KORU_STATE int busy = 0;  // searches and calls that answer for the refusals inside them, one inside the other

}  // namespace solver

// Whether the host itself has called, and nothing is running that answers for what the call comes to.
bool hostHasCalled();

// False without a censor, inside a context, and where the host has not called.
[[gnu::cold, gnu::noinline]] bool askCensor(const char *constantName, const void *caller);

// For the first thing that a door does: true when it is to do nothing, and say that all is well. Cost: a test.
[[gnu::always_inline]] inline bool leftOut(const char *constantName, const void *caller = __builtin_return_address(0)) {
  return solver::attention && askCensor(constantName, caller);
}

// Counts a refusal, unless the solver is at work.
[[gnu::cold, gnu::noinline]] void noteRefusal();

// The result of a door: false, 0 or null is a refusal.
template <class Result>
Result door(Result result) {
  if (!result) [[unlikely]]
    noteRefusal();
  return result;
}

// While one lives, refusals do not count.
class AtWork {
 public:
  AtWork() { ++solver::busy; }
  AtWork(const AtWork &) = delete;
  AtWork &operator=(const AtWork &) = delete;
  ~AtWork() { --solver::busy; }
};

}  // namespace koru
