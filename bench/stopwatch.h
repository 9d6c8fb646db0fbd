// SPDX-License-Identifier: MIT
// CPU time of the operations inside a benchmark loop.
#pragma once

#include <benchmark/benchmark.h>

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

}  // namespace koru::bench
