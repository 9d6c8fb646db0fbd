// SPDX-License-Identifier: MIT
#include <climits>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

using Values = std::vector<int>;

using VarElementOfTest = SolverTest;

TEST_F(VarElementOfTest, PositionsAndValuesNeedEachOther) {
  CSint *x[] = {cs_createCSint(0, 2), fromValues({5, 7}), cs_createCSint(8, 9)};
  CSint *index = cs_createCSint(-1, 5);
  CSint *result = cs_createCSint(1, 7);
  ASSERT_TRUE(cs_VarElementOf(index, x, 3, result));
  EXPECT_EQ(values(index), (Values{0, 1}));
  EXPECT_EQ(values(result), (Values{1, 2, 5, 7}));
  ASSERT_TRUE(cs_GE(result, 3));
  EXPECT_EQ(cs_getValue(index), 1);
  ASSERT_TRUE(cs_NEQ(result, 5));
  EXPECT_EQ(cs_getValue(x[1]), 7);
}

TEST_F(VarElementOfTest, AWideResultKeepsInnerValues) {
  CSint *x[] = {CSINT(0), CSINT(1 << 20)};
  CSint *index = cs_createCSint(0, 1);
  CSint *result = cs_createCSint(-5, 1 << 21);
  ASSERT_TRUE(cs_VarElementOf(index, x, 2, result));
  EXPECT_EQ(cs_getMin(result), 0);
  EXPECT_EQ(cs_getMax(result), 1 << 20);
  EXPECT_TRUE(cs_isIn(result, 17));
  ASSERT_TRUE(cs_GT(result, 0));
  EXPECT_EQ(cs_getValue(result), 1 << 20);
}

TEST_F(VarElementOfTest, RestoresAreSeen) {
  CSint *x[] = {cs_createCSint(0, 3), cs_createCSint(2, 5)};
  CSint *index = cs_createCSint(0, 1);
  CSint *result = cs_createCSint(0, 5);
  ASSERT_TRUE(cs_VarElementOf(index, x, 2, result));
  for (int value = 0; value <= 5; ++value) {
    cs_saveContext();
    ASSERT_TRUE(cs_EQ(result, value));
    EXPECT_EQ(cs_isIn(index, 0), value <= 3);
    EXPECT_EQ(cs_isIn(index, 1), value >= 2);
    cs_restoreContext();
  }
}

TEST_F(VarElementOfTest, PositionOfAnInt) {
  CSint *x[] = {cs_createCSint(0, 3), cs_createCSint(4, 5), cs_createCSint(2, 9)};
  CSint *position = cs_createCSint(0, 5);
  ASSERT_TRUE(cs_PositionOf(x, 3, 3, position));
  EXPECT_EQ(values(position), (Values{0, 2}));
  ASSERT_TRUE(cs_NEQ(x[0], 3));
  EXPECT_EQ(cs_getValue(position), 2);
  EXPECT_EQ(cs_getValue(x[2]), 3);
}

TEST_F(VarElementOfTest, RefusesWhatMakesNoSense) {
  CSint *x[] = {cs_createCSint(0, 3), nullptr};
  CSint *v = cs_createCSint(0, 3);
  EXPECT_FALSE(cs_VarElementOf(nullptr, x, 1, v));
  EXPECT_FALSE(cs_VarElementOf(v, nullptr, 1, v));
  EXPECT_FALSE(cs_VarElementOf(v, x, 2, v));
  EXPECT_FALSE(cs_VarElementOf(v, x, 1, nullptr));
  EXPECT_FALSE(cs_VarElementOf(v, x, 0, v));
  EXPECT_FALSE(cs_VarElementOf(v, x, -1, v));
  EXPECT_FALSE(cs_PositionOf(x, 1, 9, v));
  EXPECT_FALSE(cs_PositionOf(x, 1, 1, nullptr));
  EXPECT_FALSE(cs_PositionOf(nullptr, 1, 1, v));
}

}  // namespace
}  // namespace koru::test
