// SPDX-License-Identifier: MIT
// CSsearch, the record of a search object: what it labels, how, and how far it has come.
//
// The object opens one context when it is made, its root: what holds for the rest of the search (a bound on the
// objective, no-goods, opposites of first decisions) is posted there. Each decision on the path that still stands has a
// context of its own above it. Invariant between two calls: as many contexts are open as the last call left.
#pragma once

#include <atomic>

#include "core/block_stack.h"
#include "core/branch_set.h"
#include "core/ports.h"
#include "core/queue.h"
#include "core/state.h"
#include "koru_extras.h"
#include "solve/activity.h"
#include "solve/clock.h"
#include "solve/labelled.h"
#include "solve/neighbourhood.h"
#include "solve/postponed.h"
#include "solve/random.h"
#include "solve/run_limits.h"
#include "solve/step.h"
#include "solve/weights.h"

struct CSsearch {
  // What is labelled, and how.
  koru::solve::Labelled labelled;
  CSsearchOptions options{};
  CSint *objective = nullptr;
  int hostSize = 0;  // labelled variables but the objective, which comes last

  // Where it stands.
  CSstatus status = CS_STATUS_READY;
  koru::BranchStamp root{};  // its own context
  int openContexts = 0;      // when the last call returned
  bool running = false;      // cs_nextSolution
  CSsearch *older = nullptr;
  koru::Observer atEnd{};  // frees the object when the solver ends

  CSstatus ending = CS_STATUS_READY;  // why it has to end, when it has
  bool refuted = false;               // the postings before it have left no solution
  koru::Supervisor outerSupervisor;   // whom it has taken the place of while it runs

  // The run.
  koru::BlockStack<koru::solve::Step> path;
  koru::BranchSet unsettled;
  int firstUnsettled = 0;  // all positions before are out of the set
  koru::solve::Random random{0};
  koru::solve::RunLimits runLimits{0, 0, 0};
  std::int64_t runFails = 0;
  std::int64_t runLimit = koru::solve::kNoLimit;
  bool inNeighbourhood = false;
  long long runBegan = 0;                        // at so many choice points
  long long triedComplete = 0, triedNearby = 0;  // in complete runs, in neighbourhoods
  koru::solve::Postponed postponed;
  int conflict = -1;  // the position that failed last, when it is to be chosen first
  unsigned memoryReports = 0;

  // What it has learnt.
  koru::solve::Weights weights;
  koru::solve::Activity activity;
  koru::solve::Neighbourhood neighbourhood;
  CSnoGoodSet *noGoods = nullptr;
  std::uint64_t noGoodBytes = 0;  // of all that were ever learnt

  CSsearchStats stats{};
  unsigned long long wakingsNoted = 0;          // of those that the solver counts
  double nextProgress = 0;                      // seconds
  long long nextLook = 0;                       // at so many choice points the limits are looked at
  long long failLimit = koru::solve::kNoLimit;  // and at so many fails
  koru::solve::Clock clock;
  std::atomic<bool> stopped{false};
};

namespace koru::solver {

inline KORU_STATE CSsearch *newestSearch = nullptr;

}  // namespace koru::solver

namespace koru::solve {

inline bool hasSolution(const CSsearch &s) { return s.stats.solutions > 0; }
inline bool minimizes(const CSsearch &s) { return s.options.minimize != nullptr; }
inline bool hasBegun(const CSsearch &s) { return s.status != CS_STATUS_READY; }

// Its own contexts are the newest ones, and nobody is at work on it.
bool isItsTurn(const CSsearch &s);
// What its options ask for. False when memory is exhausted (reported).
[[nodiscard]] bool prepare(CSsearch &s);
// Everything as it was when the object was made.
void closeRoot(CSsearch &s);
// An objective better than `best`.
[[nodiscard]] bool postBetter(const CSsearch &s, int best);

}  // namespace koru::solve
