// SPDX-License-Identifier: MIT
#include "core/moment.h"

#include "support/kit/new_variables.h"

namespace {

using namespace koru;
using namespace koru::test;

class MomentTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    x = cs_createCSint(0, 99);
    y = cs_createCSint(0, 99);
    lonely = cs_createCSint(0, 99);
    ASSERT_TRUE(cs_Le(x, y));
    propagateSomething();
  }
  void propagateSomething() { ASSERT_TRUE(cs_GE(y, cs_getMin(y) + 1)); }
  void changeWithoutPropagation() { ASSERT_TRUE(cs_GE(lonely, cs_getMin(lonely) + 1)); }

  CSint *x = nullptr;
  CSint *y = nullptr;
  CSint *lonely = nullptr;
};

TEST_F(MomentTest, LastsUntilADomainChanges) {
  EXPECT_FALSE(Moment().lasts());
  Moment moment = Moment::now();
  EXPECT_TRUE(moment.lasts());
  changeWithoutPropagation();
  EXPECT_FALSE(moment.lasts());
  moment.goOn();
  EXPECT_TRUE(moment.lasts());
}

TEST_F(MomentTest, EndsWithItsPropagation) {
  cs_saveContext();
  changeWithoutPropagation();
  Moment moment = Moment::now();
  const int place = solver::trail.count();
  cs_restoreContext();
  propagateSomething();
  ASSERT_EQ(solver::trail.count(), place);
  EXPECT_FALSE(moment.lasts());
  moment.goOn();
  EXPECT_FALSE(moment.lasts());
}

TEST_F(MomentTest, IsNoneBeforeTheFirstPropagation) {
  cs_end();
  cs_init();
  EXPECT_FALSE(Moment::now().lasts());
}

TEST_F(MomentTest, IsNoneWhereCodeOfTheHostMayRun) {
  const Moment before = Moment::now();
  solver::queue.hostHears = true;
  EXPECT_FALSE(before.lasts());
  const Moment within = Moment::now();
  solver::queue.hostHears = false;
  EXPECT_FALSE(within.lasts());
  EXPECT_TRUE(before.lasts());
}

TEST_F(MomentTest, IsNoneWhileSomebodyProfiles) {
  solver::ports.profiling = true;
  EXPECT_FALSE(Moment::now().lasts());
  solver::ports.profiling = false;
  EXPECT_TRUE(Moment::now().lasts());
}

}  // namespace
