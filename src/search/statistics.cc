// SPDX-License-Identifier: MIT
// Search statistics.
#include <cstdio>

#include "core/solver.h"
#include "search/state.h"

using koru::searchState;

int cs_getNbFails(void) { return searchState.fails; }

int cs_getNbChoicePoints(void) { return searchState.choicePoints; }

void cs_fprintStats(FILE *f) {
  if (f == nullptr) return;
  const koru::Trail &trail = koru::solver::trail;
  std::fprintf(f, "\nNb Fails = %d\n", searchState.fails);
  std::fprintf(f, "Nb Choice Points = %d\n", searchState.choicePoints);
  std::fprintf(f, "Heap Size = %d\n", trail.blockCount() * koru::Trail::kCapacity);
}

void cs_printStats(void) { cs_fprintStats(stdout); }
