// SPDX-License-Identifier: MIT
// State that belongs to a branch of the search, without a record on the undo trail.
//
// A BranchStamp is a moment of the search. It stands as long as the context that was the newest then is open: nothing
// that was done at that moment can have been undone. When it no longer stands, things may or may not have been undone.
// One that is taken by a callback of a running undo never stands: its context stays open, but what is done is taken
// back.
//
// A branch set holds the positions 0..n-1. One that is taken out is back when its stamp no longer stands. Stamps taken
// one after the other fall in the opposite order, because contexts are a stack, so a stack of them is all it needs.
// BranchSet owns its storage, BranchSetOn works on that of somebody else.
#pragma once

#include <algorithm>
#include <cstdint>

#include "core/alloc.h"
#include "core/bit_scan.h"
#include "core/context_stack.h"
#include "core/int_math.h"
#include "core/trail.h"

namespace koru {

struct BranchStamp {
  int level;             // contexts open
  std::uint64_t serial;  // of the newest of them

  // Inline, as an all-different takes and asks for one whenever a variable is bound.
  static BranchStamp now() {
    if (solver::trail.undoing()) return {kIntMax, 0};
    if (solver::contexts.empty()) return {0, 0};
    const ContextMark &newest = solver::contexts.newest();
    return {newest.level, newest.serial};
  }
  bool stands() const {
    if (level == 0) return true;
    if (solver::contexts.empty()) return false;
    const ContextMark &newest = solver::contexts.newest();
    if (newest.level == level) return newest.serial == serial;
    return newest.level > level && solver::contexts.at(level - 1).serial == serial;
  }
};

class BranchSetOn {
 public:
  struct Taken {
    int position;
    int level;  // level and serial: the stamp
    std::uint64_t serial;
  };
  static constexpr int wordsFor(int size) { return (size + 63) / 64; }

  BranchSetOn() = default;
  // All positions in. `words` has room for wordsFor(size), `taken` for size elements.
  BranchSetOn(int size, std::uint64_t *words, Taken *taken);

  // Puts back what was taken out on branches that have been left. To be called before the set is used.
  void refresh() {
    if (closings_ != solver::closings) putBack([](int) {});
  }
  // The same for a caller who keeps a position below which all are out: lowers it to the first that is back. False when
  // no context has been closed since.
  bool refresh(int &first) {
    if (closings_ == solver::closings) return false;
    putBack([&first](int position) { first = std::min(first, position); });
    return true;
  }

  // Both take a position out for this branch; `stamp` is that of now, for a caller who takes out many.
  void takeOut(int position, const BranchStamp &stamp) {
    std::uint64_t &word = words_[wordOf(position)];
    if ((word & maskOf(position)) == 0) return;
    word &= ~maskOf(position);
    taken_[takenCount_++] = {position, stamp.level, stamp.serial};
  }
  void takeOut(int position) { takeOut(position, BranchStamp::now()); }

  // Visits the positions in increasing order while `visit` returns true. False when it has returned false.
  template <class Visit>
  bool forEach(Visit visit) const {
    for (int i = 0; i < wordCount_; ++i)
      if (!visitWord(i * 64, words_[i], visit)) return false;
    return true;
  }
  // Those from `first` on, which is not negative.
  template <class Visit>
  bool forEachFrom(int first, Visit visit) const {
    for (int i = first / 64; i < wordCount_; ++i) {
      const std::uint64_t left = i == first / 64 ? words_[i] & ~(maskOf(first) - 1) : words_[i];
      if (!visitWord(i * 64, left, visit)) return false;
    }
    return true;
  }
  // The same for the positions but one, up to 64 at a time: visit(first, bits), where bit i is the position first + i.
  template <class Visit>
  bool forEachWordBut(int position, Visit visit) const {
    if (wordCount_ == 1) return visit(0, words_[0] & ~maskOf(position));
    for (int i = 0; i < wordCount_; ++i) {
      const std::uint64_t left = wordOf(position) == wordOf(i * 64) ? words_[i] & ~maskOf(position) : words_[i];
      if (!visit(i * 64, left)) return false;
    }
    return true;
  }

 private:
  template <class Tell>
  void putBack(Tell tell) {
    closings_ = solver::closings;
    while (takenCount_ > 0 && !newest().stands()) {
      const int position = taken_[--takenCount_].position;
      put(position);
      tell(position);
    }
  }
  static std::size_t wordOf(int position) { return static_cast<unsigned>(position) / 64; }
  static std::uint64_t maskOf(int position) { return std::uint64_t{1} << (static_cast<unsigned>(position) % 64); }
  template <class Visit>
  static bool visitWord(int first, std::uint64_t left, Visit &visit) {
    if (left == ~std::uint64_t{0}) {
      for (int i = 0; i < 64; ++i)
        if (!visit(first + i)) return false;
      return true;
    }
    return forEachBit(first, left, visit);
  }
  void put(int position) { words_[wordOf(position)] |= maskOf(position); }
  BranchStamp newest() const { return {taken_[takenCount_ - 1].level, taken_[takenCount_ - 1].serial}; }

  std::uint64_t *words_ = nullptr;
  Taken *taken_ = nullptr;
  int wordCount_ = 0;
  int takenCount_ = 0;
  std::uint64_t closings_ = 0;  // at the last refresh
};

class BranchSet : public BranchSetOn {
 public:
  BranchSet() = default;
  // False as a bool when memory is exhausted (reported).
  explicit BranchSet(int size);
  explicit operator bool() const { return words_ && taken_; }

 private:
  Buffer<std::uint64_t> words_;
  Buffer<Taken> taken_;
};

}  // namespace koru
