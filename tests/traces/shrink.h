// SPDX-License-Identifier: MIT
// Make a failing trace small: lines are taken out, lists and numbers made shorter and smaller, as long as it fails in
// the same way.
#pragma once

#include <functional>

#include "traces/trace.h"

namespace koru::traces {

using StillFails = std::function<bool(const Trace &)>;

// Asks at most `attempts` times.
Trace shrink(Trace trace, const StillFails &stillFails, int attempts = 3000);

}  // namespace koru::traces
