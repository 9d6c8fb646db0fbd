// SPDX-License-Identifier: MIT
// No-goods: conjunctions of decisions that must not all hold, each with two of its elements watched.
//
// A no-good is one allocation, its elements behind the record. Its two watch nodes stand in the watch lists of the
// variables of the watched elements (the same one twice when there is a single element). A node is linked through the
// pointer that leads to it, so that it leaves its list without knowing which one that is.
#pragma once

#include "core/variable.h"
#include "koru.h"

namespace koru {

// A decision and the position of its variable in the set's array.
struct NoGoodElement {
  CSvalueSelection decision;
  int index;
};

constexpr int kMethods = CS_METHOD_GT + 1;

inline bool isMethod(int method) { return method >= 0 && method < kMethods; }

// The decision that holds exactly when this one does not.
CSvalueSelection negationOf(const CSvalueSelection &decision);

// Every value of the domain satisfies the decision.
inline bool isEntailed(const CSvalueSelection &decision, const CSint *v) {
  const int value = decision.value;
  switch (decision.method) {
    case CS_METHOD_EQ:
      return isInstantiated(v) && valueOf(v) == value;
    case CS_METHOD_NEQ:
      return !contains(v, value);
    case CS_METHOD_LE:
      return v->max <= value;
    case CS_METHOD_LT:
      return v->max < value;
    case CS_METHOD_GE:
      return v->min >= value;
    default:
      return v->min > value;
  }
}

// Some values satisfy the decision and some do not.
bool isUndecided(const CSvalueSelection &decision, const CSint *v);

struct WatchNode {
  CSnoGood *noGood = nullptr;  // null: not a watch but the place that a walk has reached
  WatchNode *next = nullptr;
  WatchNode **link = nullptr;  // the pointer that leads here

  void linkAt(WatchNode **place) {
    next = *place;
    link = place;
    *place = this;
    if (next != nullptr) next->link = &next;
  }
  void unlink() {
    *link = next;
    if (next != nullptr) next->link = link;
  }
};

}  // namespace koru

struct CSnoGood {
  koru::WatchNode nodes[2];
  int watched[2];  // the positions of the watched elements; equal when there is only one element
  int count;
  bool processed;  // already shortened between two runs
  bool deleted;    // leaves its lists when nobody is walking over them any more
  CSnoGood *newer;
  CSnoGood *older;
  CSnoGood *nextDeleted;

  koru::NoGoodElement *elements() { return reinterpret_cast<koru::NoGoodElement *>(this + 1); }
  const koru::NoGoodElement *elements() const { return reinterpret_cast<const koru::NoGoodElement *>(this + 1); }
};

namespace koru {

// With its elements left to the caller, in no list; null when memory is exhausted (reported).
CSnoGood *createNoGood(int count);

// All elements of the shorter one are the other's first ones.
bool agree(const CSnoGood &a, const CSnoGood &b);

}  // namespace koru
