// SPDX-License-Identifier: MIT
// How much time two tasks have to be moved about in, when the first comes first, and when the second does.
#pragma once

#include <algorithm>

#include "core/variable.h"
#include "koru_extras.h"

namespace koru::solve {

// Not negative: an order without room is decided.
inline std::int64_t roomBetween(const CSint *start, const CSint *duration, const CSint *next) {
  return std::max<std::int64_t>(std::int64_t{next->max} - start->min - duration->min, 0);
}
inline std::int64_t roomFirst(const CSorder &o) { return roomBetween(o.starts[0], o.durations[0], o.starts[1]); }
inline std::int64_t roomSecond(const CSorder &o) { return roomBetween(o.starts[1], o.durations[1], o.starts[0]); }

}  // namespace koru::solve
