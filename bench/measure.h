// SPDX-License-Identifier: MIT
// Time per operation and memory, for the benchmarks.
#pragma once

#include <benchmark/benchmark.h>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include "run.h"

namespace koru::bench {

// Measures from its construction, right before the loop, to its end.
class Stopwatch {
 public:
  explicit Stopwatch(benchmark::State &state) : state_(state) {}

  double nanosecondsPer(double operations) const {
    return (cpuSeconds() - start_) * 1e9 / (operations * static_cast<double>(state_.iterations()));
  }

 private:
  benchmark::State &state_;
  double start_ = cpuSeconds();
};

// Bytes handed out by the C library, 0 where it does not tell.
inline double heapBytes() {
#if defined(__GLIBC__) && __GLIBC_PREREQ(2, 33)
  const struct mallinfo2 info = mallinfo2();
  return static_cast<double>(info.uordblks + info.hblkhd);
#else
  return 0;
#endif
}

}  // namespace koru::bench
