// SPDX-License-Identifier: MIT
// Which options a search accepts.
#pragma once

#include "koru_extras.h"

namespace koru::solve {

bool isAcceptable(const CSsearchOptions &options);
// For variables, or for orders of tasks.
bool isOrder(int order, bool ofOrders, const CSsearchOptions &options);
bool isValueOrder(int value, bool ofOrders, const CSsearchOptions &options);

// With the defaults in place of zeros.
CSsearchOptions withDefaults(CSsearchOptions options);

}  // namespace koru::solve
