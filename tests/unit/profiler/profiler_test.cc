// SPDX-License-Identifier: MIT
// Profilers: what they count, when, and how long they live.
#include "profiler/profiler.h"

#include <ctime>

#include "core/solver.h"
#include "support/kit/failing_allocations.h"
#include "support/kit/solver_test.h"
#include "support/profiler/report_reader.h"

namespace {

using namespace koru;
using namespace koru::test;

using Rows = std::vector<ProfileRow>;

class ProfilerTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    x = cs_createCSint(0, 9);
    y = cs_createCSint(0, 9);
    profiler = cs_createProfiler(0);
    ASSERT_NE(profiler, nullptr);
  }

  static ProfileRow row(const char *name, int calls, int fails) { return {"", name, calls, fails}; }

  // The rows, whatever place they are from.
  static Rows countsOf(CSprofiler *profiler) {
    Rows rows = rowsOf(profiler);
    for (ProfileRow &row : rows) row.text.clear();
    std::sort(rows.begin(), rows.end());
    return rows;
  }

  CSint *x = nullptr;
  CSint *y = nullptr;
  CSprofiler *profiler = nullptr;
};

TEST_F(ProfilerTest, OnlyKindZeroExists) {
  EXPECT_EQ(cs_createProfiler(1), nullptr);
  EXPECT_EQ(cs_createProfiler(-1), nullptr);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(ProfilerTest, ANewOneIsNotEnabled) {
  EXPECT_FALSE(solver::ports.profiling);
  ASSERT_TRUE(cs_Lt(x, y) && cs_GE(x, 3));
  EXPECT_EQ(countsOf(profiler), Rows{});
  EXPECT_EQ(profiler->startTime, 0);
  EXPECT_EQ(profiler->endTime, 0);
}

TEST_F(ProfilerTest, CountsRunsAndFailuresOfASite) {
  cs_enableProfiler(profiler);
  ASSERT_TRUE(cs_Lt(x, y));
  EXPECT_EQ(countsOf(profiler), (Rows{row("cs_Lt", 2, 0)})) << "the first filtering woke it on both variables";
  ASSERT_TRUE(cs_GE(x, 3));
  EXPECT_EQ(countsOf(profiler), (Rows{row("cs_Lt", 4, 0)}));
  EXPECT_FALSE(cs_GE(x, 9));
  EXPECT_EQ(countsOf(profiler), (Rows{row("cs_Lt", 4, 0)})) << "x ended at 8: nothing ran";
}

bool refuse(int, int, CSint **, int, void *) { return false; }

TEST_F(ProfilerTest, TwoRunsOfWhichOneFailsAreTwoCallsAndOneFail) {
  CSint *array[] = {x};
  ASSERT_TRUE(cs_eventKnown(array, 1, refuse, nullptr));
  cs_enableProfiler(profiler);
  ASSERT_TRUE(cs_GE(x, 3)) << "a slot that does nothing counts";
  EXPECT_FALSE(cs_EQ(x, 5));
  EXPECT_EQ(countsOf(profiler), (Rows{row("cs_eventKnown", 2, 1)}));
}

TEST_F(ProfilerTest, TwoPostingsAreTwoSites) {
  ASSERT_TRUE(cs_Lt(x, y) && cs_Lt(x, cs_createCSint(0, 10)));
  cs_enableProfiler(profiler);
  ASSERT_TRUE(cs_GE(x, 3));
  const Rows rows = countsOf(profiler);
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0].name, "cs_Lt");
  EXPECT_EQ(rows[1].name, "cs_Lt");
}

bool narrowOther(CSint *, int, int, CSint **, int, void *extra) {
  auto *other = static_cast<CSint *>(extra);
  return cs_NEQ(other, 5) && cs_NEQ(other, 6) && cs_LE(other, 8);
}

TEST_F(ProfilerTest, RelationsWithIntsInsideACallbackAreCountedUnderTheirOwnNames) {
  CSint *array[] = {x};
  cs_eventNewMin(array, 1, narrowOther, y);
  cs_enableProfiler(profiler);
  ASSERT_TRUE(cs_GE(x, 3) && cs_NEQ(y, 4));
  EXPECT_EQ(countsOf(profiler),
            (Rows{row("cs_LE", 1, 0), row("cs_NEQ", 1, 0), row("cs_NEQ", 1, 0), row("cs_eventNewMin", 1, 0)}));
}

TEST_F(ProfilerTest, CountsOnlyWhileEnabled) {
  ASSERT_TRUE(cs_Neq(x, y));
  cs_enableProfiler(profiler);
  ASSERT_TRUE(cs_GE(x, 1));
  cs_disableProfiler(profiler);
  ASSERT_TRUE(cs_GE(x, 2));
  cs_enableProfiler(profiler);
  ASSERT_TRUE(cs_GE(x, 3));
  EXPECT_EQ(countsOf(profiler), (Rows{row("cs_Neq", 2, 0)}));
}

TEST_F(ProfilerTest, EachCountsForItself) {
  ASSERT_TRUE(cs_Neq(x, y));
  CSprofiler *other = cs_createProfiler(0);
  cs_enableProfiler(profiler);
  ASSERT_TRUE(cs_GE(x, 1));
  cs_enableProfiler(other);
  ASSERT_TRUE(cs_GE(x, 2));
  cs_disableProfiler(profiler);
  EXPECT_TRUE(solver::ports.profiling);
  ASSERT_TRUE(cs_GE(x, 3));
  EXPECT_EQ(countsOf(profiler), (Rows{row("cs_Neq", 2, 0)}));
  EXPECT_EQ(countsOf(other), (Rows{row("cs_Neq", 2, 0)}));
  cs_disableProfiler(other);
  EXPECT_FALSE(solver::ports.profiling);
}

TEST_F(ProfilerTest, KeepsTheFirstStartAndTheLastEnd) {
  const std::time_t before = std::time(nullptr);
  cs_enableProfiler(profiler);
  const std::int64_t start = profiler->startTime;
  EXPECT_GE(start, before);
  EXPECT_EQ(profiler->endTime, 0);
  profiler->startTime = start - 100;
  cs_enableProfiler(profiler);
  cs_disableProfiler(profiler);
  EXPECT_GE(profiler->endTime, before);
  profiler->endTime = 1;
  cs_disableProfiler(profiler);
  EXPECT_EQ(profiler->endTime, 1) << "it was not enabled";
  cs_enableProfiler(profiler);
  cs_disableProfiler(profiler);
  EXPECT_EQ(profiler->startTime, start - 100);
  EXPECT_GE(profiler->endTime, before);
}

// ----- lifetime

TEST_F(ProfilerTest, ASiteOutlivesItsConstraintWhileItIsCounted) {
  cs_enableProfiler(profiler);
  cs_saveContext();
  ASSERT_TRUE(cs_Neq(x, y) && cs_GE(x, 1));
  cs_restoreContext();
  EXPECT_EQ(countsOf(profiler), (Rows{row("cs_Neq", 1, 0)}));
}

TEST_F(ProfilerTest, ADeletedOneCountsNoMoreAndCanStillBeRead) {
  ASSERT_TRUE(cs_Neq(x, y));
  cs_enableProfiler(profiler);
  ASSERT_TRUE(cs_GE(x, 1));
  cs_deleteProfiler(profiler);
  EXPECT_FALSE(solver::ports.profiling);
  ASSERT_TRUE(cs_GE(x, 2));
  EXPECT_EQ(countsOf(profiler), (Rows{row("cs_Neq", 1, 0)}));
  cs_deleteProfiler(profiler);
  cs_end();
  EXPECT_EQ(countsOf(profiler), Rows{}) << "the sites are gone, the record is not";
}

TEST_F(ProfilerTest, DeletingLeavesProfilingOnWhileAnotherIsEnabled) {
  CSprofiler *other = cs_createProfiler(0);
  cs_enableProfiler(profiler);
  cs_enableProfiler(other);
  cs_deleteProfiler(profiler);
  EXPECT_TRUE(solver::ports.profiling);
  cs_deleteProfiler(other);
  EXPECT_FALSE(solver::ports.profiling);
}

TEST_F(ProfilerTest, TheEndReleasesAllThatAreListed) {
  ASSERT_TRUE(cs_Neq(x, y));
  cs_enableProfiler(profiler);
  cs_enableProfiler(cs_createProfiler(0));
  ASSERT_TRUE(cs_GE(x, 1));
  cs_end();
  EXPECT_FALSE(solver::ports.profiling);
}

TEST_F(ProfilerTest, NullIsIgnored) {
  cs_enableProfiler(nullptr);
  cs_disableProfiler(nullptr);
  cs_deleteProfiler(nullptr);
  EXPECT_FALSE(solver::ports.profiling);
}

TEST_F(ProfilerTest, WithoutASolverThereIsNone) {
  cs_end();
  EXPECT_EQ(cs_createProfiler(0), nullptr);
}

// ----- exhausted memory

TEST_F(ProfilerTest, WithoutMemoryForTheRecordThereIsNone) {
  const FailingAllocator failing(0, Failing::kOnce);
  EXPECT_EQ(cs_createProfiler(0), nullptr);
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
}

TEST_F(ProfilerTest, WithoutMemoryForCountsItCountsNothing) {
  CSprofiler *incomplete = nullptr;
  {
    const FailingAllocator failing(1, Failing::kOnce);
    incomplete = cs_createProfiler(0);
  }
  ASSERT_NE(incomplete, nullptr);
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
  cs_enableProfiler(incomplete);
  ASSERT_TRUE(cs_Neq(x, y) && cs_GE(x, 1));
  EXPECT_EQ(countsOf(incomplete), Rows{});
}

TEST_F(ProfilerTest, ARunThatThereIsNoMemoryForIsNotCountedAndDoesNotFail) {
  ASSERT_TRUE(cs_Neq(x, y));
  cs_enableProfiler(profiler);
  {
    const FailingAllocator failing(0, Failing::kOnce);
    EXPECT_TRUE(cs_GE(x, 1));
  }
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(countsOf(profiler), Rows{});
  ASSERT_TRUE(cs_GE(x, 2));
  EXPECT_EQ(countsOf(profiler), (Rows{row("cs_Neq", 1, 0)}));
}

}  // namespace
