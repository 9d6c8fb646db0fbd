// SPDX-License-Identifier: MIT
// State that belongs to a branch of the search, without a record on the undo trail.
//
// A BranchStamp is a moment of the search. It stands as long as the context that was the newest then is open: nothing
// that was done at that moment can have been undone. When it no longer stands, things may or may not have been undone.
// One that is taken by a callback of a running undo never stands: its context stays open, but what is done is taken
// back.
//
// A BranchSet holds the positions 0..n-1. One that is taken out is back when its stamp no longer stands. Stamps taken
// one after the other fall in the opposite order, because contexts are a stack, so a stack of them is all it needs.
#pragma once

#include <bit>
#include <cstdint>

#include "core/alloc.h"

namespace koru {

struct BranchStamp {
  int level;             // contexts open
  std::uint64_t serial;  // of the newest of them

  static BranchStamp now();
  bool stands() const;
};

class BranchSet {
 public:
  // All positions in; false as a bool when memory is exhausted (reported).
  explicit BranchSet(int size);
  explicit operator bool() const { return words_ && taken_; }

  // Puts back what was taken out on branches that have been left. To be called before the set is used.
  void refresh() {
    while (takenCount_ > 0 && !taken_[takenCount_ - 1].stamp.stands()) put(taken_[--takenCount_].position);
  }

  void takeOut(int position);

  // Visits the positions in increasing order while `visit` returns true. False when it has returned false.
  template <class Visit>
  bool forEach(Visit visit) const {
    for (int i = 0; i < wordCount_; ++i) {
      for (std::uint64_t left = words_[i]; left != 0; left &= left - 1)
        if (!visit(i * 64 + std::countr_zero(left))) return false;
    }
    return true;
  }

 private:
  struct Taken {
    int position;
    BranchStamp stamp;
  };

  static std::uint64_t maskOf(int position) { return std::uint64_t{1} << (position % 64); }
  void put(int position) { words_[position / 64] |= maskOf(position); }

  Buffer<std::uint64_t> words_;
  Buffer<Taken> taken_;
  int wordCount_;
  int takenCount_ = 0;
};

}  // namespace koru
