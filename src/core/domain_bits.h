// SPDX-License-Identifier: MIT
// DomainBits: which values of a range a domain with holes holds, a bit each.
//
// Value v is bit v - low, least significant bit first, kept in 64-bit words so that a step of a scan covers 64 values.
// Spare bits past `high` may be set and mean nothing. The functions below also take a null pointer: no holes.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "core/int_math.h"

namespace koru {

// The number of bits set. The instruction for it is younger than the first x86-64 machines, and the compiler's
// substitute takes 15 others and a call.
#if defined(__x86_64__) && !defined(__POPCNT__)
inline bool countsByInstruction() { return __builtin_cpu_supports("popcnt") != 0; }
inline int countByInstruction(std::uint64_t word) {
  std::uint64_t count;
  asm("popcnt %1, %0" : "=r"(count) : "r"(word) : "cc");
  return static_cast<int>(count);
}
#else
constexpr bool countsByInstruction() { return true; }
inline int countByInstruction(std::uint64_t word) { return std::popcount(word); }
#endif
inline int countOnes(std::uint64_t word) {
  return countsByInstruction() ? countByInstruction(word) : std::popcount(word);  // GCOVR_EXCL_BR_LINE: of the machine
}

struct DomainBits {
  int low;
  int high;

  enum class Fill : unsigned char { kNone = 0x00, kAll = 0xff };

  // Null when memory is exhausted (reported).
  static DomainBits *create(int low, int high, Fill fill);
  static void destroy(DomainBits *bits);

  // All values are in one word: then what narrowings need of it is a few instructions.
  bool isOneWord() const { return offset(high) < 64; }
  std::uint64_t onlyWord() const { return words()[0]; }
  std::uint64_t onlyWordFrom(int value) const { return onlyWord() & ~std::uint64_t{0} << offset(value); }
  std::uint64_t onlyWordUpTo(int value) const { return onlyWord() & ~std::uint64_t{0} >> (63 - offset(value)); }

  bool covers(int value) const { return value >= low && value <= high; }

  // For values within [low, high] only.
  bool has(int value) const { return (word(value) >> (offset(value) % 64) & 1) != 0; }
  void set(int value) { word(value) |= mask(value); }
  void clear(int value) { word(value) &= ~mask(value); }

  // The word that holds a value, which is its lowest (highest) bit.
  std::uint64_t upwardsFrom(int value) const { return word(value) >> (offset(value) % 64); }
  std::uint64_t downwardsFrom(int value) const { return word(value) << (63 - offset(value) % 64); }

  // Bit i: value first + i; values outside the range count as absent, except for spare bits.
  std::uint64_t wordFrom(std::int64_t first) const {
    const std::int64_t from = first - low;
    const std::int64_t index = from >> 6;
    const auto shift = static_cast<unsigned>(from & 63);
    const std::uint64_t word = wordAt(index) >> shift;
    return shift == 0 ? word : word | wordAt(index + 1) << (64 - shift);
  }

  std::uint64_t *words() { return reinterpret_cast<std::uint64_t *>(this + 1); }
  const std::uint64_t *words() const { return reinterpret_cast<const std::uint64_t *>(this + 1); }
  std::uint32_t offset(int value) const { return distance(low, value); }

 private:
  static std::size_t sizeOf(int low, int high);
  std::uint64_t &word(int value) { return words()[std::size_t{offset(value) / 64}]; }
  const std::uint64_t &word(int value) const { return words()[std::size_t{offset(value) / 64}]; }
  std::uint64_t wordAt(std::int64_t index) const {
    return index >= 0 && index <= offset(high) / 64 ? words()[index] : 0;
  }
  std::uint64_t mask(int value) const { return std::uint64_t{1} << (offset(value) % 64); }
};
static_assert(sizeof(DomainBits) % alignof(std::uint64_t) == 0);

// The number of present values in [a, b]; values outside the range of the bits count as absent.
std::int64_t countPresent(const DomainBits *bits, int a, int b);

// The same for a <= b within that range, which mostly lie in one word: that takes a third of the instructions.
inline int countWithin(const DomainBits *bits, int a, int b) {
  const std::uint32_t gap = distance(a, b);
  if (bits->offset(a) % 64 + gap >= 64) return static_cast<int>(countPresent(bits, a, b));
  return countOnes(bits->upwardsFrom(a) << (63 - gap));
}

// The smallest present value above x; x + 1 (wrapping) without bits, for x outside [low, high - 1], and when none is.
int nextPresent(const DomainBits *bits, int x);

// The largest present value below x; x - 1 (wrapping) without bits, for x outside [low + 1, high], and when none is.
int previousPresent(const DomainBits *bits, int x);

}  // namespace koru
