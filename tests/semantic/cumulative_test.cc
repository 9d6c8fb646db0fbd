// SPDX-License-Identifier: MIT
// cs_Cumulative and cs_Disjunctive against enumeration: schedules that are not feasible are never accepted; feasible
// ones are, except for the rare few that the jump rules refuse. That these rules alone are to blame is shown by the
// twin, which can be run without them.
#include "support/twins/cumulative.h"
#include "support/constraints/scheduling_problem.h"
#include "support/kit/instrumented.h"

namespace {

using namespace koru::test;
using namespace koru::test::scheduling;

bool postWithoutJumps(CSint **starts, CSint **durations, CSint **uses, int n, CSint *capacity) {
  return twin_cumulative::post(starts, durations, uses, n, capacity, false);
}

class CumulativeSemantics : public SolverTest {};

// Calls visit with every vector of n * 3 + 1 values: starts below `horizon`, durations and uses up to 2, capacity to 3.
template <class Visit>
void forEachBoundProblem(std::size_t n, int horizon, Visit visit) {
  std::vector<std::vector<int>> domains;
  for (std::size_t i = 0; i < n; ++i) {
    domains.push_back(range(0, horizon - 1));
    domains.push_back(range(0, 2));
    domains.push_back(range(0, 2));
  }
  domains.push_back(range(0, 3));
  brute::forEachTuple(domains, visit);
}

Problem boundProblem(const std::vector<int> &values) {
  Problem problem{{}, exactly(values.back())};
  for (std::size_t i = 0; i + 1 < values.size(); i += 3)
    problem.tasks.push_back({exactly(values[i]), exactly(values[i + 1]), exactly(values[i + 2])});
  return problem;
}

TEST_F(CumulativeSemantics, BoundTasksArePostedExactlyWhenFeasible) {
  const int horizons[] = {4, 4, 2};
  for (std::size_t n = 1; n <= 3; ++n) {
    int posts = 0;
    forEachBoundProblem(n, horizons[n - 1], [&](const std::vector<int> &values) {
      if (HasFailure()) return;
      if (++posts % 20 == 0) {
        cs_end();
        cs_init();
      }
      cs_saveContext();
      const Posted posted(boundProblem(values), cs_Cumulative);
      EXPECT_EQ(posted.consistent, feasible(values)) << ::testing::PrintToString(values);
      cs_restoreContext();
    });
  }
}

// Every choice of start intervals for tasks of fixed duration and use.
Tally tallyStarts(std::size_t n, int horizon, const Post &post) {
  std::vector<Interval> intervals;
  for (int low = 0; low < horizon; ++low)
    for (int high = low; high < horizon; ++high) intervals.push_back({low, high});
  std::vector<std::vector<int>> choices;
  for (std::size_t i = 0; i < n; ++i) {
    choices.push_back(range(0, static_cast<int>(intervals.size()) - 1));
    choices.push_back(range(1, 3));  // durations
  }
  Tally result;
  int count = 0;
  brute::forEachTuple(choices, [&](const std::vector<int> &choice) {
    if (++count % 10 == 0) {
      cs_end();
      cs_init();
    }
    Problem problem{{}, exactly(1)};
    for (std::size_t i = 0; i < choice.size(); i += 2)
      problem.tasks.push_back({intervals[static_cast<std::size_t>(choice[i])], exactly(choice[i + 1]), exactly(1)});
    if (!::testing::Test::HasFailure()) tally(problem, post, result);
  });
  return result;
}

TEST_F(CumulativeSemantics, OneAndTwoDisjunctiveTasksAgreeWithEnumeration) {
  EXPECT_EQ(tallyStarts(1, 6, postDisjunctive).refused, 0);
  EXPECT_EQ(tallyStarts(2, 5, postDisjunctive).refused, 0);
}

TEST_F(CumulativeSemantics, ThreeDisjunctiveTasksAgreeWithEnumerationHeavy) {
  EXPECT_EQ(tallyStarts(3, 5, postDisjunctive).refused, 0);
}

// n tasks of at most `limit` schedules to enumerate. Kind 0: all fixed but the starts; 1: durations vary; 2: all do.
Problem randomProblem(Generator &g, int n, int kind, double limit) {
  for (;;) {
    Problem problem{{}, g.interval(0, 4, kind == 2 ? 3 : 1)};
    for (int i = 0; i < n; ++i)
      problem.tasks.push_back(
          {g.interval(0, 8, 5), g.interval(0, 4, kind >= 1 ? 3 : 1), g.interval(0, 3, kind == 2 ? 3 : 1)});
    double schedules = 1;
    for (std::size_t p = 0; p < problem.positions(); ++p) schedules *= problem.at(p).max - problem.at(p).min + 1;
    if (schedules <= limit) return problem;
  }
}

Tally tallyRandom(int n, int kind, int count, const Post &post) {
  Generator generator(static_cast<unsigned>(n * 10 + kind));
  return tallyMany(count, post, [&] { return randomProblem(generator, n, kind, 400); });
}

TEST_F(CumulativeSemantics, UpToThreeTasksAgreeWithEnumeration) {
  for (int n = 1; n <= 3; ++n) {
    for (int kind = 0; kind <= 2; ++kind) {
      const Tally seen = tallyRandom(n, kind, 120, cs_Cumulative);
      EXPECT_EQ(seen.refused, 0) << seen.first;
      EXPECT_GT(seen.feasible, 120);
    }
  }
}

TEST_F(CumulativeSemantics, WithoutTheJumpsNoScheduleIsEverRefused) {
  for (int n = 1; n <= 5; ++n) {
    for (int kind = 0; kind <= 2; ++kind) {
      const Tally seen = tallyRandom(n, kind, rounds(60), postWithoutJumps);
      EXPECT_EQ(seen.refused, 0) << seen.first;
    }
  }
}

TEST_F(CumulativeSemantics, WithoutTheJumpsNoScheduleIsEverRefusedHeavy) {
  for (int n = 3; n <= 6; ++n) {
    for (int kind = 0; kind <= 2; ++kind) {
      const Tally seen = tallyRandom(n, kind, 800, postWithoutJumps);
      EXPECT_EQ(seen.refused, 0) << seen.first;
    }
  }
}

TEST_F(CumulativeSemantics, NothingInfeasibleIsAcceptedAndHardlyAnythingElseRefusedHeavy) {
  int problems = 0;
  int withRefusals = 0;
  for (int n = 4; n <= 6; ++n) {
    for (int kind = 0; kind <= 2; ++kind) {
      const Tally seen = tallyRandom(n, kind, 1000, cs_Cumulative);
      problems += seen.problems;
      withRefusals += seen.problemsWithRefusals;
    }
  }
  EXPECT_EQ(problems, 9000);
  EXPECT_LE(withRefusals, problems / 1000);
}

// ----- the jumps

const Problem kRefused{{{{6, 8}, exactly(1), exactly(1)},
                        {{2, 7}, exactly(1), exactly(1)},
                        {{3, 6}, exactly(1), exactly(1)},
                        {{4, 5}, {3, 4}, exactly(1)},
                        {{3, 4}, exactly(1), exactly(1)}},
                       exactly(1)};
const std::vector<int> kRefusedSchedule{8, 1, 1, 2, 1, 1, 3, 1, 1, 5, 3, 1, 4, 1, 1, 1};

// Deliberate: starts 8, 2, 3, 5, 4 are feasible, but a bound jumps to the next point at which another task may change,
// which is not always the next place where this one fits.
TEST_F(CumulativeSemantics, AJumpRefusesThisFeasibleSchedule) {
  ASSERT_TRUE(feasible(kRefusedSchedule));
  Tally seen;
  tally(kRefused, postDisjunctive, seen);
  EXPECT_GT(seen.refused, 0);
  tally(kRefused, postWithoutJumps, seen = {});
  EXPECT_EQ(seen.refused, 0);
}

// The smallest that is known: 0, 8, 5, 2, all durations fixed.
TEST_F(CumulativeSemantics, AJumpRefusesAFeasibleScheduleOfFourTasks) {
  const Problem problem{{{{0, 4}, exactly(2), exactly(1)},
                         {{4, 8}, exactly(4), exactly(1)},
                         {{5, 8}, exactly(3), exactly(1)},
                         {{2, 4}, exactly(3), exactly(1)}},
                        exactly(1)};
  ASSERT_TRUE(feasible({0, 2, 1, 8, 4, 1, 5, 3, 1, 2, 3, 1, 1}));
  Tally seen;
  tally(problem, postDisjunctive, seen);
  EXPECT_GT(seen.refused, 0);
  tally(problem, postWithoutJumps, seen = {});
  EXPECT_GT(seen.feasible, 0);
  EXPECT_EQ(seen.refused, 0);
}

TEST_F(CumulativeSemantics, ASchedulePostedWithItsStartsBoundIsNotRefused) {
  const Posted posted(boundProblem(kRefusedSchedule), postDisjunctive);
  EXPECT_TRUE(posted.consistent);
}

}  // namespace
