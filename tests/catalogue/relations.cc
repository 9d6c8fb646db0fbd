// SPDX-License-Identifier: MIT
#include "catalogue/relations.h"

#include <algorithm>
#include <climits>
#include <numeric>
#include <set>

namespace koru::catalogue {

bool equal(T t) { return t.x[0] == t.x[1]; }
bool different(T t) { return t.x[0] != t.x[1]; }
bool atMost(T t) { return t.x[0] <= t.x[1]; }
bool below(T t) { return t.x[0] < t.x[1]; }
bool atLeast(T t) { return t.x[0] >= t.x[1]; }
bool above(T t) { return t.x[0] > t.x[1]; }
bool equalsInt(T t) { return t.x[0] == t.k[0]; }
bool differsFromInt(T t) { return t.x[0] != t.k[0]; }
bool atMostInt(T t) { return t.x[0] <= t.k[0]; }
bool belowInt(T t) { return t.x[0] < t.k[0]; }
bool atLeastInt(T t) { return t.x[0] >= t.k[0]; }
bool aboveInt(T t) { return t.x[0] > t.k[0]; }

bool among(T t) { return std::ranges::count(t.lists[0], t.x[0]) > 0; }
bool notAmong(T t) { return !among(t); }
bool within(T t) { return t.k[0] <= t.x[0] && t.x[0] <= t.k[1]; }
bool notWithin(T t) { return !within(t); }

Value sum(T t) { return std::accumulate(t.x.begin(), t.x.end(), Wide{0}); }

Value firstLessOthers(T t) { return t.x.empty() ? 0 : 2 * Wide{t.x[0]} - *sum(t); }

// Of ints; it stays beyond them once it is there, unless a factor is 0.
static Wide times(Wide a, Wide b) {
  if (a == 0 || b == 0) return 0;
  const bool fits = a >= -(Wide{1} << 32) && a <= Wide{1} << 32;
  return fits ? a * b : (a > 0) == (b > 0) ? LLONG_MAX : LLONG_MIN;
}

static Wide productOf(std::span<const int> x) {
  Wide result = 1;
  for (const int factor : x) result = times(result, factor);
  return result;
}

Value product(T t) { return productOf(t.x); }
bool quotient(T t) { return t.x[0] == times(productOf(t.x.subspan(1)), t.z); }

Value scalarProduct(T t) {
  Sum result;
  for (std::size_t i = 0; i < t.x.size(); ++i) result.add(t.lists[0][i], t.x[i]);
  return result.value();
}

Value least(T t) { return t.x.empty() ? INT_MAX : *std::ranges::min_element(t.x); }
Value greatest(T t) { return t.x.empty() ? INT_MIN : *std::ranges::max_element(t.x); }

static Value at(const auto &from, Wide i) {
  if (i < 0 || i >= std::ssize(from)) return std::nullopt;
  return from[static_cast<std::size_t>(i)];
}

Value element(T t) { return at(t.lists[0], t.x[0]); }
Value variableElement(T t) { return at(t.arrays[0], t.x[0]); }
Value occurrences(T t) { return std::ranges::count(t.x, t.k[0]); }

bool allDifferent(T t) {
  for (std::size_t i = 0; i < t.x.size(); ++i)
    if (std::ranges::count(t.x.subspan(i), t.x[i]) > 1) return false;
  return true;
}

bool indexOfValue(T t) { return at(t.x, t.z) == t.k[0]; }
bool counted(T t) { return t.x[0] == std::ranges::count(t.arrays[0], t.k[0]); }

bool accepted(T t) {
  const Wide states = t.k[0];
  const Wide symbols = t.k[1];
  if (t.x.empty()) return true;
  Wide state = t.k[2];
  for (const int symbol : t.x) {
    if (symbol < 0 || symbol >= symbols || state < 0 || state >= states) return false;
    state = t.lists[0][static_cast<std::size_t>(state * symbols + symbol)];
  }
  return state >= 0 && state < states && std::ranges::count(t.lists[1], state) > 0;
}

// What the tasks that run at an instant use together never exceeds the capacity; looked at where tasks start.
static bool fits(std::span<const int> starts, std::span<const int> durations, auto use, int capacity) {
  for (std::size_t i = 0; i < starts.size(); ++i) {
    if (durations[i] < 1) continue;
    Wide height = 0;
    for (std::size_t j = 0; j < starts.size(); ++j)
      if (starts[j] <= starts[i] && starts[i] < Wide{starts[j]} + durations[j]) height += use(j);
    if (height > capacity && use(i) > 0) return false;
  }
  return true;
}

bool cumulative(T t) {
  return fits(
      t.arrays[0], t.arrays[1], [&](std::size_t i) { return t.arrays[2][i]; }, t.x.back());
}

bool disjunctive(T t) {
  return fits(
      t.arrays[0], t.arrays[1], [](std::size_t) { return 1; }, 1);
}

}  // namespace koru::catalogue
