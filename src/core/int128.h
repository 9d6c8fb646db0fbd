// SPDX-License-Identifier: MIT
// Int128: integers of 128 bits, for totals that 64 bits do not hold. Where the compiler has none, which is on 32-bit
// machines, TwoWords stands in: the same results, slower.
#pragma once

#include <compare>
#include <cstdint>

namespace koru {

// Two's complement; results are expected to fit, as with the built-in type.
class TwoWords {
 public:
  constexpr TwoWords() = default;
  // NOLINTNEXTLINE(google-explicit-constructor): as for the built-in integers.
  constexpr TwoWords(std::int64_t value) : high_(value < 0 ? -1 : 0), low_(static_cast<std::uint64_t>(value)) {}
  explicit constexpr operator std::int64_t() const { return static_cast<std::int64_t>(low_); }
  explicit constexpr operator int() const { return static_cast<int>(static_cast<std::int64_t>(low_)); }

  constexpr TwoWords operator-() const { return TwoWords(~high(), ~low_) + 1; }
  friend constexpr TwoWords operator+(const TwoWords &a, const TwoWords &b) {
    const std::uint64_t low = a.low_ + b.low_;
    return {a.high() + b.high() + (low < a.low_ ? 1 : 0), low};
  }
  friend constexpr TwoWords operator-(const TwoWords &a, const TwoWords &b) { return a + -b; }
  friend constexpr TwoWords operator*(const TwoWords &a, const TwoWords &b) {
    const TwoWords low = product(a.low_, b.low_);
    return {low.high() + a.high() * b.low_ + a.low_ * b.high(), low.low_};
  }
  // Rounds towards 0; b is not 0.
  friend constexpr TwoWords operator/(const TwoWords &a, const TwoWords &b) {
    TwoWords rest;
    const TwoWords quotient = divide(a, b, rest);
    return (a.high_ < 0) != (b.high_ < 0) ? -quotient : quotient;
  }
  friend constexpr TwoWords operator%(const TwoWords &a, const TwoWords &b) {
    TwoWords rest;
    divide(a, b, rest);
    return a.high_ < 0 ? -rest : rest;
  }
  constexpr TwoWords &operator+=(const TwoWords &b) { return *this = *this + b; }
  constexpr TwoWords &operator-=(const TwoWords &b) { return *this = *this - b; }
  constexpr TwoWords &operator/=(const TwoWords &b) { return *this = *this / b; }

  friend constexpr bool operator==(const TwoWords &a, const TwoWords &b) = default;
  friend constexpr std::strong_ordering operator<=>(const TwoWords &a, const TwoWords &b) = default;

 private:
  constexpr TwoWords(std::uint64_t high, std::uint64_t low) : high_(static_cast<std::int64_t>(high)), low_(low) {}
  constexpr std::uint64_t high() const { return static_cast<std::uint64_t>(high_); }

  static constexpr TwoWords product(std::uint64_t a, std::uint64_t b) {
    constexpr std::uint64_t kHalf = 0xffffffff;
    const std::uint64_t a0 = a & kHalf, a1 = a >> 32, b0 = b & kHalf, b1 = b >> 32;
    const std::uint64_t middle = a1 * b0 + (a0 * b0 >> 32);
    const std::uint64_t other = a0 * b1 + (middle & kHalf);
    return {a1 * b1 + (middle >> 32) + (other >> 32), a * b};
  }

  // Of the magnitudes, bit by bit: the quotient, and the rest in `rest`.
  static constexpr TwoWords divide(const TwoWords &a, const TwoWords &b, TwoWords &rest) {
    const TwoWords dividend = a.high_ < 0 ? -a : a;
    const TwoWords divisor = b.high_ < 0 ? -b : b;
    TwoWords quotient = 0;
    rest = 0;
    for (int bit = 127; bit >= 0; --bit) {
      const std::uint64_t word = bit < 64 ? dividend.low_ : dividend.high();
      rest = rest.twice((word >> (bit % 64) & 1) != 0);
      const bool fits = !rest.isBelow(divisor);
      if (fits) rest -= divisor;
      quotient = quotient.twice(fits);
    }
    return quotient;
  }

  constexpr TwoWords twice(bool plusOne) const { return {high() << 1 | low_ >> 63, low_ << 1 | (plusOne ? 1 : 0)}; }
  constexpr bool isBelow(const TwoWords &b) const { return high() != b.high() ? high() < b.high() : low_ < b.low_; }

  std::int64_t high_ = 0;  // compared first
  std::uint64_t low_ = 0;
};

#ifdef __SIZEOF_INT128__
__extension__ typedef __int128 Int128;
#else
using Int128 = TwoWords;
#endif

}  // namespace koru
