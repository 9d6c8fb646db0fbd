// SPDX-License-Identifier: MIT
// What the four constraints of one posting of cs_Cumulative share: the tasks, their time windows, and room for what a
// sweep notes of them.
#pragma once

#include <algorithm>

#include "constraints/global/cumulative_energy.h"
#include "core/narrow.h"
#include "core/private_variable.h"
#include "core/solver.h"

namespace koru::cumulative {

// A task's place in the order of a sweep, with the keys it was sorted by.
struct Rank {
  int est;
  int outside;  // energy outside the compulsory part, wrapped
  int task;
};

// A task that the windows may move, one that is not fixed and demands energy, as it was when it was noted.
struct Candidate {
  Time est;
  Time lst;
  Time ect;
  Time leastEnd;
  Time lct;
  Time earlyEnd;   // placed early, the task lies in [est, earlyEnd) outside its compulsory part,
  Time lateStart;  // placed late, in [lateStart, leastEnd)
  Time windowMin;
  Time windowMax;
  Time reach;  // the greatest est of the tasks noted up to this one, in their order
  Energy energyToLst;
  Energy energyToEct;
  int dmin;
  int use;
  int useMax;
  int task;
  int position;  // in the order
};

constexpr Time kFar = Time{1} << 40;  // beyond all times

struct Range {
  Time from = kFar;
  Time to = -kFar;

  void include(Time first, Time last) {
    from = std::min(from, first);
    to = std::max(to, last);
  }
};

// What is known of the tasks while a handler runs, so that it asks no variable twice.
struct Notes {
  Range range;  // that the profile and the candidates cover
  Profile profile;
  Buffer<Candidate> candidates;
  int count = 0;
  int from = 0;  // the position in the order from which on the candidates are noted

  void coverProfile(const Tasks &tasks, const Range &all) {
    range = all;
    profile.build(tasks, range.from, range.to);
  }
};

struct Resource {
  Tasks tasks{};
  CSint *capacity = nullptr;
  // No use is a start, a duration or the capacity, nor the capacity a start or a duration.
  bool rolesDisjoint = false;
  Buffer<CSint *> ownUses;   // when the uses are not the host's
  PrivateVariables windows;  // per task: earliest start, latest end
  Buffer<Rank> order;        // not trailed: it only steers the order of work
  Notes notes;

  // To be called after a use or the capacity was narrowed. False when all notes hold: the change waits for the handler
  // that made it, and touches nothing else. Otherwise anything may have moved: the profile is built anew, over all
  // time, and the caller renews what it has read off it.
  bool afterNarrowing() {
    if (rolesDisjoint && changesWait()) return false;
    notes.coverProfile(tasks, {-kFar, kFar});
    return true;
  }

  [[nodiscard]] bool startNoEarlier(int i, Time t) const { return narrowMin64(windows[i], t); }
  [[nodiscard]] bool endNoLater(int i, Time t) const { return narrowMax64(windows[i], t); }
  Time earliestStart(int i) const { return windows[i]->min; }
  // A window that was made for an end beyond all ints and has not been narrowed since ends where its task may.
  Time latestEnd(int i) const {
    const Time max = windows[i]->max;
    return max < kIntMax ? max : std::max(max, tasks[i].lct());
  }

  // The energy that the capacity leaves beside compulsory parts in [a, b); that of the parts up to a and to b is given.
  Energy freeEnergy(Time a, Time b, Energy toA, Energy toB) const {
    return wrapSub64(wrapMul64(b - a, capacity->max), wrapSub64(toB, toA));
  }
};

}  // namespace koru::cumulative
