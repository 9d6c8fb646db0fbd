// SPDX-License-Identifier: MIT
// Small host programs that check what they are given, as hosts do: they model, search, print, and take everything back.
// The answer is true only for the right one.
#include <array>
#include <string>

#include "support/kit/written_text.h"
#include "support/memory/scenario.h"

namespace koru::test {

namespace {

// A sum of products with powers of ten.
CSint *word(std::initializer_list<CSint *> letters) {
  CSint *total = nullptr;
  for (CSint *letter : letters)
    total = total == nullptr
                ? letter
                : cs_Add(cs_VAdd(10, total, total, total, total, total, total, total, total, total, total), letter);
  return total;
}

bool sendMoreMoney(Stage &stage) {
  static std::array<CSint *, 8> letters;
  for (CSint *&v : letters)
    if ((v = cs_createNamedCSint(0, 9, "letter")) == nullptr) return false;
  const auto [s, e, n, d, m, o, r, y] = letters;
  if (cs_AllNeq(letters.data(), 8) == 0 || !cs_NEQ(s, 0) || !cs_NEQ(m, 0)) return false;
  CSint *const money = word({m, o, n, e, y});
  if (!cs_Eq(cs_Add(word({s, e, n, d}), word({m, o, r, e})), money)) return false;
  if (!cs_EQ(e, 5)) return false;  // or the search takes longer than all else
  if (!cs_search(letters.data(), 8, cs_findFreeVarNbElements)) return false;
  stage.seen = textOf([&](std::FILE *f) { cs_fprintf(f, "%A, %T\n", letters.data(), 8, money); });
  return cs_getValue(money) == 10652;
}

int found = 0;
void countSolution(CSint **, int) { ++found; }

// v0 != v1 < v2: six solutions, five when memory runs out in the middle.
bool enumeration(Stage &) {
  CSint **v = cs_createCSintArray(3, 0, 2);
  if (v == nullptr) return false;
  cs_setName(v[0], "first");
  if (!cs_Neq(v[0], v[1]) || !cs_Lt(v[1], v[2])) return false;
  cs_backtrack(v[0], 1, [](CSint *, int) {});
  found = 0;
  return cs_findAll(v, 3, cs_findFreeVar, countSolution) && found == 6;
}

// Four by four: rows, columns and blocks.
bool sudoku(Stage &stage) {
  constexpr char kClues[] =
      "1..."
      "..3."
      ".2.."
      "...1";
  CSint **cell = cs_createCSintArray(16, 1, 4);
  if (cell == nullptr) return false;
  for (int i = 0; i < 4; ++i) {
    CSint **groups = cs_createCSintArray(12, 0, 0);
    if (groups == nullptr) return false;
    for (int j = 0; j < 4; ++j) {
      groups[j] = cell[4 * i + j];
      groups[4 + j] = cell[4 * j + i];
      groups[8 + j] = cell[4 * (2 * (i / 2) + j / 2) + 2 * (i % 2) + j % 2];
    }
    for (int group = 0; group < 3; ++group)
      if (cs_AllNeq(groups + 4 * group, 4) == 0) return false;
  }
  for (int i = 0; i < 16; ++i)
    if (kClues[i] != '.' && !cs_EQ(cell[i], kClues[i] - '0')) return false;
  if (!cs_search(cell, 16, cs_findFreeVarNbElements)) return false;
  stage.seen = textOf([&](std::FILE *f) { cs_fprintf(f, "%A\n", cell, 16); });
  return cs_getErr() == CS_ERR_NONE;
}

bool queens(Stage &) {
  constexpr int kQueens = 5;
  CSint **x = cs_createCSintArray(kQueens, 0, kQueens - 1);
  CSint **up = cs_createCSintArray(kQueens, 0, 0);
  CSint **down = cs_createCSintArray(kQueens, 0, 0);
  if (x == nullptr || up == nullptr || down == nullptr) return false;
  for (int i = 0; i < kQueens; ++i) {
    up[i] = cs_Add(x[i], CSINT(i));
    down[i] = cs_Sub(x[i], CSINT(i));
    if (up[i] == nullptr || down[i] == nullptr) return false;
  }
  for (CSint **lines : {x, up, down})
    if (cs_AllNeq(lines, kQueens) == 0) return false;
  found = 0;
  return cs_findAll(x, kQueens, cs_findFreeVarNbElements, countSolution) && found == 10;
}

bool magicSquare(Stage &stage) {
  CSint **x = cs_createCSintArray(9, 1, 9);
  if (x == nullptr || cs_AllNeq(x, 9) == 0) return false;
  constexpr int kLines[][3] = {{0, 1, 2}, {3, 4, 5}, {6, 7, 8}, {0, 3, 6}, {1, 4, 7}, {2, 5, 8}, {0, 4, 8}, {2, 4, 6}};
  for (const auto &[a, b, c] : kLines)
    if (!cs_EQ(cs_VAdd(3, x[a], x[b], x[c]), 15)) return false;
  if (!cs_search(x, 9, cs_findFreeVar)) return false;
  for (int i = 0; i < 9; ++i) stage.seen += std::to_string(cs_getMin(x[i]));
  return true;
}

int best = 0;
void keepCost(CSint **, int, CSint *cost) { best = cs_getMin(cost); }

// Four marks on the shortest ruler: length 6.
bool golomb(Stage &) {
  CSint **mark = cs_createCSintArray(4, 0, 16);
  CSint **gap = cs_createCSintArray(6, 0, 0);
  if (mark == nullptr || gap == nullptr || !cs_EQ(mark[0], 0)) return false;
  int gaps = 0;
  for (int j = 1; j < 4; ++j) {
    if (!cs_Lt(mark[j - 1], mark[j])) return false;
    for (int i = 0; i < j; ++i)
      if (!cs_GE(gap[gaps++] = cs_Sub(mark[j], mark[i]), 1)) return false;
  }
  if (cs_AllNeq(gap, 6) == 0) return false;
  best = 0;
  return cs_minimize(mark, 4, cs_findFreeVar, mark[3], keepCost) && best == 6;
}

// Weights 4, 3, 2, 3 in a knapsack of 7, worth 5, 4, 3, 3: at best 9.
bool knapsack(Stage &) {
  static int weights[] = {4, 3, 2, 3};
  static int worth[] = {-5, -4, -3, -3};
  CSint **taken = cs_createCSintArray(4, 0, 1);
  if (taken == nullptr || !cs_LE(cs_ScalProd(taken, weights, 4), 7)) return false;
  best = 0;
  return cs_minimize(taken, 4, cs_findFreeVar, cs_ScalProd(taken, worth, 4), keepCost) && best == -9;
}

// Three tasks on one machine, and what follows each: done by 9.
bool jobShop(Stage &stage) {
  CSint **start = cs_createCSintArray(3, 0, 9);
  CSint **length = cs_createCSintArray(3, 0, 9);
  CSint **end = cs_createCSintArray(3, 0, 0);
  if (start == nullptr || length == nullptr || end == nullptr) return false;
  constexpr int kLengths[] = {2, 3, 1};
  constexpr int kTails[] = {1, 4, 2};
  for (int i = 0; i < 3; ++i)
    if (!cs_EQ(length[i], kLengths[i]) || (end[i] = cs_Add(start[i], CSINT(kLengths[i] + kTails[i]))) == nullptr)
      return false;
  CSint *makespan = cs_Max(end, 3);
  if (makespan == nullptr || !cs_Disjunctive(start, length, 3)) return false;
  if (!cs_LE(makespan, 7) || !cs_search(start, 3, cs_findFreeVarNbElementsMin)) return false;
  for (int i = 0; i < 3; ++i) stage.seen += std::to_string(cs_getMin(start[i]));
  return true;
}

// A line of a picture: runs of two and one among five cells.
bool nonogramLine(Stage &) {
  constexpr int kTable[] = {0, 1, -1, 2, 3, -1, 3, 4, 4, -1};
  constexpr int kFinals[] = {4};
  CSint **cell = cs_createCSintArray(5, 0, 1);
  if (cell == nullptr || cs_Regular(cell, 5, kTable, 5, 2, 0, kFinals, 1) == 0) return false;
  found = 0;
  return cs_findAll(cell, 5, cs_findFreeVar, countSolution) && found == 3;
}

// x[v] of the five numbers are v: 2, 1, 2, 0, 0.
bool magicSequence(Stage &) {
  constexpr int kLength = 5;
  CSint **x = cs_createCSintArray(kLength, 0, kLength);
  if (x == nullptr) return false;
  for (int v = 0; v < kLength; ++v)
    if (!cs_OccurConstraints(x[v], v, x, kLength)) return false;
  if (!cs_EQ(cs_Sigma(x, kLength), kLength) || !cs_search(x, kLength, cs_findFreeVarNbElements)) return false;
  return cs_getMin(x[0]) == 2 && cs_getMin(x[1]) == 1 && cs_getMin(x[2]) == 2;
}

int threeFails(void *) { return 3; }

// A latin square of order three with two cells given, by restarts that learn.
bool quasigroup(Stage &stage) {
  CSint **cell = cs_createCSintArray(9, 0, 2);
  CSint **columns = cs_createCSintArray(9, 0, 0);
  if (cell == nullptr || columns == nullptr) return false;
  for (int i = 0; i < 9; ++i) columns[i] = cell[3 * (i % 3) + i / 3];
  for (int i = 0; i < 3; ++i)
    if (cs_AllNeq(cell + 3 * i, 3) == 0 || cs_AllNeq(columns + 3 * i, 3) == 0) return false;
  if (!cs_EQ(cell[0], 1) || !cs_EQ(cell[4], 0)) return false;
  CSnoGoodSet *set = cs_createNoGoodSet(cell, 9, nullptr, 4, nullptr, nullptr);
  if (set == nullptr) return false;
  CSvalueSelector *selectors[9];
  for (CSvalueSelector *&each : selectors) each = cs_getValueSelector(CS_SELECT_DESCENDING);
  const auto firstFree = [](CSint **array, int size) {
    for (int i = 0; i < size; ++i)
      if (cs_isFree(array[i])) return i;
    return -1;
  };
  if (!cs_searchValueSelectorRestartNG(cell, selectors, 9, firstFree, threeFails, nullptr, 0, set, nullptr))
    return false;
  for (int i = 0; i < 9; ++i) stage.seen += std::to_string(cs_getMin(cell[i]));
  return true;
}

}  // namespace

void addPrograms(Scenarios &scenarios) {
  scenarios.addLenient("program/send-more-money", sendMoreMoney);
  scenarios.addLenient("program/enumeration", enumeration);
  scenarios.addLenient("program/sudoku", sudoku);
  scenarios.addLenient("program/queens", queens);
  scenarios.addLenient("program/magic-square", magicSquare);
  scenarios.addLenient("program/golomb", golomb);
  scenarios.addLenient("program/knapsack", knapsack);
  scenarios.addLenient("program/job-shop", jobShop);
  scenarios.addLenient("program/nonogram-line", nonogramLine);
  scenarios.addLenient("program/magic-sequence", magicSequence);
  scenarios.addLenient("program/quasigroup", quasigroup);
}

}  // namespace koru::test
