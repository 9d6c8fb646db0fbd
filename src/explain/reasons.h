// SPDX-License-Identifier: MIT
// The set of postings that an explanation names: found first among places, then among the postings of these.
#pragma once

#include <chrono>

#include "explain/runs.h"

namespace koru::explain {

class Reasons {
 public:
  Reasons(Runs &runs, const CSexplainOptions &options) : runs_(runs), options_(options) {}

  // `early` is called when the places are known.
  template <class Early>
  CSexplained find(const Early &early);

  // Of the recorded calls, those of the smallest set known; null before there is one.
  const bool *best() const { return bestCount_ >= 0 ? best_.get() : nullptr; }
  int bestCount() const { return bestCount_ < 0 ? 0 : bestCount_; }

 private:
  using Clock = std::chrono::steady_clock;

  bool nearest() const { return options_.nearest; }
  CSexplained firstRuns();
  bool makeRoom();
  void takeAll();
  void playPlaces();
  void playCalls();
  void reduce();
  void verify();
  bool withoutOne(int element);
  bool holds();
  bool holdsFor(Answer answer);
  void keepIfSmaller();
  bool limitReached() const;

  Runs &runs_;
  const CSexplainOptions &options_;
  Clock::time_point started_ = Clock::now();
  CSexplained state_ = CS_EXPLAINED_MINIMAL;
  bool stopped_ = false;

  // The elements among which a set is looked for: which one each call belongs to, or none of them; and those chosen.
  int elements_ = 0;
  Buffer<int> elementOf_;
  Buffer<bool> chosen_;
  Buffer<bool> on_;
  Buffer<bool> best_;
  int bestCount_ = -1;
};

template <class Early>
CSexplained Reasons::find(const Early &early) {
  state_ = firstRuns();
  if (state_ != CS_EXPLAINED_MINIMAL) return state_;
  playPlaces();
  reduce();
  if (!stopped_) early();
  if (!stopped_) playCalls();
  if (!stopped_) reduce();
  if (!stopped_) verify();
  if (state_ == CS_EXPLAINED_MINIMAL && bestCount_ == 0) state_ = CS_EXPLAINED_NEVER;
  return state_;
}

}  // namespace koru::explain
