// SPDX-License-Identifier: MIT
// Which sums the items that can be in a bin make, as sets of bits (Trick, A dynamic programming approach for
// consistency and propagation for knapsack constraints, 2003).
#pragma once

#include <cstddef>

#include "core/alloc.h"
#include "core/domain_words.h"

namespace koru::counting {

class BinSums {
 public:
  BinSums() = default;
  // Of up to `items` items, for sums below a power of two that is at least `sums` if that is not too large. False as a
  // bool when memory is exhausted (reported).
  BinSums(int items, std::int64_t sums);
  explicit operator bool() const { return static_cast<bool>(rows_); }

  // Whether sums up to this one can be told.
  bool reaches(std::int64_t sum) const { return sum < std::int64_t{most_} * kWordBits; }

  // Begins with no item, for sums up to `highest`; then items come one by one.
  void start(std::int64_t highest);
  void add(int size);

  // The sums of some set of items that, raised by `base`, v has: the least and the greatest. False without one.
  [[nodiscard]] bool meet(const CSint *v, std::int64_t base);
  int least() const;
  int greatest() const;

  // Takes the items back, the last one first: whether such a sum is made with it, and whether without it.
  struct Use {
    bool with;
    bool without;
  };
  Use takeBack(int size);

 private:
  std::uint64_t *row(int item) const { return rows_.get() + static_cast<std::ptrdiff_t>(item) * most_; }
  std::uint64_t raised(const std::uint64_t *row, int k, int size) const;
  std::uint64_t lowered(const std::uint64_t *row, int k, int size) const;

  int most_ = 0;   // words of a row
  int words_ = 0;  // of these that are used
  int items_ = 0;
  Buffer<std::uint64_t> goals_;  // sums from which items taken back lead to one that counts
  Buffer<std::uint64_t> rows_;   // by number of items: the sums that they make
};

}  // namespace koru::counting
