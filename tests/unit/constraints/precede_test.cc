// SPDX-License-Identifier: MIT
#include <climits>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

using Values = std::vector<int>;

using PrecedeTest = SolverTest;

TEST_F(PrecedeTest, NothingIsTheLaterValueBeforeTheFirst) {
  CSint *x[] = {cs_createCSint(0, 2), cs_createCSint(0, 2), cs_createCSint(0, 2)};
  ASSERT_TRUE(cs_Precede(x, 3, 1, 2));
  EXPECT_EQ(values(x[0]), (Values{0, 1}));
  ASSERT_TRUE(cs_EQ(x[2], 2));
  ASSERT_TRUE(cs_NEQ(x[0], 1));
  EXPECT_EQ(cs_getValue(x[1]), 1);
}

TEST_F(PrecedeTest, FailsWhereNothingCanPrecede) {
  CSint *x[] = {cs_createCSint(3, 5), cs_createCSint(3, 5), CSINT(2)};
  EXPECT_FALSE(cs_Precede(x, 3, 1, 2));
  CSint *y[] = {CSINT(2), CSINT(1)};
  EXPECT_FALSE(cs_Precede(y, 2, 1, 2));
}

TEST_F(PrecedeTest, OfAValueAndItselfItStandsNowhere) {
  CSint **x = cs_createCSintArray(2, 0, 1);
  ASSERT_TRUE(cs_Precede(x, 2, 1, 1));
  EXPECT_EQ(cs_getValue(x[0]), 0);
  EXPECT_EQ(cs_getValue(x[1]), 0);
}

TEST_F(PrecedeTest, RefusesWhatMakesNoSense) {
  CSint *x[] = {cs_createCSint(0, 3), nullptr};
  EXPECT_FALSE(cs_Precede(x, 2, 0, 1));
  EXPECT_FALSE(cs_Precede(nullptr, 1, 0, 1));
  EXPECT_FALSE(cs_Precede(x, -1, 0, 1));
  EXPECT_TRUE(cs_Precede(nullptr, 0, 0, 1));
}

}  // namespace
}  // namespace koru::test
