// SPDX-License-Identifier: MIT
// Seeded random choices for generated programs: the same seed gives the same program on every platform.
#pragma once

#include <cstdint>
#include <vector>

namespace koru::test {

class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed * 0x9e3779b97f4a7c15ULL + 0x1234567ULL) {}

  std::uint64_t next() {
    state_ += 0x9e3779b97f4a7c15ULL;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
    return z ^ (z >> 31);
  }

  int below(int n) { return static_cast<int>(next() % static_cast<std::uint64_t>(n)); }
  int between(int low, int high) {
    const std::int64_t size = std::int64_t{high} - low + 1;
    return static_cast<int>(low + static_cast<std::int64_t>(next() % static_cast<std::uint64_t>(size)));
  }
  bool chance(int percent) { return below(100) < percent; }

  template <class T>
  const T &pick(const std::vector<T> &from) {
    return from[static_cast<std::size_t>(next() % from.size())];
  }

 private:
  std::uint64_t state_;
};

}  // namespace koru::test
