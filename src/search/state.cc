// SPDX-License-Identifier: MIT
#include "search/state.h"

#include "core/state.h"
#include "koru.h"

namespace koru {

KORU_STATE SearchState searchState;

}  // namespace koru

void cs_cancelSearch(void) { koru::searchState.cancelled = true; }
