// SPDX-License-Identifier: MIT
// Tasks on machines and resources. Times are added up in 64 bits.
#include <algorithm>

#include "catalogue/relations.h"
#include "catalogue/row.h"
#include "koru_extras.h"

namespace koru::catalogue {
namespace {

using enum Consistency;
using Array = std::span<const int>;

// An array that is null stands for ones.
Wide at(Array array, std::size_t i) { return array.data() == nullptr ? 1 : array[i]; }

// Nothing of a task that is not there matters, but that no duration is negative.
bool noneNegative(Array array) {
  return std::ranges::none_of(array, [](int value) { return value < 0; });
}

// Arrays: starts, durations, presence.
bool disjunctiveTasks(T t) {
  const Array starts = t.arrays[0];
  const Array durations = t.arrays[1];
  const Array present = t.arrays[2];
  if (!noneNegative(durations)) return false;
  const auto takesTime = [&](std::size_t i) { return at(present, i) >= 1 && durations[i] > 0; };
  for (std::size_t i = 0; i < starts.size(); ++i)
    for (std::size_t j = 0; j < i; ++j) {
      if (!takesTime(i) || !takesTime(j)) continue;
      if (Wide{starts[i]} + durations[i] > starts[j] && Wide{starts[j]} + durations[j] > starts[i]) return false;
    }
  return true;
}

// And lists: states left, states needed, times by both; how many there are of either state.
bool disjunctiveTransitions(T t) {
  const Array starts = t.arrays[0];
  const Array durations = t.arrays[1];
  const auto isState = [](Wide count) { return [count](Wide state) { return state >= 0 && state < count; }; };
  if (t.k[0] < 0 || t.k[1] < 0 || !noneNegative(durations)) return false;
  const std::span<const Wide> all(t.lists[2]);  // the list may be longer
  const auto times = all.first(std::min(all.size(), static_cast<std::size_t>(t.k[0] * t.k[1])));
  if (!std::ranges::all_of(t.lists[0], isState(t.k[0])) || !std::ranges::all_of(t.lists[1], isState(t.k[1])) ||
      std::ranges::any_of(times, [](Wide time) { return time < 0; }))
    return false;
  const auto takesTime = [&](std::size_t i) { return at(t.arrays[2], i) >= 1 && durations[i] > 0; };
  const auto precedes = [&](std::size_t i, std::size_t j) {
    const Wide between = times[static_cast<std::size_t>(t.lists[0][i] * t.k[1] + t.lists[1][j])];
    return Wide{starts[i]} + durations[i] + between <= starts[j];
  };
  for (std::size_t i = 0; i < starts.size(); ++i)
    for (std::size_t j = 0; j < i; ++j)
      if (takesTime(i) && takesTime(j) && !precedes(i, j) && !precedes(j, i)) return false;
  return true;
}

// Arrays: starts, durations, uses, presence; the capacity. What runs when a task starts is the most there is.
bool cumulativeTasks(T t) {
  const Array starts = t.arrays[0];
  const Array durations = t.arrays[1];
  const Array uses = t.arrays[2];
  const Array present = t.arrays[3];
  const int capacity = t.x.back();
  if (!noneNegative(durations) || !noneNegative(uses) || capacity < 0) return false;
  const auto runsAt = [&](std::size_t i, int time) {
    return at(present, i) >= 1 && starts[i] <= time && time < Wide{starts[i]} + durations[i];
  };
  for (const int time : starts) {
    Wide level = 0;
    for (std::size_t i = 0; i < starts.size(); ++i) level += runsAt(i, time) ? uses[i] : 0;
    if (level > capacity) return false;
  }
  return true;
}

// Arrays: places and sizes along two axes.
bool noOverlap(T t) {
  const Array x = t.arrays[0];
  const Array widths = t.arrays[1];
  const Array y = t.arrays[2];
  const Array heights = t.arrays[3];
  if (!noneNegative(widths) || !noneNegative(heights)) return false;
  const auto apart = [](Array place, Array size, std::size_t i, std::size_t j) {
    return Wide{place[i]} + size[i] <= place[j] || Wide{place[j]} + size[j] <= place[i];
  };
  for (std::size_t i = 0; i < x.size(); ++i)
    for (std::size_t j = 0; j < i; ++j) {
      const bool haveArea = widths[i] > 0 && heights[i] > 0 && widths[j] > 0 && heights[j] > 0;
      if (haveArea && !apart(x, widths, i, j) && !apart(y, heights, i, j)) return false;
    }
  return true;
}

// Arrays: times, changes, presence; the level at first, its limits.
bool reservoir(T t) {
  const auto isKept = [&](Wide level) { return t.k[1] <= level && level <= t.k[2]; };
  if (!isKept(t.k[0])) return false;
  const Array times = t.arrays[0];
  for (const int time : times) {
    Wide level = t.k[0];
    for (std::size_t i = 0; i < times.size(); ++i)
      if (times[i] <= time && at(t.arrays[2], i) >= 1) level += t.arrays[1][i];
    if (!isKept(level)) return false;
  }
  return true;
}

// Null: always.
bool precedenceIf(T t) {
  const std::size_t at = t.x.size() - 3;
  const bool asked = at == 0 || t.x[0] >= 1;
  return !asked || Wide{t.x[at]} + t.x[at + 1] + t.k[0] <= t.x[at + 2];
}

// The truth value; start, duration and presence of two tasks. Null for both presences: they are there; for one:
// refused.
bool eitherBefore(T t) {
  if (t.x.size() == 6) return false;
  const bool mayBeOut = t.x.size() == 7;
  const std::size_t second = mayBeOut ? 4 : 3;
  const auto ends = [&](std::size_t task) { return Wide{t.x[task]} + t.x[task + 1]; };
  if (mayBeOut && (t.x[3] < 1 || t.x[6] < 1)) return t.x[0] >= 1;
  return t.x[0] >= 1 ? ends(1) <= t.x[second] : ends(second) <= t.x[1];
}

// Start, duration; arrays: whether it is there, starts, durations, presence.
struct Group {
  explicit Group(T t)
      : start(t.x[0]), end(Wide{t.x[0]} + t.x[1]), isThere(t.arrays[0].data() == nullptr || t.arrays[0][0] >= 1) {
    for (std::size_t i = 0; i < t.arrays[1].size(); ++i) {
      if (at(t.arrays[3], i) < 1) continue;
      starts.push_back(t.arrays[1][i]);
      ends.push_back(Wide{t.arrays[1][i]} + t.arrays[2][i]);
    }
  }
  Wide start;
  Wide end;
  bool isThere;
  std::vector<Wide> starts;  // of the parts that are there
  std::vector<Wide> ends;
};

bool alternative(T t) {
  const Group g(t);
  if (!g.isThere) return g.starts.empty();
  return g.starts.size() == 1 && g.starts[0] == g.start && g.ends[0] == g.end;
}

bool spans(T t) {
  const Group g(t);
  if (!g.isThere || g.starts.empty()) return !g.isThere && g.starts.empty();
  return std::ranges::min(g.starts) == g.start && std::ranges::max(g.ends) == g.end;
}

const Row kRows[] = {
    {"cs_Alternative", "vvoaaOn", door<cs_Alternative>, alternative, kNone, {{4, 2, 1, 4, 5, 6, 2, 2, 3, 0, 1, 0}}},
    {"cs_Span", "vvoaaOn", door<cs_Span>, spans, kNone, {{4, 3, 1, 4, 5, 6, 2, 2, 3, 1, 1, 1}}},
    {"cs_DisjunctiveTransitions",
     "aaOkknTii",
     door<cs_DisjunctiveTransitions>,
     disjunctiveTransitions,
     kNone,
     {{0, 3, 9, 2, 2, 2, 1, 1, 1}, {3}, {1, 2}, {{0, 0, 0}, {0, 1, 0}, {4, 4}}}},
    {"cs_NoOverlap", "aaaan", door<cs_NoOverlap>, noOverlap, kNone, {{1, 2, 9, 3, 3, 1, 1, 2, 9, 3, 3, 1}}},
    {"cs_Reservoir", "aaOniii", door<cs_Reservoir>, reservoir, kNone, {{1, 2, 9, 3, 5, 1, 1, 1, 1}, {3}, {0, 0, 7}}},
    {"cs_PrecedenceIf", "ovviv", door<cs_PrecedenceIf>, precedenceIf, kDomain, {{1, 2, 3, 7}, {}, {3}}},
    {"cs_EitherBefore", "vvvovvo", door<cs_EitherBefore>, eitherBefore, kKnown, {{0, 1, 3, 1, 2, 3, 1}}},
    {"cs_CumulativeTasks",
     "aaaOnv",
     door<cs_CumulativeTasks>,
     cumulativeTasks,
     kNone,
     {{0, 1, 2, 3, 3, 3, 2, 2, 2, 1, 1, 1, 5}}},
    {"cs_DisjunctiveTasks", "aaOn", door<cs_DisjunctiveTasks>, disjunctiveTasks, kNone, {{0, 1, 5, 2, 2, 2, 1, 1, 1}}},
};

}  // namespace

std::span<const Row> scheduleRows() { return kRows; }

}  // namespace koru::catalogue
