// SPDX-License-Identifier: MIT
// Int arithmetic that may leave the int range: the only places where an int wraps or saturates.
#pragma once

#include <cstdint>
#include <limits>

namespace koru {

constexpr int kIntMin = std::numeric_limits<int>::min();
constexpr int kIntMax = std::numeric_limits<int>::max();

constexpr int wrap(std::int64_t value) { return static_cast<int>(static_cast<std::uint32_t>(value)); }
constexpr int wrapAdd(int p, int q) { return wrap(std::int64_t{p} + q); }
constexpr int wrapSub(int p, int q) { return wrap(std::int64_t{p} - q); }
constexpr int wrapNeg(int q) { return wrap(-std::int64_t{q}); }

constexpr std::int64_t wrapAdd64(std::int64_t p, std::int64_t q) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(p) + static_cast<std::uint64_t>(q));
}
constexpr std::int64_t wrapSub64(std::int64_t p, std::int64_t q) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(p) - static_cast<std::uint64_t>(q));
}
constexpr std::int64_t wrapMul64(std::int64_t p, std::int64_t q) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(p) * static_cast<std::uint64_t>(q));
}

// Saturates one short of the smallest 64-bit number, so that the result can be negated.
constexpr std::int64_t satSub64(std::int64_t p, std::int64_t q) {
  constexpr auto high = std::numeric_limits<std::int64_t>::max();
  std::int64_t difference = 0;
  if (__builtin_sub_overflow(p, q, &difference)) return p < 0 ? -high : high;
  return difference < -high ? -high : difference;
}

// Adds q to sum unless that overflows.
constexpr bool addWithin64(std::int64_t &sum, std::int64_t q) {
  constexpr auto low = std::numeric_limits<std::int64_t>::min();
  constexpr auto high = std::numeric_limits<std::int64_t>::max();
  if (q > 0 ? sum > high - q : sum < low - q) return false;
  sum += q;
  return true;
}

constexpr int clampToInt(std::int64_t value) {
  return value > kIntMax ? kIntMax : value < kIntMin ? kIntMin : static_cast<int>(value);
}

constexpr int satAdd(int p, int q) { return clampToInt(std::int64_t{p} + q); }

// Deliberate: -q wraps for the smallest int, so p - INT_MIN is p + INT_MIN.
constexpr int satSub(int p, int q) { return satAdd(p, wrapNeg(q)); }

// The distance of two ints, low <= high, as an unsigned number: never overflows.
constexpr std::uint32_t distance(int low, int high) {
  return static_cast<std::uint32_t>(high) - static_cast<std::uint32_t>(low);
}

// The number of ints in [low, high] as the 32-bit field that holds it: wrapped when the range is too wide.
constexpr int rangeSize(int low, int high) { return static_cast<int>(distance(low, high) + 1); }

}  // namespace koru
