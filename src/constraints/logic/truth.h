// SPDX-License-Identifier: MIT
// Truth values: a variable is true when it is 1 or more and false when it is 0 or less. Those over 0..1 are the usual
// ones, but nothing narrows a variable to them, so a constraint means the same whatever a restore gives back.
#pragma once

#include "core/constraint.h"
#include "core/create.h"
#include "core/narrow.h"

namespace koru::truth {

inline bool isTrue(const CSint *b) { return b->min >= 1; }
inline bool isFalse(const CSint *b) { return b->max <= 0; }
[[nodiscard]] inline bool makeTrue(CSint *b) { return narrowMin(b, 1); }
[[nodiscard]] inline bool makeFalse(CSint *b) { return narrowMax(b, 0); }
inline CSint *decided(bool holds) { return createVariable(holds ? 1 : 0, holds ? 1 : 0); }

// The events by which a variable can become true, or false.
constexpr std::uint8_t kBecomesTrue = events(kNewMin, kMinBound, kBound);
constexpr std::uint8_t kBecomesFalse = events(kNewMax, kMaxBound, kBound);

// When a constraint is to hold: always, or while b has a truth value.
struct Guard {
  CSint *b = nullptr;  // null: always
  bool value = true;

  bool asks() const { return b == nullptr || (value ? isTrue(b) : isFalse(b)); }
  bool sleeps() const { return b != nullptr && (value ? isFalse(b) : isTrue(b)); }
  // What is guarded cannot hold.
  [[nodiscard]] bool refuse() const { return b != nullptr && (value ? makeFalse(b) : makeTrue(b)); }
  std::uint8_t concerned() const { return value ? kBecomesTrue : kBecomesFalse; }
};

}  // namespace koru::truth
