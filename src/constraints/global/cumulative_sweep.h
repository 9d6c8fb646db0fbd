// SPDX-License-Identifier: MIT
#pragma once

#include "constraints/global/cumulative_resource.h"

namespace koru::cumulative {

// The main propagation, caused by a change of a task that lies in [a, b). False: fail.
[[nodiscard]] bool sweep(Resource &r, Time a, Time b);

}  // namespace koru::cumulative
