// SPDX-License-Identifier: MIT
// The best objective that any process of a portfolio has found, in memory that they share.
#ifndef KORU_MINIZINC_SHARED_BOUND_H
#define KORU_MINIZINC_SHARED_BOUND_H

#include <koru_extras.h>

#include <atomic>
#include <climits>

namespace koru::fzn {

// Leaves better values than the one given. False when there are none.
bool imposeBetter(CSint *objective, bool minimizes, int than);

class SharedBound {
 public:
  explicit SharedBound(bool minimizes) : minimizes_(minimizes) {}

  // One that this process and those that it forks share, for good; null without the memory.
  static SharedBound *create(bool minimizes);

  // A solution has been written, so that whoever stops for lack of a better one can count on it.
  void tell(int objective);
  // Leaves better values than the best, if there is one. False when there are none.
  bool impose(CSint *objective) const;

 private:
  const bool minimizes_;
  std::atomic<long long> best_ = LLONG_MAX;  // the negative objective where that is to be great
  static_assert(std::atomic<long long>::is_always_lock_free);
};

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_SHARED_BOUND_H
