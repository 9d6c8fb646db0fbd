// SPDX-License-Identifier: MIT
// How the file says that it is to be searched, in the words of the library.
#ifndef KORU_MINIZINC_PLAN_H
#define KORU_MINIZINC_PLAN_H

#include "minizinc/call.h"

namespace koru::fzn {

// Orders that the library has not got: chosen by callbacks of ours, as CS_ORDER_HOST and CS_VALUE_HOST.
enum class OwnOrder : std::uint8_t { kNone, kSmallestMostConstrained };
enum class OwnValue : std::uint8_t { kNone, kNotMin, kNotMax, kRandomHalf };

struct Phase {
  Array variables;
  int order = CS_ORDER_INPUT;
  int value = CS_VALUE_MIN;
  OwnOrder ownOrder = OwnOrder::kNone;
  OwnValue ownValue = OwnValue::kNone;
};

// Values to try first.
using Hints = std::unordered_map<CSint *, int>;

struct Plan {
  std::vector<Phase> phases;
  Hints hints;  // of warm_start
  int restarts = CS_RESTARTS_NONE;
  int restartFails = 0;
  int restartGrowth = 0;  // per cent
  Array relaxed;          // of relax_and_reconstruct
  int kept = 0;           // per cent of these that keep their values
};

// What the annotations of the solve item come to. What they do not say is left out; what is not understood is ignored
// and, when `verbose`, named on the standard error stream.
Plan readPlan(const Syntax &syntax, Variables &variables, bool verbose);

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_PLAN_H
