// SPDX-License-Identifier: MIT
// The n queens: numbers of solutions as published, and the search trees of a model made of disequalities against a
// forward-checking search of the test's own.
#include <algorithm>
#include <numeric>

#include "golden/forward_checking.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru::test;

class QueensTest : public SolverTest {
 protected:
  static int solutions;
  static std::vector<std::vector<int>> found;

  void SetUp() override {
    SolverTest::SetUp();
    solutions = 0;
    found.clear();
  }

  static void count(CSint **, int) { ++solutions; }
  static void collect(CSint **array, int size) {
    std::vector<int> solution;
    for (int i = 0; i < size; ++i) solution.push_back(cs_getValue(array[i]));
    found.push_back(solution);
  }

  void makeQueens(int n) {
    queens.clear();
    for (int i = 0; i < n; ++i) queens.push_back(cs_createCSint(0, n - 1));
  }

  // Rows and both diagonals all different.
  void postGlobal() {
    for (std::size_t i = 0; i < queens.size(); ++i) {
      rising.push_back(cs_Add(queens[i], CSINT(static_cast<int>(i))));
      falling.push_back(cs_Sub(queens[i], CSINT(static_cast<int>(i))));
    }
    for (auto *array : {&queens, &rising, &falling})
      ASSERT_EQ(cs_AllNeq(array->data(), static_cast<int>(array->size())), 1);
  }

  // Pairwise, by disequalities of shifted variables; returns the same relations for the reference.
  std::vector<Differs> postPairs() {
    std::vector<Differs> differs;
    for (std::size_t i = 0; i < queens.size(); ++i) {
      for (std::size_t j = i + 1; j < queens.size(); ++j) {
        const int distance = static_cast<int>(j - i);
        for (const int d : {0, distance, -distance}) {
          differs.push_back({i, j, d});
          EXPECT_TRUE(cs_Neq(d == 0 ? queens[i] : cs_Add(queens[i], CSINT(d)), queens[j]));
        }
      }
    }
    return differs;
  }

  ForwardChecking::Domains domains() const {
    ForwardChecking::Domains result(queens.size());
    for (auto &domain : result)
      for (int v = 0; v < static_cast<int>(queens.size()); ++v) domain.insert(v);
    return result;
  }

  int size() const { return static_cast<int>(queens.size()); }

  std::vector<CSint *> queens;
  std::vector<CSint *> rising;
  std::vector<CSint *> falling;
};

int QueensTest::solutions = 0;
std::vector<std::vector<int>> QueensTest::found;

class QueensCountTest : public QueensTest, public ::testing::WithParamInterface<std::pair<int, int>> {};

TEST_P(QueensCountTest, AllSolutionsAreFound) {
  makeQueens(GetParam().first);
  postGlobal();
  EXPECT_TRUE(cs_findAll(queens.data(), size(), cs_findFreeVar, count));
  EXPECT_EQ(solutions, GetParam().second);
}

using Row = std::pair<int, int>;
INSTANTIATE_TEST_SUITE_P(, QueensCountTest,
                         ::testing::Values(Row{4, 2}, Row{5, 10}, Row{6, 4}, Row{7, 40}, Row{8, 92}));
INSTANTIATE_TEST_SUITE_P(Heavy, QueensCountTest, ::testing::Values(Row{9, 352}, Row{10, 724}));

TEST_F(QueensTest, TwoAndThreeQueensHaveNoSolution) {
  for (const int n : {2, 3}) {
    makeQueens(n);
    rising.clear();
    falling.clear();
    postGlobal();
    EXPECT_FALSE(cs_findAll(queens.data(), size(), cs_findFreeVarNbElements, count));
  }
  EXPECT_EQ(solutions, 0);
}

struct TreeRow {
  int n;
  bool fewest;
};

void PrintTo(const TreeRow &row, std::ostream *out) { *out << row.n << (row.fewest ? " fewest" : " first"); }

class QueensTreeTest : public QueensTest, public ::testing::WithParamInterface<TreeRow> {
 protected:
  CSfindFreeVar selection() const { return GetParam().fewest ? cs_findFreeVarNbElements : cs_findFreeVar; }
};

TEST_P(QueensTreeTest, AllSolutionsTakeTheTreeOfForwardChecking) {
  makeQueens(GetParam().n);
  ForwardChecking reference(postPairs(), GetParam().fewest);
  reference.label(domains(), true);
  EXPECT_EQ(cs_findAll(queens.data(), size(), selection(), collect), !reference.solutions.empty());
  EXPECT_EQ(found, reference.solutions);
  EXPECT_EQ(cs_getNbChoicePoints(), reference.choicePoints);
  EXPECT_EQ(cs_getNbFails(), reference.fails);
}

TEST_P(QueensTreeTest, TheFirstSolutionTakesTheTreeOfForwardChecking) {
  makeQueens(GetParam().n);
  ForwardChecking reference(postPairs(), GetParam().fewest);
  EXPECT_EQ(cs_search(queens.data(), size(), selection()), reference.label(domains(), false));
  EXPECT_EQ(cs_getNbChoicePoints(), reference.choicePoints);
  EXPECT_EQ(cs_getNbFails(), reference.fails);
}

TEST_P(QueensTreeTest, AFailLimitStopsAtThatFail) {
  makeQueens(GetParam().n);
  ForwardChecking reference(postPairs(), GetParam().fewest);
  reference.label(domains(), false);
  if (reference.fails == 0) return;
  const int limit = (reference.fails + 1) / 2;
  EXPECT_FALSE(cs_searchFail(queens.data(), size(), selection(), limit));
  EXPECT_EQ(cs_getNbFails(), limit);
  EXPECT_LT(cs_getNbChoicePoints(), reference.choicePoints);
}

INSTANTIATE_TEST_SUITE_P(, QueensTreeTest,
                         ::testing::Values(TreeRow{3, false}, TreeRow{4, false}, TreeRow{5, false}, TreeRow{6, false},
                                           TreeRow{6, true}, TreeRow{7, true}));

}  // namespace
