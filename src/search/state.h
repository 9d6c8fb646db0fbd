// SPDX-License-Identifier: MIT
// What all searches share: their counters, which keep the last search's totals after it has ended, the two flags, and
// room for one selection.
#pragma once

#include "core/branch_set.h"
#include "core/errors.h"
#include "core/refusal.h"
#include "core/state.h"
#include "koru_extras.h"
#include "search/observer.h"

namespace koru {

// Storage for the one search at a time that skips settled variables, as many blocks of them as an array has or fit in;
// see search/selection.h. Memory that is not used is never touched.
struct SelectionRoom {
  static constexpr int kSize = kThreads ? 2048 : 65536;  // a power of two; each thread has one room

  bool taken;
  std::uint64_t words[BranchSetOn::wordsFor(kSize)];
  BranchSetOn::Taken settled[kSize];
};

struct SearchState {
  int fails = 0;
  int choicePoints = 0;
  bool cancelled = false;
  bool solutionFound = false;
  CSstatus status = CS_STATUS_READY;  // of the search that ended last
};

inline KORU_STATE SearchState searchState;
inline KORU_STATE SelectionRoom selectionRoom{};

// `solutionFound` belongs to cs_findAll alone, which may have another search inside it.
inline void resetCounters() {
  searchState.fails = 0;
  searchState.choicePoints = 0;
  searchState.cancelled = false;
}

// Every search has one while it runs.
class SearchRun {
 public:
  enum class Counters { kReset, kKeep };

  explicit SearchRun(Counters counters = Counters::kReset) : reportsBefore_(solver::errors.memoryReports) {
    if (counters == Counters::kReset) resetCounters();
    tellBegin(Engine::kLabelling);
  }
  SearchRun(const SearchRun &) = delete;
  SearchRun &operator=(const SearchRun &) = delete;
  ~SearchRun() { tellEnd(searchState.status); }

  // Notes why the search has ended, and gives its result back. `complete` is what true says: of a search for one
  // solution CS_STATUS_SOLUTION, of one that goes on to the end what that end proves.
  bool ended(bool result, bool limitReached = false, CSstatus complete = CS_STATUS_SOLUTION) const;
  // Without having begun: false.
  static bool refused() {
    searchState.status = CS_STATUS_REFUSED;
    return false;
  }

 private:
  CSstatus reasonFor(bool result, bool limitReached, CSstatus complete) const;

  unsigned reportsBefore_;
  AtWork atWork_;
};

}  // namespace koru
