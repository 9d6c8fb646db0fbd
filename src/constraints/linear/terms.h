// SPDX-License-Identifier: MIT
// Linear sums as the constraints of this room use them.
//
// Coefficients and constants have 64 bits, values 32 and an array fewer than 2^31 terms, so every sum of products fits
// 127 bits whatever the domains: nothing here can overflow. Where 64 bits suffice for every value of an int, which is
// nearly always, the same code works in 64 bits.
#pragma once

#include <array>
#include <bit>
#include <cstdint>

#include "constraints/logic/truth.h"
#include "core/alloc.h"
#include "core/int128.h"
#include "koru.h"

namespace koru::linear {

enum class Kind { kAtMost, kEqual, kDiffers };

// A number in a record, which is aligned to 8 bytes.
template <class Wide>
class Stored {
 public:
  Stored() = default;
  // NOLINTBEGIN(google-explicit-constructor): it stands for the number.
  Stored(Wide value) : words_(std::bit_cast<Words>(value)) {}
  operator Wide() const { return std::bit_cast<Wide>(words_); }
  // NOLINTEND(google-explicit-constructor)

 private:
  using Words = std::array<std::uint64_t, sizeof(Wide) / 8>;
  Words words_{};
};

// c1 * x1 + ... + cn * xn <= limit, = limit or != limit: each variable once, no coefficient 0, their divisor 1.
struct Sum {
  Kind kind = Kind::kAtMost;
  Shared<CSint *> vars;
  Shared<Int128> coefficients;
  int n = 0;
  Int128 limit = 0;

  // False when memory is exhausted (reported), an array or variable is null, n < 0 or the method is none.
  [[nodiscard]] bool make(CSint *const *variables, const long long *given, int size, int method, long long constant);
  // What holds exactly when this one does not: it shares the variables. Without coefficients when memory is exhausted.
  Sum negation() const;
  explicit operator bool() const { return vars && coefficients; }

  bool fits64() const;
  // Of a sum without terms.
  bool holdsEmpty() const { return kind == Kind::kAtMost ? limit >= 0 : (limit == 0) == (kind == Kind::kEqual); }

 private:
  [[nodiscard]] bool merge();
  void divide();
};

template <class Wide>
constexpr Wide floorDiv(Wide p, Wide q) {
  return p / q - (p % q < 0 ? 1 : 0);  // q > 0
}

}  // namespace koru::linear
