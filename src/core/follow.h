// SPDX-License-Identifier: MIT
// What a sum with a constant does to the variable that it has made (kShifted) when its other one changes, while a
// search tries a value: the narrowings of core/narrow where all is as it mostly is, written out in one piece. This
// saves two thirds of the instructions.
//
// Each is false when something is not as usual, and has then done nothing: the caller goes the long way.
#pragma once

#include "core/build_mode.h"
#include "core/queue.h"
#include "core/trail.h"

namespace koru {

// The domain is a word, and there is room for a record of the trail.
inline bool isUsual(const CSint *v) {
  return !kLogging && solver::queue.trying && isShiftedEasily(v) && solver::trail.hasRoom();
}

// Queues the event of the new bound. False when there is no room for it.
//
// When no constraint but the maker hears of it, and the variable stays free, it is reported at once instead, which
// saves some 50 instructions. That is the last-reported bound when the propagation ends, and when it fails the undo
// sets it. In between nobody can tell: constraints that look at the old bounds of an event hear of new ones.
template <EventCode whenFree, EventCode whenBound>
[[gnu::always_inline]] inline bool tell(CSint *v, int bound, int count) {
  if (count != 1 && !heardByOthers(v, whenFree)) {
    (whenFree == kNewMin ? v->reportedMin : v->reportedMax) = bound;
    return true;
  }
  if (!solver::events.hasRoom()) return false;
  solver::events.push({v, v->constraints, bound, (count == 1 ? whenBound : whenFree) | kWithoutMaker});
  return true;
}

// The new bound is a value of v.
[[gnu::always_inline]] inline bool followMin(CSint *v, int bound) {
  if (bound <= v->min || bound > v->max || !isUsual(v)) return false;
  const std::uint64_t kept = v->bits->onlyWord() >> v->bits->offset(bound);
  if ((kept & 1) == 0) return false;
  const int count = countByInstruction(kept << (63 - distance(bound, v->max)));
  if (!tell<kNewMin, kMinBound>(v, bound, count)) return false;
  solver::trail.noteMinOfTrial(v);
  v->min = bound;
  v->count = count;
  return true;
}

[[gnu::always_inline]] inline bool followMax(CSint *v, int bound) {
  if (bound >= v->max || bound < v->min || !isUsual(v)) return false;
  const std::uint64_t kept = v->bits->onlyWord() << (63 - v->bits->offset(bound));
  if (kept >> 63 == 0) return false;
  const int count = countByInstruction(kept >> (63 - distance(v->min, bound)));
  if (!tell<kNewMax, kMaxBound>(v, bound, count)) return false;
  solver::trail.noteMaxOfTrial(v);
  v->max = bound;
  v->count = count;
  return true;
}

// A value strictly inside.
[[gnu::always_inline]] inline bool followRemoved(CSint *v, int value) {
  if (value <= v->min || value >= v->max || !isUsual(v)) return false;
  std::uint64_t &word = v->bits->words()[0];
  const std::uint64_t bit = std::uint64_t{1} << v->bits->offset(value);
  if ((word & bit) == 0) return false;
  if (heardByOthers(v, kRemoved)) {
    if (!solver::events.hasRoom()) return false;
    solver::events.push({v, v->constraints, value, kRemoved | kWithoutMaker});
  }
  solver::trail.noteRemovedOfTrial(v, value);
  word ^= bit;
  v->count = wrapSub(v->count, 1);
  return true;
}

}  // namespace koru
