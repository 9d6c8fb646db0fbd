// SPDX-License-Identifier: MIT
// cs_setProfilerLocator: the host's own locator, which answers with a text for the place that is posting.
//
// Without one, the built-in locator finds the places out when they are asked for; see place.cc.
#include "profiler/locator.h"

#include <cstring>
#include <utility>

#include "core/solver.h"
#include "profiler/state.h"

namespace koru {

namespace {

void forgetFormat() { deallocate(std::exchange(profilerState.locatorFormat, nullptr)); }

}  // namespace

const char *locatorFormat() { return profilerState.locatorFormat; }

}  // namespace koru

using namespace koru;

void cs_setProfilerLocator(const char *newFormat, CSprofilerLocator locator, void *arg) {
  if (!solver::initialised) return;
  char *copy = nullptr;
  if (locator != nullptr && newFormat != nullptr) {
    copy = copyText(newFormat);
    if (copy == nullptr) return;
  }
  forgetFormat();
  profilerState.locatorFormat = copy;
  solver::ports.locator = locator != nullptr ? Locator{locator, forgetFormat, arg} : Locator{};
}
