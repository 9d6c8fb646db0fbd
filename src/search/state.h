// SPDX-License-Identifier: MIT
// What all searches share: their counters and the two flags. They keep the last search's totals after it has ended.
#pragma once

namespace koru {

struct SearchState {
  int fails = 0;
  int choicePoints = 0;
  bool cancelled = false;
  bool solutionFound = false;
};

extern constinit SearchState searchState;

// Every search begins with it. `solutionFound` belongs to cs_findAll alone, which may have another search inside it.
inline void beginSearch() {
  searchState.fails = 0;
  searchState.choicePoints = 0;
  searchState.cancelled = false;
}

}  // namespace koru
