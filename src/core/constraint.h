// SPDX-License-Identifier: MIT
// Constraints as the engine sees them: a handler table, a private record behind the head, and list entries that tie
// a constraint to its variables.
//
// A variable's entries form a list, newest first, that grows and shrinks at its head only. `heardByOlder` sums up which
// events all older entries listen to, so a walk ends where nobody further down would hear it, without going there.
#pragma once

#include <cstdint>

#include "core/site.h"
#include "core/state.h"
#include "koru.h"

namespace koru {

// The numbers are fixed: handler tables are indexed by them.
enum EventCode : int {
  kNewMin = 0,    // minimum raised, two or more values remain
  kNewMax = 1,    // maximum lowered, two or more values remain
  kMinBound = 2,  // minimum raised, now instantiated
  kMaxBound = 3,  // maximum lowered, now instantiated
  kBound = 4,     // instantiated to a value strictly between the bounds
  kRemoved = 5,   // a value strictly between the bounds removed
};
constexpr int kEventCodes = 6;

struct Constraint;
struct Entry;

// What the run of a constraint (core/agenda) costs in the number of its variables or values, cheapest first.
enum class Rank : std::uint8_t { kLinear, kSorting, kQuadratic, kHeavy };
constexpr int kRanks = 4;

// Returns false to fail the propagation.
using Handler = bool (*)(CSint *variable, Entry *entry, int oldValue, int newValue);

struct HandlerTable {
  Handler handlers[kEventCodes];
  void (*destroy)(void *record);  // ends the record's life; null when there is nothing to do
  std::uint8_t heard;             // bit c: slot c does something
  Rank rank;                      // of the run
  bool (*run)(Constraint *);      // null for a constraint without one
};

// Slots that ignore their event hold this handler.
bool doNothing(CSint *, Entry *, int, int);

enum ConstraintFlags : std::uint8_t {
  kWoken = 0,             // woken by events
  kConflictListener = 1,  // never woken by events, called when propagation fails
  kNeverWoken = 2,        // neither
};

// The head of a constraint; its record follows at once, in the same cache line when it is small.
struct alignas(8) Constraint {
  const HandlerTable *table;
  Site *site;
  int references;  // entries and posters that hold it
  std::uint16_t size;
  std::uint8_t flags;

  void *record() { return this + 1; }
};

struct Entry {
  Constraint *constraint;
  Entry *next;      // older
  Entry *nextDead;  // in the graveyard
  int index;        // the variable's position among the constraint's variables, -1 when it does not care
  std::uint8_t heard;
  std::uint8_t heardByOlder;
  std::uint8_t heardAboveOldest;  // by this and the older entries without the oldest one
  std::uint8_t concerned;         // what it may come to hear (see setHeard), as the two before have it

  std::uint8_t heardFromHere() const { return concerned | heardByOlder; }
};

// The entry of a constraint that hears all events, but to which they matter only as far as they concern one value: its
// handlers do nothing when a bound moves that does not pass the key, when another value is removed, and when a variable
// is bound whose last-reported bounds did not hold the key, as long as they have been told of all that was before
// (allTold in core/queue.cc). Such calls are not made; so that no memory is touched for them, keyed entries in a row
// are passed by in O(log) steps: a skew-binary list (Myers 1983, An applicative random-access stack).
struct KeyedEntry : Entry {
  Entry *past;  // the first entry after the next `span` ones from this on, all of them keyed
  int key;
  int lowest;  // of the keys of those
  int highest;
  int span;
};

// Sets of events: bit c stands for event code c, the highest one for failed propagations. A keyed entry has the other
// one in place of all codes, so that those who look for a code need not look for keys.
constexpr std::uint8_t kHearsConflicts = 1 << 7;
constexpr std::uint8_t kKeyed = 1 << 6;
constexpr std::uint8_t kHearsAnything = 0xff;
template <class... Codes>
constexpr std::uint8_t events(Codes... codes) {
  return static_cast<std::uint8_t>((... | (1 << codes)));
}

// Whether handlers of c are called for these events of v, among those that concern it there. For a constraint that
// knows that it would do nothing: such calls are spared, and count as made.
void setHeard(CSint *v, const Constraint *c, std::uint8_t events, bool heard);

// The constraint that a record belongs to.
template <class Record>
const Constraint *headOf(const Record &record) {
  return reinterpret_cast<const Constraint *>(&record) - 1;
}

// Drops one reference; the last one destroys the record and releases the site.
void release(Constraint *c);

// Takes the newest entry from v's list, which must not be empty. The entry is the caller's.
Entry *unlinkNewest(CSint *v);

// Frees an entry that is in no list any more, and drops its reference.
void bury(Entry *entry);

// Releases every entry of a variable that is going away.
void detachAll(CSint &v);

namespace solver {

inline KORU_STATE int ownersAlive = 0;  // constraints whose record has something to destroy

}  // namespace solver
}  // namespace koru
