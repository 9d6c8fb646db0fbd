// SPDX-License-Identifier: MIT
// The rules of the built-in variable selections. A rule is offered variables in array order and keeps the best.
//
// offer returns false when no later variable can be better. A variable that is settled will not be chosen again before
// a context is restored; one whose count has wrapped is not settled, since narrowing may bring it back.
#pragma once

#include "core/variable.h"

namespace koru {

struct FirstFree {
  CSint *best = nullptr;

  bool offer(CSint *v) {
    if (!isBound(v)) best = v;
    return best == nullptr;
  }
  static bool isSettled(const CSint *v) { return isBound(v); }
};

// Among the variables with at least two elements. The running best starts at a measure that no variable is better than,
// so one that only equals it is never chosen.
struct BestOfFree {
  CSint *best = nullptr;

  static bool isSettled(const CSint *v) { return isInstantiated(v); }
};

struct FewestElements : BestOfFree {
  int fewest = kIntMax;

  bool offer(CSint *v) {
    if (v->count < fewest && isFree(v)) {
      best = v;
      fewest = v->count;
    }
    return fewest > 2;
  }
};

struct FewestElementsThenLowest : BestOfFree {
  // Elements in the upper half, the minimum in the lower one: compared at one stroke.
  std::uint64_t fewest = rank(kIntMax, kIntMin);

  static std::uint64_t rank(int elements, int min) {
    return std::uint64_t{static_cast<std::uint32_t>(elements)} << 32 | distance(kIntMin, min);
  }
  bool offer(CSint *v) {
    const std::uint64_t r = rank(v->count, v->min);
    if (r < fewest && isFree(v)) {
      best = v;
      fewest = r;
    }
    return true;
  }
};

struct MostConstraints : BestOfFree {
  int most = kIntMin;

  bool offer(CSint *v) {
    if (v->constraintCount > most && isFree(v)) {
      best = v;
      most = v->constraintCount;
    }
    return true;
  }
};

}  // namespace koru
