// SPDX-License-Identifier: MIT
// What all searches share: their counters, which keep the last search's totals after it has ended, the two flags, and
// room for one selection.
#pragma once

#include "core/branch_set.h"
#include "core/refusal.h"
#include "core/state.h"

namespace koru {

// Storage for the one search at a time that skips settled variables; see search/selection.h. Memory that is not used
// is never touched.
struct SelectionRoom {
  static constexpr int kSize = kThreads ? 2048 : 65536;  // each thread has one

  bool taken;
  std::uint64_t words[BranchSetOn::wordsFor(kSize)];
  BranchSetOn::Taken settled[kSize];
};

struct SearchState {
  int fails = 0;
  int choicePoints = 0;
  bool cancelled = false;
  bool solutionFound = false;
  SelectionRoom selectionRoom{};
};

extern KORU_STATE SearchState searchState;

// `solutionFound` belongs to cs_findAll alone, which may have another search inside it.
inline void resetCounters() {
  searchState.fails = 0;
  searchState.choicePoints = 0;
  searchState.cancelled = false;
}

// Every search has one while it runs.
class SearchRun {
 public:
  SearchRun() { resetCounters(); }

 private:
  AtWork atWork_;
};

}  // namespace koru
