// SPDX-License-Identifier: MIT
#pragma once

#include "constraints/linear/terms.h"

namespace koru {
class Posting;
}

namespace koru::linear {

// Each posts one constraint of `sum`'s kind under the posting's site, to hold while the guard asks for it.
[[nodiscard]] bool postBounded(Posting &posting, const Sum &sum, const truth::Guard &guard);
[[nodiscard]] bool postDiffers(Posting &posting, const Sum &sum, const truth::Guard &guard);

}  // namespace koru::linear
