// SPDX-License-Identifier: MIT
// The event queue and the propagation loop: the only caller of handlers.
//
// A change made while handlers run is appended; the outermost change drains the queue, first in first out, until it is
// empty or a handler fails. An event carries its variable's entry list as it was at the change, so constraints attached
// later do not hear it. Deliberate: a constraint is called once per event on each of its variables, also when a later
// change has already superseded the event.
#pragma once

#include "core/agenda.h"
#include "core/block_stack.h"
#include "core/constraint.h"
#include "core/ports.h"
#include "core/state.h"
#include "core/variable.h"

namespace koru {

struct EventRecord {
  CSint *variable;
  EventCode code;
  int value;  // new bound, bound value or removed value
  Entry *entries;
  EventRecord *next;
};

// Of a search that can be stopped. It is asked every so many events and before each run, and when it says so the
// propagation fails, though no constraint has; then it has to say so until it is taken away.
struct Supervisor {
  bool (*mustEnd)(void *argument) = nullptr;
  void *argument = nullptr;
};

struct Queue {
  EventRecord *head = nullptr;
  EventRecord *tail = nullptr;  // of a queue that is not empty
  EventRecord *free = nullptr;
  unsigned depth = 0;      // propagation loops running, one inside the other
  unsigned limit = 0;      // a change made at a greater depth waits for the loop that runs
  int failures = 0;        // of loops whose outcome nobody has been told yet; see fail in queue.cc
  unsigned dropped = 0;    // propagations that have failed, ever: the events that were queued then went unheard
  bool hostHears = false;  // since cs_init a constraint was posted that runs code of the host
  Supervisor supervisor;
  int untilAsked = 0;              // so many events more
  unsigned long long wakings = 0;  // of handlers and runs, counted while there is a supervisor
};

namespace solver {

inline KORU_STATE Queue queue;
inline KORU_STATE BlockStack<EventRecord> events;
inline KORU_STATE Entry *graveyard = nullptr;  // entries detached while handlers run

}  // namespace solver

// A change made now waits for the propagation that runs; otherwise it is propagated before the call returns.
inline bool changesWait() { return solver::queue.depth > solver::queue.limit; }

// Queues an event and, at a depth within the limit, propagates. False when that fails or memory runs out (reported).
[[nodiscard]] bool enqueue(CSint *v, EventCode code, int value);

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
// It would be seen only by a profiler, also one that the host enables before the event's turn. This saves some 50
// instructions for each value that an all-different removes.
[[nodiscard]] inline bool signalRemoved(CSint *v, int value) {
  const Entry *newest = v->constraints;
  if (newest != nullptr && (newest->heardFromHere() & (events(kRemoved) | kHearsConflicts)) == 0 &&
      !solver::ports.profiling && !solver::queue.hostHears)
    return true;
  return signal(v, kRemoved, value);
}

// Runs the loop, and those on the agenda (core/agenda) whenever it comes to its end. A failure shows only in the
// failure count.
void propagate();

// Runs the loop for a change of its own, which turns a failure into its result.
bool propagateNow();

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
