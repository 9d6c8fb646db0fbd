// SPDX-License-Identifier: MIT
// How many states of each case the quick tests must see at least: some two thirds of what they do see, so that a case
// that has quietly become smaller is noticed.
#pragma once

#include <string_view>

namespace koru::test::brute {

struct LeastStates {
  const char *name;
  long states;
};

inline constexpr LeastStates kLeastStates[] = {
    {"EQofAnInt", 1500},
    {"NEQofAnInt", 8400},
    {"LEofAnInt", 6000},
    {"LTofAnInt", 4800},
    {"GEofAnInt", 4800},
    {"GTofAnInt", 3700},
    {"Eq", 71000},
    {"Neq", 120000},
    {"Le", 120000},
    {"Lt", 81000},
    {"Ge", 110000},
    {"Gt", 78000},
    {"IfEq", 89000},
    {"IfNeq", 97000},
    {"InArray", 43000},
    {"NotInArray", 46000},
    {"InInterval", 22000},
    {"NotInInterval", 55000},
    {"Add", 90000},
    {"Sub", 89000},
    {"Abs", 510000},
    {"Mul", 58000},
    {"VMul", 160000},
    {"Div", 78000},
    {"VDiv", 77000},
    {"ArithmeticNested", 38000},
    {"VAdd", 360000},
    {"VSub", 340000},
    {"Sigma", 360000},
    {"ScalProd", 740000},
    {"VScalProd", 95000},
    {"ReifEq", 50000},
    {"ReifNeq", 51000},
    {"ReifLt", 51000},
    {"ReifLe", 50000},
    {"ReifGt", 51000},
    {"ReifGe", 50000},
    {"ReifEQofAnInt", 260000},
    {"ReifNEQofAnInt", 260000},
    {"ReifLTofAnInt", 250000},
    {"ReifLEofAnInt", 250000},
    {"ReifGTofAnInt", 250000},
    {"ReifGEofAnInt", 250000},
    {"ReifNested", 31000},
    {"AllNeq", 110000},
    {"Occur", 190000},
    {"OccurConstraints", 240000},
    {"OccurDomain", 200000},
    {"Min", 280000},
    {"VMin", 280000},
    {"Max", 290000},
    {"VMax", 290000},
    {"VarElementOnTheWayDown", 10000},
    {"Element", 270000},
    {"ElementOfALongTable", 170000},
    {"ElementsThatAgree", 19000},
    {"Index", 150000},
    {"VarElement", 260000},
    {"VarElementRange", 260000},
    {"RegularOfSmallAutomata", 45000},
    {"Regular", 100000},
    {"RegularOfLongerWords", 9300},
    {"CumulativeOfOneTask", 360000},
    {"Cumulative", 62000},
    {"CumulativeOfThreeTasks", 98000},
    {"DisjunctiveOfTwoTasks", 73000},
    {"Disjunctive", 110000},
    {"NoGoodSet", 88000},
    {"EventAllKnown", 230000},
    {"EventKnown", 170000},
    {"EventNewMinNewMax", 31000},
    {"EventNeq", 19000},
    {"EventConflict", 11000},
};

// 0 for a name that is not in the table.
inline long leastStates(std::string_view name) {
  for (const LeastStates &row : kLeastStates)
    if (name == row.name) return row.states;
  return 0;
}

}  // namespace koru::test::brute
