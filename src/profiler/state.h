// SPDX-License-Identifier: MIT
// What the profiler's locators keep for a solver.
#pragma once

#include "core/state.h"

namespace koru {

struct KnownPlace;

struct ProfilerState {
  static constexpr unsigned kBuckets = 256;

  KnownPlace *knownPlaces[kBuckets] = {};  // by address
  char *locatorFormat = nullptr;           // of the host's locator; owned
};

inline KORU_STATE ProfilerState profilerState;

}  // namespace koru
