// SPDX-License-Identifier: MIT
// cs_Regular over automata of up to hundreds of states, on both sides of a word of them, against reachability, computed
// anew after each change.
#include <vector>

#include "koru.h"
#include "support/kit/instrumented.h"
#include "support/kit/random.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

struct Automaton {
  int states;
  int symbols;
  std::vector<int> table;
  std::vector<int> finals;

  Automaton(Random &random, int stateCount, int symbolCount, int transitionShare)
      : states(stateCount), symbols(symbolCount) {
    for (int i = 0; i < states * symbols; ++i)
      table.push_back(random.chance(transitionShare) ? random.below(states) : -1);
    for (int q = 0; q < states; ++q)
      if (random.chance(20)) finals.push_back(q);
  }

  int target(int q, int a) const { return table[static_cast<std::size_t>(q * symbols + a)]; }
};

using Sets = std::vector<std::vector<bool>>;

// The states that the values left lead to, position by position.
Sets reached(const Automaton &automaton, CSint **vars, int n) {
  Sets sets(static_cast<std::size_t>(n + 1), std::vector<bool>(static_cast<std::size_t>(automaton.states)));
  sets[0][0] = true;
  for (std::size_t k = 0; k < static_cast<std::size_t>(n); ++k)
    for (int q = 0; q < automaton.states; ++q)
      for (int a = 0; a < automaton.symbols; ++a) {
        const int t = automaton.target(q, a);
        if (sets[k][static_cast<std::size_t>(q)] && t >= 0 && cs_isIn(vars[k], a))
          sets[k + 1][static_cast<std::size_t>(t)] = true;
      }
  return sets;
}

// Of the values between 0 and symbols - 1 those on an accepted word.
std::vector<std::vector<int>> supported(const Automaton &automaton, CSint **vars, int n) {
  const Sets forward = reached(automaton, vars, n);
  std::vector<bool> accepted(static_cast<std::size_t>(automaton.states));
  for (const int q : automaton.finals) accepted[static_cast<std::size_t>(q)] = true;
  std::vector<std::vector<int>> result(static_cast<std::size_t>(n));
  for (int k = n - 1; k >= 0; --k) {
    std::vector<bool> before(accepted.size());
    for (int a = 0; a < automaton.symbols; ++a) {
      bool found = false;
      for (int q = 0; q < automaton.states; ++q) {
        const int t = automaton.target(q, a);
        if (t < 0 || !accepted[static_cast<std::size_t>(t)] || !cs_isIn(vars[k], a)) continue;
        if (!forward[static_cast<std::size_t>(k)][static_cast<std::size_t>(q)]) continue;
        before[static_cast<std::size_t>(q)] = found = true;
      }
      if (found) result[static_cast<std::size_t>(k)].push_back(a);
    }
    accepted = before;
  }
  return result;
}

using RegularLargeTest = SolverTest;

// Values leave one by one, also by a bound, and come back; some variables have lost one before the posting.
void narrowAndCompare(Random &random, const Automaton &automaton, int n) {
  CSint **vars = cs_createCSintArray(n, 0, automaton.symbols - 1);
  for (int k = 0; k < n; ++k) {
    const int value = random.below(automaton.symbols);
    if (random.chance(30)) cs_NEQ(vars[k], value);
  }
  std::vector<std::vector<int>> wanted = supported(automaton, vars, n);
  const int posted = cs_Regular(vars, n, automaton.table.data(), automaton.states, automaton.symbols, 0,
                                automaton.finals.data(), static_cast<int>(automaton.finals.size()));
  ASSERT_EQ(posted == 1, !wanted[0].empty());
  if (posted == 0) return;
  cs_saveContext();
  for (int step = 0; step < 60; ++step) {
    CSint *v = vars[random.below(n)];
    const int value = random.below(automaton.symbols);
    const int kind = random.below(4);
    const bool consistent = kind == 0 ? cs_LE(v, value) : kind == 1 ? cs_GE(v, value) : cs_NEQ(v, value);
    if (!consistent) {
      cs_restoreAndSaveContext();
      continue;
    }
    wanted = supported(automaton, vars, n);
    for (int k = 0; k < n; ++k) ASSERT_EQ(values(vars[k]), wanted[static_cast<std::size_t>(k)]) << step << " " << k;
  }
  cs_restoreContext();
}

TEST_F(RegularLargeTest, KeepsJustTheValuesOnAcceptedWords) {
  Random random(1);
  for (const int states : {30, 63, 64, 65, 70, 128, 200})
    for (const int symbols : {2, 3, 40})
      for (const int share : {20, 70})
        for (int i = 0; i < rounds(4) && !HasFatalFailure(); ++i) {
          const Automaton automaton(random, states, symbols, symbols < 40 ? share : share / 10);
          narrowAndCompare(random, automaton, 5);
        }
}

}  // namespace
}  // namespace koru::test
