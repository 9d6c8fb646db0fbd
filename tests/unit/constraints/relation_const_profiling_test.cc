// SPDX-License-Identifier: MIT
// What an observer is told of the six relations with an int when a user-defined constraint's callback calls them.
#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;

class RelationConstProfilingTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    userSite_ = Site::create("the user's constraint", "");
    solver::ports.locator.text = [](void *) { return "here"; };
    userSite_->references = 1;
    solver::userSite = userSite_;
  }
  void TearDown() override {
    solver::userSite = nullptr;
    Site::release(userSite_);
    SolverTest::TearDown();
  }

  static int siteAllocations(bool (*relation)(CSint *, int), CSint *x, int v) {
    allocations_ = 0;
    allocationHook = [](std::size_t) {
      ++allocations_;
      return true;
    };
    relation(x, v);
    allocationHook = nullptr;
    return allocations_;
  }

 private:
  static inline int allocations_ = 0;
  Site *userSite_ = nullptr;
};

struct Row {
  const char *site;
  bool (*relation)(CSint *, int);
  std::vector<int> domain;
  int v;
  bool result;
  int code;
};

void PrintTo(const Row &row, std::ostream *out) {
  *out << row.site << " " << row.v << " on " << ::testing::PrintToString(row.domain);
}

class RelationConstCodeTest : public RelationConstProfilingTest, public ::testing::WithParamInterface<Row> {};

TEST_P(RelationConstCodeTest, IsReportedWithItsOutcomeAndChangeCode) {
  CSint *x = fromValues(GetParam().domain);
  const CallLog log;
  EXPECT_EQ(GetParam().relation(x, GetParam().v), GetParam().result);
  EXPECT_EQ(log.calls, (std::vector<Call>{{GetParam().result, x, GetParam().code, GetParam().site}}));
}

// The code is read off the domain after the narrowing, also when that changed nothing or failed.
INSTANTIATE_TEST_SUITE_P(
    , RelationConstCodeTest,
    ::testing::Values(
        // Two or more values left, one left, nothing to do, failed.
        Row{"cs_LE", cs_LE, {1, 2, 3}, 2, true, 1}, Row{"cs_LE", cs_LE, {1, 2, 3}, 1, true, 3},
        Row{"cs_LE", cs_LE, {1, 2, 3}, 9, true, 1}, Row{"cs_LE", cs_LE, {1}, 9, true, 3},
        Row{"cs_LE", cs_LE, {1, 2, 3}, 0, false, 1}, Row{"cs_LE", cs_LE, {1}, 0, false, 3},
        Row{"cs_LT", cs_LT, {1, 2, 3}, 3, true, 1}, Row{"cs_LT", cs_LT, {1, 2, 3}, 2, true, 3},
        Row{"cs_LT", cs_LT, {1, 2, 3}, 9, true, 1}, Row{"cs_LT", cs_LT, {1}, 9, true, 3},
        Row{"cs_LT", cs_LT, {1, 2, 3}, 1, false, 1}, Row{"cs_LT", cs_LT, {1}, 1, false, 3},
        Row{"cs_GE", cs_GE, {1, 2, 3}, 2, true, 0}, Row{"cs_GE", cs_GE, {1, 2, 3}, 3, true, 2},
        Row{"cs_GE", cs_GE, {1, 2, 3}, 0, true, 0}, Row{"cs_GE", cs_GE, {1}, 0, true, 2},
        Row{"cs_GE", cs_GE, {1, 2, 3}, 4, false, 0}, Row{"cs_GE", cs_GE, {1}, 4, false, 2},
        Row{"cs_GT", cs_GT, {1, 2, 3}, 1, true, 0}, Row{"cs_GT", cs_GT, {1, 2, 3}, 2, true, 2},
        Row{"cs_GT", cs_GT, {1, 2, 3}, 0, true, 0}, Row{"cs_GT", cs_GT, {1}, 0, true, 2},
        Row{"cs_GT", cs_GT, {1, 2, 3}, 3, false, 0}, Row{"cs_GT", cs_GT, {1}, 3, false, 2},
        // Bound to the value: it is the maximum then, whatever it was before. Refused: the bounds decide.
        Row{"cs_EQ", cs_EQ, {1, 2, 3}, 1, true, 2}, Row{"cs_EQ", cs_EQ, {1, 2, 3}, 2, true, 2},
        Row{"cs_EQ", cs_EQ, {1, 2, 3}, 3, true, 2}, Row{"cs_EQ", cs_EQ, {2}, 2, true, 2},
        Row{"cs_EQ", cs_EQ, {1, 3}, 2, false, 4}, Row{"cs_EQ", cs_EQ, {1, 3}, 5, false, 4},
        // The value is gone, so neither bound equals it; the only value stays, as both.
        Row{"cs_NEQ", cs_NEQ, {1, 2, 3}, 3, true, 5}, Row{"cs_NEQ", cs_NEQ, {1, 2, 3}, 2, true, 5},
        Row{"cs_NEQ", cs_NEQ, {1, 2, 3, 4}, 1, true, 5}, Row{"cs_NEQ", cs_NEQ, {1, 2}, 2, true, 5},
        Row{"cs_NEQ", cs_NEQ, {1, 2}, 9, true, 5}, Row{"cs_NEQ", cs_NEQ, {1, 2, 4}, 3, true, 5},
        Row{"cs_NEQ", cs_NEQ, {7}, 7, false, 1}));

// Only a trail that cannot grow leaves the value in place and so shows the other codes of the table.
class RelationConstFullTrailTest : public RelationConstProfilingTest, public ::testing::WithParamInterface<Row> {};

TEST_P(RelationConstFullTrailTest, IsReportedByTheBoundThatEqualsTheValue) {
  CSint *x = fromValues(GetParam().domain);
  const CallLog log;
  GetParam().relation(cs_createCSint(0, 9), 5);  // makes the site
  const FullTrail full;
  EXPECT_FALSE(GetParam().relation(x, GetParam().v));
  ASSERT_EQ(log.calls.size(), 2U);
  EXPECT_EQ(log.calls.back(), (Call{false, x, GetParam().code, GetParam().site}));
}

INSTANTIATE_TEST_SUITE_P(
    , RelationConstFullTrailTest,
    ::testing::Values(Row{"cs_EQ", cs_EQ, {1, 2, 3}, 3, false, 2}, Row{"cs_EQ", cs_EQ, {1, 2, 3}, 1, false, 3},
                      Row{"cs_EQ", cs_EQ, {1, 2, 3}, 2, false, 4}, Row{"cs_NEQ", cs_NEQ, {1, 2}, 2, false, 3},
                      Row{"cs_NEQ", cs_NEQ, {1, 2}, 1, false, 2}, Row{"cs_NEQ", cs_NEQ, {1, 2, 3}, 3, false, 1},
                      Row{"cs_NEQ", cs_NEQ, {1, 2, 3}, 1, false, 0}, Row{"cs_NEQ", cs_NEQ, {1, 2, 3}, 2, false, 5}));

TEST_F(RelationConstProfilingTest, TheHandlersThatTheNarrowingWakesAreReportedBeforeIt) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_Le(x, y));
  const CallLog log;
  EXPECT_TRUE(cs_GE(x, 3));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, x, 0, "cs_Le"}, {true, y, 0, "cs_Le"}, {true, x, 0, "cs_GE"}}));
}

TEST_F(RelationConstProfilingTest, ARepeatedCallIsCountedUnderTheSameSite) {
  CSint *x = cs_createCSint(0, 9);
  const CallLog log;
  cs_LE(x, 8);
  cs_LE(x, 7);
  cs_GE(x, 1);
  ASSERT_EQ(log.sites.size(), 3U);
  EXPECT_EQ(log.sites[0], log.sites[1]);
  EXPECT_NE(log.sites[0], log.sites[2]);
}

TEST_F(RelationConstProfilingTest, SitesAreToldApartByTheCallingConstraintAndByTheLocatorText) {
  CSint *x = cs_createCSint(0, 9);
  const CallLog log;
  cs_LE(x, 8);
  solver::ports.locator.text = [](void *) { return "elsewhere"; };
  cs_LE(x, 8);
  Site *outer = solver::userSite;
  solver::userSite = log.sites[0];
  cs_LE(x, 8);
  solver::userSite = outer;
  ASSERT_EQ(log.sites.size(), 3U);
  EXPECT_NE(log.sites[0], log.sites[1]);
  EXPECT_NE(log.sites[1], log.sites[2]);
  EXPECT_STREQ(log.sites[1]->text(), "elsewhere");
}

TEST_F(RelationConstProfilingTest, WithoutProfilingNoSiteIsLookedUpOrMade) {
  EXPECT_EQ(siteAllocations(cs_LE, cs_createCSint(0, 9), 5), 0);
  const CallLog log;
  EXPECT_GT(siteAllocations(cs_LE, cs_createCSint(0, 9), 5), 0);
}

TEST_F(RelationConstProfilingTest, OutsideAUserConstraintNothingIsReported) {
  solver::userSite = nullptr;
  const CallLog log;
  EXPECT_EQ(siteAllocations(cs_LE, cs_createCSint(0, 9), 5), 0);
  EXPECT_TRUE(log.calls.empty());
}

TEST_F(RelationConstProfilingTest, ASiteThatCannotBeMadeIsReportedOnceAndTheNarrowingTakesPlace) {
  CSint *x = cs_createCSint(0, 9);
  const CallLog log;
  for (int k = 0; k < 2; ++k) {
    const FailingAllocation failing(k);
    EXPECT_TRUE(cs_LE(x, 5 - k));
    EXPECT_EQ(memoryReports, k + 1);
    EXPECT_EQ(cs_getMax(x), 5 - k);
  }
  EXPECT_TRUE(log.calls.empty());
}

}  // namespace
