// SPDX-License-Identifier: MIT
// Two solvers by turns. What one is to bring back, and what its relations leave, is known by the models of its world,
// which take no notice of what happens in the other one.
#include <utility>

#include "traces/machine.h"

namespace koru::traces {

void Machine::changeWorlds() { std::swap(world_, otherWorld_); }

// A callback of the library cannot take the solver away; one of a selector that the trace itself asks can, and puts it
// back. Elsewhere it is parked unless memory is exhausted, and the other one
// goes on, or begins.
void Machine::parkSolver(const Line &line) {
  const bool running = solver::initialised;
  const int refused = refusedRequests();
  CSsolver *parked = cs_detachSolver();
  answer(line, parked != nullptr ? 1 : 0);
  if (scriptDepth_ > 0 || !running) {
    if (parked == nullptr) return;
    if (!running || !byHand_) fail("solvers: parked from a callback, or when none was running");
    if (!cs_attachSolver(parked)) fail("solvers: cannot be put back");
    return;
  }
  if (parked == nullptr) {
    if (refusedRequests() == refused) fail("solvers: cannot be parked");
    return;
  }
  changeWorlds();
  CSsolver *other = std::exchange(parked_, parked);
  if (other == nullptr) return start();
  if (!cs_attachSolver(other)) fail("solvers: cannot be attached");
}

// Possible only when none is running.
void Machine::attachSolver(const Line &line) {
  const bool possible = scriptDepth_ == 0 && !solver::initialised && parked_ != nullptr;
  const bool attached = cs_attachSolver(parked_);
  answer(line, attached ? 1 : 0);
  if (attached != possible) fail("solvers: attached beside another one, or not at all");
  if (!attached) return;
  parked_ = nullptr;
  changeWorlds();
}

void Machine::endParked() {
  if (!cs_attachSolver(std::exchange(parked_, nullptr))) return fail("solvers: cannot be attached at the end");
  changeWorlds();
  end();
}

}  // namespace koru::traces
