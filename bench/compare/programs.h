// SPDX-License-Identifier: MIT
// The fixed set of short programs by which two builds of Koru are compared: a few million to some ten million
// instructions each. Changing one makes its recorded count (instructions.txt) void.
#pragma once

#include <functional>

#include "models.h"

namespace koru::bench {

using Run = std::function<Outcome()>;

struct Program {
  const char *name;
  Run (*prepare)();  // makes the data, which is not measured
};

template <auto run>
Run ready() {
  return run;
}

template <auto make, std::size_t count, auto search>
Run grids() {
  Random random(1);
  return [made = make(random, count)] { return completeGrids<search>(made); };
}

inline Run pack() {
  return [items = Items(16, 3)] { return knapsack(items); };
}

inline Run pairs() {
  Random random(1);
  return [made = differentPairs(random, kPairVariables, 100000)] { return postPairs(made); };
}

inline constexpr Program kPrograms[] = {
    {"queens_all 9", ready<queensAll<9>>},
    {"queens_first 60", ready<queensFirst<60>>},
    {"queens_neq 8", ready<queensNeq<8>>},
    {"pigeon 8", ready<pigeon<8>>},
    {"sudoku 9x9", grids<uniqueSudokus, 6, findAll>},
    {"sudoku 16x16", grids<largeSudokus, 1, findFirst>},
    {"qwh 20/150", grids<latinSquares, 1, findFirst>},
    {"langford 3,8", ready<langford<3, 8>>},
    {"magic_square 5", ready<magicSquare<5, findFirst>>},
    {"golomb 8", ready<golomb<8>>},
    {"all_interval 9", ready<allInterval<9>>},
    {"knapsack 16x3", pack},
    {"assign 10", ready<assignment<10>>},
    {"magic_seq 50", ready<magicSequence<50>>},
    {"send+more x 200", ready<sendMoreMoney<200>>},
    {"sum 100", ready<bindTerms<100, 30, plainSum>>},
    {"scalprod 100", ready<bindTerms<100, 30, weightedSum>>},
    {"chain 1000 x 50", ready<chain<1000, 50>>},
    {"ladder 1000 x 50", ready<ladder<1000, 50>>},
    {"regular posting", ready<postAutomaton<100, 100, 20>>},
    {"regular cascade", ready<cascade<40, 40, 10, 2>>},
    {"nonogram x 10", ready<nonograms<12, 10>>},
    {"job shop 5x3", ready<jobShop<5, 3>>},
    {"cumulative 10", ready<cumulative<10, 200>>},
    {"cumulative 60", ready<cumulative<60, 10>>},
    {"post 10^5", pairs},
};

}  // namespace koru::bench
