// SPDX-License-Identifier: MIT
// Automata: the values of a word, and the states that are left inside the constraint.
#include <set>

#include "semantic/cases.h"
#include "support/constraints/automaton.h"
#include "support/kit/probe.h"

namespace koru::test::brute {
namespace {

using States = std::set<int>;

// The states that lie on an accepted word made of the values left, layer by layer, the first one being the start.
std::vector<States> statesOnWords(const TestAutomaton &automaton, const std::vector<std::vector<int>> &domains) {
  std::vector<States> layers(domains.size() + 1);
  forEachTuple(domains, [&](const Tuple &word) {
    if (!automaton.accepts(word)) return;
    int q = automaton.start;
    layers[0].insert(q);
    for (std::size_t k = 0; k < word.size(); ++k) {
      q = automaton.step(q, word[k]);
      layers[k + 1].insert(q);
    }
  });
  return layers;
}

// The private variables of the layers are found where the trail says that something was attached.
using Layers = std::vector<CSint *>;

Layers layersSince(int mark, int n) {
  Layers layers;
  for (const CSint *v : attachOrder(mark)) layers.push_back(const_cast<CSint *>(v));
  if (!layers.empty()) layers.erase(layers.begin(), layers.begin() + n);
  return layers;
}

std::string wrongStates(const TestAutomaton &automaton, const Layers &layers, const Left &left) {
  std::vector<std::vector<int>> domains;
  for (std::size_t i = 0; i < left.columns(); ++i) domains.push_back(left.values(i));
  const std::vector<States> wanted = statesOnWords(automaton, domains);
  for (std::size_t k = 0; k < layers.size(); ++k) {
    const std::vector<int> live = koru::test::values(layers[k]);
    if (States(live.begin(), live.end()) != wanted[k + 1]) return "wrong states in layer " + std::to_string(k + 1);
  }
  return "";
}

Constraint regular(const TestAutomaton &automaton, int n) {
  return stated("cs_Regular", {n, static_cast<int>(automaton.finals.size())},
                {automaton.states, automaton.symbols, automaton.start},
                {{automaton.table.begin(), automaton.table.end()}, {automaton.finals.begin(), automaton.finals.end()}});
}

Constraint regularWithStates(const TestAutomaton &automaton, int n) {
  const auto layers = std::make_shared<Layers>();
  Constraint c = regular(automaton, n);
  c.post = [=, post = c.post](CSint **x, CSint *&result) {
    const int mark = solver::trail.count();
    const bool posted = post(x, result);
    *layers = layersSince(mark, n);
    return posted;
  };
  c.inside = [=](const Left &left) { return wrongStates(automaton, *layers, left); };
  return c;
}

// Every automaton of up to two states and two symbols, over words of each length in turn.
Case smallAutomata() {
  Case c{"RegularOfSmallAutomata", {"cs_Regular"}, {}, {{-1, 4}}, 2};
  int length = 0;
  for (const int states : {1, 2})
    for (const int symbols : {1, 2})
      forEachAutomaton(states, symbols, [&](const TestAutomaton &automaton) {
        c.forms.push_back(regular(automaton, 1 + length++ % 4));
      });
  return c;
}

Case randomAutomata() {
  Case c{"Regular", {"cs_Regular"}, {}, {{-1, 5}}, 12};
  std::mt19937 random(1);
  for (int i = 0; i < 60; ++i) {
    const int symbols = 1 + static_cast<int>(random() % 4);
    const TestAutomaton automaton = randomAutomaton(random, 1 + static_cast<int>(random() % 5), symbols);
    c.forms.push_back(regularWithStates(automaton, 1 + i % 4));
  }
  return c;
}

Case longerWords() {
  Case c{"RegularOfLongerWords", {"cs_Regular"}, {}, {{-1, 4}}, 40, {1, 2, 2}, {{0, 1, 2, 3, 4}}};
  std::mt19937 random(2);
  for (int i = 0; i < 12; ++i) c.forms.push_back(regularWithStates(randomAutomaton(random, 2 + i % 4, 2 + i % 2), 5));
  return c;
}

}  // namespace

Cases automatonCases() { return {smallAutomata(), randomAutomata(), longerWords()}; }

}  // namespace koru::test::brute
