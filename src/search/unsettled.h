// SPDX-License-Identifier: MIT
// The positions of a long array whose variables a search may still choose, in a room that may be smaller than the
// array.
//
// They are kept in blocks of 2^shift, as many as there is room for: a block is passed by when all of it was settled.
// And there is a position before which all is settled on this branch, so that a search that goes down does not come by
// what it has passed. Cost: a look at each position of a block that is not settled, and at the words of the set from
// the first such block on; after a context was closed, at the positions of one block more.
#pragma once

#include <algorithm>
#include <bit>

#include "core/branch_set.h"

namespace koru {

class Unsettled : public BranchSetOn {
 public:
  Unsettled() = default;
  // In blocks of one position.
  Unsettled(int size, const BranchSetOn &positions) : BranchSetOn(positions), size_(size) {}
  // `size` >= 1. `words` and `taken` have room for `most` blocks, a power of two.
  Unsettled(int size, int most, std::uint64_t *words, Taken *taken)
      : size_(size), shift_(static_cast<int>(std::bit_width(static_cast<unsigned>((size - 1) / most)))) {
    static_cast<BranchSetOn &>(*this) = BranchSetOn(((size - 1) >> shift_) + 1, words, taken);
  }

  // Visits in increasing order what is not settled while `visit` returns true, and passes by the rest from now on.
  // isSettled(position) must not change within a branch once it is true.
  template <class IsSettled, class Visit>
  void forEachUnsettled(IsSettled isSettled, Visit visit) {
    int block = first_ >> shift_;
    if (refresh(block)) first_ = block << shift_;
    first_ = shift_ == 0 ? passPositions(isSettled, visit) : passBlocks(isSettled, visit);
  }

 private:
  // Both return the first position that is not settled. They work on copies, which nothing that they call can change,
  // so that they stay in registers.
  template <class IsSettled, class Visit>
  int passPositions(IsSettled isSettled, Visit visit) {
    BranchSetOn set = *this;
    const BranchStamp now = BranchStamp::now();
    const auto passes = [&](int i) {
      const bool settled = isSettled(i);
      if (settled) set.takeOut(i, now);
      return settled;
    };
    int first = size_;
    bool goesOn = false;
    set.forEachFrom(first_, [&](int i) {
      if (passes(i)) return true;
      first = i;
      goesOn = visit(i);
      return false;
    });
    if (goesOn) set.forEachFrom(first + 1, [&](int i) { return passes(i) || visit(i); });
    static_cast<BranchSetOn &>(*this) = set;
    return first;
  }
  template <class IsSettled, class Visit>
  int passBlocks(IsSettled isSettled, Visit visit) {
    BranchSetOn set = *this;
    const BranchStamp now = BranchStamp::now();
    const int from = first_;
    const int size = size_;
    const int shift = shift_;
    int first = size;
    set.forEachFrom(from >> shift, [&](int block) {
      const int begin = block << shift;
      const int end = begin + std::min(size - begin, 1 << shift);
      bool settled = true;
      for (int i = std::max(begin, from); i < end; ++i) {
        if (isSettled(i)) continue;
        settled = false;
        first = std::min(first, i);
        if (!visit(i)) return false;
      }
      if (settled) set.takeOut(block, now);
      return true;
    });
    static_cast<BranchSetOn &>(*this) = set;
    return first;
  }

  int size_ = 0;
  int shift_ = 0;
  int first_ = 0;  // all before are settled, unless a context was closed since
};

}  // namespace koru
