// SPDX-License-Identifier: MIT
// cs_Mdd beyond what enumeration of small diagrams reaches: many layers and nodes, restores, bad input.
#include <climits>
#include <random>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

using Values = std::vector<int>;

struct Arc {
  int source;
  int value;
  int target;
};

class MddTest : public SolverTest {
 protected:
  static std::vector<CSint *> create(int count, int min, int max) {
    std::vector<CSint *> vars;
    for (int i = 0; i < count; ++i) vars.push_back(cs_createCSint(min, max));
    return vars;
  }

  static bool post(std::vector<CSint *> vars, const std::vector<Arc> &arcs, int root, int terminal) {
    Values sources;
    Values labels;
    Values targets;
    for (const auto &[source, value, target] : arcs) {
      sources.push_back(source);
      labels.push_back(value);
      targets.push_back(target);
    }
    return cs_Mdd(vars.data(), static_cast<int>(vars.size()), sources.data(), labels.data(), targets.data(),
                  static_cast<int>(arcs.size()), root, terminal);
  }
};

TEST_F(MddTest, ValuesOnPathsAreLeft) {
  const std::vector<CSint *> x = create(3, 0, 9);
  ASSERT_TRUE(post(x, {{0, 1, 1}, {0, 2, 2}, {1, 4, 3}, {1, 5, 4}, {2, 4, 4}, {3, 7, 9}, {4, 8, 9}, {2, 6, 5}}, 0, 9));
  EXPECT_EQ(values(x[0]), (Values{1, 2}));
  EXPECT_EQ(values(x[1]), (Values{4, 5})) << "6 leads nowhere";
  EXPECT_EQ(values(x[2]), (Values{7, 8}));
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(x[2], 7));
  EXPECT_EQ(cs_getValue(x[0]), 1);
  EXPECT_EQ(cs_getValue(x[1]), 4);
  cs_restoreContext();
  ASSERT_TRUE(cs_EQ(x[0], 2));
  EXPECT_EQ(cs_getValue(x[1]), 4);
  EXPECT_EQ(cs_getValue(x[2]), 8);
}

TEST_F(MddTest, NodesAreAnyIntsAndValuesAsWell) {
  const std::vector<CSint *> x = create(2, INT_MIN, INT_MAX);
  EXPECT_FALSE(post({x[0]}, {{INT_MIN, INT_MAX, 0}}, INT_MIN, INT_MAX));
  const std::vector<CSint *> y{cs_createCSint(INT_MAX - 1, INT_MAX), cs_createCSint(INT_MIN, INT_MIN + 3)};
  ASSERT_TRUE(post(y, {{INT_MIN, INT_MAX, 0}, {0, INT_MIN, INT_MAX}, {0, INT_MIN + 2, INT_MAX}}, INT_MIN, INT_MAX));
  EXPECT_EQ(cs_getValue(y[0]), INT_MAX);
  EXPECT_EQ(values(y[1]), (Values{INT_MIN, INT_MIN + 2}));
}

TEST_F(MddTest, WithoutAPathNothingHolds) {
  const std::vector<Arc> line{{0, 1, 1}, {1, 1, 2}, {2, 1, 3}};
  EXPECT_TRUE(post(create(3, 0, 1), line, 0, 3));
  EXPECT_FALSE(post(create(2, 0, 1), line, 0, 3));
  EXPECT_FALSE(post(create(4, 0, 1), line, 0, 3));
  EXPECT_FALSE(post(create(3, 2, 4), line, 0, 3));
  EXPECT_FALSE(post(create(3, 0, 1), line, 0, 7));
  EXPECT_FALSE(post(create(3, 0, 1), line, 7, 3));
  EXPECT_TRUE(post({}, line, 7, 7));
  EXPECT_FALSE(post({}, line, 0, 3));
}

// Two ones in 200 bits: a diagram with three nodes a layer.
TEST_F(MddTest, ManyLayers) {
  constexpr int kLength = 200;
  std::vector<Arc> arcs;
  for (int k = 0; k < kLength; ++k)
    for (int ones = 0; ones <= 2; ++ones)
      for (const int bit : {0, 1}) arcs.push_back({3 * k + ones, bit, 3 * k + 3 + ones + bit * (ones < 2 ? 1 : 1000)});
  const std::vector<CSint *> x = create(kLength, 0, 1);
  ASSERT_TRUE(post(x, arcs, 0, 3 * kLength + 2));
  for (CSint *v : x) EXPECT_FALSE(cs_isInstantiated(v));
  ASSERT_TRUE(cs_EQ(x[150], 1));
  ASSERT_TRUE(cs_EQ(x[20], 1));
  for (int k = 0; k < kLength; ++k) EXPECT_EQ(cs_getValue(x[static_cast<std::size_t>(k)]), k == 150 || k == 20 ? 1 : 0);
}

// All words whose sum is a multiple of 7: an automaton as a graph with cycles.
TEST_F(MddTest, AnAutomatonUnrolls) {
  std::vector<Arc> arcs;
  for (int state = 0; state < 7; ++state)
    for (int a = 0; a < 10; ++a) arcs.push_back({state, a, (state + a) % 7});
  std::vector<CSint *> x = create(4, 0, 9);
  ASSERT_TRUE(post(x, arcs, 0, 0));
  static int found;
  found = 0;
  cs_findAll(x.data(), 4, cs_findFreeVar, [](CSint **, int) { ++found; });
  int expected = 0;
  for (int word = 0; word < 10000; ++word)
    if ((word / 1000 + word / 100 % 10 + word / 10 % 10 + word % 10) % 7 == 0) ++expected;
  EXPECT_EQ(found, expected);
  EXPECT_EQ(cs_getNbFails(), 0);
}

// Many words of arcs, nodes and values: what is left is on a path, tried value by value.
TEST_F(MddTest, ValuesThatAreLeftLeadToSolutions) {
  std::mt19937 random(11);
  constexpr int kWidth = 90;
  std::vector<Arc> arcs;
  for (int k = 0; k < 5; ++k)
    for (int i = 0; i < 300; ++i)
      arcs.push_back({k == 0 ? 0 : kWidth * k + static_cast<int>(random() % kWidth), static_cast<int>(random() % 150),
                      k == 4 ? 1000 : kWidth * k + kWidth + static_cast<int>(random() % kWidth)});
  std::vector<CSint *> x = create(5, 0, 149);
  ASSERT_TRUE(post(x, arcs, 0, 1000));
  for (CSint *v : x) {
    EXPECT_LT(cs_getNbElements(v), 150);
    for (const int value : values(v)) {
      const int label = cs_saveContext();
      EXPECT_TRUE(cs_EQ(v, value));
      EXPECT_TRUE(cs_search(x.data(), 5, cs_findFreeVarNbElements));
      EXPECT_EQ(cs_getNbFails(), 0);
      cs_restoreContextUntil(label);
    }
  }
}

TEST_F(MddTest, PostedInAContextItGoesWithIt) {
  const std::vector<CSint *> x = create(2, 0, 9);
  cs_saveContext();
  ASSERT_TRUE(post(x, {{0, 1, 1}, {1, 2, 2}}, 0, 2));
  EXPECT_EQ(cs_getValue(x[1]), 2);
  cs_restoreContext();
  EXPECT_EQ(cs_getNbElements(x[1]), 10);
  EXPECT_TRUE(cs_EQ(x[1], 7));
}

TEST_F(MddTest, RefusesWhatMakesNoSense) {
  CSint *x[] = {cs_createCSint(0, 3), nullptr};
  const int arcs[] = {0, 1, 2};
  EXPECT_FALSE(cs_Mdd(x, 2, arcs, arcs, arcs, 3, 0, 0));
  EXPECT_FALSE(cs_Mdd(nullptr, 1, arcs, arcs, arcs, 3, 0, 0));
  EXPECT_FALSE(cs_Mdd(x, -1, arcs, arcs, arcs, 3, 0, 0));
  EXPECT_FALSE(cs_Mdd(x, INT_MAX, arcs, arcs, arcs, 3, 0, 0));
  EXPECT_FALSE(cs_Mdd(x, 1, nullptr, arcs, arcs, 3, 0, 0));
  EXPECT_FALSE(cs_Mdd(x, 1, arcs, nullptr, arcs, 3, 0, 0));
  EXPECT_FALSE(cs_Mdd(x, 1, arcs, arcs, nullptr, 3, 0, 0));
  EXPECT_FALSE(cs_Mdd(x, 1, arcs, arcs, arcs, -1, 0, 0));
  EXPECT_FALSE(cs_Mdd(x, 1, arcs, arcs, arcs, INT_MAX, 0, 0));
  EXPECT_FALSE(cs_Mdd(x, 1, nullptr, nullptr, nullptr, 0, 0, 0));
  EXPECT_TRUE(cs_Mdd(nullptr, 0, nullptr, nullptr, nullptr, 0, 4, 4));
  cs_end();
  EXPECT_FALSE(cs_Mdd(nullptr, 0, nullptr, nullptr, nullptr, 0, 4, 4));
  cs_init();
}

}  // namespace
}  // namespace koru::test
