// SPDX-License-Identifier: MIT
// What cs_VarElement and cs_VarElementRange share: value = vars[index], as positions of an array and bounds.
//
// Deliberate: accepting an inner context and restoring an outer one may bring back positions outside the array. They
// are left out of every walk, and an index bound to one of them selects nothing, which fails.
#pragma once

#include "core/domain_walk.h"
#include "core/post.h"

namespace koru::var_element {

struct Selection {
  CSint *value;
  CSint *index;
  CSint **vars;
  int n;
};

constexpr int kNoPosition = -1;

// Not for the tag of an attachment alone: the position may have left the index's domain.
inline bool isOpen(const Selection &c, int position) { return contains(c.index, position); }

// Visits the positions in the index's domain in increasing order while `visit` returns true; live.
template <class Visit>
bool forEachPosition(const Selection &c, Visit visit) {
  return forEachValue(c.index, 0, c.n - 1, visit);
}

// The variable that a bound index selects, or null.
inline CSint *chosen(const Selection &c) {
  const int k = c.index->min;
  return k >= 0 && k < c.n ? c.vars[k] : nullptr;
}

// The bounds of the union of all domains that can be selected, and the first position that supplies each.
struct Extremes {
  int low = kIntMax;
  int high = kIntMin;
  int lowAt = kNoPosition;
  int highAt = kNoPosition;

  void include(const CSint *v, int position) {
    if (lowAt == kNoPosition || v->min < low) {
      low = v->min;
      lowAt = position;
    }
    if (highAt == kNoPosition || v->max > high) {
      high = v->max;
      highAt = position;
    }
  }
};

inline Extremes extremesOf(const Selection &c) {
  Extremes extremes;
  forEachPosition(c, [&](int i) {
    extremes.include(c.vars[i], i);
    return true;
  });
  return extremes;
}

// The rules for a bound index: the selected variable and the value share their bounds.
[[nodiscard]] inline bool alignBounds(CSint *selected, CSint *value) {
  return narrowMin(selected, value->min) && narrowMax(selected, value->max) && narrowMin(value, selected->min) &&
         narrowMax(value, selected->max);
}

// Deliberate: one side per call; the other one waits for an event of its own, and hosts see that order.
[[nodiscard]] inline bool tightenOneSide(CSint *selected, const CSint *value) {
  return selected->min < value->min ? narrowMin(selected, value->min) : narrowMax(selected, value->max);
}

// What comes before a posting: refuses what cannot be posted, and takes positions outside the array from the index.
[[nodiscard]] inline bool prepare(const Selection &c) {
  return c.n > 0 && c.index != nullptr && c.vars != nullptr && allPresent(c.vars, c.n) && narrowMin(c.index, 0) &&
         narrowMax(c.index, c.n - 1);
}

// One constraint for the index, one for the value, and one for the variables at the positions that are open, which are
// their indices in the entries.
template <class OnIndex, class OnValue, class OnVars, class Record>
[[nodiscard]] CSint *attach(Posting &posting, const Record &c, const TableOf<OnIndex> &indexTable,
                            const TableOf<OnValue> &valueTable, const TableOf<OnVars> &varsTable) {
  auto onIndex = posting.add(indexTable, OnIndex{c});
  onIndex.attach(c.index);
  auto onValue = posting.add(valueTable, OnValue{c});
  onValue.attach(c.value);
  auto onVars = posting.add(varsTable, OnVars{c});
  forEachPosition(c, [&](int i) {
    onVars.attach(c.vars[i], i);
    return true;
  });
  return posting ? c.value : nullptr;
}

}  // namespace koru::var_element
