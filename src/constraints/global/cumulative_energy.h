// SPDX-License-Identifier: MIT
// Tasks, and the profile of their compulsory parts.
//
// A task's compulsory part [lst, ect) is the time it occupies wherever it starts; there is none unless lst < ect. Times
// are sums of two ints and computed in 64 bits. Energies, time times use, are 64-bit numbers that wrap; it takes a
// horizon times a capacity of more than 2^62.
#pragma once

#include "core/alloc.h"
#include "core/variable.h"

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

struct Tasks {
  CSint **starts;
  CSint **durations;
  CSint **uses;
  int n;

  Task operator[](int i) const { return {starts[i], durations[i], uses[i]}; }
};

// The profile as a step function with its integral, as it was when it was built.
class Profile {
 public:
  Profile() = default;
  // Room for the parts of n <= kIntMax / 2 tasks; false as a bool when memory is exhausted (reported).
  explicit Profile(int n) : steps_(2 * n) {}
  explicit operator bool() const { return static_cast<bool>(steps_); }

  void build(const Tasks &tasks);
  // Of the parts that meet [a, b) alone: enough to ask for heights within it.
  void build(const Tasks &tasks, Time a, Time b);

  // The greatest height over [a, b), a < b.
  std::int64_t height(Time a, Time b) const;

  // The energy of the parts up to t; that within [a, b) is a difference of two.
  Energy energyTo(Time t) const;

 private:
  struct Step {
    Time at;
    std::int64_t height;  // from here to the next step
    Energy energy;        // up to here
  };

  void addPart(const Task &task);
  void integrate();
  const Step *stepAt(Time t) const;  // the last one at or before t, or null
  const Step *end() const { return steps_.get() + count_; }

  Buffer<Step> steps_;
  int count_ = 0;
};

}  // namespace koru::cumulative
