// SPDX-License-Identifier: MIT
// cs_init with every allocation failing in turn, and what can be done with a solver that could not be started.
#include "support/kit/failing_allocations.h"

namespace koru::test {
namespace {

class FailedInit : public ::testing::TestWithParam<Failing> {};

TEST_P(FailedInit, RecordsTheFailureOfEachOfItsAllocationsAndCanBeTriedAgain) {
  const long blocks = blocksAlive;
  int k = 0;
  for (bool more = true; more && !HasFailure(); ++k) {
    SCOPED_TRACE("allocation " + std::to_string(k));
    {
      const FailingAllocator failing(k, GetParam());
      cs_init();
    }
    more = FailingAllocator::failures() > 0;
    EXPECT_EQ(cs_getErr(), more ? CS_ERR_MEMORY : CS_ERR_NONE);
    EXPECT_LE(FailingAllocator::failures(), 1) << "the first failure ends the set-up";
    cs_init();
    EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
    expectSolverUsable();
    cs_end();
    EXPECT_EQ(blocksAlive, blocks) << "what had been built is taken over, and ends with the rest";
  }
  EXPECT_EQ(k, 7) << "four stacks, the notes of the trail and the site table fail, then none";
}

TEST(UnusableSolver, RecordsFurtherFailuresOnlyAndAnswersEveryCallWithFailure) {
  for (int k = 0; k < 5; ++k) {
    SCOPED_TRACE("stack " + std::to_string(k));
    {
      const FailingAllocator failing(k, Failing::kForEver);
      cs_init();
      EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
      cs_initErr();
      EXPECT_FALSE(cs_Vsearch(1, nullptr, cs_findFreeVar)) << "with the default handler this would abort";
      EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
    }
    cs_end();
    EXPECT_FALSE(cs_EQ(nullptr, 1));
    EXPECT_EQ(cs_AllNeq(nullptr, 3), 0);
    EXPECT_EQ(cs_createCSintArray(3, 0, 9), nullptr);
    cs_init();
    EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
    expectSolverUsable();
    cs_end();
  }
}

TEST(UnusableSolver, IsNotWhatAMissingSiteTableMakes) {
  {
    const FailingAllocator failing(5, Failing::kOnce);
    cs_init();
  }
  EXPECT_EQ(FailingAllocator::failures(), 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
  expectSolverUsable();
  cs_end();
}

INSTANTIATE_TEST_SUITE_P(Memory, FailedInit, ::testing::Values(Failing::kOnce, Failing::kForEver),
                         [](const auto &each) { return each.param == Failing::kOnce ? "Once" : "ForEver"; });

TEST(DefaultMemoryHandler, Aborts) {
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_DEATH(
      {
        cs_init();
        CSint *v = cs_createCSint(0, 9);
        const FailingAllocator failing(0, Failing::kOnce);
        cs_NEQ(v, 4);
      },
      "");
}

}  // namespace
}  // namespace koru::test
