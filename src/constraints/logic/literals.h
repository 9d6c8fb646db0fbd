// SPDX-License-Identifier: MIT
// The literals of a clause: variables, and opposites of variables.
#pragma once

#include "constraints/logic/truth.h"
#include "core/alloc.h"

namespace koru {

// What the host hands over.
struct ClauseArrays {
  CSint *const *positive;
  int positives;
  CSint *const *negative;
  int negatives;
};

// Each once, the positive ones first, in the order given.
class Literals {
 public:
  Literals() = default;
  // A literal that is false with `condition` comes last, unless that is null. False as a bool for sizes below 0, null
  // arrays or variables, or exhausted memory (reported).
  Literals(const ClauseArrays &arrays, CSint *condition);
  explicit operator bool() const { return static_cast<bool>(vars_); }

  int count() const { return count_; }
  // A variable stands there both ways.
  bool alwaysHold() const { return alwaysHold_; }
  CSint *variable(int i) const { return vars_.get()[i]; }
  bool isPositive(int i) const { return i < positives_; }
  bool isTrue(int i) const { return isPositive(i) ? truth::isTrue(variable(i)) : truth::isFalse(variable(i)); }
  bool isFalse(int i) const { return isPositive(i) ? truth::isFalse(variable(i)) : truth::isTrue(variable(i)); }
  [[nodiscard]] bool makeTrue(int i) const {
    return isPositive(i) ? truth::makeTrue(variable(i)) : truth::makeFalse(variable(i));
  }
  [[nodiscard]] bool makeFalse(int i) const {
    return isPositive(i) ? truth::makeFalse(variable(i)) : truth::makeTrue(variable(i));
  }
  std::uint8_t becomesTrue(int i) const { return isPositive(i) ? truth::kBecomesTrue : truth::kBecomesFalse; }
  std::uint8_t becomesFalse(int i) const { return isPositive(i) ? truth::kBecomesFalse : truth::kBecomesTrue; }

 private:
  [[nodiscard]] bool markRepeated(Buffer<int> &order);
  void close();

  Buffer<CSint *> vars_;
  int count_ = 0;
  int positives_ = 0;
  bool alwaysHold_ = false;
};

}  // namespace koru
