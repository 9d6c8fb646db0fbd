// SPDX-License-Identifier: MIT
// A counter that grows evenly with time and is read in 10 to 60 nanoseconds: the processor's own where there is one.
#pragma once

#include <cstdint>

namespace koru {

// By the system's steady clock.
std::int64_t nanoseconds();

inline std::uint64_t ticks() {
#if defined(__x86_64__) || defined(__i386__)
  return __builtin_ia32_rdtsc();
#elif defined(__aarch64__)
  std::uint64_t count = 0;
  asm volatile("mrs %0, cntvct_el0" : "=r"(count));
  return count;
#else
  return static_cast<std::uint64_t>(nanoseconds());
#endif
}

}  // namespace koru
