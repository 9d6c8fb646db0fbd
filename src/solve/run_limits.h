// SPDX-License-Identifier: MIT
// How many fails each run of a restarting search may count.
#pragma once

#include <cstdint>

namespace koru::solve {

constexpr std::int64_t kNoLimit = INT64_MAX;

// The i-th number, from 1 on, of 1 1 2 1 1 2 4 1 1 2 1 1 2 4 8 ... (Luby, Sinclair, Zuckerman, "Optimal Speedup of
// Las Vegas Algorithms", 1993).
std::int64_t luby(std::int64_t i);

// p * q for positive numbers, or kNoLimit when that is more.
std::int64_t limitTimes(std::int64_t p, std::int64_t q);

class RunLimits {
 public:
  // `kind` is one of CS_RESTARTS_..., the growth of a geometric sequence is in per cent of the limit before.
  RunLimits(int kind, std::int64_t base, int growth) : kind_(kind), base_(base), growth_(growth), last_(base) {}

  std::int64_t next();

 private:
  int kind_;
  std::int64_t base_;
  int growth_;
  std::int64_t last_;
  std::int64_t runs_ = 0;
};

}  // namespace koru::solve
