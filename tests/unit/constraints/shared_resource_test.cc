// SPDX-License-Identifier: MIT
// SharedResource beside its twin.
#include "constraints/scheduling/shared_resource.h"

#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "support/kit/instrumented.h"
#include "unit/constraints/shared_resource_twin.h"

namespace koru::scheduling {

static void PrintTo(const Load &load, std::ostream *out) {
  const auto &[t, use] = load;
  *out << "[" << t.earliest << ", " << t.latest << ") " << t.length << " x " << use << " presence "
       << static_cast<int>(t.presence);
}

namespace {

using namespace naive;

bool filterAll(SharedResource &resource, std::size_t count, Time capacity) {
  for (bool again = true; again;) {
    if (!resource.filter(capacity)) return false;
    const Loads before(&resource[0], &resource[0] + count);
    const bool mayBe = resource.mayHaveEdges();
    const bool consistent = resource.edges(capacity);
    again = !std::equal(before.begin(), before.end(), &resource[0], sameLoad);
    EXPECT_TRUE(mayBe || (consistent && !again));
    if (!consistent) return false;
  }
  return true;
}

class SharedResourceTwin : public ::testing::Test {
 protected:
  int number(int low, int high) { return std::uniform_int_distribution(low, high)(random_); }

  // For edges there must be several, with little room.
  Loads draw(int capacity, bool edges) {
    const int n = number(edges ? 4 : 1, 6);
    const int horizon = edges ? number(5, 14) : number(4, 20);
    const bool optional = number(0, 2) == 0;
    Loads loads;
    for (int i = 0; i < n; ++i) {
      const int length = number(1, std::max(1, horizon * (edges ? 2 : 3) / 4));
      const int from = number(0, horizon - length);
      const int to = number(from + length, horizon);
      const Presence presence = optional ? static_cast<Presence>(number(0, 2)) : Presence::kIn;
      loads.push_back({{from, to, length, presence}, number(edges ? 1 : 0, capacity + (number(0, 9) == 0 ? 1 : 0))});
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

  // Time table and overload alone, or edges as well.
  void compare(int instances, bool edges) {
    int failed = 0;
    int narrowed = 0;
    for (int k = 0; k < instances && !HasFailure(); ++k) {
      const int capacity = number(edges ? 1 : 0, 6);
      const Loads given = draw(capacity, edges);
      Loads expected = given;
      SharedResource resource(static_cast<int>(given.size()));
      std::ranges::copy(given, &resource[0]);
      const bool consistent = edges ? filterAllNaively(expected, capacity) : filterNaively(expected, capacity);
      ASSERT_EQ(edges ? filterAll(resource, given.size(), capacity) : resource.filter(capacity), consistent)
          << ::testing::PrintToString(given) << " in " << capacity;
      failed += consistent ? 0 : 1;
      if (!consistent) continue;
      const Loads seen(&resource[0], &resource[0] + given.size());
      EXPECT_TRUE(std::ranges::equal(expected, seen, sameLoad))
          << ::testing::PrintToString(given) << " in " << capacity << "\n expected "
          << ::testing::PrintToString(expected) << "\n seen " << ::testing::PrintToString(seen);
      compareLimits(seen, resource, capacity);
      Loads before = given;
      if (edges) filterNaively(before, capacity);
      narrowed += std::ranges::equal(expected, before, sameLoad) ? 0 : 1;
    }
    EXPECT_GT(failed, instances / 20);
    EXPECT_GT(narrowed, edges ? instances / 100 : instances / 20) << "by the last of the rules";
  }

 private:
  std::mt19937 random_{1};
};

// Four that fill 0 to 4, in large units of time and of capacity.
TEST_F(SharedResourceTwin, LooksForNoEdgesWhereEnergiesDoNotFit) {
  for (const int bits : {20, 29}) {
    const Time unit = Time{1} << bits;
    SharedResource resource(5);
    for (int i = 0; i < 4; ++i) resource[i] = {{0, 4 * unit, 2 * unit, Presence::kIn}, unit};
    resource[4] = {{0, 9 * unit, 3 * unit, Presence::kIn}, unit};
    ASSERT_TRUE(resource.filter(2 * unit));
    ASSERT_TRUE(resource.edges(2 * unit));
    EXPECT_EQ(resource[4].task.earliest, bits == 20 ? 4 * unit : 0);
  }
}

TEST_F(SharedResourceTwin, FindsWhatThePublishedRulesFind) { compare(test::rounds(4000), false); }
TEST_F(SharedResourceTwin, FindsWhatThePublishedRulesFindHeavy) { compare(100000, false); }
TEST_F(SharedResourceTwin, FindsTheEdgesThatThePublishedRuleFinds) { compare(test::rounds(2000), true); }
TEST_F(SharedResourceTwin, FindsTheEdgesThatThePublishedRuleFindsHeavy) { compare(100000, true); }

}  // namespace
}  // namespace koru::scheduling
