// SPDX-License-Identifier: MIT
#include "core/posting_phase.h"

#include "core/agenda.h"
#include "core/lifetime.h"
#include "core/queue.h"
#include "core/refusal.h"
#include "koru_extras.h"

namespace koru {

bool endPosting() {
  Agenda &agenda = solver::agenda;
  if (agenda.posting()) {
    agenda.setPosting(false);
    if (agenda.due() && !changesWait() && !propagateNow()) {
      agenda.setUntold(true);
      solver::postingFailedAt = BranchStamp::now();
    }
  }
  return !agenda.untold() || !solver::postingFailedAt.stands();
}

}  // namespace koru

namespace solver = koru::solver;

bool cs_beginPosting(void) {
  if (!solver::initialised || solver::queue.depth > 0 || solver::agenda.posting()) return false;
  solver::agenda.setPosting(true);
  return true;
}

bool cs_endPosting(void) {
  if (!solver::initialised) return false;
  const bool consistent = koru::endPosting();
  solver::agenda.setUntold(false);
  return koru::door(consistent);
}
