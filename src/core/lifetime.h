// SPDX-License-Identifier: MIT
// Whether there is a solver: cs_init has succeeded and cs_end has not been called since.
#pragma once

namespace koru::solver {

inline constinit bool initialised = false;

}  // namespace koru::solver
