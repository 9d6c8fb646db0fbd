// SPDX-License-Identifier: MIT
// What the criteria and the matrix search share: a level that tries the values of a variable in the order of scores
// that are asked for anew before each choice.
#pragma once

#include "search/branching.h"

namespace koru {

// The values of a variable on entry to a level that have not been tried there. False when there is no memory for them
// (reported).
class Untried {
 public:
  explicit Untried(const CSint *v)
      : domain_(v->bits),
        bits_(DomainBits::create(v->initialMin, v->initialMax, DomainBits::Fill::kAll)),
        low_(v->min),
        high_(v->max) {}
  Untried(const Untried &) = delete;
  Untried &operator=(const Untried &) = delete;
  ~Untried() { DomainBits::destroy(bits_); }

  explicit operator bool() const { return bits_ != nullptr; }

  // The value with the lowest score, the smallest of equals. Deliberate: when every score is the largest int, or
  // nothing is left, the result is the int below the minimum, which propagation will refuse.
  template <class Score>
  int takeBest(const Score &score) const {
    int best = kIntMax;
    int choice = wrapSub(low_, 1);
    for (int value = low_;; value = nextPresent(bits_, value)) {
      const int s = isCandidate(value) ? score(value) : kIntMax;
      if (s < best) {
        best = s;
        choice = value;
      }
      if (value >= high_) break;
    }
    if (best < kIntMax) bits_->clear(choice);
    return choice;
  }

 private:
  bool isCandidate(int value) const {
    return value <= high_ && bits_->has(value) && (domain_ == nullptr || domain_->has(value));
  }

  const DomainBits *domain_;
  DomainBits *bits_;
  int low_;
  int high_;
};

// One level; `score(value)` rates a value, `descend()` labels the rest. A null variable fails.
template <class Score, class Descend>
[[nodiscard]] bool tryInScoreOrder(CSint *v, int failLimit, const Score &score, const Descend &descend) {
  if (v == nullptr) return false;
  int left = v->count;
  const Untried untried(v);
  if (!untried || !openContext()) return false;
  tellEnter(v);
  for (; left > 0; --left) {
    const int value = untried.takeBest(score);
    ++searchState.choicePoints;
    if (searchState.cancelled) return leave();
    if (tryValue(v, value, failLimit) && descend()) return true;
    if (failLimitReached(failLimit)) return leave();
    renewContext();
  }
  cs_acceptContext();
  return leave();
}

}  // namespace koru
