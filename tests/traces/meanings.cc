// SPDX-License-Identifier: MIT
#include "traces/meanings.h"

#include <algorithm>
#include <climits>
#include <numeric>
#include <set>

namespace koru::traces::meaning {

Value sum(const Terms &t) { return std::accumulate(t.x.begin(), t.x.end(), std::int64_t{0}); }

Value firstLessOthers(const Terms &t) { return t.x.empty() ? 0 : 2 * std::int64_t{t.x[0]} - *sum(t); }

Value product(const Terms &t) { return std::accumulate(t.x.begin(), t.x.end(), std::int64_t{1}, std::multiplies<>()); }

Value scalarProduct(const Terms &t) {
  const std::size_t n = t.x.size();
  const std::span<const int> factors = t.lists.empty() ? t.k.last(n) : std::span<const int>(t.lists[0]).first(n);
  return std::inner_product(t.x.begin(), t.x.end(), factors.begin(), std::int64_t{0}, std::plus<>(),
                            [](std::int64_t a, int b) { return a * b; });
}

Value least(const Terms &t) { return t.x.empty() ? INT_MAX : *std::ranges::min_element(t.x); }
Value greatest(const Terms &t) { return t.x.empty() ? INT_MIN : *std::ranges::max_element(t.x); }

static Value at(std::span<const int> from, std::int64_t i) {
  if (i < 0 || i >= std::ssize(from)) return std::nullopt;
  return from[static_cast<std::size_t>(i)];
}

Value element(const Terms &t) { return at(t.lists[0], t.x[0]); }
Value variableElement(const Terms &t) { return at(t.x.subspan(1), t.x[0]); }
Value occurrences(const Terms &t) { return std::ranges::count(t.x, t.k[0]); }

bool quotient(const Terms &t) { return t.x[0] == t.z * *product({t.x.subspan(1), {}, {}}); }
bool allDifferent(const Terms &t) { return std::set<int>(t.x.begin(), t.x.end()).size() == t.x.size(); }
bool indexOfValue(const Terms &t) { return at(t.x, t.z) == t.k[0]; }
bool counted(const Terms &t) { return t.x[0] == std::ranges::count(t.x.subspan(1), t.k[0]); }

bool accepted(const Terms &t) {
  const int states = t.k[0];
  const int symbols = t.k[1];
  if (t.x.empty()) return true;
  int state = t.k[2];
  for (const int symbol : t.x) {
    if (symbol < 0 || symbol >= symbols || state < 0 || state >= states) return false;
    state = t.lists[0][static_cast<std::size_t>(state * symbols + symbol)];
  }
  return state >= 0 && state < states && std::ranges::count(t.lists[1], state) > 0;
}

namespace {

// What the tasks that run at an instant use together never exceeds the capacity; looked at where tasks start.
bool fits(std::span<const int> starts, std::span<const int> durations, std::span<const int> uses, int capacity) {
  for (std::size_t i = 0; i < starts.size(); ++i) {
    if (durations[i] < 1) continue;
    std::int64_t height = 0;
    for (std::size_t j = 0; j < starts.size(); ++j)
      if (starts[j] <= starts[i] && starts[i] < std::int64_t{starts[j]} + durations[j]) height += uses[j];
    if (height > capacity && uses[i] > 0) return false;
  }
  return true;
}

}  // namespace

bool cumulative(const Terms &t) {
  const std::size_t n = t.x.size() / 3;
  return fits(t.x.first(n), t.x.subspan(n, n), t.x.subspan(2 * n, n), t.x.back());
}

bool disjunctive(const Terms &t) {
  const std::size_t n = t.x.size() / 2;
  return fits(t.x.first(n), t.x.subspan(n, n), std::vector<int>(n, 1), 1);
}

}  // namespace koru::traces::meaning
