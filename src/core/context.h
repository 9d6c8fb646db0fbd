// SPDX-License-Identifier: MIT
// Choice points: marks on the undo trail, kept as a stack.
#pragma once

#include <cstdint>

namespace koru {

struct ContextMark {
  int trailMark;
  unsigned savedLimit;   // the propagation limit in force before the context was opened
  std::uint64_t serial;  // no two contexts have the same
};

}  // namespace koru
