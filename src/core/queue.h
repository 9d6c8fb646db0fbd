// SPDX-License-Identifier: MIT
// The event queue and the propagation loop: the only caller of handlers.
//
// A change made while handlers run is appended; the outermost change drains the queue, first in first out, until it is
// empty or a handler fails. An event carries its variable's entry list as it was at the change, so constraints attached
// later do not hear it. Deliberate: a constraint is called once per event on each of its variables, also when a later
// change has already superseded the event.
#pragma once

#include "core/agenda.h"
#include "core/constraint.h"
#include "core/event_queue.h"
#include "core/ports.h"
#include "core/state.h"
#include "core/variable.h"

namespace koru {

// Of a search that can be stopped. It is asked every so many events and before each run, and when it says so the
// propagation fails, though no constraint has; then it has to say so until it is taken away.
struct Supervisor {
  bool (*mustEnd)(void *argument) = nullptr;
  void *argument = nullptr;
};

struct Queue {
  unsigned depth = 0;              // propagation loops running, one inside the other
  unsigned limit = 0;              // a change made at a greater depth waits for the loop that runs
  int failures = 0;                // of loops whose outcome nobody has been told yet; see fail in queue.cc
  unsigned dropped = 0;            // propagations that have failed, ever: the events that were queued then went unheard
  std::uint64_t propagations = 0;  // begun since cs_init
  bool hostHears = false;          // since cs_init a constraint was posted that runs code of the host
  bool trying = false;             // a search imposes a value: see core/trial.h
  unsigned untold = 0;             // propagations that have failed and whose changes were not undone since
  bool untoldUnknown = false;      // that number is worth nothing, since cs_init: see allTold in queue.cc
  Supervisor supervisor;
  int untilAsked = 0;              // so many events more in each propagation
  unsigned long long wakings = 0;  // of handlers and runs, counted while there is a supervisor
};

namespace solver {

inline KORU_STATE Queue queue;
inline KORU_STATE Entry *graveyard = nullptr;  // entries detached while handlers run

}  // namespace solver

// A change made now waits for the propagation that runs; otherwise it is propagated before the call returns.
inline bool changesWait() { return solver::queue.depth > solver::queue.limit; }

// Runs the loop for a change of its own, which turns a failure into its result.
bool propagateNow();

// The same as enqueue, below.
bool enqueueInNextBlock(CSint *v, int code, int value);

// Queues an event and, when it is the only one and at a depth within the limit, propagates. False when that fails or
// memory runs out (reported). Inline down to the record: what narrows calls nothing and saves no registers.
[[nodiscard]] inline bool enqueue(CSint *v, int code, int value) {
  if (!solver::events.hasRoom()) [[unlikely]]
    return enqueueInNextBlock(v, code, value);
  solver::events.push({v, v->constraints, value, code});
  if (changesWait() || !solver::events.single()) return true;
  return propagateNow();
}

// Among constraints that do nothing at an event, none of the host's is told of it, nor will a profiler be that the host
// enables before the event's turn.
inline bool canBeUnheard() { return !solver::ports.profiling && !solver::queue.hostHears; }

// A variable without constraints has nobody to tell: only its last-reported bounds are brought up to date.
[[nodiscard]] inline bool signal(CSint *v, EventCode code, int value) {
  if (v->constraints == nullptr) {
    v->reportedMin = v->min;
    v->reportedMax = v->max;
    return true;
  }
  return enqueue(v, code, value);
}

// The same for a removed value, which changes no last-reported bound: an event that no constraint hears is not queued.
// This saves some 50 instructions for each value that an all-different removes.
[[nodiscard]] inline bool signalRemoved(CSint *v, int value) {
  const Entry *newest = v->constraints;
  if (newest == nullptr ||
      ((newest->heardFromHere() & (events(kRemoved) | kHearsConflicts | kKeyed)) == 0 && canBeUnheard()))
    return true;
  return enqueue(v, kRemoved, value);
}

// A sum with a constant that passes a change on to the variable that it has made would be told of it in turn, and find
// nothing to do: it is not called, and a removal that nobody else hears is not queued. This saves some 30 instructions
// a call, 80 an event.
inline bool heardByOthers(const CSint *v, EventCode code) {
  return (v->constraints->heardAboveOldest & (events(code) | kHearsConflicts | kKeyed)) != 0;
}

[[nodiscard]] inline bool signalByMaker(CSint *v, EventCode code, int value) {
  return has(v, kShifted) && canBeUnheard() ? enqueue(v, code | kWithoutMaker, value) : signal(v, code, value);
}

[[nodiscard]] inline bool signalRemovedByMaker(CSint *v, int value) {
  if (!has(v, kShifted) || !canBeUnheard()) return signalRemoved(v, value);
  return !heardByOthers(v, kRemoved) || enqueue(v, kRemoved | kWithoutMaker, value);
}

// Runs the loop, and those on the agenda (core/agenda) whenever it comes to its end. A failure shows only in the
// failure count.
void propagate();

// Asks for a constraint's run and, where changes propagate at once, propagates: the last step of its posting. Inside a
// handler the run comes when the handlers are done. False when the propagation fails.
bool runSoon(Deferred &record);

// For constraints that work long at a time: whether to give up, by failing.
[[gnu::cold, gnu::noinline]] bool askSupervisor();
inline bool mustEnd() { return solver::queue.supervisor.mustEnd != nullptr && askSupervisor(); }

// Undoes the newest attachment to v, whichever that is. While handlers run, entry and constraint stay allocated (some
// list snapshot may contain them) until the outermost propagation ends.
void detachNewest(CSint *v);

// Frees the entries that were detached while handlers ran.
void emptyGraveyard();

}  // namespace koru
