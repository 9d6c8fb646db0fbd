// SPDX-License-Identifier: MIT
// SharedResource beside a twin that looks at each time by itself, and at the energy of all sets of tasks.
#include "constraints/scheduling/shared_resource.h"

#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace koru::scheduling {

static void PrintTo(const Load &load, std::ostream *out) {
  const auto &[t, use] = load;
  *out << "[" << t.earliest << ", " << t.latest << ") " << t.length << " x " << use << " presence "
       << static_cast<int>(t.presence);
}

namespace {

using Loads = std::vector<Load>;

bool same(const Load &a, const Load &b) {
  return a.task.presence == b.task.presence &&
         (a.task.isOut() || (a.task.earliest == b.task.earliest && a.task.latest == b.task.latest));
}

// What all but one certainly take at a time.
Time levelAt(const Loads &loads, Time time, const Load *but) {
  Time level = 0;
  for (const Load &load : loads)
    if (&load != but && load.hasPart() && load.task.latestStart() <= time && time < load.task.earliestEnd())
      level += load.use;
  return level;
}

bool fitsFrom(const Loads &loads, const Load &load, Time start, Time capacity) {
  if (load.use == 0) return true;
  for (Time time = start; time < start + load.task.length; ++time)
    if (levelAt(loads, time, &load) + load.use > capacity) return false;
  return true;
}

bool anyOverload(const Loads &loads, Time capacity, const Load *one) {
  for (unsigned set = 0; set < 1U << loads.size(); ++set) {
    Time first = INT64_MAX;
    Time last = INT64_MIN;
    Time energy = 0;
    bool allIn = true;
    for (std::size_t i = 0; i < loads.size(); ++i) {
      const auto &[task, use] = loads[i];
      if ((set >> i & 1) == 0 && &loads[i] != one) continue;
      allIn = allIn && (task.isIn() || &loads[i] == one);
      first = std::min(first, task.earliest);
      last = std::max(last, task.latest);
      energy += task.length * use;
    }
    if (allIn && energy > 0 && energy > capacity * (last - first)) return true;
  }
  return false;
}

// One round of the time table.
bool round(Loads &loads, Time capacity) {
  for (Load &load : loads) {
    Task &task = load.task;
    if (task.isOut()) continue;
    while (task.earliestEnd() <= task.latest && !fitsFrom(loads, load, task.earliest, capacity)) ++task.earliest;
    while (task.earliestEnd() <= task.latest && !fitsFrom(loads, load, task.latestStart(), capacity)) --task.latest;
    if (task.earliestEnd() <= task.latest) continue;
    if (task.isIn()) return false;
    task.presence = Presence::kOut;
  }
  return true;
}

bool filterNaively(Loads &loads, Time capacity) {
  for (bool again = true; again;) {
    const Loads before = loads;
    if (!round(loads, capacity)) return false;
    again = !std::ranges::equal(before, loads, same);
  }
  if (anyOverload(loads, capacity, nullptr)) return false;
  for (Load &load : loads)
    if (load.task.presence == Presence::kOptional && anyOverload(loads, capacity, &load))
      load.task.presence = Presence::kOut;
  return true;
}

class SharedResourceTwin : public ::testing::Test {
 protected:
  int number(int low, int high) { return std::uniform_int_distribution(low, high)(random_); }

  Loads draw(int capacity) {
    const int n = number(1, 6);
    const int horizon = number(4, 20);
    const bool optional = number(0, 2) == 0;
    Loads loads;
    for (int i = 0; i < n; ++i) {
      const int length = number(1, std::max(1, horizon * 3 / 4));
      const int from = number(0, horizon - length);
      const int to = number(from + length, horizon);
      const Presence presence = optional ? static_cast<Presence>(number(0, 2)) : Presence::kIn;
      loads.push_back({{from, to, length, presence}, number(0, capacity + (number(0, 9) == 0 ? 1 : 0))});
    }
    return loads;
  }

  // What each task could take, and by when it must have ended, looking at each time.
  static void compareLimits(const Loads &loads, const SharedResource &resource, Time capacity) {
    Time highest = 0;
    for (Time time = 0; time < 30; ++time) highest = std::max(highest, levelAt(loads, time, nullptr));
    EXPECT_EQ(resource.highest(), highest);
    for (std::size_t i = 0; i < loads.size(); ++i) {
      const Load &load = loads[i];
      if (!load.task.isIn()) continue;
      Time most = capacity;
      for (Time time = load.task.latestStart(); time < load.task.earliestEnd(); ++time)
        most = std::min(most, capacity - levelAt(loads, time, &load));
      EXPECT_EQ(resource.mostUse(static_cast<int>(i)), most);
      Time end = std::max(load.task.latestStart(), load.task.earliestEnd());
      while (end < 30 && levelAt(loads, end, &load) + load.use <= capacity) ++end;
      const Time found = resource.latestEnd(static_cast<int>(i), load.task.latestStart());
      EXPECT_EQ(found, end < 30 ? end : SharedResource::kNoEnd);
    }
  }

  void compare(int instances) {
    int failed = 0;
    int narrowed = 0;
    for (int k = 0; k < instances && !HasFailure(); ++k) {
      const int capacity = number(0, 6);
      const Loads given = draw(capacity);
      Loads expected = given;
      SharedResource resource(static_cast<int>(given.size()));
      std::ranges::copy(given, &resource[0]);
      const bool consistent = filterNaively(expected, capacity);
      ASSERT_EQ(resource.filter(capacity), consistent) << ::testing::PrintToString(given) << " in " << capacity;
      failed += consistent ? 0 : 1;
      if (!consistent) continue;
      const Loads seen(&resource[0], &resource[0] + given.size());
      EXPECT_TRUE(std::ranges::equal(expected, seen, same))
          << ::testing::PrintToString(given) << " in " << capacity << "\n expected "
          << ::testing::PrintToString(expected) << "\n seen " << ::testing::PrintToString(seen);
      compareLimits(seen, resource, capacity);
      narrowed += std::ranges::equal(expected, given, same) ? 0 : 1;
    }
    EXPECT_GT(failed, instances / 20);
    EXPECT_GT(narrowed, instances / 20);
  }

 private:
  std::mt19937 random_{1};
};

TEST_F(SharedResourceTwin, FindsWhatThePublishedRulesFind) { compare(4000); }
TEST_F(SharedResourceTwin, FindsWhatThePublishedRulesFindHeavy) { compare(100000); }

}  // namespace
}  // namespace koru::scheduling
