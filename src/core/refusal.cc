// SPDX-License-Identifier: MIT
// cs_getNbRefused: how many postings and relations were refused and are still part of the state.
#include "core/refusal.h"

#include "core/queue.h"
#include "core/site.h"
#include "core/trail.h"
#include "koru_extras.h"

namespace koru {

// A user-defined constraint's callback may run outside propagation, when the constraint is registered.
void noteRefusal() {
  const bool inside =
      solver::busy > 0 || solver::queue.depth > 0 || solver::userSite != nullptr || solver::trail.undoing();
  if (!inside) solver::refusals = wrapAdd(solver::refusals, 1);
}

}  // namespace koru

int cs_getNbRefused(void) { return koru::solver::refusals; }
