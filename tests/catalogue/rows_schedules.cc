// SPDX-License-Identifier: MIT
// Tasks on machines and resources. Times are added up in 64 bits.
#include <algorithm>
#include <tuple>

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
  const auto &[starts, durations, present] = std::tie(t.arrays[0], t.arrays[1], t.arrays[2]);
  if (!noneNegative(durations)) return false;
  const auto takesTime = [&](std::size_t i) { return at(present, i) >= 1 && durations[i] > 0; };
  for (std::size_t i = 0; i < starts.size(); ++i)
    for (std::size_t j = 0; j < i; ++j) {
      if (!takesTime(i) || !takesTime(j)) continue;
      if (Wide{starts[i]} + durations[i] > starts[j] && Wide{starts[j]} + durations[j] > starts[i]) return false;
    }
  return true;
}

// Arrays: starts, durations, uses, presence; the capacity. What runs when a task starts is the most there is.
bool cumulativeTasks(T t) {
  const auto &[starts, durations, uses, present] = std::tie(t.arrays[0], t.arrays[1], t.arrays[2], t.arrays[3]);
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

const Row kRows[] = {
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
