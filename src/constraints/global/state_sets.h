// SPDX-License-Identifier: MIT
// The live states of each layer while the graph of cs_Regular is built: one bit each, a row of words per layer.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <functional>

#include "core/alloc.h"
#include "core/bit_scan.h"

namespace koru::regular {

class StateSets {
 public:
  // Empty sets of states below `states`. False as a bool when memory is exhausted (reported).
  StateSets(std::uint64_t layers, int states)
      : wordsPerLayer_((static_cast<std::size_t>(states) + 63) / 64), words_(layers * wordsPerLayer_) {
    if (words_) std::fill_n(words_.get(), layers * wordsPerLayer_, std::uint64_t{0});
  }
  explicit operator bool() const { return static_cast<bool>(words_); }

  bool has(int layer, int q) const { return (row(layer)[q / 64] >> (q % 64) & 1U) != 0; }
  void add(int layer, int q) { row(layer)[q / 64] |= std::uint64_t{1} << (q % 64); }
  // False when it was there already.
  [[nodiscard]] bool insert(int layer, int q) {
    std::uint64_t &word = row(layer)[q / 64];
    const std::uint64_t before = word;
    word |= std::uint64_t{1} << (q % 64);
    return word != before;
  }
  void remove(int layer, int q) { row(layer)[q / 64] &= ~(std::uint64_t{1} << (q % 64)); }

  bool isEmpty(int layer) const {
    return std::all_of(row(layer), row(layer) + wordsPerLayer_, [](std::uint64_t word) { return word == 0; });
  }

  // The smallest and the largest state of a layer that is not empty.
  int first(int layer) const {
    std::size_t i = 0;
    while (row(layer)[i] == 0) ++i;
    return static_cast<int>(i * 64) + std::countr_zero(row(layer)[i]);
  }
  int last(int layer) const {
    std::size_t i = wordsPerLayer_ - 1;
    while (row(layer)[i] == 0) --i;
    return static_cast<int>(i * 64) + 63 - std::countl_zero(row(layer)[i]);
  }

  void intersect(int layer, const StateSets &other) {
    std::transform(row(layer), row(layer) + wordsPerLayer_, other.row(0), row(layer), std::bit_and<>());
  }

  // In increasing order; `visit` may remove the state it is told.
  template <class Visit>
  void forEach(int layer, Visit visit) const {
    for (std::size_t i = 0; i < wordsPerLayer_; ++i) forEachBit(static_cast<int>(i * 64), row(layer)[i], visit);
  }

 private:
  std::uint64_t *row(int layer) const { return words_.get() + static_cast<std::size_t>(layer) * wordsPerLayer_; }

  std::size_t wordsPerLayer_;
  Buffer<std::uint64_t> words_;
};

}  // namespace koru::regular
