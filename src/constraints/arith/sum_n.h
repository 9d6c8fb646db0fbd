// SPDX-License-Identifier: MIT
#pragma once

#include "core/post.h"

namespace koru::sum_n {

// The sum of n variables as a new variable under the posting's site: a constant 0 for n < 1, the variable itself for
// n = 1; null on failure. The array is kept; `owner` keeps it alive when it is not the host's.
[[nodiscard]] CSint *post(Posting &posting, CSint **addends, int n, const Shared<CSint *> &owner);

}  // namespace koru::sum_n
