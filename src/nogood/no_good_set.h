// SPDX-License-Identifier: MIT
// No-good sets: no-goods over one array of variables, from the newest to the oldest, as the record of a constraint.
//
// The set begins and ends with its constraint. Backtracking undoes nothing in it: where the watches of a no-good stand
// is right for every state above the one they were moved in.
#pragma once

#include "core/alloc.h"
#include "nogood/no_good.h"

struct CSnoGoodSet {
  CSint **array;
  int size;
  CSnoGoodFilter filter;
  void *extra;
  koru::Buffer<koru::WatchNode *> watchLists;  // the newest node of each position
  int maximum;
  CSnoGoodRelease release = nullptr;  // installed when the set is complete: a set that was never made is not released
  CSnoGood *newest = nullptr;
  CSnoGood *oldest = nullptr;
  CSnoGood *deleted = nullptr;  // still in the lists
  int count = 0;                // without those
  int holds = 0;

  CSnoGoodSet(CSint **variables, int variableCount, CSnoGoodFilter addFilter, void *argument, int most);
  CSnoGoodSet(CSnoGoodSet &&) = default;  // of a set that is empty
  CSnoGoodSet &operator=(CSnoGoodSet &&) = delete;
  ~CSnoGoodSet();
};

namespace koru {

// While one lives, a no-good that is deleted stays where it is, marked, and one that fails does not become the newest:
// callbacks may add and delete under a walk over the set.
class Hold {
 public:
  explicit Hold(CSnoGoodSet &set) : set_(set) { ++set.holds; }
  Hold(const Hold &) = delete;
  Hold &operator=(const Hold &) = delete;
  ~Hold();

 private:
  CSnoGoodSet &set_;
};

// Copies the elements, count of them, and inserts the no-good unless the filter refuses it, an older one subsumes it,
// an index lies outside the array or memory is exhausted (reported).
void addNoGood(CSnoGoodSet &set, const NoGoodElement *elements, int count);

void makeNewest(CSnoGoodSet &set, CSnoGood &noGood);

}  // namespace koru
