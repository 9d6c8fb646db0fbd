// SPDX-License-Identifier: MIT
// Shortening of no-goods between two runs, by propagation at the root: decisions without which a later one is refused
// all the same are dropped, and what comes after that one with them.
//
// Cost: a propagation for each decision, and one more for each that is dropped.
#pragma once

#include "nogood/no_good_set.h"

namespace koru {

// From the newest on, each no-good once in its life, up to the first that stays as long as it is.
void shortenNewest(CSnoGoodSet &set);

}  // namespace koru
