// SPDX-License-Identifier: MIT
// cs_detachSolver, cs_attachSolver: the running solver is parked as a record, and comes back from it.
//
// The pieces of the state change places with those of the record, which are as new; so nothing that runs has to know.
// Cost: an exchange of some 4 KB.
#include <new>
#include <utility>

#include "core/state.h"
#include "solvers/parked.h"

namespace koru {

namespace {

KORU_STATE CSsolver *self = nullptr;  // of the running solver, when it has a record

// What the tests have set for all solvers stays.
void exchangeChecks(check::State &checked) {
  std::swap(solver::checked, checked);
  solver::checked.period = checked.period;
}

void exchangeCore(CSsolver &s) {
  std::swap(solver::agenda, s.agenda);
  exchangeChecks(s.checked);
  std::swap(solver::ownersAlive, s.ownersAlive);
  std::swap(solver::contexts, s.contexts);
  std::swap(solver::contextSerial, s.contextSerial);
  std::swap(solver::closings, s.closings);
  std::swap(solver::acceptedInside, s.acceptedInside);
  std::swap(solver::errors, s.errors);
  std::swap(solver::initialised, s.initialised);
  std::swap(solver::pool, s.pool);
  std::swap(solver::ports, s.ports);
  std::swap(solver::posters, s.posters);
  std::swap(solver::postingFailedAt, s.postingFailedAt);
  std::swap(solver::queue, s.queue);
  std::swap(solver::events, s.events);
  std::swap(solver::graveyard, s.graveyard);
  std::swap(solver::refusals, s.refusals);
  std::swap(solver::sites, s.sites);
  std::swap(solver::trail, s.trail);
  std::swap(solver::variables, s.variables);
  std::swap(solver::named, s.named);
}

void exchange(CSsolver &s) {
  exchangeCore(s);
  std::swap(profilerState, s.profiler);
  std::swap(searchState, s.search);
  std::swap(solver::newestSearch, s.newestSearch);
  std::swap(self, s.self);
  solver::ports.refreshProfiling();
  s.parked = !s.parked;
}

// Nothing of the library is running that would go on with another state.
bool isAtRest() { return hostHasCalled() && solver::hostAsked == 0; }

void releaseAtEnd(void *solver) {
  self = nullptr;
  deallocate(solver);
}

// The running solver's record, made when it is first asked for; null when memory is exhausted (reported).
CSsolver *recordOfRunning() {
  if (self != nullptr) return self;
  void *memory = allocate(sizeof(CSsolver));
  if (memory == nullptr) return nullptr;
  self = new (memory) CSsolver;
  self->atEnd = {nullptr, releaseAtEnd, self, false, nullptr};
  solver::ports.add(&self->atEnd);
  return self;
}

// Those that a cs_init has left that found no memory for the rest.
void destroyStacks() {
  solver::variables.destroy();
  solver::trail.destroy();
  solver::contexts.destroy();
  solver::events.destroy();
}

}  // namespace
}  // namespace koru

using namespace koru;

CSsolver *cs_detachSolver(void) {
  if (!solver::initialised || !isAtRest()) return nullptr;
  CSsolver *record = recordOfRunning();
  if (record != nullptr) exchange(*record);
  return record;
}

bool cs_attachSolver(CSsolver *solver) {
  if (solver == nullptr || !solver->parked || solver::initialised || !isAtRest()) return false;
  destroyStacks();
  exchange(*solver);
  return true;
}
