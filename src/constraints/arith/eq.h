// SPDX-License-Identifier: MIT
#pragma once

#include "core/narrow.h"

namespace koru::eq {

// Makes x and y agree on one value: removed from either when the other does not hold it.
[[nodiscard]] inline bool alignValue(CSint *x, CSint *y, int v) {
  const bool inX = contains(x, v);
  const bool inY = contains(y, v);
  if (inX == inY) return true;
  return removeValue(inX ? x : y, v);
}

}  // namespace koru::eq
