// SPDX-License-Identifier: MIT
// OneMachine beside its twin.
#include "constraints/scheduling/one_machine.h"

#include <algorithm>
#include <array>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "support/kit/instrumented.h"
#include "unit/constraints/one_machine_twin.h"

namespace koru::scheduling {

static void PrintTo(const Task &t, std::ostream *out) {
  *out << "[" << t.earliest << ", " << t.latest << ") " << t.length << " presence " << static_cast<int>(t.presence);
}

namespace {

using namespace naive;

class OneMachineTwin : public ::testing::Test {
 protected:
  int number(int low, int high) { return std::uniform_int_distribution(low, high)(random_); }

  Tasks draw(int most) {
    const int n = number(1, most);
    const int horizon = number(4, 30);
    const bool optional = number(0, 2) == 0;
    Tasks tasks;
    for (int i = 0; i < n; ++i) {
      const int length = number(1, std::max(1, horizon / n + number(0, 2)));
      const int from = number(0, std::max(0, horizon - length));
      const int to = number(from + length, std::max(from + length, horizon));
      const Presence presence = optional ? static_cast<Presence>(number(0, 2)) : Presence::kIn;
      tasks.push_back({from, to, length, presence});
    }
    return tasks;
  }

  void compare(int instances, int most) {
    int failed = 0;
    int narrowed = 0;
    for (int k = 0; k < instances && !HasFailure(); ++k) {
      const Tasks given = draw(most);
      Tasks expected = given;
      OneMachine machine(static_cast<int>(given.size()));
      std::ranges::copy(given, &machine[0]);
      const bool consistent = filterNaively(expected);
      ASSERT_EQ(machine.filter(), consistent) << ::testing::PrintToString(given);
      failed += consistent ? 0 : 1;
      if (!consistent) continue;
      const Tasks seen(&machine[0], &machine[0] + given.size());
      EXPECT_TRUE(std::ranges::equal(expected, seen, same))
          << ::testing::PrintToString(given) << "\n expected " << ::testing::PrintToString(expected) << "\n seen "
          << ::testing::PrintToString(seen);
      narrowed += std::ranges::equal(expected, given, same) ? 0 : 1;
    }
    EXPECT_GT(failed, instances / 20);
    EXPECT_GT(narrowed, instances / 20);
  }

 private:
  std::mt19937 random_{1};
};

// Edge finding in one direction of time makes an overload that edge finding in the other one meets.
TEST_F(OneMachineTwin, AnOverloadThatARuleHasMadeIsSeenByTheNext) {
  Tasks given;
  for (const auto &[earliest, latest, length] : std::vector<std::array<Time, 3>>{{18, 22, 1},
                                                                                 {9, 23, 4},
                                                                                 {10, 13, 3},
                                                                                 {13, 20, 1},
                                                                                 {4, 15, 3},
                                                                                 {10, 23, 2},
                                                                                 {0, 6, 4},
                                                                                 {0, 11, 1},
                                                                                 {4, 18, 3}})
    given.push_back({earliest, latest, length, Presence::kIn});
  OneMachine machine(static_cast<int>(given.size()));
  std::ranges::copy(given, &machine[0]);
  EXPECT_FALSE(machine.filter());
  EXPECT_FALSE(filterNaively(given));
}

TEST_F(OneMachineTwin, FindsWhatThePublishedRulesFind) {
  compare(test::rounds(2000), 6);
  compare(test::rounds(2000), 9);
}
TEST_F(OneMachineTwin, FindsWhatThePublishedRulesFindHeavy) {
  compare(100000, 6);
  compare(100000, 9);
}

}  // namespace
}  // namespace koru::scheduling
