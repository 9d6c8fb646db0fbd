// SPDX-License-Identifier: MIT
// What the labelling engines share: the values of a level, and the step from one value to the next.
#pragma once

#include "core/narrow.h"
#include "core/solver.h"
#include "core/trial.h"
#include "search/state.h"

namespace koru {

// The values of a variable as they are on entry to a level, in increasing order. The bounds and the bit array are
// those noted on entry; the array is read live, but a restore has put it back whenever the next value is asked for.
class Values {
 public:
  explicit Values(const CSint *v) : bits_(v->bits), max_(v->max), value_(v->min), more_(true) { skipAbsent(); }
  // Of an interval that is nobody's.
  Values(int least, int greatest) : bits_(nullptr), max_(greatest), value_(least), more_(true) {}

  bool more() const { return more_; }
  int current() const { return value_; }
  void advance() {
    if (value_ >= max_) {
      more_ = false;
      return;
    }
    ++value_;
    skipAbsent();
  }
  // Without a look at the bits, which may not be those on entry while a level below is open: the greatest is left.
  bool anyAfterCurrent() const { return more_ && value_ < max_; }
  // On to a value, which must not come before the present one. False when it was not there on entry.
  bool goTo(int value) {
    if (value < value_ || value > max_ || (bits_ != nullptr && !bits_->has(value))) return false;
    value_ = value;
    return true;
  }

 private:
  void skipAbsent() {
    if (bits_ == nullptr) return;
    if (const std::uint64_t word = bits_->upwardsFrom(value_); word != 0) {
      value_ += std::countr_zero(word);
      more_ = value_ <= max_;
      return;
    }
    value_ = nextPresent(bits_, value_);
    more_ = value_ <= max_ && bits_->has(value_);
  }

  const DomainBits *bits_;
  int max_;
  int value_;
  bool more_;
};

// Ends a posting that is open. False when that fails, or has failed and nobody was told: then there is no solution.
[[nodiscard]] inline bool postingHolds() { return !solver::agenda.postingUnsettled() || endPosting(); }

// Opens the context that a search closes again. False when a posting that it ends fails, or when there is no memory for
// the context (reported): then none was opened, and the search must close none.
[[nodiscard]] inline bool openContext() {
  if (!postingHolds()) return false;
  const int open = solver::contexts.count();
  return cs_saveContext() > open;
}

// Apart, since the decision would take room in the frame of every level.
[[gnu::noinline, gnu::cold]] inline bool tellValue(int value, bool consistent) {
  return tellTried({CS_METHOD_EQ, value}, consistent);
}

// At a refused value: when the search is observed, or ends with it.
inline bool hostLooks(int failLimit = 0) {
  return searchObserver != nullptr || (failLimit > 0 && searchState.fails >= failLimit - 1);
}

// What cs_EQ does, which a search answers for itself.
[[nodiscard]] inline bool impose(CSint *v, int value, int failLimit) {
  const Trial trial(hostLooks(failLimit));
  return solver::attention ? cs_EQ(v, value) : bindValue(v, value);
}

// Tries one value and, when propagation refuses it, counts the fail.
[[nodiscard]] inline bool tryValue(CSint *v, int value, int failLimit) {
  bool consistent = impose(v, value, failLimit);
  if (searchObserver != nullptr) [[unlikely]]
    consistent = tellValue(value, consistent);
  if (consistent) return true;
  ++searchState.fails;
  return false;
}

// All variables have values: a solution is reached, unless a posting that no context has ended refuses them.
[[nodiscard]] inline bool solved(const CSint *objective = nullptr) {
  if (!postingHolds()) return false;
  tellSolution(true, objective);
  return true;
}

// The end of a level at which everything has failed, or the search has to end.
inline bool leave() {
  tellLeave();
  return false;
}

// A limit below 1 is none.
inline bool failLimitReached(int limit) { return limit > 0 && searchState.fails >= limit; }

}  // namespace koru
