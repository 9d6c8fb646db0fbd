// SPDX-License-Identifier: MIT
#pragma once

#include "core/post.h"

namespace koru::sum {

// x - y as a new variable under the posting's site; null on failure.
[[nodiscard]] CSint *postDifference(Posting &posting, CSint *x, CSint *y);

}  // namespace koru::sum
