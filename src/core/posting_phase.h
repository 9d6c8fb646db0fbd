// SPDX-License-Identifier: MIT
// cs_beginPosting and cs_endPosting: between them the agenda's runs wait, until a context or a search ends it.
#pragma once

#include "core/branch_set.h"
#include "core/state.h"

namespace koru {

// Ends a posting that is open; those who wait are run. False when that fails, or has failed before and nobody was told,
// as long as the state in which it did stands. Searches and contexts begin with it where the agenda is unsettled.
bool endPosting();

namespace solver {

// When the latest failure that nobody was told of was.
inline KORU_STATE BranchStamp postingFailedAt{};

}  // namespace solver

}  // namespace koru
