// SPDX-License-Identifier: MIT
// Start and end of the solver.
#include "core/solver.h"

#include "core/build_mode.h"
#include "core/invariants.h"

namespace koru {

namespace {

// With the first block of its notes, which the first one that is pushed would allocate: later they do not, for long.
bool createTrail() {
  if (!solver::trail.create() || !solver::trail.noteCallback(TrailKind::kCallback, nullptr, 0, nullptr)) return false;
  solver::trail.discardTo(0);
  return true;
}

// Stops at the first stack that cannot be had; those already built are taken over by the next attempt.
bool createStacks() {
  return solver::variables.create() && createTrail() && solver::contexts.create() && solver::events.create();
}

// Bit arrays and names go first. What lies in the pool goes with it, unvisited: a walk over all variables would take as
// long as it took to make them, and over the entries of their constraints, which are scattered in memory, longer.
void destroyVariables() {
  const bool isPooled = solver::ownersAlive == 0 && !solver::pool.hasLoose();
  if (!isPooled || solver::named) solver::variables.forEach(destroyDomain);
  if (!isPooled) solver::variables.forEach(detachAll);
  solver::variables.destroy();
}

}  // namespace
}  // namespace koru

namespace solver = koru::solver;

void cs_init(void) {
  if constexpr (koru::kChecked) {
    koru::check::noteStartOrEnd();
    solver::checked.walk = koru::check::walkWhenIdle;
  }
  koru::prepareErrorsForInit();
  if (!solver::initialised) {
    if (!koru::createStacks()) return;
    solver::queue = koru::Queue{};
    solver::refusals = solver::hostAsked = 0;
    solver::sites.create();
    solver::initialised = true;
  }
  koru::finishErrorsAfterInit();
}

// The order is fixed: releases run while what they may look at still stands.
void cs_end(void) {
  if (!solver::initialised) return;
  if constexpr (koru::kChecked) koru::check::noteStartOrEnd();
  solver::agenda = koru::Agenda{};
  solver::sites.destroy();
  solver::ports.resetLocator();
  solver::ports.releaseObservers();
  koru::forgetPlaces();
  solver::contexts.destroy();
  solver::trail.destroy();
  koru::emptyGraveyard();
  koru::destroyVariables();
  solver::events.destroy();
  solver::pool.destroy();
  solver::posters.destroy();
  solver::queue = koru::Queue{};
  solver::acceptedInside = false;
  solver::ownersAlive = 0;
  solver::named = false;
  solver::userSite = nullptr;
  solver::refusals = solver::busy = 0;
  solver::initialised = false;
  if constexpr (koru::kChecked) koru::check::afterEnd();
}

char *cs_getVersion(void) {
  static char version[] = "3.8.0";
  return version;
}
