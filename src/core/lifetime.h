// SPDX-License-Identifier: MIT
// Whether there is a solver: cs_init has succeeded and cs_end has not been called since.
#pragma once

#include "core/state.h"

namespace koru::solver {

inline KORU_STATE bool initialised = false;
inline KORU_STATE int hostAsked = 0;  // error handlers and locators that run now, one inside the other

}  // namespace koru::solver

namespace koru {

// While one lives, code of the host runs in the middle of a step, which then goes on with the state that it began with.
class HostAsked {
 public:
  HostAsked() { ++solver::hostAsked; }
  HostAsked(const HostAsked &) = delete;
  HostAsked &operator=(const HostAsked &) = delete;
  ~HostAsked() { --solver::hostAsked; }
};

}  // namespace koru
