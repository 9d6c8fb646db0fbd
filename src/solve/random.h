// SPDX-License-Identifier: MIT
// Pseudo-random numbers, the same on every platform (Steele, Lea, Flood, "Fast Splittable Pseudorandom Number
// Generators", OOPSLA 2014).
#pragma once

#include <cstdint>

namespace koru::solve {

class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint64_t next() {
    std::uint64_t z = state_ += 0x9e3779b97f4a7c15;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    return z ^ (z >> 31);
  }

  // One of 0..count-1, count > 0: the upper half of a 32 by 32 bit product, whose bias is below count / 2^32.
  std::uint32_t below(std::uint32_t count) { return static_cast<std::uint32_t>((next() >> 32) * count >> 32); }

 private:
  std::uint64_t state_;
};

}  // namespace koru::solve
