// SPDX-License-Identifier: MIT
#include "solve/limits.h"

#include <algorithm>

namespace koru::solve {

static constexpr long long kBetweenLooks = 32;

void tellProgress(CSsearch &s) {
  if (s.options.progress == nullptr) return;
  s.stats.seconds = s.clock.seconds();
  s.nextProgress = s.stats.seconds + static_cast<double>(s.options.progressMilliseconds) / 1000;
  const CSsearchStats now = s.stats;
  s.options.progress(&s, &now, s.options.extra);
}

static bool tellsAsTimeGoes(const CSsearchOptions &o) { return o.progress != nullptr && o.progressMilliseconds > 0; }

static bool timeIsUp(CSsearch &s) {
  const CSsearchOptions &o = s.options;
  if (o.milliseconds <= 0 && !tellsAsTimeGoes(o)) return false;
  const double seconds = s.clock.seconds();
  if (tellsAsTimeGoes(o) && seconds >= s.nextProgress) tellProgress(s);
  return o.milliseconds > 0 && seconds * 1000 >= static_cast<double>(o.milliseconds);
}

static long long limitOr(long long limit, long long otherwise) { return limit > 0 ? limit : otherwise; }

static void planNextLook(CSsearch &s) {
  const CSsearchOptions &o = s.options;
  const bool timed = o.milliseconds > 0 || tellsAsTimeGoes(o);
  s.nextLook = std::min(limitOr(o.choicePoints, kNoLimit), timed ? s.stats.choicePoints + kBetweenLooks : kNoLimit);
  s.failLimit = limitOr(o.fails, kNoLimit);
}

CSstatus limitReached(CSsearch &s) {
  const CSsearchOptions &o = s.options;
  planNextLook(s);
  if (s.stopped.load(std::memory_order_relaxed)) return CS_STATUS_STOPPED;
  if (o.solutions > 0 && s.stats.solutions >= o.solutions) return CS_STATUS_SOLUTIONS;
  if (o.fails > 0 && s.stats.fails >= o.fails) return CS_STATUS_FAILS;
  if (o.choicePoints > 0 && s.stats.choicePoints >= o.choicePoints) return CS_STATUS_CHOICE_POINTS;
  return timeIsUp(s) ? CS_STATUS_TIME : CS_STATUS_READY;
}

}  // namespace koru::solve
