// SPDX-License-Identifier: MIT
// An explanation as the host gets it, with the memory that it points to.
#pragma once

#include "explain/reasons.h"

namespace koru::explain {

struct Explanation : CSexplanation {
  Buffer<CSreason> list;
  Buffer<char *> texts;  // of the places, one for each reason: owned

  Explanation() : CSexplanation{} {}  // cppcheck-suppress uninitDerivedMemberVar
  Explanation(const Explanation &) = delete;
  Explanation &operator=(const Explanation &) = delete;
  ~Explanation() { dropReasons(); }

  // Names the calls of the best set there is. False when memory is exhausted (reported); it then has none.
  bool nameReasons(const Runs &runs, const Reasons &reasons);

 private:
  bool addReason(const Calls &calls, int call);
  void dropReasons();
};

}  // namespace koru::explain
