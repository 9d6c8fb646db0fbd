// SPDX-License-Identifier: MIT
#include "search/state.h"

#include "koru.h"

namespace koru {

constinit SearchState searchState;

}  // namespace koru

void cs_cancelSearch(void) { koru::searchState.cancelled = true; }
