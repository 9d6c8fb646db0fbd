// SPDX-License-Identifier: MIT
// The constraint that a table is, for those that are made of several: a row set, filtered to domain consistency in a
// run.
#pragma once

#include "constraints/strong/row_set.h"
#include "core/post.h"

namespace koru::table {

struct Table : Deferred {
  RowSet rows;
};

[[nodiscard]] bool filter(Table &c);

inline constexpr auto kTable = deferred<filter>(Rank::kQuadratic);

}  // namespace koru::table
