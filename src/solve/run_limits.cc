// SPDX-License-Identifier: MIT
#include "solve/run_limits.h"

#include "koru_extras.h"

namespace koru::solve {

std::int64_t luby(std::int64_t i) {
  std::int64_t power = 1;  // of two, the least with i < 2 * power
  while (2 * power <= i) power *= 2;
  while (i + 1 != 2 * power) {
    i -= power - 1;
    while (power > i) power /= 2;
  }
  return power;
}

std::int64_t limitTimes(std::int64_t p, std::int64_t q) { return p > kNoLimit / q ? kNoLimit : p * q; }

// A geometric sequence grows by one fail at least, so that it reaches every size.
static std::int64_t grown(std::int64_t limit, int growth) {
  const std::int64_t more = limitTimes(limit / 100 + 1, growth);
  return more > kNoLimit - limit ? kNoLimit : limit + more;
}

std::int64_t RunLimits::next() {
  ++runs_;
  switch (kind_) {
    case CS_RESTARTS_LUBY:
      return limitTimes(base_, luby(runs_));
    case CS_RESTARTS_GEOMETRIC:
      if (runs_ > 1) last_ = grown(last_, growth_);
      return last_;
    case CS_RESTARTS_CONSTANT:
      return base_;
    default:
      return kNoLimit;
  }
}

}  // namespace koru::solve
