// SPDX-License-Identifier: MIT
// What section 22 of koru.h says of deleted profilers.
#include "support/kit/solver_test.h"
#include "support/profiler/report_reader.h"

namespace {

using namespace koru::test;

class DeletedProfilers : public SolverTest {
 protected:
  int calls(CSprofiler *profiler) {
    int sum = 0;
    for (const ProfileRow &row : rowsOf(profiler)) sum += row.calls;
    return sum;
  }
};

TEST_F(DeletedProfilers, CountNothingUntilTheyAreEnabledAgain) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_Le(x, y));
  CSprofiler *profiler = cs_createProfiler(0);
  cs_enableProfiler(profiler);
  ASSERT_TRUE(cs_GE(x, 1));
  const int before = calls(profiler);
  EXPECT_GT(before, 0);
  cs_deleteProfiler(profiler);
  ASSERT_TRUE(cs_GE(x, 2));
  EXPECT_EQ(calls(profiler), before);
  cs_enableProfiler(profiler);
  ASSERT_TRUE(cs_GE(x, 3));
  EXPECT_EQ(calls(profiler), before) << "it counts as enabled still";
  cs_disableProfiler(profiler);
  cs_enableProfiler(profiler);
  ASSERT_TRUE(cs_GE(x, 4));
  EXPECT_GT(calls(profiler), before) << "disabled and enabled it counts again";
}

}  // namespace
