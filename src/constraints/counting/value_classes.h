// SPDX-License-Identifier: MIT
// The values that are counted, in ascending order, each a class of its own, and one class of all other values, the
// last. A variable's domain is seen as the set of classes that it has values of, in words of 64.
#pragma once

#include "core/alloc.h"
#include "core/domain_words.h"

namespace koru::counting {

inline bool hasClass(const std::uint64_t *classes, int j) {
  return (classes[j / kWordBits] >> (j % kWordBits) & 1) != 0;
}

class ValueClasses {
 public:
  ValueClasses() = default;
  // The values with the variables that count them, `m` of each. False for a negative or extreme m, a null array or
  // variable, a value that stands twice, and exhausted memory (reported).
  [[nodiscard]] bool build(const int *values, CSint *const *counts, int m);

  int counted() const { return m_; }
  int others() const { return m_; }
  int classes() const { return m_ + 1; }
  int words() const { return wordsFor(m_ + 1); }
  CSint *count(int j) const { return counted_[j].count; }

  // The class of a value.
  int classOf(int value) const {
    if (!consecutive_) return find(value);
    const std::int64_t j = std::int64_t{value} - first_;
    return j >= 0 && j < m_ ? static_cast<int>(j) : others();
  }
  // The classes of v, words() of them: O(1) for each 64 where the counted values are consecutive, otherwise for each.
  void read(const CSint *v, std::uint64_t *classes) const {
    if (!consecutive_) return readEach(v, classes);
    const int last = m_ / kWordBits;
    std::int64_t from = first_;
    for (int k = 0; k <= last; ++k, from += kWordBits) classes[k] = domainWord(v, from);
    const std::uint64_t bit = std::uint64_t{1} << (m_ % kWordBits);
    classes[last] &= bit - 1;
    if (v->min < first_ || v->max - first_ >= m_) classes[last] |= bit;
  }
  // Leaves v these of its classes. False when nothing is left or memory is exhausted (reported).
  [[nodiscard]] bool keep(CSint *v, const std::uint64_t *classes) const;

 private:
  struct Counted {
    int value;
    CSint *count;
  };

  int firstFrom(int value) const;
  int find(int value) const;
  void readEach(const CSint *v, std::uint64_t *classes) const;
  bool hasOthers(const CSint *v) const;
  [[nodiscard]] bool keepCounted(CSint *v, const std::uint64_t *classes) const;

  Buffer<Counted> counted_;
  int m_ = 0;
  bool consecutive_ = false;
  std::int64_t first_ = 0;  // of the values, when they are consecutive
};

}  // namespace koru::counting
