// SPDX-License-Identifier: MIT
#include "core/ticks.h"

#include <chrono>

namespace koru {

std::int64_t nanoseconds() {
  const auto time = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(time).count();
}

}  // namespace koru
