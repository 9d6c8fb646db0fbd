// SPDX-License-Identifier: MIT
#include "solve/limits.h"

#include <algorithm>

#include "core/solver.h"

namespace koru::solve {

static constexpr long long kBetweenLooks = 32;

void noteWakings(CSsearch &s) {
  s.stats.wakings += static_cast<long long>(solver::queue.wakings - s.wakingsNoted);
  s.wakingsNoted = solver::queue.wakings;
}

void tellProgress(CSsearch &s) {
  if (s.options.progress == nullptr) return;
  noteWakings(s);
  s.stats.seconds = s.clock.seconds();
  s.nextProgress = s.stats.seconds + static_cast<double>(s.options.progressMilliseconds) / 1000;
  const CSsearchStats now = s.stats;
  s.options.progress(&s, &now, s.options.extra);
}

static bool tellsAsTimeGoes(const CSsearchOptions &o) { return o.progress != nullptr && o.progressMilliseconds > 0; }

static void tellWhenDue(CSsearch &s) {
  if (tellsAsTimeGoes(s.options) && s.clock.seconds() >= s.nextProgress) tellProgress(s);
}

static bool timeIsUp(const CSsearch &s) {
  const long long limit = s.options.milliseconds;
  return limit > 0 && s.clock.seconds() * 1000 >= static_cast<double>(limit);
}

// What the solver holds in blocks and in its pool, where bit arrays are too, and what the search has for itself.
static std::uint64_t bytesInUse(const CSsearch &s) {
  return solver::variables.bytes() + solver::trail.bytes() + solver::contexts.bytes() + solver::events.bytes() +
         solver::pool.bytes() + solver::posters.bytes() + s.path.bytes() + s.noGoodBytes;
}

static bool memoryIsUp(const CSsearch &s) {
  return s.options.memory > 0 && bytesInUse(s) > static_cast<std::uint64_t>(s.options.memory);
}

static CSstatus urgentLimit(const CSsearch &s) {
  if (s.stopped.load(std::memory_order_relaxed)) return CS_STATUS_STOPPED;
  if (memoryIsUp(s)) return CS_STATUS_MEMORY;
  return timeIsUp(s) ? CS_STATUS_TIME : CS_STATUS_READY;
}

// A search inside a propagation of another one ends with it.
bool mustEndNow(CSsearch &s) {
  if (s.ending == CS_STATUS_READY) s.ending = urgentLimit(s);
  const Supervisor &outer = s.outerSupervisor;
  if (s.ending == CS_STATUS_READY && outer.mustEnd != nullptr && outer.mustEnd(outer.argument))
    s.ending = CS_STATUS_STOPPED;
  if (s.ending != CS_STATUS_READY) s.nextLook = 0;
  return s.ending != CS_STATUS_READY;
}

static long long limitOr(long long limit, long long otherwise) { return limit > 0 ? limit : otherwise; }

static void planNextLook(CSsearch &s) {
  const CSsearchOptions &o = s.options;
  const bool often = o.milliseconds > 0 || o.memory > 0 || tellsAsTimeGoes(o);
  s.nextLook = std::min(limitOr(o.choicePoints, kNoLimit), often ? s.stats.choicePoints + kBetweenLooks : kNoLimit);
  s.failLimit = limitOr(o.fails, kNoLimit);
}

CSstatus limitReached(CSsearch &s) {
  const CSsearchOptions &o = s.options;
  planNextLook(s);
  if (s.stopped.load(std::memory_order_relaxed)) return CS_STATUS_STOPPED;
  tellWhenDue(s);
  if (o.solutions > 0 && s.stats.solutions >= o.solutions) return CS_STATUS_SOLUTIONS;
  if (o.fails > 0 && s.stats.fails >= o.fails) return CS_STATUS_FAILS;
  if (o.choicePoints > 0 && s.stats.choicePoints >= o.choicePoints) return CS_STATUS_CHOICE_POINTS;
  return urgentLimit(s);
}

}  // namespace koru::solve
