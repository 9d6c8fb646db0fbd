// SPDX-License-Identifier: MIT
// A meter of calls: how many changes of domains a handler or run has made and, of some of them, how long it took. What
// else is called while a call lasts, in a context that a callback has opened, is part of it.
//
// To read the counter of time at each call would take longer than many a handler does, 60 ns in a virtual machine. Runs
// are timed always, handlers now and then, at gaps of 1 to 256 calls that no rhythm of theirs can follow; one that is
// timed stands for all of its gap. After one that took long the next is timed too.
#pragma once

#include <cstdint>

namespace koru {

struct TrailRecord;

// Where the trail (core/trail, above) keeps its end, and how many changes of domains were noted since it ended there;
// an attachment counts as one.
TrailRecord *const *placeOfTrailEnd();
int changesSince(const TrailRecord *end);

class Meter {
 public:
  // Each thread has a trail.
  void readFrom(TrailRecord *const *trailEnd) { trailEnd_ = trailEnd; }
  const TrailRecord *trailEnd() const { return *trailEnd_; }

  // Of the call that ended last, until somebody has been told of it.
  enum class Known : unsigned char { kNothing, kIdle, kAll };
  Known known() const { return known_; }
  int changes() const { return changes_; }        // of domains, with kAll
  std::uint64_t ticks() const { return ticks_; }  // its own times the calls that it stands for, with kAll
  void forget() { known_ = Known::kNothing; }

  // The next call is to be timed.
  bool due() {
    if (left_ == 1) return true;
    --left_;
    return false;
  }
  void noteIdle() { known_ = Known::kIdle; }
  void note(int changes, std::uint64_t ticks) {
    known_ = Known::kAll;
    changes_ = changes;
    ticks_ = ticks;
  }
  // Of the one that was due: the ticks are multiplied, and the next gap begins.
  void noteSample(int changes, std::uint64_t ticks) {
    note(changes, ticks * gap_);
    random_ = random_ * 1664525U + 1013904223U;  // Knuth and Lewis
    gap_ = left_ = ticks >= kLong ? 1 : 1 + (random_ >> 24U);
  }

 private:
  static constexpr std::uint64_t kLong = 4000;

  TrailRecord *const *trailEnd_ = nullptr;
  Known known_ = Known::kNothing;
  unsigned left_ = 1;
  unsigned gap_ = 1;
  std::uint32_t random_ = 0;
  int changes_ = 0;
  std::uint64_t ticks_ = 0;
};

}  // namespace koru
