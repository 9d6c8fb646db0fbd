// SPDX-License-Identifier: MIT
// Automata for the tests of cs_Regular: written down, enumerated or drawn at random, and run over a word directly.
#pragma once

#include <algorithm>
#include <ostream>
#include <random>
#include <span>
#include <vector>

#include "koru.h"

namespace koru::test {

struct TestAutomaton {
  int states = 0;
  int symbols = 0;
  int start = 0;
  std::vector<int> table;
  std::vector<int> finals;

  int step(int q, int a) const {
    if (a < 0 || a >= symbols) return -1;
    const int target = table[static_cast<std::size_t>(q * symbols + a)];
    return target >= 0 && target < states ? target : -1;
  }

  bool accepts(std::span<const int> word) const {
    int q = start;
    for (const int a : word)
      if (q >= 0) q = step(q, a);
    return std::ranges::find(finals, q) != finals.end() && q >= 0;
  }

  int post(CSint **vars, int n) const {
    return cs_Regular(vars, n, table.data(), states, symbols, start, finals.data(), static_cast<int>(finals.size()));
  }
};

inline void PrintTo(const TestAutomaton &automaton, std::ostream *out) {
  *out << automaton.states << " states, " << automaton.symbols << " symbols, start " << automaton.start << ", table";
  for (const int target : automaton.table) *out << " " << target;
  *out << ", finals";
  for (const int q : automaton.finals) *out << " " << q;
}

// Calls visit with every automaton of that size: each transition absent or to a state, each start, each set of finals.
template <class Visit>
void forEachAutomaton(int states, int symbols, Visit visit) {
  int tables = 1;
  for (int i = 0; i < states * symbols; ++i) tables *= states + 1;
  for (int code = 0; code < tables; ++code) {
    TestAutomaton automaton{states, symbols, 0, {}, {}};
    for (int i = 0, rest = code; i < states * symbols; ++i, rest /= states + 1)
      automaton.table.push_back(rest % (states + 1) - 1);
    for (automaton.start = 0; automaton.start < states; ++automaton.start) {
      for (int set = 1; set < 1 << states; ++set) {
        automaton.finals.clear();
        for (int q = 0; q < states; ++q)
          if ((set >> q & 1) != 0) automaton.finals.push_back(q);
        visit(automaton);
      }
    }
  }
}

// An eighth of the transitions leads nowhere, in different ways; some finals are no states.
inline TestAutomaton randomAutomaton(std::mt19937 &random, int states, int symbols) {
  constexpr int kNowhere[] = {-1, -7, 1000};
  const auto draw = [&](int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); };
  TestAutomaton automaton{states, symbols, draw(states), {}, {}};
  for (int i = 0; i < states * symbols; ++i) automaton.table.push_back(draw(8) == 0 ? kNowhere[draw(3)] : draw(states));
  for (int i = 0; i < 1 + states / 2; ++i) automaton.finals.push_back(draw(states + 1));
  automaton.finals.push_back(draw(states));
  return automaton;
}

}  // namespace koru::test
