// SPDX-License-Identifier: MIT
// A search of one process: the walk, and nothing else.
#pragma once

#include "parallel/ground.h"

namespace koru::parallel {

struct Outcome {
  bool result = false;
  Counts counts;
};

Outcome searchAlone(Ground &ground);

}  // namespace koru::parallel
