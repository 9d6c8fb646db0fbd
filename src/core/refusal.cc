// SPDX-License-Identifier: MIT
// cs_getNbRefused: how many postings and relations were refused and are still part of the state.
#include "core/refusal.h"

#include "core/context_stack.h"
#include "core/lifetime.h"
#include "core/queue.h"
#include "core/site.h"
#include "core/trail.h"
#include "koru_extras.h"

namespace koru {

// A user-defined constraint's callback may run outside propagation, when the constraint is registered.
bool hostHasCalled() {
  return solver::busy == 0 && solver::queue.depth == 0 && solver::userSite == nullptr && !solver::trail.undoing();
}

void noteRefusal() {
  if (hostHasCalled()) solver::refusals = wrapAdd(solver::refusals, 1);
}

bool askCensor(const char *constantName, const void *caller) {
  if (solver::ports.watched) solver::ports.tellPosts({constantName, caller});
  const Censor &censor = solver::censor;
  if (censor.leavesOut == nullptr || !solver::initialised || solver::contexts.count() > 0 || !hostHasCalled())
    return false;
  return censor.leavesOut(censor.argument, {constantName, caller});
}

}  // namespace koru

int cs_getNbRefused(void) { return koru::solver::refusals; }
