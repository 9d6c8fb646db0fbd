// SPDX-License-Identifier: MIT
// The agenda: constraints with a heavy algorithm, whose run waits until the event queue is empty.
//
// A handler is called once per event; what such a constraint does costs too much for that. Its handlers only ask for
// its run, which then comes once, after all events, the runs of cheaper ranks first and within a rank in the order
// asked. Asking allocates nothing and does nothing for one that waits already.
//
// A run's own changes do not wake it: the queue is empty when it starts, so what is queued when it returns is its own
// doing, and until the last of these events has been handled, it asks in vain. A run must therefore reach its fixpoint.
// Where a variable stands twice it cannot know that it has, so there its own changes do wake it.
//
// A propagation that fails drops all who wait. Who works on in the failed state must find constraints merely weaker: a
// run looks at domains, and at trailed notes of what they were, never at what handlers have noted.
#pragma once

#include "core/constraint.h"
#include "core/state.h"

namespace koru {

// The base of the record of a constraint with a run.
struct Deferred {
  Deferred() = default;
  Deferred(const Deferred &) = default;
  Deferred &operator=(const Deferred &) = default;
  ~Deferred();

  Constraint *constraint = nullptr;  // whose record this is, from the posting on
  Deferred *next = nullptr;          // in its lane
  bool waiting = false;
  bool hearsItself = false;  // its own changes wake it: a variable stands twice
};

class Agenda {
 public:
  // Somebody is to be run now.
  bool due() const { return (state_ & kDue) != 0; }
  // There is anything to look at before a context is opened.
  bool busy() const { return state_ != 0; }
  void ask(Deferred &record) {
    if (!record.waiting && &record != quiet_) append(record);
  }
  // The first of the cheapest rank, who waits no longer; null when nobody is due.
  Deferred *takeFirst();

  // From now on the record asks in vain. Null: nobody does.
  void hush(Deferred *record) {
    quiet_ = record;
    turn(kQuiet, record != nullptr);
  }
  // A propagation has failed. Between the begin and the end of a posting those who wait go on waiting.
  void dropAll();
  // Of a record that dies.
  void forget(Deferred &record);

  // While somebody posts (core/posting_phase), nobody is due.
  bool posting() const { return (state_ & kPosting) != 0; }
  void setPosting(bool posting);
  // The end of that has failed, and the host has not been told.
  bool untold() const { return (state_ & kUntold) != 0; }
  void setUntold(bool untold) { turn(kUntold, untold); }
  // Somebody who watches (core/ports) wants to be told before a context is opened.
  bool watched() const { return (state_ & kWatched) != 0; }
  void setWatched(bool watched) { turn(kWatched, watched); }
  bool postingUnsettled() const { return (state_ & (kPosting | kUntold)) != 0; }

 private:
  struct Lane {
    Deferred *first = nullptr;
    Deferred *last = nullptr;
  };

  enum : unsigned { kDue = 1, kPosting = 2, kUntold = 4, kQuiet = 8, kWatched = 16 };

  void append(Deferred &record);
  void turn(unsigned flag, bool on) { state_ = on ? state_ | flag : state_ & ~flag; }
  void update() { turn(kDue, occupied_ != 0 && !posting()); }

  Lane lanes_[kRanks]{};
  unsigned occupied_ = 0;  // bit r: somebody waits in lane r
  unsigned state_ = 0;
  Deferred *quiet_ = nullptr;
};

namespace solver {

inline KORU_STATE Agenda agenda;

}  // namespace solver
}  // namespace koru
