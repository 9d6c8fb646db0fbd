// SPDX-License-Identifier: MIT
// The live states of each layer while the graph of cs_Regular is built: one bit each, a row of words per layer.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

#include "core/alloc.h"
#include "core/bit_scan.h"

namespace koru::regular {

// The states of one layer, in words of somebody else.
class StateSet {
 public:
  StateSet(std::uint64_t *words, int count) : words_(words), count_(count) {}

  bool has(int q) const { return (wordOf(q) & maskOf(q)) != 0; }
  void add(int q) { wordOf(q) |= maskOf(q); }
  // False when it was there already.
  [[nodiscard]] bool insert(int q) {
    const std::uint64_t before = wordOf(q);
    wordOf(q) = before | maskOf(q);
    return wordOf(q) != before;
  }
  void remove(int q) { wordOf(q) &= ~maskOf(q); }
  void intersect(const StateSet &other) {
    for (int i = 0; i < count_; ++i) words_[i] &= other.words_[i];
  }

  bool isEmpty() const {
    return std::all_of(words_, words_ + count_, [](std::uint64_t word) { return word == 0; });
  }
  // The smallest and the largest state of a set that is not empty.
  int first() const {
    int i = 0;
    while (words_[i] == 0) ++i;
    return i * 64 + std::countr_zero(words_[i]);
  }
  int last() const {
    int i = count_ - 1;
    while (words_[i] == 0) --i;
    return i * 64 + 63 - std::countl_zero(words_[i]);
  }

  // In increasing order while `visit` returns true; it may remove the state it is told.
  template <class Visit>
  void forEach(Visit visit) const {
    for (int i = 0; i < count_; ++i)
      if (!forEachBit(i * 64, words_[i], visit)) return;
  }

  std::uint64_t *words() const { return words_; }

 private:
  std::uint64_t &wordOf(int q) const { return words_[static_cast<unsigned>(q) / 64]; }
  static std::uint64_t maskOf(int q) { return std::uint64_t{1} << (static_cast<unsigned>(q) % 64); }

  std::uint64_t *words_;
  int count_;
};

class StateSets {
 public:
  // Empty sets of states below `states`. False as a bool when memory is exhausted (reported).
  StateSets(std::uint64_t layers, int states)
      : wordsPerLayer_(static_cast<int>((static_cast<unsigned>(states) + 63) / 64)),
        words_(layers * static_cast<unsigned>(wordsPerLayer_)),
        first_(words_.get()) {
    if (words_) std::fill_n(first_, layers * static_cast<unsigned>(wordsPerLayer_), std::uint64_t{0});
  }
  explicit operator bool() const { return static_cast<bool>(words_); }

  StateSet at(int layer) const {
    return {first_ + static_cast<std::ptrdiff_t>(layer) * wordsPerLayer_, wordsPerLayer_};
  }

 private:
  int wordsPerLayer_;
  Scratch<std::uint64_t, 32> words_;
  std::uint64_t *first_;
};

}  // namespace koru::regular
