// SPDX-License-Identifier: MIT
// The tasks of a cumulative resource and what they are measured by: the profile of their compulsory parts, energies
// (length times use) and overlaps with a time window.
//
// A task's compulsory part [lst, ect) is the time it occupies wherever it starts; there is none unless lst < ect. Times
// are sums of two ints and computed in 64 bits. Energies are 64-bit numbers that wrap, which takes a horizon times a
// capacity of more than 2^62.
#pragma once

#include "core/alloc.h"
#include "core/int_math.h"
#include "core/private_variable.h"

namespace koru::cumulative {

using Time = std::int64_t;
using Energy = std::int64_t;

// One task, with its bounds as they are at each question.
struct Task {
  CSint *start;
  CSint *duration;
  CSint *use;

  Time est() const { return start->min; }
  Time lst() const { return start->max; }
  Time dmin() const { return duration->min; }
  Time dmax() const { return duration->max; }
  int umin() const { return use->min; }
  Time ect() const { return est() + dmin(); }
  Time lct() const { return lst() + dmax(); }
  Time leastEnd() const { return lst() + dmin(); }  // of the task placed as late as it can be
  bool hasCompulsoryPart() const { return lst() < ect(); }
  bool isFixed() const { return isInstantiated(start); }
  bool demands() const { return dmin() >= 1 && umin() >= 1; }
};

// What the four constraints of one posting share.
struct Resource {
  CSint **starts;
  CSint **durations;
  CSint **uses;
  CSint *capacity;
  int n;
  Buffer<CSint *> ownUses;   // when `uses` is not the host's
  PrivateVariables windows;  // per task: earliest start, latest end
  Buffer<int> order;         // the tasks as last sorted; not trailed, for it only steers the order of work

  Task task(int i) const { return {starts[i], durations[i], uses[i]}; }
};

// The height of the profile of the compulsory parts over [a, b).
std::int64_t profile(const Resource &r, Time a, Time b);

// The energy of the compulsory parts within [a, b); 0 when a >= b.
Energy compulsoryEnergy(const Resource &r, Time a, Time b);

// The energy that the capacity leaves in [a, b) beside the compulsory parts; 0 when a >= b.
Energy freeEnergy(const Resource &r, Time a, Time b);

// How much of the task's time outside its compulsory part lies in [a, b), placed as early or as late as it can be.
Time leftOverlap(const Task &task, Time a, Time b);
Time rightOverlap(const Task &task, Time a, Time b);
Time minOverlap(const Task &task, Time a, Time b);

// Where a task that can end no earlier than t next finds another one ending, within [a, b]; t when none does.
Time nextPoint(const Resource &r, int i, Time a, Time t, Time b);

// Where a task that can start no later than t last finds another one's latest start, within [a, b]; t when none is.
Time prevPoint(const Resource &r, int i, Time a, Time t, Time b);

}  // namespace koru::cumulative
