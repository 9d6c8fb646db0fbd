// SPDX-License-Identifier: MIT
// The memory campaign notices what it is there to notice: scenarios that are broken on purpose, each in one way.
#include <gmock/gmock.h>

#include "core/alloc.h"
#include "memory/point.h"

namespace koru::test {
namespace {

using ::testing::HasSubstr;

constexpr Failing kEach[] = {Failing::kOnce, Failing::kForEver};

// What is said of the scenario's first allocation.
std::string complaint(const Scenario &scenario, Failing how = Failing::kOnce) {
  Outcome expected;
  {
    Trial trial(scenario, Filling{});
    expected = trial.run();
  }
  return tryPoint(scenario, {Filling{}, 0, how}, expected);
}

// A call that posts as it should, and then does something that it should not when it has failed.
Scenario failingWith(std::function<void(Stage &)> damage) {
  return {"broken", [damage = std::move(damage)](Stage &s) {
            const bool posted = cs_Le(s.x, s.y);
            if (!posted) damage(s);
            return posted;
          }};
}

TEST(CampaignCheck, AScenarioInOrderIsNotComplainedOf) {
  for (const Failing how : kEach) EXPECT_EQ(complaint(failingWith([](Stage &) {}), how), "");
}

TEST(CampaignCheck, ALeakIsNoticed) {
  static std::vector<void *> leaked;
  const Scenario leaking{"leaking", [](Stage &s) {
                           if (cs_Le(s.x, s.y)) return true;
                           const FailingAllocator none(1, Failing::kOnce);
                           leaked.push_back(allocate(16));
                           return false;
                         }};
  const std::string said = complaint(leaking);
  for (void *block : leaked) deallocate(block);
  EXPECT_THAT(said, HasSubstr("1 blocks leak"));
}

TEST(CampaignCheck, AWrongErrorCodeIsNoticed) {
  EXPECT_THAT(complaint(failingWith([](Stage &) { cs_initErr(); })), HasSubstr("the error code is 0"));
}

TEST(CampaignCheck, ASecondReportOfOneFailureIsNoticed) {
  EXPECT_THAT(complaint(failingWith([](Stage &) { reportMemoryExhausted(); })),
              HasSubstr("the memory handler was called 2 times for 1 failed requests"));
}

TEST(CampaignCheck, AFailureThatIsNotReportedIsNoticed) {
  const auto silently = [](Stage &s) {
    cs_setErrHandler(
        CS_ERR_MEMORY, [](CSint *, void *) {}, nullptr);
    return cs_Le(s.x, s.y);
  };
  EXPECT_THAT(complaint({"silent", silently}), HasSubstr("called 0 times for 1 failed"));
}

TEST(CampaignCheck, ACallThatGoesOnAfterAFailureIsNoticed) {
  const std::string said = complaint(failingWith([](Stage &s) { cs_Le(s.x, s.y); }), Failing::kForEver);
  EXPECT_THAT(said, HasSubstr("went on to 2 failed requests"));
}

TEST(CampaignCheck, ASuccessWithoutTheMemoryIsNoticed) {
  const auto always = [](Stage &s) {
    cs_Le(s.x, s.y);
    return true;
  };
  EXPECT_THAT(complaint({"always", always}), HasSubstr("succeeded without the memory"));
}

TEST(CampaignCheck, AChangeThatIsNotTrailedIsNoticed) {
  EXPECT_THAT(complaint(failingWith([](Stage &s) {
                s.x->max = s.x->reportedMax = s.x->count - 2;
                s.x->count -= 1;
              })),
              HasSubstr("a restore does not bring the domains back"));
}

TEST(CampaignCheck, WhatAFailureMustNotLeaveIsNoticed) {
  Scenario leaving = failingWith([](Stage &s) { cs_setName(s.h, ""); });
  leaving.afterFailure = [](Stage &s) { return std::string(cs_getName(s.h)) == "short"; };
  EXPECT_THAT(complaint(leaving), HasSubstr("the failure has left something behind"));
}

TEST(CampaignCheck, AContextOfTheCallerThatIsClosedIsNoticed) {
  EXPECT_THAT(complaint(failingWith([](Stage &) { cs_forgetSaveContext(); })),
              HasSubstr("contexts of the caller were closed"));
}

TEST(CampaignCheck, ACallThatFailsAgainWithMemoryIsNoticed) {
  static bool spoilt = false;
  spoilt = false;
  const Scenario spoiling{"spoiling", [](Stage &s) {
                            const bool posted = !spoilt && cs_Le(s.x, s.y);
                            spoilt = !posted;
                            return posted;
                          }};
  EXPECT_THAT(complaint(spoiling), HasSubstr("the same call does not succeed afterwards"));
}

TEST(CampaignCheck, ADifferentResultWithMemoryIsNoticed) {
  static int runs = 0;
  runs = 0;
  const auto drifting = [](Stage &s) { return cs_Le(s.x, s.y) && cs_GE(s.x, ++runs); };
  EXPECT_THAT(complaint({"drifting", drifting}), HasSubstr("with memory it comes to"));
}

TEST(CampaignCheck, AQueueThatIsLeftIsNoticed) {
  EXPECT_THAT(complaint(failingWith([](Stage &) { ++solver::queue.depth; })), HasSubstr("propagation has not ended"));
}

TEST(CampaignCheck, ABrokenInvariantEndsTheRun) {
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_DEATH(complaint(failingWith([](Stage &s) { ++s.x->count; })),
               "invariant violated: an interval's element count");
}

TEST(CampaignCheck, AnAllocationThatDoesNotExistIsNoticed) {
  const Scenario idle{"idle", [](Stage &) { return true; }};
  EXPECT_THAT(complaint(idle), HasSubstr("the allocation does not exist"));
}

TEST(CampaignCheck, AComplaintSaysHowToRunThePointAlone) {
  EXPECT_THAT(complaint(failingWith([](Stage &) { cs_initErr(); }), Failing::kForEver),
              HasSubstr("KORU_MEMORY_POINT='broken plain 0 for-ever'"));
}

TEST(Filling, NamesTheStacksThatAreNearlyFull) {
  EXPECT_EQ(Filling{}.text(), "plain");
  EXPECT_EQ(Filling{}.with(kTrail, 2).with(kEvents, 0).text(), "trail-2+events-0");
}

class FillingTest : public SolverTest {};

TEST_F(FillingTest, LeavesRoomForAsManyRecordsAsItSays) {
  cs_createCSint(0, 9);
  cs_saveContext();
  fillStacks({{3, 2, 1, 0}});
  EXPECT_EQ(solver::variables.count(), 1021);
  EXPECT_EQ(solver::trail.count(), 1022);
  EXPECT_EQ(solver::contexts.count(), 1023);
  EXPECT_FALSE(solver::events.hasRoom());
}

}  // namespace
}  // namespace koru::test
