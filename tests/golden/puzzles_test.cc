// SPDX-License-Identifier: MIT
// Known puzzles with known answers: the pigeon hole, sudokus, send + more = money.
#include <algorithm>
#include <numeric>
#include <string>

#include "golden/forward_checking.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru::test;

class PuzzleTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    found.clear();
  }
  static void collect(CSint **array, int size) {
    std::vector<int> solution;
    for (int i = 0; i < size; ++i) solution.push_back(cs_getValue(array[i]));
    found.push_back(solution);
  }
  static inline std::vector<std::vector<int>> found;
};

TEST_F(PuzzleTest, MorePigeonsThanHolesFailAtPostingAllDifferent) {
  for (int holes = 1; holes <= 8; ++holes) {
    CSint **pigeons = cs_createCSintArray(holes + 1, 1, holes);
    EXPECT_EQ(cs_AllNeq(pigeons, holes + 1), 0);
  }
}

// With disequalities only the search finds out, in exactly the tree of forward checking.
TEST_F(PuzzleTest, MorePigeonsThanHolesTakeTheTreeOfForwardChecking) {
  for (int holes = 1; holes <= 6; ++holes) {
    const auto n = static_cast<std::size_t>(holes + 1);
    CSint **pigeons = cs_createCSintArray(holes + 1, 1, holes);
    std::vector<Differs> differs;
    bool consistent = true;
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = i + 1; j < n; ++j) {
        differs.push_back({i, j, 0});
        consistent = cs_Neq(pigeons[i], pigeons[j]) && consistent;
      }
    EXPECT_EQ(consistent, holes > 1);
    if (!consistent) continue;
    ForwardChecking reference(differs, false);
    ForwardChecking::Domains domains(n);
    for (auto &domain : domains)
      for (int v = 1; v <= holes; ++v) domain.insert(v);
    EXPECT_FALSE(reference.label(domains, false));
    EXPECT_FALSE(cs_search(pigeons, holes + 1, cs_findFreeVar));
    EXPECT_EQ(cs_getNbChoicePoints(), reference.choicePoints);
    EXPECT_EQ(cs_getNbFails(), reference.fails);
  }
}

TEST_F(PuzzleTest, AsManyPigeonsAsHolesGiveEveryPermutation) {
  CSint **pigeons = cs_createCSintArray(5, 1, 5);
  ASSERT_EQ(cs_AllNeq(pigeons, 5), 1);
  EXPECT_TRUE(cs_findAll(pigeons, 5, cs_findFreeVar, collect));
  std::vector<int> permutation{1, 2, 3, 4, 5};
  for (const auto &solution : found) {
    EXPECT_EQ(solution, permutation);
    std::ranges::next_permutation(permutation);
  }
  EXPECT_EQ(found.size(), 120U);
}

class SudokuTest : public PuzzleTest, public ::testing::WithParamInterface<std::string> {
 protected:
  // Cell `k` of the given unit: rows, columns and boxes, nine of each.
  static std::size_t cellOf(std::size_t unit, std::size_t k) {
    const std::size_t i = unit % 9;
    if (unit < 9) return i * 9 + k;
    if (unit < 18) return k * 9 + i;
    return (i / 3 * 3 + k / 3) * 9 + i % 3 * 3 + k % 3;
  }
};

TEST_P(SudokuTest, HasExactlyOneSolutionWhichIsRight) {
  std::vector<CSint *> cells;
  for (const char given : GetParam()) cells.push_back(given == '.' ? cs_createCSint(1, 9) : CSINT(given - '0'));
  ASSERT_EQ(cells.size(), 81U);
  std::vector<std::vector<CSint *>> units(27);
  for (std::size_t unit = 0; unit < 27; ++unit) {
    for (std::size_t k = 0; k < 9; ++k) units[unit].push_back(cells[cellOf(unit, k)]);
    ASSERT_EQ(cs_AllNeq(units[unit].data(), 9), 1);
  }
  EXPECT_TRUE(cs_findAll(cells.data(), 81, cs_findFreeVarNbElements, collect));
  ASSERT_EQ(found.size(), 1U);
  for (std::size_t i = 0; i < 81; ++i) {
    if (GetParam()[i] != '.') {
      EXPECT_EQ(found[0][i], GetParam()[i] - '0');
    }
  }
  for (std::size_t unit = 0; unit < 27; ++unit) {
    std::set<int> digits;
    for (std::size_t k = 0; k < 9; ++k) digits.insert(found[0][cellOf(unit, k)]);
    EXPECT_EQ(digits.size(), 9U);
  }
}

INSTANTIATE_TEST_SUITE_P(
    , SudokuTest,
    ::testing::Values("53..7....6..195....98....6.8...6...34..8.3..17...2...6.6....28....419..5....8..79",
                      "..3.2.6..9..3.5..1..18.64....81.29..7.......8..67.82....26.95..8..2.3..9..5.1.3..",
                      "4.....8.5.3..........7......2.....6.....8.4......1.......6.3.7.5..2.....1.4......"));

// One sum per side; the letters are s, e, n, d, m, o, r, y.
TEST_F(PuzzleTest, SendMoreMoneyHasOneSolution) {
  CSint **letters = cs_createCSintArray(8, 0, 9);
  ASSERT_EQ(cs_AllNeq(letters, 8), 1);
  ASSERT_TRUE(cs_NEQ(letters[0], 0) && cs_NEQ(letters[4], 0));
  // A number as the sum of its digits, each added to ten times the number before it.
  const auto number = [&](const std::vector<int> &digits) {
    CSint *value = CSINT(0);
    for (const int digit : digits) {
      CSint *twice = cs_Add(value, value);
      CSint *eightTimes = cs_Add(cs_Add(twice, twice), cs_Add(twice, twice));
      value = cs_VAdd(3, eightTimes, twice, letters[digit]);
    }
    return value;
  };
  CSint *sum = cs_Add(number({0, 1, 2, 3}), number({4, 5, 6, 1}));
  ASSERT_TRUE(cs_Eq(sum, number({4, 5, 2, 1, 7})));
  EXPECT_TRUE(cs_findAll(letters, 8, cs_findFreeVar, collect));
  EXPECT_EQ(found, (std::vector<std::vector<int>>{{9, 5, 6, 7, 1, 0, 8, 2}}));
}

// A magic square of order 3: eight solutions, all the one square turned and mirrored.
TEST_F(PuzzleTest, TheMagicSquareOfOrderThreeHasEightForms) {
  CSint **x = cs_createCSintArray(9, 1, 9);
  ASSERT_EQ(cs_AllNeq(x, 9), 1);
  constexpr int kLines[8][3] = {{0, 1, 2}, {3, 4, 5}, {6, 7, 8}, {0, 3, 6}, {1, 4, 7}, {2, 5, 8}, {0, 4, 8}, {2, 4, 6}};
  for (const auto &line : kLines) ASSERT_TRUE(cs_EQ(cs_VAdd(3, x[line[0]], x[line[1]], x[line[2]]), 15));
  EXPECT_TRUE(cs_findAll(x, 9, cs_findFreeVarNbElementsMin, collect));
  EXPECT_EQ(found.size(), 8U);
  for (const auto &solution : found) EXPECT_EQ(solution[4], 5);
}

}  // namespace
