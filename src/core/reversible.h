// SPDX-License-Identifier: MIT
// Words of 64 bits that backtracking restores: bit sets, sizes, counters of a constraint's own.
//
// The old bits are noted on the undo trail once per context: a stamp tells in which one that was last. Only a
// constraint that is attached may change its words, because its attachments are then undone after them; until it is,
// `init` sets them. Without an open context nothing is noted.
//
// Accepting a context inside another one makes its changes permanent, also where the outer context's restore then
// widens domains again: words may end up behind the domains. `Lockstep` tells a run when that may be so, and that it
// has to compute its words anew.
#pragma once

#include <cstdint>

#include "core/branch_set.h"

namespace koru {

// The moment of a change, for words: take it once for the changes of one run.
class WordStamp {
 public:
  static WordStamp now();

  std::uint64_t serial;  // of the newest context, 0 when none is open, kUndoing while an undo runs
  static constexpr std::uint64_t kUndoing = ~std::uint64_t{0};
};

// Trivial, so that a Buffer can hold it; `init` comes first.
class ReversibleWord {
 public:
  void init(std::uint64_t bits) {
    bits_ = bits;
    noted_ = 0;
  }
  std::uint64_t bits() const { return bits_; }
  int number() const { return static_cast<int>(bits_); }

  // False when memory is exhausted (reported); the word is then as before.
  bool set(std::uint64_t bits, const WordStamp &stamp) {
    if (bits == bits_) return true;
    if (noted_ != stamp.serial && !note(stamp)) [[unlikely]]
      return false;
    bits_ = bits;
    return true;
  }
  bool setNumber(int number, const WordStamp &stamp) { return set(static_cast<std::uint64_t>(number), stamp); }

 private:
  bool note(const WordStamp &stamp);

  std::uint64_t bits_;
  std::uint64_t noted_;
};

// Whether words that followed the domains at the last `note` follow them still.
class Lockstep {
 public:
  bool kept() const;
  void note() { noted_ = BranchStamp::now(); }

 private:
  BranchStamp noted_{};
};

}  // namespace koru
