// SPDX-License-Identifier: MIT
// Propagation of no-goods with two watched elements each: as long as neither of them is entailed, nothing can be
// concluded from the rest (Moskewicz et al., "Chaff: Engineering an Efficient SAT Solver", DAC 2001).
//
// Cost: a change of a variable visits the no-goods that watch it, newest watch first, O(1) for each that has no watch
// to move and O(n) otherwise.  State: the watches, which need no undoing: backtracking only makes elements less
// entailed.
#pragma once

#include "nogood/no_good_set.h"

namespace koru {

// Watches the first two elements, whatever state they are in, or the only one twice.
void startWatching(CSnoGoodSet &set, CSnoGood &noGood);
void stopWatching(CSnoGood &noGood);

// What the no-goods conclude from a change of the variable at the position. The first that fails ends it and becomes
// the newest, unless somebody walks over the set.
[[nodiscard]] bool propagateNoGoods(CSnoGoodSet &set, int position);

}  // namespace koru
