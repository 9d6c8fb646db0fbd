// SPDX-License-Identifier: MIT
// The variable selection of one search.
//
// A function of the host's is called as it is, and so is a built-in one where variables are few. Of many its rule runs
// over the positions whose variable was not settled yet when an enclosing level looked: the same choice, without a walk
// over all that is bound.
// What was settled is known for the branch (core/branch_set), so a restore takes the knowledge back, whoever makes it.
// State: the SelectionRoom, which there is once; a search inside another one does without.
// Cost: nothing is allocated. Of a long array (search/unsettled.h) a level that has gone down looks at what is free,
// from the first such position on.
#pragma once

#include "koru.h"
#include "search/unsettled.h"

namespace koru {

class Selection {
 public:
  static constexpr int kFew = 32;  // so many variables are looked at faster than it is kept track of them

  Selection(CSint **array, int size, CSfindFreeVar select);
  // For a search that stands still between calls, and so has room of its own: a set of all positions.
  Selection(CSint **array, int size, CSfindFreeVar select, const BranchSetOn &positions);
  Selection(const Selection &) = delete;
  Selection &operator=(const Selection &) = delete;
  ~Selection();

  CSint *next() { return step_(*this); }

  static bool isBuiltIn(CSfindFreeVar select) { return stepFor(select) != askHost; }
  // False for a built-in selection without an array, or with a null variable in it: it would leave out what it cannot
  // read, and call the rest a solution. A function of the host's decides for itself.
  static bool canChoose(CSint **array, int size, CSfindFreeVar select);

 private:
  using Step = CSint *(*)(Selection &);

  static constexpr int kShort = 2048;  // a set of so many positions is walked over faster than it is kept track of

  static CSint *askHost(Selection &s) { return s.select_(s.array_, s.size_); }
  template <class Rule>
  static CSint *scan(Selection &s);
  template <class Rule>
  static CSint *scanLong(Selection &s);
  static Step stepFor(CSfindFreeVar select, int size = 0);

  CSint **array_;
  int size_;
  CSfindFreeVar select_;
  Step step_;
  bool usesRoom_ = false;
  Unsettled unsettled_;
};

}  // namespace koru
