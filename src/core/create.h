// SPDX-License-Identifier: MIT
// Creation of variables. Besides narrow and trail, nothing else writes a domain: whoever makes a variable with holes
// says through a DomainBuilder which values it has.
#pragma once

#include "core/variable.h"

namespace koru {

// A record over [min, max], min <= max, with nothing attached to it and no name.
inline CSint intervalOf(int min, int max) {
  return {.initialMin = min,
          .initialMax = max,
          .min = min,
          .max = max,
          .bits = nullptr,
          .count = rangeSize(min, max),
          .constraintCount = 0,
          .name = nullptr,
          .constraints = nullptr,
          .reportedMin = min,
          .reportedMax = max,
          .traits = 0};
}

// Null when the solver is not running, min > max or memory is exhausted (reported).
[[nodiscard]] CSint *createVariable(int min, int max);

// A variable over the values that `bits` holds, which it takes over also on failure; null too when there are none.
// Deliberate: its last-reported bounds are the ends of the bits' range, because handlers are told of the first change
// as if it had begun as that interval.
[[nodiscard]] CSint *createFromBits(DomainBits *bits);

// Gives holes to an interval that nobody has seen yet.
class DomainBuilder {
 public:
  enum class Start { kEmpty, kFull };

  // `v` is fresh. False as a bool when there is no memory for its bit array (reported), or no variable.
  DomainBuilder(CSint *v, Start start);
  explicit operator bool() const { return v_ != nullptr; }

  // For values within the interval; one that is in already is counted once, one that is out has been taken out.
  void add(int value);
  void remove(int value);  // not a bound

  // Draws the bounds in to the smallest and the largest value, one at least, and begins to report from there.
  void fitBounds();

 private:
  CSint *v_;
};

}  // namespace koru
