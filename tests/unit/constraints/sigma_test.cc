// SPDX-License-Identifier: MIT
// cs_Sigma: the sum engine over the host's own array. Its rules are those of cs_VAdd and are tested with them.
#include "support/kit/new_variables.h"

namespace {

using namespace koru;
using namespace koru::test;

class SigmaTest : public SolverTest {
 protected:
  CSint *x[3] = {};
  CSint *s = nullptr;
};

TEST_F(SigmaTest, TheSumOfOneIsTheElementItselfAndNothingIsPosted) {
  CSint *v[] = {cs_createCSint(0, 3)};
  const int mark = solver::trail.count();
  EXPECT_EQ(cs_Sigma(v, 1), v[0]);
  EXPECT_EQ(cs_getNbConstraints(v[0]), 0);
  EXPECT_EQ(solver::trail.count(), mark);
}

TEST_F(SigmaTest, TheSumOfNothingIsZero) {
  for (const int n : {0, -1, INT_MIN}) {
    CSint *zero = cs_Sigma(x, n);
    ASSERT_NE(zero, nullptr);
    EXPECT_EQ(values(zero), std::vector{0});
    EXPECT_EQ(cs_getNbConstraints(zero), 0);
  }
  EXPECT_NE(cs_Sigma(nullptr, 0), nullptr);
}

TEST_F(SigmaTest, OneConstraintOnTheSumAndOneOnTheAddendsShareTheSite) {
  for (CSint *&v : x) v = cs_createCSint(0, 10);
  const int mark = solver::trail.count();
  s = cs_Sigma(x, 3);
  EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{s, x[0], x[1], x[2]}));
  EXPECT_EQ(solver::trail.count(), mark + 4) << "the host's array is not handed to the trail";
  EXPECT_EQ(attachments(s), (Attached{{"cs_Sigma", -1}}));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(attachments(x[i]), (Attached{{"cs_Sigma", i}}));
  EXPECT_NE(constraintOf(s), constraintOf(x[0]));
  EXPECT_EQ(constraintOf(x[0]), constraintOf(x[2]));
  EXPECT_EQ(siteOf(s), siteOf(x[0]));
  EXPECT_EQ(siteOf(s)->references, 2);
  EXPECT_EQ(busySlots(s), "01234");
  EXPECT_EQ(busySlots(x[0]), "01234");
}

TEST_F(SigmaTest, ANullAddendOrArrayGivesNullAndPostsNothing) {
  CSint *v = cs_createCSint(0, 3);
  CSint *array[] = {v, nullptr, v};
  EXPECT_EQ(cs_Sigma(array, 3), nullptr);
  EXPECT_EQ(cs_Sigma(array + 1, 1), nullptr);
  EXPECT_EQ(cs_Sigma(nullptr, 2), nullptr);
  EXPECT_EQ(cs_getNbConstraints(v), 0);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(SigmaTest, AConstantSumIsPostedAllTheSame) {
  CSint *array[] = {CSINT(2), CSINT(3)};
  s = cs_Sigma(array, 2);
  EXPECT_EQ(values(s), std::vector{5});
  EXPECT_EQ(attachments(s), (Attached{{"cs_Sigma", -1}}));
}

TEST_F(SigmaTest, TheSumIsAnIntervalWhateverTheAddendsHolesAre) {
  CSint *array[] = {fromValues({0, 4}), CSINT(1)};
  s = cs_Sigma(array, 2);
  EXPECT_EQ(values(s), range(1, 5));
  EXPECT_EQ(values(array[0]), (std::vector{0, 4}));
}

TEST_F(SigmaTest, EachFailedAllocationIsReportedOnceAndLeavesTheSolverUsable) {
  const auto make = [] { return threeOf(0, 9); };
  // Site, two constraints and an entry for the sum and for each addend.
  expectAllocations(
      make, [](Posted &o) { return cs_Sigma(o.x, 3) != nullptr; }, 7);
  expectAllocations(
      make, [](Posted &o) { return cs_Sigma(o.x, 1) == o.x[0]; }, 1);
}

}  // namespace
