// SPDX-License-Identifier: MIT
// Limits of a search, stopping it, and telling of its progress.
#pragma once

#include "solve/search_object.h"

namespace koru::solve {

// CS_STATUS_READY when the search may go on. Tells of progress when it is time. Cost: a few comparisons; the clock is
// read once in 32 times.
CSstatus limitReached(CSsearch &s);

void tellProgress(CSsearch &s);

}  // namespace koru::solve
