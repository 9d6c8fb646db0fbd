// SPDX-License-Identifier: MIT
// The invariant checker of test builds: a walk over the whole state.
#pragma once

namespace koru::check {

// Does nothing while handlers run, and else every so many times, as the state of core/check says.
void walkWhenIdle();

}  // namespace koru::check
