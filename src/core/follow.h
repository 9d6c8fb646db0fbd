// SPDX-License-Identifier: MIT
// What a sum with a constant does to the variable that it has made (CSint::shifted) when its other one changes: the
// narrowings of core/narrow where all is as it mostly is, written out in one piece. This saves half of the
// instructions.
//
// Each is false when something is not as usual, and has then done nothing: the caller goes the long way.
#pragma once

#include "core/build_mode.h"
#include "core/queue.h"
#include "core/trail.h"

namespace koru {

// The domain is a word with holes, there is room for a record of the trail, and none of the event queue is asked for.
inline bool isUsual(const CSint *v) { return !kLogging && v->shifted && v->easy && solver::trail.hasRoom(); }

// There is room for an event, which waits for its turn.
inline bool canQueue() { return solver::events.hasRoom() && changesWait(); }

inline void queueByMaker(CSint *v, EventCode code, int value) {
  solver::events.push({v, v->constraints, value, codeByMaker(v, code)});
}

// The new bound is a value of v.
[[gnu::always_inline]] inline bool followMin(CSint *v, int bound) {
  if (bound <= v->min || bound > v->max || !isUsual(v) || !hasHoles(v) || !canQueue()) return false;
  const std::uint64_t word = v->bits->onlyWord();
  const std::uint64_t kept = word >> v->bits->offset(bound);
  if ((kept & 1) == 0) return false;
  const std::uint64_t held = word >> v->bits->offset(v->min);
  solver::trail.noteMin(v);
  v->min = bound;
  v->count = wrapSub(v->count, countByInstruction(held) - countByInstruction(kept));
  queueByMaker(v, isInstantiated(v) ? kMinBound : kNewMin, bound);
  return true;
}

[[gnu::always_inline]] inline bool followMax(CSint *v, int bound) {
  if (bound >= v->max || bound < v->min || !isUsual(v) || !hasHoles(v) || !canQueue()) return false;
  const std::uint64_t word = v->bits->onlyWord();
  const std::uint64_t kept = word << (63 - v->bits->offset(bound));
  if (kept >> 63 == 0) return false;
  const std::uint64_t held = word << (63 - v->bits->offset(v->max));
  solver::trail.noteMax(v);
  v->max = bound;
  v->count = wrapSub(v->count, countByInstruction(held) - countByInstruction(kept));
  queueByMaker(v, isInstantiated(v) ? kMaxBound : kNewMax, bound);
  return true;
}

// A value strictly inside; nobody else hears of it.
[[gnu::always_inline]] inline bool followRemoved(CSint *v, int value) {
  if (value <= v->min || value >= v->max || !isUsual(v) || isInstantiated(v)) return false;
  std::uint64_t &word = v->bits->words()[0];
  const std::uint64_t bit = std::uint64_t{1} << v->bits->offset(value);
  if ((word & bit) == 0 || !onlyMakerHears(v, kRemoved)) return false;
  solver::trail.noteRemoved(v, value);
  word ^= bit;
  v->count = wrapSub(v->count, 1);
  return true;
}

}  // namespace koru
