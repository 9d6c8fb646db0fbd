// SPDX-License-Identifier: MIT
// Which class each variable may take so that each class is taken as often as it must and no oftener than it may: a flow
// (Regin, Generalized arc consistency for global cardinality constraint, 1996).
//
// Every variable is assigned to a class. A path moves one variable from its class to another one of its options, one of
// those there onwards, and so on: the first class of the path loses one, the last one gains one. A flow is found by
// moving variables out of classes that have too many, and into those that have too few.
//
// The flow is not trailed: after a restore it is as good as before, and else the next run repairs it.
#pragma once

#include "constraints/counting/components.h"

namespace koru::counting {

class Flow {
 public:
  Flow() = default;
  // Of n variables over classes 0..classes-1. False as a bool when memory is exhausted (reported).
  Flow(int n, int classes);
  explicit operator bool() const { return static_cast<bool>(options_); }

  // What a run begins with: the classes that a variable can take, and how often a class must and may be taken.
  std::uint64_t *options(int i) const { return options_.get() + static_cast<std::ptrdiff_t>(i) * words_; }
  void demand(int j, int least, int most) const;

  // Finds a flow. False when there is none.
  [[nodiscard]] bool establish();
  // How often a class is taken in some flow at least and at most: a path for each one more or less than now.
  int mostOf(int j);
  int leastOf(int j);

  // Finds what `possible` tells: the options of a variable that it takes in some flow are those of this set.
  void separate();
  const std::uint64_t *possible(int i) const { return components_.of(classOf_[i]); }

 private:
  static constexpr int kNone = -1;

  struct Class {
    int least;
    int most;
    int taken;
    int first;  // of its variables
    int via;    // the variable that reaches it, on a path
  };
  struct Links {
    int previous;
    int next;
  };

  int unassigned() const { return classes_; }  // stands for a class that nobody may stay in
  std::uint64_t *from() const { return sets_.get(); }
  std::uint64_t *to() const { return sets_.get() + words_; }
  std::uint64_t *unseen() const { return sets_.get() + 2 * static_cast<std::ptrdiff_t>(words_); }

  void assign(int i, int j);
  void chooseOnly(std::uint64_t *set, int j) const;
  void chooseSpare(std::uint64_t *set, int except) const;
  void chooseRoom(std::uint64_t *set, int except) const;
  [[nodiscard]] bool move();
  int reach(int j, int queued);
  void shift(int j);

  int n_ = 0;
  int classes_ = 0;
  int words_ = 0;
  Buffer<int> classOf_;  // by variable
  Buffer<Links> links_;  // by variable: those of the same class
  Buffer<Class> class_;
  Buffer<int> queue_;
  Buffer<std::uint64_t> sets_;
  Components components_;
  Buffer<std::uint64_t> options_;
};

}  // namespace koru::counting
