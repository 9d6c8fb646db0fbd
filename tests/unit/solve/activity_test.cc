// SPDX-License-Identifier: MIT
#include "solve/activity.h"

#include "core/solver.h"
#include "support/kit/failing_allocations.h"
#include "support/kit/solver_test.h"

namespace koru::test::solve {
namespace {

class ActivityTest : public SolverTest {
 protected:
  CSint **x = nullptr;
  koru::solve::Activity activity;

  void SetUp() override {
    SolverTest::SetUp();
    x = cs_createCSintArray(5, 0, 9);
    ASSERT_TRUE(activity.create(x, 4));
  }
  bool propagate(bool accepted) {
    activity.notePropagation(mark_);
    mark_ = solver::trail.count();
    return accepted;
  }
  std::vector<std::uint64_t> all() const { return {activity.of(0), activity.of(1), activity.of(2), activity.of(3)}; }

 private:
  int mark_ = 0;
};

TEST_F(ActivityTest, AddsToWhatAPropagationHasChanged) {
  cs_saveContext();
  activity.notePropagation(solver::trail.count());
  const std::uint64_t before = activity.of(0);
  EXPECT_TRUE(propagate(cs_GE(x[0], 2)));
  const std::uint64_t once = activity.of(0);
  EXPECT_GT(once, before);
  EXPECT_EQ(activity.of(1), before);
  EXPECT_TRUE(propagate(cs_LE(x[1], 7) && cs_NEQ(x[2], 5) && cs_NEQ(x[2], 4)));
  EXPECT_EQ(activity.of(0), once);
  EXPECT_GT(activity.of(1), once) << "later changes count for more";
  EXPECT_EQ(activity.of(1), activity.of(2)) << "once for each propagation";
  EXPECT_EQ(activity.of(3), before);
}

TEST_F(ActivityTest, VariablesThatAreNotLabelledAndConstraintsAreNoChange) {
  cs_saveContext();
  activity.notePropagation(solver::trail.count());
  const auto before = all();
  EXPECT_TRUE(propagate(cs_GE(x[4], 3) && cs_Le(x[0], x[1])));
  EXPECT_EQ(all(), before);
}

TEST_F(ActivityTest, AVariableThatStandsTwiceHasTheSameActivityInBothPlaces) {
  CSint *twice[] = {x[3], x[0], x[3]};
  koru::solve::Activity other;
  ASSERT_TRUE(other.create(twice, 3));
  cs_saveContext();
  const int mark = solver::trail.count();
  EXPECT_TRUE(cs_GE(x[3], 3));
  other.notePropagation(mark);
  EXPECT_EQ(other.of(0), other.of(2));
  EXPECT_GT(other.of(0), other.of(1));
}

// However long it goes on, weights stay small enough for fractions, and the order of the latest changes stands.
TEST_F(ActivityTest, NeverGrowsTooLarge) {
  for (int i = 0; i < 100000; ++i) {
    cs_saveContext();
    const int mark = solver::trail.count();
    EXPECT_TRUE(cs_GE(x[i % 2], 1));
    activity.notePropagation(mark);
    cs_restoreContext();
    for (int k = 0; k < 4; ++k) ASSERT_LT(activity.of(k), std::uint64_t{1} << 31);
  }
  EXPECT_GT(activity.of(1), activity.of(2));
  EXPECT_GT(activity.of(0), activity.of(3));
}

TEST_F(ActivityTest, SaysWhenThereIsNoMemory) {
  int failures = 0;
  for (int k = 0;; ++k) {
    koru::solve::Activity other;
    const FailingAllocator failing(k, Failing::kOnce);
    if (other.create(x, 4)) {
      EXPECT_TRUE(other.created());
      break;
    }
    EXPECT_FALSE(other.created());
    ++failures;
  }
  EXPECT_EQ(failures, 4);
}

}  // namespace
}  // namespace koru::test::solve
