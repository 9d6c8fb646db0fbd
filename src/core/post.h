// SPDX-License-Identifier: MIT
// The posting protocol, once for all constraints.
//
//   Posting posting{"cs_Le"};                   the site: this exported function and the place that called it
//   auto c = posting.add(kTable, Le{x, y});     record and constraint
//   c.attach(x);                                one per watched variable
//   return posting && raiseY(*c) && ...;        first filtering, with the rules that the handlers use
//
// A constraint with a run (core/agenda.h) has a record that derives from Deferred, and its poster ends otherwise:
//   constexpr auto kTable = deferred<filter>(Rank::kHeavy);     bool filter(Record &), asked for by all events
//   return posting && runSoon(*c);
//
// A posting latches its first failure (exhausted memory, already reported): what follows does nothing, so posters need
// no clean-up code. It holds a reference of its own to what it builds, because a callback during the first filtering
// may restore a context and detach the constraint; the last owner destroys it.
#pragma once

#include <cstdarg>
#include <new>
#include <type_traits>
#include <utility>

#include "core/attach.h"
#include "core/check.h"
#include "core/create.h"
#include "core/narrow.h"
#include "core/queue.h"
#include "core/refusal.h"
#include "core/trail.h"

namespace koru {

// What a rule or handler is told: the variable that changed, its position, and the old and new value of the event.
struct Event {
  CSint *var;
  int index;
  int oldValue;
  int newValue;
};

// A handler in C form, bound to the record type that it expects.
template <class Record>
struct Slot {
  Handler handler = doNothing;
};

template <class F>
struct RecordOf;
template <class Record>
struct RecordOf<bool (*)(Record &, const Event &)> {
  using Type = Record;
};

// Adapts bool f(Record &, const Event &) to a slot: the one cast from untyped to typed records.
template <auto f>
constexpr Slot<typename RecordOf<decltype(f)>::Type> on{[](CSint *v, Entry *entry, int oldValue, int newValue) {
  using Record = typename RecordOf<decltype(f)>::Type;
  return f(*static_cast<Record *>(entry->constraint->record()), Event{v, entry->index, oldValue, newValue});
}};

// The six slots by name, in event-code order; those left out ignore their event.
template <class Record>
struct Slots {
  Slot<Record> newMin{};
  Slot<Record> newMax{};
  Slot<Record> minBound{};
  Slot<Record> maxBound{};
  Slot<Record> bound{};
  Slot<Record> removed{};
};

template <class Record>
struct TableOf : HandlerTable {};

// What a constraint with a run does in it, and what that costs.
template <class Record>
struct Run {
  bool (*run)(Constraint *) = nullptr;
  Rank rank = Rank::kLinear;
};

template <class F>
struct RunnerOf;
template <class Record>
struct RunnerOf<bool (*)(Record &)> {
  using Type = Record;
};

// Adapts bool f(Record &) to a run.
template <auto f>
constexpr auto runs(Rank rank) {
  using Record = typename RunnerOf<decltype(f)>::Type;
  static_assert(std::is_base_of_v<Deferred, Record>);
  return Run<Record>{[](Constraint *c) { return f(*static_cast<Record *>(c->record())); }, rank};
}

// For handlers of a constraint with a run, which comes when the queue is empty.
inline bool ask(Deferred &record) {
  solver::agenda.ask(record);
  return true;
}
// The handler that does just that.
template <class Record>
bool asks(Record &record, const Event &) {
  return ask(record);
}

template <class Record>
constexpr TableOf<Record> handlers(const Slots<Record> &slots, const Run<Record> &run = {}) {
  TableOf<Record> table{{{slots.newMin.handler, slots.newMax.handler, slots.minBound.handler, slots.maxBound.handler,
                          slots.bound.handler, slots.removed.handler},
                         nullptr,
                         0,
                         run.rank,
                         run.run}};
  if constexpr (!std::is_trivially_destructible_v<Record>)
    table.destroy = [](void *record) { static_cast<Record *>(record)->~Record(); };
  for (int code = 0; code < kEventCodes; ++code)
    if (table.handlers[code] != doNothing) table.heard = static_cast<std::uint8_t>(table.heard | 1 << code);
  return table;
}

// The table of a constraint all of whose work is its run: the events that `heard` names ask for it.
template <auto f>
constexpr auto deferred(Rank rank, std::uint8_t heard = kHearsAnything) {
  using Record = typename RunnerOf<decltype(f)>::Type;
  constexpr auto asking = on<asks<Record>>;
  const auto slot = [=](EventCode code) { return (heard >> code & 1) != 0 ? asking : Slot<Record>{}; };
  return handlers<Record>(
      {slot(kNewMin), slot(kNewMax), slot(kMinBound), slot(kMaxBound), slot(kBound), slot(kRemoved)}, runs<f>(rank));
}

class Posting;

// A constraint under construction.
template <class Record>
class Held {
 public:
  Held(Posting &posting, Constraint *constraint) : posting_(posting), constraint_(constraint) {}
  Held(const Held &) = delete;
  Held &operator=(const Held &) = delete;
  ~Held() {
    if (constraint_ != nullptr) release(constraint_);
  }

  // `concerned`: which events may say anything to the constraint about this variable; handlers may still be called for
  // others.
  void attach(CSint *v, int index = -1, std::uint8_t concerned = kHearsAnything);
  // As a keyed entry (core/constraint.h): of a constraint whose table listens to all events.
  void attachKeyed(CSint *v, int index, int key);
  // Only while the posting has not failed.
  Record &operator*() const { return *static_cast<Record *>(constraint_->record()); }
  Record *operator->() const { return &**this; }

 private:
  Posting &posting_;
  Constraint *constraint_;
};

class Posting {
 public:
  explicit Posting(const Poster &poster);
  Posting(const Posting &) = delete;
  Posting &operator=(const Posting &) = delete;
  ~Posting();

  explicit operator bool() const { return consistent_; }
  Site *site() const { return site_; }  // null only when the posting has failed
  // The result of a posting without variables: it holds, also when there is no solver, unless memory is exhausted.
  [[nodiscard]] bool holdsOfNothing() const;

  template <class Record>
  Held<Record> add(const TableOf<Record> &table, Record record, ConstraintFlags flags = kWoken) {
    static_assert(alignof(Record) <= alignof(Constraint) && sizeof(Record) < 60000);
    Constraint *c = addConstraint(table, sizeof(Record), flags);
    if (c != nullptr) {
      auto *placed = new (c->record()) Record(std::move(record));
      if constexpr (std::is_base_of_v<Deferred, Record>) placed->constraint = c;
    }
    return Held<Record>(*this, c);
  }

  void attach(Constraint *c, CSint *v, int index, std::uint8_t concerned);
  void attachKeyed(Constraint *c, CSint *v, int index, int key);

  // Hands a share of a buffer to the choice point that is open now.
  template <class T>
  void keepOnTrail(const Shared<T> &buffer) {
    if (consistent_) consistent_ = buffer && solver::trail.noteBuffer(buffer.share());
  }

 private:
  Constraint *addConstraint(const HandlerTable &table, std::size_t recordSize, ConstraintFlags flags);

  Site *site_ = nullptr;
  bool consistent_ = false;
  [[no_unique_address, maybe_unused]] check::Entered entered_;
};

// A variable that stands twice in a constraint: the newest entry is of the same posting.
template <class Record>
void Held<Record>::attach(CSint *v, int index, std::uint8_t concerned) {
  if constexpr (std::is_base_of_v<Deferred, Record>) {
    if (posting_ && v->constraints != nullptr && v->constraints->constraint == constraint_) (*this)->hearsItself = true;
  }
  posting_.attach(constraint_, v, index, concerned);
}

template <class Record>
void Held<Record>::attachKeyed(CSint *v, int index, int key) {
  static_assert(!std::is_base_of_v<Deferred, Record>);
  posting_.attachKeyed(constraint_, v, index, key);
}

// Posters refuse arrays with null variables.
[[nodiscard]] bool allPresent(CSint *const *variables, int count);

// A copy of an array; empty when memory is exhausted (reported), when the count is negative, or when the array is null
// though it has elements, or one of them is null.
Buffer<CSint *> copyVariables(CSint *const *variables, int count);

// The next `count` arguments, each a variable, as an array that a choice point and constraints can share; empty when
// memory is exhausted (reported) or one of them is null.
[[nodiscard]] Shared<CSint *> copyArguments(std::va_list arguments, int count);

}  // namespace koru
