// SPDX-License-Identifier: MIT
#include "minizinc/shared_bound.h"

#include <sys/mman.h>

#include <new>

namespace koru::fzn {

bool imposeBetter(CSint *objective, bool minimizes, int than) {
  if (than == (minimizes ? INT_MIN : INT_MAX)) return false;  // the comparisons take the next value, which is none
  return minimizes ? cs_LT(objective, than) : cs_GT(objective, than);
}

SharedBound *SharedBound::create(bool minimizes) {
  void *place = mmap(nullptr, sizeof(SharedBound), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  return place == MAP_FAILED ? nullptr : new (place) SharedBound(minimizes);
}

void SharedBound::tell(int objective) {
  const long long found = minimizes_ ? objective : -static_cast<long long>(objective);
  long long best = best_;
  while (found < best && !best_.compare_exchange_weak(best, found)) continue;
}

bool SharedBound::impose(CSint *objective) const {
  const long long best = best_;
  if (best == LLONG_MAX) return true;
  return imposeBetter(objective, minimizes_, static_cast<int>(minimizes_ ? best : -best));
}

}  // namespace koru::fzn
