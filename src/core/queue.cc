// SPDX-License-Identifier: MIT
#include "core/queue.h"

#include "core/check.h"
#include "core/log.h"
#include "core/ports.h"

namespace koru {

namespace {

struct Arguments {
  int oldValue;
  int newValue;
};

EventRecord *takeHead(Queue &queue) {
  EventRecord *event = queue.head;
  queue.head = event->next;
  return event;
}

void recycle(Queue &queue, EventRecord *event) {
  event->next = queue.free;
  queue.free = event;
}

void recycleAll(Queue &queue) {
  if (queue.head == nullptr) return;
  queue.tail->next = queue.free;
  queue.free = queue.head;
  queue.head = nullptr;
}

int exchangeReported(int &reported, int value) {
  const int old = reported;
  reported = value;
  return old;
}

// What handlers are told, with the last-reported bounds brought up to date. False for an event that a later change of
// the same variable has made pointless.
bool open(const EventRecord &event, Arguments &arguments) {
  CSint *v = event.variable;
  const int value = event.value;
  switch (event.code) {  // GCOVR_EXCL_BR_LINE: there is no other code
    case kNewMin:
      if (value < v->min) return false;
      [[fallthrough]];
    case kMinBound:
      arguments = {exchangeReported(v->reportedMin, value), value};
      return true;
    case kNewMax:
      if (value > v->max) return false;
      [[fallthrough]];
    case kMaxBound:
      arguments = {exchangeReported(v->reportedMax, value), value};
      return true;
    case kBound:
      arguments.oldValue = exchangeReported(v->reportedMin, v->min);
      arguments.newValue = exchangeReported(v->reportedMax, v->min);
      return true;
    case kRemoved:
      arguments = {value, value};
      return value > v->min && value < v->max;
  }
  return false;  // GCOVR_EXCL_LINE: not reached
}

bool call(const EventRecord &event, Entry *entry, Arguments arguments) {
  if constexpr (kLogging) logCall(*entry, event.variable, event.code, event.value);
  const Handler handler = entry->constraint->table->handlers[event.code];
  if constexpr (kChecked) {
    const check::CallbackRules rules;
    const bool consistent = handler(event.variable, entry, arguments.oldValue, arguments.newValue);
    rules.requireKept();
    return consistent;
  } else {
    return handler(event.variable, entry, arguments.oldValue, arguments.newValue);
  }
}

// While someone profiles, slots that do nothing are called like all others, because their calls are counted.
Entry *wakeProfiled(const EventRecord &event, Entry *entry, Arguments arguments, Entry *&listener) {
  const unsigned slot = 1U << event.code;
  for (; entry != nullptr; entry = entry->next) {
    if ((entry->heard & slot) != 0 || (solver::ports.profiling && entry->constraint->flags == kWoken)) {
      if (!call(event, entry, arguments)) return entry;
      if (solver::ports.profiling) solver::ports.notify(true, event.variable, event.code, entry->constraint->site);
    } else if ((entry->heard & kHearsConflicts) != 0 && listener == nullptr) {
      listener = entry;
    }
  }
  return nullptr;
}

// Calls the handlers of one event, newest attachment first. Returns the entry whose handler failed, or null. Notes the
// first conflict listener met.
Entry *wake(const EventRecord &event, Arguments arguments, Entry *&listener) {
  const unsigned slot = 1U << event.code;
  Entry *entry = event.entries;
  unsigned ahead = entry->heardFromHere();
  bool profiling = solver::ports.profiling;
  while (!profiling) {
    if ((ahead & (slot | kHearsConflicts)) == 0) return nullptr;
    if ((entry->heard & slot) != 0) {
      if (!call(event, entry, arguments)) return entry;
      profiling = solver::ports.profiling;
      if (profiling) solver::ports.notify(true, event.variable, event.code, entry->constraint->site);
    } else if ((entry->heard & kHearsConflicts) != 0 && listener == nullptr) {
      listener = entry;
    }
    ahead = entry->heardByOlder;
    entry = entry->next;
  }
  return wakeProfiled(event, entry, arguments, listener);
}

void tellListeners(const EventRecord &event, Entry *listener, Arguments arguments) {
  for (; listener != nullptr; listener = listener->next) {
    if ((listener->constraint->flags & kConflictListener) != 0) call(event, listener, arguments);
  }
}

void leave(Queue &queue) {
  if (--queue.depth == 0) emptyGraveyard();
}

void fail(Queue &queue, EventRecord *event, Entry *failed, Entry *listener, Arguments arguments) {
  tellListeners(*event, listener, arguments);
  // The record is read before it is recycled, the site kept while the failed constraint may go.
  CSint *variable = event->variable;
  const EventCode code = event->code;
  Site *site = failed->constraint->site;
  if (const FailureListener &l = solver::ports.failureListener; l.tell != nullptr)
    l.tell(l.argument, failed->constraint);
  ++site->references;
  recycle(queue, event);
  recycleAll(queue);
  ++queue.failures;
  leave(queue);
  if (solver::ports.profiling) solver::ports.notify(false, variable, code, site);
  Site::release(site);
}

// The outermost change waits for the whole propagation and turns a failure into its own result.
bool drain(Queue &queue) {
  const int failuresBefore = queue.failures;
  propagate();
  const bool consistent = queue.failures == failuresBefore;
  queue.failures = failuresBefore;
  if constexpr (kChecked) check::invariantsWhenIdle();
  return consistent;
}

}  // namespace

void propagate() {
  Queue &queue = solver::queue;
  ++queue.depth;
  // Set once per run, by the first conflict listener met in any event's list.
  Entry *listener = nullptr;
  while (queue.head != nullptr) {
    EventRecord *event = takeHead(queue);
    Arguments arguments{};
    if (open(*event, arguments)) {
      if (Entry *failed = wake(*event, arguments, listener)) return fail(queue, event, failed, listener, arguments);
    }
    recycle(queue, event);
  }
  leave(queue);
}

void detachNewest(CSint *v) {
  if (v->constraints == nullptr) return;
  Entry *entry = unlinkNewest(v);
  if (solver::queue.depth == 0) return bury(entry);
  entry->nextDead = solver::graveyard;
  solver::graveyard = entry;
}

void emptyGraveyard() {
  while (solver::graveyard != nullptr) {
    Entry *entry = solver::graveyard;
    solver::graveyard = entry->nextDead;
    bury(entry);
  }
}

bool enqueue(CSint *v, EventCode code, int value) {
  Queue &queue = solver::queue;
  EventRecord *event = queue.free;
  if (event != nullptr) {
    queue.free = event->next;
  } else {
    event = solver::events.push();
    if (event == nullptr) return false;
  }
  *event = {v, code, value, v->constraints, nullptr};
  if (queue.head != nullptr) {
    queue.tail->next = event;
    queue.tail = event;
    return true;
  }
  queue.head = queue.tail = event;
  return queue.depth > queue.limit || drain(queue);
}

}  // namespace koru
