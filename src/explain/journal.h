// SPDX-License-Identifier: MIT
// A journal of the changes of domains: what is on the trail, with who made it and at which event.
//
// Changes are taken over from the trail in stretches, each the doing of one handler, run, posting or decision, when
// somebody else begins or ends. A note on the trail above each stretch takes it back when it is undone; before a
// context is opened a stretch ends, so that none is undone in part.
//
// Cost: while there is none, a test in each posting. While there is one, propagation takes about three times as long, a
// change 16 bytes and a stretch some 100.
#pragma once

#include "core/growing.h"
#include "core/ports.h"
#include "core/trail.h"

namespace koru::explain {

// The change on the trail that has taken a value away, and the event that came of it.
struct Found {
  int change;
  int bound;   // the new one; of a value inside, that value
  bool fixed;  // one value was left
};

class Journal {
 public:
  static constexpr int kNone = -1;

  // Changes made together, by one.
  struct Stretch {
    int firstChange;
    int note;         // where its note is on the trail
    Site *site;       // whose; null when that is not known
    CSint *variable;  // of the event that they answer; null for none
    int code;
    int value;
    bool bySearch;
  };

  Journal();
  Journal(const Journal &) = delete;
  Journal &operator=(const Journal &) = delete;
  ~Journal();

  // What was changed since somebody looked last.
  void takeOver();
  // It ended for want of memory: what is in it stays, but nothing is added.
  bool broken() const { return broken_; }

  // Which change took the value from the variable: the earliest, when a later one would have too. False: v has it, it
  // was never there, or that is not known.
  bool find(const CSint *v, int value, Found &found) const;
  // Which change, before the stretch, the event tells of.
  int findEvent(const Stretch &stretch) const;

  const TrailRecord &operator[](int change) const { return changes_[change]; }
  const Stretch &stretchOf(int change) const;

 private:
  static void undone(CSint *, int stretch);
  static void begins(void *self, const Waking &waking);
  static void ends(void *self);
  static void posts(void *self, const Poster &poster);
  static void marks(void *self);
  static constexpr Watch kWatch{begins, ends, posts, marks};

  bool add(const Waking &waking, bool bySearch);
  void addChanges(int from);
  void cutTo(int stretch);
  void setPoster(Site *site);

  Observer observer_;
  Growing<TrailRecord> changes_;
  Growing<Stretch> stretches_;
  Growing<Waking> frames_;  // of the handlers and runs under way
  Site *poster_ = nullptr;  // of the latest posting of the host's; null before there is one
  bool broken_ = false;
};

// The solver's own; null without.
Journal *journal();

}  // namespace koru::explain
