// SPDX-License-Identifier: MIT
// Domains as words of 64 values, for constraints that keep sets of values over a range of their own.
#pragma once

#include "core/variable.h"

namespace koru {

// Bit i: v holds the value first + i.
inline std::uint64_t domainWord(const CSint *v, std::int64_t first) {
  const std::int64_t below = v->min - first;
  const std::int64_t above = first + 63 - v->max;
  if (below > 63 || above > 63) return 0;
  std::uint64_t word = v->bits == nullptr ? ~std::uint64_t{0} : v->bits->wordFrom(first);
  if (below > 0) word &= ~std::uint64_t{0} << below;
  if (above > 0) word &= ~std::uint64_t{0} >> above;
  return word;
}

constexpr int kWordBits = 64;
constexpr int wordsFor(int bits) { return (bits + kWordBits - 1) / kWordBits; }

// A set of the numbers from 0 on, in words of somebody else.
class WordSet {
 public:
  explicit WordSet(std::uint64_t *words) : words_(words) {}
  bool has(int i) const { return (word(i) & bit(i)) != 0; }
  void set(int i) { word(i) |= bit(i); }
  void clear(int i) { word(i) &= ~bit(i); }

 private:
  std::uint64_t &word(int i) const { return words_[static_cast<unsigned>(i) / kWordBits]; }
  static std::uint64_t bit(int i) { return std::uint64_t{1} << (static_cast<unsigned>(i) % kWordBits); }

  std::uint64_t *words_;
};

// Takes from v, whose values are the bits of `domain`, from `first` on, those that are not `kept`, which is not empty
// and part of them. False when memory is exhausted (reported).
bool keepBits(CSint *v, std::int64_t first, std::uint64_t domain, std::uint64_t kept);

// Takes from v every value that has no bit among `count` words from `first` on. False when none would be left (v is
// then as it was) or memory is exhausted (reported).
bool keepValues(CSint *v, std::int64_t first, const std::uint64_t *words, int count);

}  // namespace koru
