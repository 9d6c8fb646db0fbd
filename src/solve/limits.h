// SPDX-License-Identifier: MIT
// Limits of a search, stopping it, and telling of its progress.
#pragma once

#include "solve/search_object.h"

namespace koru::solve {

// CS_STATUS_READY when the search may go on. Tells of progress when it is time. Cost: a few comparisons; the clock is
// read once in 32 times.
CSstatus limitReached(CSsearch &s);

// The same for what is honoured inside a propagation too: the clock, memory and being stopped. Remembers what it says,
// so that the search ends at its next look.
bool mustEndNow(CSsearch &s);

void tellProgress(CSsearch &s);

// Brings the statistics up to date with the solver's count.
void noteWakings(CSsearch &s);

}  // namespace koru::solve
