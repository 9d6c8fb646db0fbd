// SPDX-License-Identifier: MIT
// Choice points: marks on the undo trail, kept as a stack. core/context.cc opens and closes them.
#pragma once

#include <cstdint>

#include "core/block_stack.h"
#include "core/state.h"

namespace koru {

struct ContextMark {
  int trailMark;
  unsigned savedLimit;   // the propagation limit in force before the context was opened
  std::uint64_t serial;  // no two contexts have the same
  int refusals;          // counted before it was opened
  int level;             // its label: how many were open with it
  unsigned untold;       // as the queue had it before
};

namespace solver {

inline KORU_STATE BlockStack<ContextMark> contexts;
inline KORU_STATE std::uint64_t contextSerial = 0;  // of the newest context ever opened
inline KORU_STATE std::uint64_t closings = 0;       // of contexts; what was done on a branch may have been undone since
inline KORU_STATE bool acceptedInside = false;      // changes were made permanent while an outer context was open

}  // namespace solver

// The same as cs_restoreAndSaveContext. Where a search has tried a value there is nothing but domains to restore, no
// event waits and nobody runs: then the context stays and becomes a new one, which saves some 60 instructions.
void renewContext();

}  // namespace koru
