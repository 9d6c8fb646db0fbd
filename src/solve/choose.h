// SPDX-License-Identifier: MIT
// What a search labels next, and with which decision.
#pragma once

#include "solve/search_object.h"

namespace koru::solve {

// The position of a variable that is not bound; or one of these.
constexpr int kAllBound = -1;
constexpr int kAllPostponed = -2;  // of the phase whose turn it is
int choosePosition(CSsearch &s);

// For a variable that is not bound. Never one that its domain settles already.
CSvalueSelection chooseDecision(CSsearch &s, const Phase &phase, int position);

// The values of a phase that can be tried one after the other without imposing what has been refuted.
inline bool goesByValues(const CSsearch &s, const Phase &phase) {
  return s.options.branching == CS_BRANCH_VALUES && !s.options.guided && phase.order != CS_ORDER_SET_TIMES &&
         (phase.value == CS_VALUE_MIN || phase.value == CS_VALUE_MAX);
}

}  // namespace koru::solve
