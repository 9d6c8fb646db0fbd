// SPDX-License-Identifier: MIT
#include <climits>
#include <set>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

using Values = std::vector<int>;

class NValuesTest : public SolverTest {
 protected:
  static bool post(std::vector<CSint *> vars, CSint *count) {
    return cs_NValues(vars.data(), static_cast<int>(vars.size()), count);
  }
};

TEST_F(NValuesTest, TheCountLiesBetweenHitsAndMatching) {
  CSint *const count = cs_createCSint(-9, 9);
  const std::vector<CSint *> x{cs_createCSint(0, 1), cs_createCSint(0, 1), cs_createCSint(0, 1),
                               cs_createCSint(3, 9), cs_createCSint(4, 7), cs_createCSint(1, 20)};
  ASSERT_TRUE(post(x, count));
  EXPECT_EQ(values(count), (Values{2, 3, 4, 5}));
}

TEST_F(NValuesTest, WithTheFewestTheValuesLieAtTheHits) {
  CSint *const any = cs_createCSint(-5, 12);
  const std::vector<CSint *> x{cs_createCSint(0, 4), cs_createCSint(2, 9), cs_createCSint(8, 10), any};
  ASSERT_TRUE(post(x, cs_createCSint(0, 2)));
  EXPECT_EQ(values(any), (Values{0, 1, 2, 3, 4, 8, 9, 10})) << "either of them may have the one in the middle";
  EXPECT_TRUE(cs_LE(x[1], 4));
  EXPECT_EQ(values(any), (Values{2, 3, 4, 8, 9, 10}));
  EXPECT_EQ(values(x[0]), (Values{2, 3, 4}));
  ASSERT_TRUE(cs_EQ(x[0], 3));
  EXPECT_EQ(cs_getValue(x[1]), 3);
}

TEST_F(NValuesTest, WithTheMostTheValuesAreNew) {
  const std::vector<CSint *> x{CSINT(3), cs_createCSint(1, 5), cs_createCSint(3, 4), CSINT(3)};
  ASSERT_TRUE(post(x, CSINT(3)));
  EXPECT_EQ(cs_getValue(x[2]), 4);
  EXPECT_EQ(values(x[1]), (Values{1, 2, 5}));
}

TEST_F(NValuesTest, NoFewerAndNoMore) {
  EXPECT_FALSE(post({CSINT(1), CSINT(2)}, CSINT(1)));
  EXPECT_FALSE(post({CSINT(1), CSINT(1)}, CSINT(2)));
  EXPECT_FALSE(post({cs_createCSint(0, 1), cs_createCSint(0, 1), cs_createCSint(0, 1)}, CSINT(3)));
  EXPECT_FALSE(post({CSINT(1), fromValues({0, 2})}, CSINT(1))) << "seen when the inner values have gone";
}

TEST_F(NValuesTest, ACountThatIsCountedItself) {
  CSint *const count = cs_createCSint(1, 5);
  ASSERT_TRUE(post({CSINT(7), CSINT(9), count}, count));
  EXPECT_EQ(values(count), (Values{3}));
  CSint *const alone = cs_createCSint(0, 9);
  ASSERT_TRUE(post({alone}, alone));
  EXPECT_EQ(cs_getValue(alone), 1);
  CSint *const fewer = cs_createCSint(1, 2);
  EXPECT_FALSE(post({cs_createCSint(7, 8), CSINT(9), fewer}, fewer));
}

TEST_F(NValuesTest, WideDomainsKeepInnerValues) {
  CSint *const wide = cs_createCSint(INT_MIN, INT_MAX);
  ASSERT_TRUE(post({CSINT(INT_MIN), CSINT(5), CSINT(INT_MAX - 1), wide}, cs_createCSint(0, 3)));
  EXPECT_EQ(cs_getMin(wide), INT_MIN);
  EXPECT_EQ(cs_getMax(wide), INT_MAX - 1);
  EXPECT_TRUE(cs_isIn(wide, 4));
  EXPECT_FALSE(cs_EQ(wide, 4));
}

TEST_F(NValuesTest, AllWordsAreFound) {
  CSint *const count = cs_createCSint(0, 9);
  std::vector<CSint *> x;
  for (int i = 0; i < 5; ++i) x.push_back(cs_createCSint(0, 3));
  ASSERT_TRUE(post(x, count));
  x.push_back(count);
  static std::multiset<int> found;
  found.clear();
  cs_findAll(x.data(), 6, cs_findFreeVar, [](CSint **vars, int) { found.insert(cs_getValue(vars[5])); });
  // Choices of values times the ways to spread five over all of them.
  EXPECT_EQ(found.count(1), 4U);
  EXPECT_EQ(found.count(2), 6U * 30);
  EXPECT_EQ(found.count(3), 4U * 150);
  EXPECT_EQ(found.count(4), 240U);
}

TEST_F(NValuesTest, RefusesWhatMakesNoSense) {
  CSint *const v = cs_createCSint(0, 3);
  CSint *x[] = {v, nullptr};
  EXPECT_FALSE(cs_NValues(x, 2, v));
  EXPECT_FALSE(cs_NValues(nullptr, 1, v));
  EXPECT_FALSE(cs_NValues(x, -1, v));
  EXPECT_FALSE(cs_NValues(x, 1, nullptr));
  EXPECT_TRUE(cs_NValues(nullptr, 0, v));
  EXPECT_EQ(cs_getValue(v), 0);
  cs_end();
  EXPECT_FALSE(cs_NValues(nullptr, 0, v));
  cs_init();
}

}  // namespace
}  // namespace koru::test
