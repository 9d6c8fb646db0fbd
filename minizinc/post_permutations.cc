// SPDX-License-Identifier: MIT
// Arrays of different values: all different, inverse, circuits. Where an array of the file begins at another index than
// 0, elements in front that keep to themselves make up for it, or the values are shifted.
#include <algorithm>
#include <climits>
#include <set>

#include "minizinc/postings.h"

namespace koru::fzn {

namespace {

// --- All different ---

bool hasTwice(Array array) {
  std::sort(array.begin(), array.end());
  return std::adjacent_find(array.begin(), array.end()) != array.end();
}

// The number of ints between the least and the greatest value.
long long spanOf(const Array &array) {
  int low = INT_MAX, high = INT_MIN;
  for (CSint *v : array) low = std::min(low, cs_getMin(v)), high = std::max(high, cs_getMax(v));
  return static_cast<long long>(high) - low + 1;
}

// As the annotation says; otherwise by domains where values are scarce, and by bounds.
bool allDifferent(const Call &call) {
  Array &array = call.keep(call.array(0));
  const int n = sizeOf(array);
  if (n < 2) return true;
  if (hasTwice(array) || cs_AllNeq(array.data(), n) == 0) return false;
  if (n == 2 || call.hasAnnotation("value_propagation") || call.hasAnnotation("value")) return true;
  const bool bounds = call.hasAnnotation("bounds") || call.hasAnnotation("bounds_propagation");
  const bool domain = call.hasAnnotation("domain") || call.hasAnnotation("domain_propagation");
  if (domain || (!bounds && spanOf(array) <= n + n / 4)) return cs_AllNeqDomain(array.data(), n);
  return cs_AllNeqBounds(array.data(), n);
}

// --- Inverse and circuits ---

constexpr long long kMostInFront = 16;

// Elements 0 .. count - 1 that are their own values.
void putInFront(const Call &call, Array &array, long long count) {
  Array front;
  for (long long i = 0; i < count; ++i) front.push_back(call.variables.constant(i));
  array.insert(array.begin(), front.begin(), front.end());
}

// Values less `offset`.
bool shift(const Call &call, Array &array, int offset) {
  for (CSint *&v : array) {
    if (offset != 0) v = cs_Sub(v, call.variables.constant(offset));
    if (v == nullptr) return false;
  }
  return true;
}

// Arguments: two arrays, and where they begin.
bool inverse(const Call &call) {
  Array f = call.array(0), g = call.array(1);
  const long long fBegin = call.constant(2), gBegin = call.constant(3);
  if (f.size() != g.size()) return false;
  const int last = sizeOf(f) - 1;
  for (CSint *v : f)
    if (cs_InInterval(v, static_cast<int>(gBegin), static_cast<int>(gBegin + last)) == 0) return false;
  for (CSint *v : g)
    if (cs_InInterval(v, static_cast<int>(fBegin), static_cast<int>(fBegin + last)) == 0) return false;
  if (fBegin == gBegin && fBegin >= 0 && fBegin <= kMostInFront) {
    putInFront(call, f, fBegin);
    putInFront(call, g, gBegin);
  } else if (!shift(call, f, static_cast<int>(gBegin)) || !shift(call, g, static_cast<int>(fBegin))) {
    return false;
  }
  return cs_Inverse(f.data(), g.data(), sizeOf(f));
}

bool circuit(const Call &call) {
  Array next = call.array(0);
  if (next.empty()) return true;
  return shift(call, next, call.intAt(1)) && cs_Circuit(next.data(), sizeOf(next));
}

bool subcircuit(const Call &call) {
  Array next = call.array(0);
  const int begin = call.intAt(1);
  if (next.empty()) return true;
  const int last = begin + sizeOf(next) - 1;
  for (CSint *v : next)
    if (cs_InInterval(v, begin, last) == 0) return false;
  if (begin >= 0 && begin <= kMostInFront)
    putInFront(call, next, begin);
  else if (!shift(call, next, begin))
    return false;
  return cs_Subcircuit(next.data(), sizeOf(next));
}

constexpr Row kRows[] = {
    {"koru_all_different", "X", allDifferent},
    {"koru_inverse", "XXcc", inverse},
    {"koru_circuit", "Xc", circuit},
    {"koru_subcircuit", "Xc", subcircuit},
};

}  // namespace

std::span<const Row> permutationRows() { return kRows; }

}  // namespace koru::fzn
