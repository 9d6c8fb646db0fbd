// SPDX-License-Identifier: MIT
#include "core/queue.h"

#include <algorithm>

#include "core/check.h"
#include "core/context_stack.h"
#include "core/log.h"
#include "core/ports.h"

namespace koru {

namespace {

struct Arguments {
  int oldValue;
  int newValue;
};

int exchangeReported(int &reported, int value) {
  const int old = reported;
  reported = value;
  return old;
}

// What handlers are told, with the last-reported bounds brought up to date. False for an event that a later change of
// the same variable has made pointless.
template <EventCode code>
[[gnu::always_inline]] inline bool open(const EventRecord &event, Arguments &arguments) {
  CSint *v = event.variable;
  const int value = event.value;
  if constexpr (code == kNewMin || code == kMinBound) {
    if (code == kNewMin && value < v->min) return false;
    arguments = {exchangeReported(v->reportedMin, value), value};
  } else if constexpr (code == kNewMax || code == kMaxBound) {
    if (code == kNewMax && value > v->max) return false;
    arguments = {exchangeReported(v->reportedMax, value), value};
  } else if constexpr (code == kBound) {
    arguments.oldValue = exchangeReported(v->reportedMin, v->min);
    arguments.newValue = exchangeReported(v->reportedMax, v->min);
  } else {
    if (value <= v->min || value >= v->max) return false;
    arguments = {value, value};
  }
  return true;
}

[[gnu::always_inline]] inline bool call(const EventRecord &event, int code, Entry *entry, Arguments arguments) {
  if constexpr (kLogging) logCall(*entry, event.variable, static_cast<EventCode>(code), event.value);
  const Handler handler = entry->constraint->table->handlers[code];
  if constexpr (kChecked) {
    const check::CallbackRules rules;
    const bool consistent = handler(event.variable, entry, arguments.oldValue, arguments.newValue);
    rules.requireKept();
    return consistent;
  } else {
    return handler(event.variable, entry, arguments.oldValue, arguments.newValue);
  }
}

[[gnu::noinline]] bool callTimed(EventRecord event, Entry *entry, Arguments arguments) {
  return timed<&Meter::noteSample>([&] { return call(event, event.code, entry, arguments); });
}

// With as few instructions as can be: many a call takes no more than twenty itself.
bool callMetered(EventRecord event, Entry *entry, Arguments arguments) {
  Meter &meter = solver::ports.meter;
  if (meter.due()) return callTimed(event, entry, arguments);
  const TrailRecord *end = meter.trailEnd();
  const bool consistent = call(event, event.code, entry, arguments);
  if (meter.trailEnd() == end) {
    meter.noteIdle();
  } else {
    meter.note(changesSince(end), 0);
  }
  return consistent;
}

bool callWatched(EventRecord event, Entry *entry, Arguments arguments) {
  const Watched watched({event.variable, event.code, event.value, entry->constraint->site});
  if (!solver::ports.metered) return call(event, event.code, entry, arguments);
  return callMetered(event, entry, arguments);
}

// While someone profiles, slots that do nothing are called like all others, because their calls are counted.
Entry *wakeProfiled(EventRecord event, Entry *entry, Arguments arguments, Entry *&listener) {
  const unsigned slot = 1U << event.code;
  for (; entry != nullptr; entry = entry->next) {
    if ((entry->heard & (slot | kKeyed)) != 0 || (solver::ports.profiling && entry->constraint->flags == kWoken)) {
      ++solver::queue.wakings;
      if (!callWatched(event, entry, arguments)) return entry;
      if (solver::ports.profiling) solver::ports.notify(true, event.variable, event.code, entry->constraint->site);
    } else if ((entry->heard & kHearsConflicts) != 0 && listener == nullptr) {
      listener = entry;
    }
  }
  return nullptr;
}

// The entry's handler has enabled a profiler.
Entry *wakeRest(EventRecord event, Entry *entry, Arguments arguments, Entry *&listener) {
  solver::ports.notify(true, event.variable, event.code, entry->constraint->site);
  return wakeProfiled(event, entry->next, arguments, listener);
}

// Keyed entries are passed by at a binding only while each constraint has been told of all changes so far. A failed
// propagation leaves some untold, until they are undone. It is unknown for good once an undo may let some of them
// escape, or comes while an event is told or sets off a propagation itself; and with handlers of the host.
bool allTold() {
  const Queue &queue = solver::queue;
  return queue.untold == 0 && !queue.untoldUnknown && !solver::acceptedInside && !queue.hostHears;
}

// The keys that an event concerns.
struct Keys {
  int low;
  int high;

  bool hold(int key) const { return low <= key && key <= high; }
  bool meet(const KeyedEntry &entry) const { return low <= entry.highest && entry.lowest <= high; }
};

Keys keysOf(EventRecord event, Arguments arguments) {
  const CSint *v = event.variable;
  const auto [oldValue, newValue] = arguments;
  if (event.code == kNewMin) return {oldValue, wrapSub(newValue, 1)};
  if (event.code == kNewMax) return {wrapAdd(newValue, 1), oldValue};
  if (event.code == kRemoved) return {newValue, newValue};
  if (!allTold()) return {kIntMin, kIntMax};
  if (event.code == kMinBound) return {oldValue, v->reportedMax};
  if (event.code == kMaxBound) return {v->reportedMin, oldValue};
  return {oldValue, newValue};
}

// The first entry from this one on that is to be called.
Entry *nextConcerned(Entry *entry, Keys keys, unsigned slot, Entry *&listener) {
  while (entry != nullptr && (entry->heardFromHere() & (slot | kHearsConflicts | kKeyed)) != 0) {
    if ((entry->heard & kKeyed) != 0) {
      const auto &keyed = *static_cast<KeyedEntry *>(entry);
      if (keys.hold(keyed.key)) return entry;
      const bool all = !keys.meet(keyed);
      solver::queue.wakings += all ? static_cast<unsigned>(keyed.span) : 1U;
      entry = all ? keyed.past : keyed.next;
    } else {
      if ((entry->heard & slot) != 0) return entry;
      solver::queue.wakings += (entry->concerned & slot) != 0 ? 1U : 0U;
      if ((entry->heard & kHearsConflicts) != 0 && listener == nullptr) listener = entry;
      entry = entry->next;
    }
  }
  return nullptr;
}

// As wake below, from the first keyed entry on. Who is passed by counts as called.
[[gnu::noinline]] Entry *wakeByKeys(EventRecord event, Entry *entry, Arguments arguments, Entry *&listener) {
  const Keys keys = kLogging ? Keys{kIntMin, kIntMax} : keysOf(event, arguments);
  const unsigned slot = 1U << event.code;
  while ((entry = nextConcerned(entry, keys, slot, listener)) != nullptr) {
    ++solver::queue.wakings;
    if (!call(event, event.code, entry, arguments)) return entry;
    if (solver::ports.profiling) [[unlikely]]
      return wakeRest(event, entry, arguments, listener);
    entry = entry->next;
  }
  return nullptr;
}

// What a propagation has to look after. Without code of the host's there is nobody who could enable a profiler while it
// lasts, but for its memory handler, after which it fails. This saves two instructions for each call.
enum class Care { kNone, kProfiled, kSupervised };

// Calls the handlers of one event, newest attachment first. Returns the entry whose handler failed, or null. Notes the
// first conflict listener met. Takes the event's entries along, which saves a register.
template <Care care, EventCode code>
[[gnu::always_inline]] inline Entry *wake(EventRecord &event, Arguments arguments, Entry *&listener) {
  constexpr std::uint8_t slot = events(code);
  Entry *&entry = event.entries;
  if (care != Care::kNone && solver::ports.profiling) [[unlikely]]
    return wakeProfiled(event, entry, arguments, listener);
  for (;; entry = entry->next) {
    if constexpr (care == Care::kSupervised) solver::queue.wakings += entry->concerned >> code & 1;
    if ((entry->heard & slot) != 0) {
      if (!call(event, code, entry, arguments)) return entry;
      if (care != Care::kNone && solver::ports.profiling) [[unlikely]]
        return wakeRest(event, entry, arguments, listener);
    } else if ((entry->heard & (kHearsConflicts | kKeyed)) != 0) {
      if ((entry->heard & kKeyed) != 0) return wakeByKeys(event, entry, arguments, listener);
      if (listener == nullptr) listener = entry;
    }
    if ((entry->heardByOlder & (slot | kHearsConflicts | kKeyed)) == 0) return nullptr;
  }
}

// The same without the oldest entry, which counts as called when another one hears of it: where none does, the event
// might as well not have been queued (core/follow).
template <Care care, EventCode code>
[[gnu::always_inline]] inline Entry *wakeOthers(EventRecord &event, Arguments arguments, Entry *&listener) {
  constexpr std::uint8_t slot = events(code);
  Entry *&entry = event.entries;
  if (care != Care::kNone && solver::ports.profiling) [[unlikely]]  // since the event was queued
    return wakeProfiled(event, entry, arguments, listener);
  constexpr std::uint8_t hearers = slot | kHearsConflicts | kKeyed;
  [[maybe_unused]] const bool counts = care == Care::kSupervised && (entry->heardAboveOldest & hearers) != 0;
  for (; (entry->heardAboveOldest & hearers) != 0; entry = entry->next) {
    if constexpr (care == Care::kSupervised) solver::queue.wakings += entry->concerned >> code & 1;
    if ((entry->heard & slot) != 0) {
      if (!call(event, code, entry, arguments)) return entry;
    } else if ((entry->heard & (kHearsConflicts | kKeyed)) != 0) {
      if ((entry->heard & kKeyed) != 0) return wakeByKeys(event, entry, arguments, listener);
      if (listener == nullptr) listener = entry;
    }
  }
  if constexpr (care == Care::kSupervised) solver::queue.wakings += counts ? 1U : 0U;
  return nullptr;
}

// What the meter has read of the call that failed is still to be told.
void tellListeners(EventRecord event, Entry *listener, Arguments arguments) {
  if (listener == nullptr) return;
  const Meter read = solver::ports.meter;
  for (; listener != nullptr; listener = listener->next) {
    if ((listener->constraint->flags & kConflictListener) != 0) call(event, event.code, listener, arguments);
  }
  solver::ports.meter = read;
}

void leave(Queue &queue) {
  if (--queue.depth == 0) emptyGraveyard();
}

// How a failure travels. The loop that meets it cleans up here and counts it; it returns nothing, for it may have been
// started by cs_saveContext, which has no result to give, or by propagateNow, for the change that set it off.
// propagateNow compares the count with what it was before its loop, and turns a difference into `false` for the change.
// It then puts the count back, so that a failure which has been told of is not told again by one further out: a handler
// may have asked for the impossible inside a context of its own and gone on. What a loop of cs_saveContext has counted
// stays, and makes the change fail whose handler opened that context.

// Nothing is left to be done.
void drop(Queue &queue) {
  ++queue.untold;
  queue.untoldUnknown |= queue.limit > 0;  // some of the changes may be older than the context in which they are undone
  solver::events.clear();
  solver::agenda.dropAll();
  ++queue.failures;
  ++queue.dropped;
  leave(queue);
}

// The site is kept while the failed constraint may go, unless no profiler could ask for it.
void abandon(Queue &queue, CSint *variable, int code, const Constraint *failed) {
  Site *site = failed->site;
  if (const FailureListener &r = solver::failureRecorder; r.tell != nullptr) [[unlikely]]
    r.tell(r.argument, failed);
  if (const FailureListener &l = solver::ports.failureListener; l.tell != nullptr) l.tell(l.argument, failed);
  if (canBeUnheard()) return drop(queue);
  ++site->references;
  drop(queue);
  if (solver::ports.profiling) solver::ports.notify(false, variable, code, site);
  Site::release(site);
}

void fail(Queue &queue, EventRecord event, const Entry *failed, Entry *listener, Arguments arguments) {
  tellListeners(event, listener, arguments);
  abandon(queue, event.variable, event.code, failed->constraint);
}

template <Care care, EventCode code, int flags = 0>
[[gnu::always_inline]] inline bool handleAs(Queue &queue, EventRecord &event, Entry *&listener) {
  if constexpr (flags != 0) event.code = code;
  Arguments arguments{};
  if (!open<code>(event, arguments)) return true;
  const Entry *failed = flags == kWithoutMaker ? wakeOthers<care, code>(event, arguments, listener)
                                               : wake<care, code>(event, arguments, listener);
  if (failed == nullptr) [[likely]]
    return true;
  fail(queue, event, failed, listener, arguments);
  return false;
}

// Written out for each event code, which saves some ten instructions an event and lets the processor learn what follows
// each. Three loops call it, and the one over plain events must not pay for that: it, and what it calls, are inlined.
template <Care care>
[[gnu::always_inline]] inline bool handle(Queue &queue, EventRecord &event, Entry *&listener) {
  switch (event.code) {  // GCOVR_EXCL_BR_LINE: there is no other code
    case kNewMin:
      return handleAs<care, kNewMin>(queue, event, listener);
    case kNewMax:
      return handleAs<care, kNewMax>(queue, event, listener);
    case kMinBound:
      return handleAs<care, kMinBound>(queue, event, listener);
    case kMaxBound:
      return handleAs<care, kMaxBound>(queue, event, listener);
    case kBound:
      return handleAs<care, kBound>(queue, event, listener);
    case kRemoved:
      return handleAs<care, kRemoved>(queue, event, listener);
    case kNewMin | kWithoutMaker:
      return handleAs<care, kNewMin, kWithoutMaker>(queue, event, listener);
    case kNewMax | kWithoutMaker:
      return handleAs<care, kNewMax, kWithoutMaker>(queue, event, listener);
    case kMinBound | kWithoutMaker:
      return handleAs<care, kMinBound, kWithoutMaker>(queue, event, listener);
    case kMaxBound | kWithoutMaker:
      return handleAs<care, kMaxBound, kWithoutMaker>(queue, event, listener);
    case kRemoved | kWithoutMaker:
      return handleAs<care, kRemoved, kWithoutMaker>(queue, event, listener);
  }
  __builtin_unreachable();  // GCOVR_EXCL_LINE
}

constexpr int kNoCode = -1;

// Runs are told to observers and listeners as calls for the latest event handled; a first run may find there was none.
struct Latest {
  EventRecord event{};
  int code = kNoCode;

  void note(const EventRecord &handled) {
    event = handled;
    code = handled.code;
  }
};

// Its changes are queued, also where a callback has left a context open and other changes would propagate at once.
bool callRun(Queue &queue, Constraint *c) {
  const unsigned limit = queue.limit;
  queue.limit = std::min(limit, queue.depth - 1);
  bool consistent = false;
  if constexpr (kChecked) {
    const check::CallbackRules rules;
    consistent = c->table->run(c);
    rules.requireKept();
  } else {
    consistent = c->table->run(c);
  }
  queue.limit = limit;
  return consistent;
}

bool callRunWatched(Queue &queue, Constraint *c, const Latest &latest) {
  const Watched watched({latest.event.variable, latest.code, latest.event.value, c->site});
  return metered([&] { return callRun(queue, c); });
}

bool runFirst(Queue &queue, Deferred &record, const Latest &latest, Entry *listener) {
  Constraint *c = record.constraint;
  if (!callRunWatched(queue, c, latest)) {
    if (latest.code != kNoCode) tellListeners(latest.event, listener, {latest.event.value, latest.event.value});
    abandon(queue, latest.event.variable, latest.code, c);
    return false;
  }
  if (solver::ports.profiling) solver::ports.notify(true, latest.event.variable, latest.code, c->site);
  return true;
}

// A propagation that is to end without a constraint's having failed.
bool giveUp(Queue &queue) {
  drop(queue);
  return false;
}

constexpr int kEventsBetweenQuestions = 64;

// The clock is too slow to be read for every event. Once told to end, whoever goes on all the same is told again.
bool timeToEnd(Queue &queue) {
  if (--queue.untilAsked > 0) return false;
  queue.untilAsked = kEventsBetweenQuestions;
  return askSupervisor();
}

// The events that are queued, the first `own` of them the doing of the run that was hushed, and those that they cause.
// `handled` becomes the latest one. False when one has failed.
template <Care care>
[[gnu::always_inline]] inline bool drain(Queue &queue, EventRecord &handled, int own, Entry *&listener) {
  while (!solver::events.empty()) {
    if constexpr (care == Care::kSupervised) {
      if (timeToEnd(queue)) return giveUp(queue);
    }
    handled = solver::events.take();
    if (!handle<care>(queue, handled, listener)) return false;
    if (--own == 0) solver::agenda.hush(nullptr);
  }
  return true;
}

// The queue is empty and somebody waits: runs and the events that they cause, until nobody does. `handled` is the
// latest event of this propagation, without a variable when there was none.
template <Care care>
[[gnu::noinline]] void settle(Queue &queue, EventRecord handled, Entry *listener) {
  Latest latest;
  if (handled.variable != nullptr) latest.note(handled);
  while (Deferred *record = solver::agenda.takeFirst()) {
    if constexpr (care == Care::kSupervised) {
      ++queue.wakings;
      if (askSupervisor()) return static_cast<void>(giveUp(queue));
    }
    if (!runFirst(queue, *record, latest, listener)) return;
    if (solver::events.empty()) continue;
    const int own = solver::events.size();
    if (!record->hearsItself && queue.limit < queue.depth) solver::agenda.hush(record);
    if (!drain<care>(queue, handled, own, listener)) return;
    latest.note(handled);
  }
  leave(queue);
}

// As propagate() below, but in portions, between which there is a question: so counting them takes a register.
[[gnu::noinline, gnu::hot]] void propagateSupervised(Queue &queue) {
  Entry *listener = nullptr;
  EventRecord event{};
  for (int most = queue.untilAsked; !solver::events.empty(); most = 0) {
    if (most <= 0) {
      most = queue.untilAsked = kEventsBetweenQuestions;
      if (askSupervisor()) return drop(queue);
    }
    for (; most > 0 && !solver::events.empty(); --most) {
      event = solver::events.take();
      if (!handle<Care::kSupervised>(queue, event, listener)) return;
    }
  }
  if (solver::agenda.due()) [[unlikely]]
    return settle<Care::kSupervised>(queue, event, listener);
  leave(queue);
}

template <Care care>
[[gnu::always_inline]] inline void propagateWith(Queue &queue) {
  // Set once per run, by the first conflict listener met in any event's list.
  Entry *listener = nullptr;
  EventRecord event{};
  while (!solver::events.empty()) {
    event = solver::events.take();
    if (!handle<care>(queue, event, listener)) return;
  }
  if (solver::agenda.due()) [[unlikely]]
    return settle<care>(queue, event, listener);
  leave(queue);
}

[[gnu::noinline]] void propagateProfiled(Queue &queue) { propagateWith<Care::kProfiled>(queue); }

}  // namespace

void propagate() {
  [[maybe_unused]] const check::Entered entered;
  Queue &queue = solver::queue;
  ++queue.depth;
  ++queue.propagations;
  if (queue.supervisor.mustEnd != nullptr) [[unlikely]]
    return propagateSupervised(queue);
  if (!canBeUnheard()) return propagateProfiled(queue);
  propagateWith<Care::kNone>(queue);
}

bool askSupervisor() {
  Queue &queue = solver::queue;
  const bool end = queue.supervisor.mustEnd(queue.supervisor.argument);
  if (end) queue.untilAsked = 0;
  return end;
}

// The outermost change waits for the whole propagation.
bool propagateNow() {
  Queue &queue = solver::queue;
  const int failuresBefore = queue.failures;
  propagate();
  const bool consistent = queue.failures == failuresBefore;
  queue.failures = failuresBefore;
  if constexpr (kChecked) check::invariantsWhenIdle();
  return consistent;
}

[[gnu::cold]] bool enqueueInNextBlock(CSint *v, int code, int value) {
  if (solver::events.makeRoom()) return enqueue(v, code, value);
  solver::queue.untoldUnknown = true;
  return false;
}

bool runSoon(Deferred &record) {
  solver::agenda.ask(record);
  return changesWait() || !solver::agenda.due() || propagateNow();
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

}  // namespace koru
