// SPDX-License-Identifier: MIT
// Words of 64 bits that backtracking restores: bit sets, sizes, counters of a constraint's own.
//
// The old bits are noted on the undo trail once per context: a stamp tells in which one that was last. Only a
// constraint that is attached may change its words, because its attachments are then undone after them; until it is,
// `init` sets them. Without an open context nothing is noted.
//
// ReversibleWords are for a constraint that changes many of them in each run: old bits go into a log of its own, and
// what is on the trail is how long that was.
//
// Accepting a context inside another one makes its changes permanent, also where the outer context's restore then
// widens domains again: words may end up behind the domains. While an undo runs they are ahead of those that it has not
// come to. `Lockstep` tells a run when that may be so, and that it has to compute its words anew.
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
    if (!hold(stamp)) return false;
    bits_ = bits;
    return true;
  }
  bool setNumber(int number, const WordStamp &stamp) { return set(static_cast<std::uint64_t>(number), stamp); }

  // For several changes of one moment: notes the bits as they are, then changes them without a look.
  bool hold(const WordStamp &stamp) { return noted_ == stamp.serial || note(stamp); }
  void setHeld(std::uint64_t bits) { bits_ = bits; }

 private:
  bool note(const WordStamp &stamp);

  std::uint64_t bits_;
  std::uint64_t noted_;
};

// Words that change many at a time, in runs of one constraint. A restore is noticed by the next run: until then the
// words are as the last one left them.
class ReversibleWords {
 public:
  // `count` words, to be initialised. False when memory is exhausted (reported).
  bool create(std::uint64_t count) { return make(words_, count) && grow(2 * count); }
  void init(int i, std::uint64_t bits) { words_[i] = bits; }

  std::uint64_t operator[](int i) const { return words_[i]; }
  const std::uint64_t *from(int i) const { return words_.get() + i; }

  // The first step of a run: takes back what has been undone.
  void begin() {
    stamp_ = WordStamp::now();
    if (length_.bits() != written_) [[unlikely]]
      takeBack();
    if (stamp_.serial == 0 || solver::acceptedInside) forgetLog();
  }
  // To be called before up to `changes` calls of `set`. False when memory is exhausted (reported).
  bool prepare(std::uint64_t changes) { return makeRoom(2 * changes); }
  void set(int i, std::uint64_t bits) {
    Changes changes = changesNow();
    changes.set(i, bits);
    keep(changes);
  }
  // For many changes one after the other, which count when they are kept.
  struct Changes {
    std::uint64_t *words;
    std::uint64_t *log;

    void set(int i, std::uint64_t bits) {
      *log++ = words[i];
      *log++ = static_cast<unsigned>(i);
      words[i] = bits;
    }
  };
  Changes changesNow() const { return {words_.get(), log_.get() + written_}; }
  void keep(const Changes &changes) {
    written_ = static_cast<std::uint64_t>(changes.log - log_.get());
    length_.setHeld(written_);
  }
  // For a run that changes most of the first `count` words: as they are they go into the log, once a context, and can
  // then be changed at will. False when memory is exhausted (reported).
  bool hold(int count) { return held_ == stamp_.serial || logFirst(static_cast<unsigned>(count)); }
  std::uint64_t *held() { return words_.get(); }

 private:
  // The log has old bits and, behind them, the number of their word, or how many words from the first on they are of.
  static constexpr std::uint64_t kFirst = std::uint64_t{1} << 32;

  bool logFirst(std::uint64_t count);
  void takeBack();
  void forgetLog() {
    written_ = 0;
    length_.setHeld(0);
  }
  bool makeRoom(std::uint64_t more) { return (written_ + more <= room_ || grow(more)) && length_.hold(stamp_); }
  bool grow(std::uint64_t more);

  Buffer<std::uint64_t> words_;
  Buffer<std::uint64_t> log_;  // oldest first; a word may come several times
  std::uint64_t room_ = 0;
  std::uint64_t written_ = 0;  // of the log
  ReversibleWord length_{};    // of it, as much as has not been undone
  WordStamp stamp_{};
  std::uint64_t held_ = 0;  // the context of the last `hold`
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
