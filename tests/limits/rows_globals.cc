// SPDX-License-Identifier: MIT
// What the catalogue does not say of constraints over arrays, and those of the host's own.
#include <algorithm>
#include <cstdint>
#include <set>

#include "limits/table.h"

namespace koru::test::limits {

namespace {

// The array with its first variable: pointers 0 and 1 of a row.
CSint **arrayOf(Operands &o, const Arguments &a) {
  o.array[0] = a.pointer(1, o.x);
  return a.pointer(0, o.array);
}

// x and y over -5..5, b over 0..1: the last position that can hold the value.
bool indexOf(Operands &o, const Arguments &a) {
  CSint *const position = cs_Index(arrayOf(o, a), a[0], a[1]);
  if (a.anyNull() || a[0] < 1 || a[1] < -5 || a[1] > 5) return position == nullptr;
  const bool atLast = a[0] == 3 && (a[1] == 0 || a[1] == 1);
  return cs_getMin(position) == 0 && cs_getMax(position) == (atLast ? 2 : std::min(a[0], 2) - 1);
}

// Whether x is what is left of -5..5, or was refused because nothing would be.
template <class Keep>
bool leaves(Operands &o, int result, Keep keep) {
  std::vector<int> kept;
  for (int value = -5; value <= 5; ++value)
    if (keep(value)) kept.push_back(value);
  return kept.empty() ? result == 0 : result == 1 && values(o.x) == kept;
}

bool inArray(Operands &o, const Arguments &a) {
  const int array[] = {a[1], a[2], a[3]};
  const int result = cs_InArray(a.pointer(0, o.x), a.pointer(1, array), a[0]);
  if (a.anyNull()) return result == 0;
  const std::set<int> wanted(array, array + std::max(a[0], 0));
  return leaves(o, result, [&](int value) { return wanted.contains(value); });
}

bool notInArray(Operands &o, const Arguments &a) {
  const int array[] = {a[1], a[2], a[3]};
  const int result = cs_NotInArray(a.pointer(0, o.x), a.pointer(1, array), a[0]);
  if (a.anyNull()) return result == 0;
  const std::set<int> unwanted(array, array + std::max(a[0], 0));
  return leaves(o, result, [&](int value) { return !unwanted.contains(value); });
}

bool inInterval(Operands &o, const Arguments &a) {
  const int result = cs_InInterval(a.pointer(0, o.x), a[0], a[1]);
  if (a.anyNull()) return result == 0;
  return leaves(o, result, [&](int value) { return a[0] <= value && value <= a[1]; });
}

bool notInInterval(Operands &o, const Arguments &a) {
  const int result = cs_NotInInterval(a.pointer(0, o.x), a[0], a[1]);
  if (a.anyNull()) return result == 0;
  return leaves(o, result, [&](int value) { return value < a[0] || value > a[1]; });
}

struct Ends {
  int min;
  int max;
};

bool isBetween(CSint *v, const Arguments &a, Ends expected) {
  return a.anyNull() ? v == nullptr : v != nullptr && cs_getMin(v) == expected.min && cs_getMax(v) == expected.max;
}

Ends leastOf(int n) { return n < 1 ? Ends{INT_MAX, INT_MAX} : n < 3 ? Ends{-5, 5} : Ends{-5, 1}; }
Ends greatestOf(int n) { return n < 1 ? Ends{INT_MIN, INT_MIN} : n < 3 ? Ends{-5, 5} : Ends{0, 5}; }

bool least(Operands &o, const Arguments &a) { return isBetween(cs_Min(arrayOf(o, a), a[0]), a, leastOf(a[0])); }
bool greatest(Operands &o, const Arguments &a) { return isBetween(cs_Max(arrayOf(o, a), a[0]), a, greatestOf(a[0])); }
bool leastOfThese(Operands &o, const Arguments &a) {
  return isBetween(cs_VMin(a[0], a.pointer(0, o.x), o.y, o.b), a, leastOf(a[0]));
}
bool greatestOfThese(Operands &o, const Arguments &a) {
  return isBetween(cs_VMax(a[0], a.pointer(0, o.x), o.y, o.b), a, greatestOf(a[0]));
}

// How many of n of the variables can take the value: none must.
int most(int n, int value) {
  if (n < 1 || value < -5 || value > 5) return 0;
  return n - (n == 3 && value != 0 && value != 1 ? 1 : 0);
}

bool occurs(Operands &o, const Arguments &a) { return cs_Occur(a.pointer(2, o.w), a[1], arrayOf(o, a), a[0]) == 0; }
bool occurrencesAre(Operands &o, const Arguments &a) {
  const bool posted = cs_OccurConstraints(a.pointer(2, o.w), a[1], arrayOf(o, a), a[0]);
  return posted == !a.anyNull() && (!posted || (cs_getMin(o.w) == 0 && cs_getMax(o.w) == most(a[0], a[1])));
}

// Which states n letters lead to, letter by letter, from those that the variables can take.
bool someWordIsAccepted(const Arguments &a, const int *table, const int *finals) {
  const int n = a[0];
  const int states = a[1];
  const int symbols = a[2];
  const int start = a[3];
  if (start < 0 || start >= states) return false;
  std::set<int> reached{start};
  for (int i = 0; i < n; ++i) {
    const int last = std::min(i == 2 ? 1 : 5, symbols - 1);
    std::set<int> next;
    for (const int state : reached)
      for (int symbol = 0; symbol <= last; ++symbol) {
        const int to = table[state * symbols + symbol];
        if (to >= 0 && to < states) next.insert(to);
      }
    reached = next;
  }
  return std::any_of(finals, finals + std::max(a[4], 0), [&](int state) { return reached.contains(state); });
}

bool regular(Operands &o, const Arguments &a) {
  const int *const table = o.keep({1, INT_MIN, 0, 2, a[3], 1, INT_MAX, 0, -1});
  const int *const finals = o.keep({a[3], INT_MAX, 0});
  const int result = cs_Regular(arrayOf(o, a), a[0], a.pointer(2, table), a[1], a[2], a[3], a.pointer(3, finals), a[4]);
  if (a.anyNull()) return result == 0;
  return result == (a[0] < 1 || someWordIsAccepted(a, table, finals) ? 1 : 0);
}

// Tasks of lengths and uses 0..1 that may run at any time.
bool cumulative(Operands &o, const Arguments &a) {
  static CSint *some[3];
  std::fill_n(some, 3, o.b);
  return cs_Cumulative(arrayOf(o, a), a.pointer(2, some), a.pointer(3, some), a[0], a.pointer(4, CSINT(1))) ==
         !a.anyNull();
}

// Nothing is bound, so no callback is called by the registration; all are free, so one is watched.
bool hearsAllKnown(Operands &o, const Arguments &a) {
  const CSeventAllKnownCallback hear = [](CSint **, int, void *) { return true; };
  return cs_eventAllKnown(arrayOf(o, a), a[0], a.pointer(2, hear), nullptr) == !a.anyNull();
}

bool hearsKnown(Operands &o, const Arguments &a) {
  const CSeventKnownCallback hear = [](int, int, CSint **, int, void *) { return true; };
  return cs_eventKnown(arrayOf(o, a), a[0], a.pointer(2, hear), nullptr) == !a.anyNull();
}

// As many are attached as the array has variables.
bool attached(Operands &o, const Arguments &a) {
  const int count = cs_getNbConstraints(o.x) + cs_getNbConstraints(o.y) + cs_getNbConstraints(o.b);
  return count == (a.anyNull() ? 0 : std::max(a[0], 0));
}

template <auto post>
bool hearsOfBounds(Operands &o, const Arguments &a) {
  const CSeventBoundCallback hear = [](CSint *, int, int, CSint **, int, void *) { return true; };
  post(arrayOf(o, a), a[0], a.pointer(2, hear), nullptr);
  return attached(o, a);
}

bool hearsConflicts(Operands &o, const Arguments &a) {
  const CSeventConflictCallback hear = [](CSint *, int, CSconflictInfo *, CSint **, int, void *) {};
  cs_eventConflict(arrayOf(o, a), a[0], a.pointer(2, hear), nullptr);
  return attached(o, a);
}

}  // namespace

std::vector<LimitsRow> globalRows() {
  return {
      {"cs_Index", "sv", 2, indexOf},
      {"cs_InArray", "svvv", 2, inArray},
      {"cs_NotInArray", "svvv", 2, notInArray},
      {"cs_InInterval", "vv", 1, inInterval},
      {"cs_NotInInterval", "vv", 1, notInInterval},
      {"cs_Min", "s", 2, least},
      {"cs_Max", "s", 2, greatest},
      {"cs_VMin", "s", 1, leastOfThese},
      {"cs_VMax", "s", 1, greatestOfThese},
      {"cs_Occur", "sv", 3, occurs},
      {"cs_OccurConstraints", "sv", 3, occurrencesAre},
      {"cs_Regular", "sssvs", 4, regular},
      {"cs_Cumulative", "s", 5, cumulative},
      {"cs_eventAllKnown", "s", 3, hearsAllKnown},
      {"cs_eventKnown", "s", 3, hearsKnown},
      {"cs_eventNewMin", "s", 3, hearsOfBounds<cs_eventNewMin>},
      {"cs_eventNewMax", "s", 3, hearsOfBounds<cs_eventNewMax>},
      {"cs_eventNeq", "s", 3, hearsOfBounds<cs_eventNeq>},
      {"cs_eventConflict", "s", 3, hearsConflicts},
  };
}

}  // namespace koru::test::limits
