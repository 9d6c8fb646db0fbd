// SPDX-License-Identifier: MIT
// The statistics text, and the counters it prints.
#include <cstdio>
#include <string>

#include "support/kit/written_text.h"
#include "unit/search/search_test.h"

namespace {

using namespace koru;
using namespace koru::test;

class StatisticsTest : public SearchTest {
 protected:
  static std::string text() { return textOf(cs_fprintStats); }
};

TEST_F(StatisticsTest, ThreeLinesAfterAnEmptyOne) {
  makeXy(2, 3);
  refuseY(never);
  cs_search(xy, 2, select);
  EXPECT_EQ(text(), "\nNb Fails = 6\nNb Choice Points = 8\nHeap Size = 1024\n");
}

TEST_F(StatisticsTest, HeapSizeIsTheCapacityOfTheTrailAndStaysWhenItShrinks) {
  CSint *constant = CSINT(0);
  cs_search(&constant, 1, cs_findFreeVar);
  cs_saveContext();
  for (int i = 0; i < 1024; ++i) cs_backtrack(nullptr, i, nullptr);
  EXPECT_EQ(text(), "\nNb Fails = 0\nNb Choice Points = 0\nHeap Size = 1024\n");
  cs_backtrack(nullptr, 0, nullptr);
  EXPECT_EQ(text(), "\nNb Fails = 0\nNb Choice Points = 0\nHeap Size = 2048\n");
  cs_restoreContext();
  EXPECT_EQ(text(), "\nNb Fails = 0\nNb Choice Points = 0\nHeap Size = 2048\n");
}

TEST_F(StatisticsTest, PrintStatsWritesTheSameToTheStandardOutput) {
  makeXy(2, 3);
  refuseY([](int value) { return value == 1; });
  cs_search(xy, 2, select);
  ::testing::internal::CaptureStdout();
  cs_printStats();
  std::fflush(stdout);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "\nNb Fails = 1\nNb Choice Points = 3\nHeap Size = 1024\n");
}

TEST_F(StatisticsTest, ANullStreamIsIgnored) {
  ::testing::internal::CaptureStdout();
  cs_fprintStats(nullptr);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

TEST_F(StatisticsTest, TheCountersKeepTheLastSearchsTotals) {
  makeXy(2, 3);
  refuseY(never);
  cs_search(xy, 2, select);
  cs_saveContext();
  cs_EQ(xy[0], 1);
  cs_restoreContext();
  expectCounters(8, 6);
}

}  // namespace
