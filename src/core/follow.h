// SPDX-License-Identifier: MIT
// What a sum with a constant does to the variable that it has made (kShifted) when its other one changes: the
// narrowings of core/narrow where all is as it mostly is, written out in one piece. This saves half of the
// instructions.
//
// Each is false when something is not as usual, and has then done nothing: the caller goes the long way.
#pragma once

#include "core/build_mode.h"
#include "core/queue.h"
#include "core/trail.h"

namespace koru {

// The domain is a word, nobody of the host's looks, and there is room for a record of the trail.
inline bool isUsual(const CSint *v) {
  return !kLogging && isShiftedEasily(v) && canBeUnheard() && solver::trail.hasRoom();
}

// There is room for an event, which waits for its turn.
inline bool canQueue() { return solver::events.hasRoom() && changesWait(); }

template <EventCode code>
void queueByMaker(CSint *v, int value) {
  solver::events.push({v, v->constraints, value, codeByMaker(v, code)});
}

// The new bound is a value of v.
[[gnu::always_inline]] inline bool followMin(CSint *v, int bound) {
  if (bound <= v->min || bound > v->max || !isUsual(v) || !hasHoles(v) || !canQueue()) return false;
  const std::uint64_t held = v->bits->onlyWord() >> v->bits->offset(v->min);
  const std::uint64_t kept = held >> distance(v->min, bound);
  if ((kept & 1) == 0) return false;
  const int gone = countByInstruction(held) - countByInstruction(kept);
  solver::trail.noteMin(v);
  v->min = bound;
  v->count = wrapSub(v->count, gone);
  if (isInstantiated(v)) {
    queueByMaker<kMinBound>(v, bound);
  } else {
    queueByMaker<kNewMin>(v, bound);
  }
  return true;
}

[[gnu::always_inline]] inline bool followMax(CSint *v, int bound) {
  if (bound >= v->max || bound < v->min || !isUsual(v) || !hasHoles(v) || !canQueue()) return false;
  const std::uint64_t held = v->bits->onlyWord() << (63 - v->bits->offset(v->max));
  const std::uint64_t kept = held << distance(bound, v->max);
  if (kept >> 63 == 0) return false;
  const int gone = countByInstruction(held) - countByInstruction(kept);
  solver::trail.noteMax(v);
  v->max = bound;
  v->count = wrapSub(v->count, gone);
  if (isInstantiated(v)) {
    queueByMaker<kMaxBound>(v, bound);
  } else {
    queueByMaker<kNewMax>(v, bound);
  }
  return true;
}

// A value strictly inside; nobody else hears of it.
[[gnu::always_inline]] inline bool followRemoved(CSint *v, int value) {
  if (value <= v->min || value >= v->max || !isUsual(v) || isInstantiated(v)) return false;
  std::uint64_t &word = v->bits->words()[0];
  const std::uint64_t bit = std::uint64_t{1} << v->bits->offset(value);
  if ((word & bit) == 0 || heardByOthers(v, kRemoved)) return false;
  solver::trail.noteRemoved(v, value);
  word ^= bit;
  v->count = wrapSub(v->count, 1);
  return true;
}

}  // namespace koru
