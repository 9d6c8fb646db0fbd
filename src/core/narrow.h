// SPDX-License-Identifier: MIT
// The four operations through which every domain changes, and the one that leaves no trace.
//
// Each is false when the domain would become empty or memory runs out (reported); the caller's rule then returns false
// at once. A call that changes nothing costs a comparison or two, inlined; it notes and signals nothing. The rest notes
// the old state on the trail, changes the domain and signals the event.
#pragma once

#include "core/variable.h"

namespace koru {

[[nodiscard]] bool raiseMin(CSint *v, int bound);      // min < bound <= max
[[nodiscard]] bool lowerMax(CSint *v, int bound);      // min <= bound < max
[[nodiscard]] bool bindFree(CSint *v, int value);      // value within the bounds, not instantiated
[[nodiscard]] bool removeInside(CSint *v, int value);  // value within the bounds
[[nodiscard]] bool removeHeld(CSint *v, int value);    // a value that v holds, with a count that may be wrong

// The same by the sum with a constant that has made v (kShifted), when it passes a change of its other variable
// on in full: not told of it again (core/queue).
[[nodiscard]] bool raiseMinByMaker(CSint *v, int bound);
[[nodiscard]] bool lowerMaxByMaker(CSint *v, int bound);
[[nodiscard]] bool removeHeldByMaker(CSint *v, int value);

// Removes every value below `bound`.
[[nodiscard]] inline bool narrowMin(CSint *v, int bound) {
  if (bound <= v->min) return true;
  return bound <= v->max && raiseMin(v, bound);
}

// Removes every value above `bound`.
[[nodiscard]] inline bool narrowMax(CSint *v, int bound) {
  if (bound >= v->max) return true;
  return bound >= v->min && lowerMax(v, bound);
}

// Reduces the domain to `value`.
[[nodiscard]] inline bool bindValue(CSint *v, int value) {
  if (value < v->min || value > v->max) return false;
  return isInstantiated(v) || bindFree(v, value);
}

// Removes `value`.
[[nodiscard]] inline bool removeValue(CSint *v, int value) {
  if (value < v->min || value > v->max) return true;
  return removeInside(v, value);
}

// The same for a value of which nobody can foresee whether v holds it.
[[nodiscard]] inline bool removeUnforeseen(CSint *v, int value) {
  if (!has(v, kEasy)) return removeValue(v, value);
  if (holdsEasily(v, value)) return removeHeld(v, value);
  return (static_cast<int>(isWithin(v, value)) & static_cast<int>(isInstantiated(v))) == 0;
}

// Removes `value`, which may be absent. Unlike removeValue it then holds also for the last value of a domain whose
// count was written back too low.
[[nodiscard]] inline bool removeIfPresent(CSint *v, int value) { return !contains(v, value) || removeHeld(v, value); }

// Removes `value` without trail and signal, for constraints that build a domain of their own. False only when the bit
// array cannot be had. Deliberate: an emptied domain goes unnoticed, the caller tests for it.
[[nodiscard]] bool removeValueNoTrail(CSint *v, int value);

// The bounds of linear rules, computed in 64 bits: nothing to do when the bound does not tighten, failure without a
// narrowing when it lies past the other bound.
[[nodiscard]] inline bool narrowMin64(CSint *v, std::int64_t bound) {
  if (bound <= v->min) return true;
  return bound <= v->max && raiseMin(v, static_cast<int>(bound));
}

[[nodiscard]] inline bool narrowMax64(CSint *v, std::int64_t bound) {
  if (bound >= v->max) return true;
  return bound >= v->min && lowerMax(v, static_cast<int>(bound));
}

}  // namespace koru
