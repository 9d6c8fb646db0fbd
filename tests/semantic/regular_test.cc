// SPDX-License-Identifier: MIT
// cs_Regular against enumeration, and its domain consistency at every node of searches.
#include "support/brute_consistency.h"
#include "support/brute_probe.h"
#include "support/regular_automaton.h"

namespace {

using namespace koru::test;
using namespace koru::test::brute;

Constraint regular(const TestAutomaton &automaton, int n) {
  return relation(
      "cs_Regular " + ::testing::PrintToString(automaton),
      [automaton](std::span<const int> t) { return automaton.accepts(t); },
      [automaton, n](CSint **x) { return automaton.post(x, n) == 1; });
}

// Every automaton of up to two states and two symbols over words of length n; domains reach over the alphabet.
void checkSmallAutomata(int n) {
  unsigned seed = 0;
  std::mt19937 random(static_cast<unsigned>(n));
  for (const int states : {1, 2})
    for (const int symbols : {1, 2})
      forEachAutomaton(states, symbols, [&](const TestAutomaton &automaton) {
        if (::testing::Test::HasFailure()) return;
        std::vector<Domain> domains(static_cast<std::size_t>(n), Domain{range(0, symbols - 1), Making::kExact});
        if (++seed % 2 == 0) domains[seed / 2 % domains.size()] = randomDomain(random, -1, symbols + 2);
        holds({regular(automaton, n), domains, distinctPositions(n), 1, 2, seed});
      });
}

TEST(RegularSemantics, SmallAutomataOverWordsOfOneSymbolAgreeWithEnumeration) { checkSmallAutomata(1); }
TEST(RegularSemantics, SmallAutomataOverWordsOfTwoSymbolsAgreeWithEnumeration) { checkSmallAutomata(2); }
TEST(RegularSemantics, SmallAutomataOverWordsOfThreeSymbolsAgreeWithEnumeration) { checkSmallAutomata(3); }
TEST(RegularSemantics, SmallAutomataOverWordsOfFourSymbolsAgreeWithEnumeration) { checkSmallAutomata(4); }

// A set of values that reaches over the alphabet, or all symbols.
Domain randomSymbols(std::mt19937 &random, int symbols) {
  const Domain domain = randomDomain(random, -1, symbols + 2);
  return random() % 2 == 0 ? domain : Domain{range(0, symbols - 1), Making::kExact};
}

// Position by position the variable that stands there.
void checkRandomAutomata(const std::vector<int> &positions, int cases, unsigned seed) {
  std::mt19937 random(seed);
  const int count = 1 + *std::ranges::max_element(positions);
  for (int i = 0; i < cases; ++i) {
    const int symbols = 1 + static_cast<int>(random() % 4);
    const TestAutomaton automaton = randomAutomaton(random, 1 + static_cast<int>(random() % 5), symbols);
    std::vector<Domain> domains;
    for (int k = 0; k < count; ++k) domains.push_back(randomSymbols(random, symbols));
    if (!holds({regular(automaton, static_cast<int>(positions.size())), domains, positions, 1, 6, seed})) return;
  }
}

TEST(RegularSemantics, RandomAutomataAgreeWithEnumeration) {
  checkRandomAutomata({0}, 40, 1);
  checkRandomAutomata({0, 1, 2}, 100, 2);
  checkRandomAutomata({0, 1, 2, 3}, 30, 3);
}

TEST(RegularSemantics, RandomAutomataOverRepeatedVariablesAgreeWithEnumeration) {
  checkRandomAutomata({0, 0}, 60, 4);
  checkRandomAutomata({0, 1, 0}, 60, 5);
  checkRandomAutomata({0, 1, 1, 0}, 60, 6);
  checkRandomAutomata({0, 0, 0}, 60, 7);
}

// ----- consistency

// The states that lie on an accepted word made of the values left, layer by layer.
std::vector<std::set<int>> statesOnWords(const TestAutomaton &automaton, const std::vector<CSint *> &vars) {
  std::vector<std::vector<int>> domains;
  for (CSint *v : vars) domains.push_back(values(v));
  std::vector<std::set<int>> layers(vars.size() + 1);
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

// One automaton over n variables. Layers are found where the trail says that something was attached.
class Instance {
 public:
  Instance(unsigned seed, int n) : random_(seed) {
    cs_init();
    const int symbols = 2 + static_cast<int>(random_() % 3);
    automaton = randomAutomaton(random_, 2 + static_cast<int>(random_() % 4), symbols);
    for (int i = 0; i < n; ++i) variables.push_back(create(randomSymbols(random_, symbols)));
    posted = automaton.post(variables.data(), n) == 1;
    if (!posted) return;
    for (const CSint *v : attachOrder(0)) layers_.push_back(const_cast<CSint *>(v));
    layers_.erase(layers_.begin(), layers_.begin() + n);
  }
  ~Instance() { cs_end(); }
  Instance(const Instance &) = delete;
  Instance &operator=(const Instance &) = delete;

  void expectConsistent() const {
    const Relation accepted = [&](std::span<const int> word) { return automaton.accepts(word); };
    EXPECT_EQ(unsupported(variables, accepted), Unsupported{});
    const auto expected = statesOnWords(automaton, variables);
    for (std::size_t k = 0; k < layers_.size(); ++k) {
      const std::vector<int> live = values(layers_[k]);
      EXPECT_EQ(std::set<int>(live.begin(), live.end()), expected[k + 1]) << "layer " << k + 1;
    }
  }

  TestAutomaton automaton;
  std::vector<CSint *> variables;
  bool posted;

 private:
  std::mt19937 random_;
  std::vector<CSint *> layers_;
};

// The number of nodes looked at.
int checkNodes(unsigned first, unsigned last, int changes) {
  int nodes = 0;
  for (unsigned seed = first; seed <= last && !::testing::Test::HasFailure(); ++seed) {
    const Instance instance(seed, 1 + static_cast<int>(seed % 5));
    if (!instance.posted) continue;
    Nodes(seed, changes).visit(instance.variables, [&] {
      instance.expectConsistent();
      ASSERT_FALSE(::testing::Test::HasFailure()) << "seed " << seed;
      ++nodes;
    });
  }
  return nodes;
}

TEST(RegularConsistency, ValuesAndStatesLeftAreThoseOfAcceptedWordsAtEveryNode) {
  EXPECT_GT(checkNodes(1, 300, 1), 5000);
}

// Of several changes of one variable, the events of the first are stale when they are heard.
TEST(RegularConsistency, NothingIsMissedWhenSeveralChangesAreHeardTogether) {
  EXPECT_GT(checkNodes(301, 600, 2) + checkNodes(601, 900, 4), 500);
}

TEST(RegularConsistency, HeavyValuesAndStatesLeftAreThoseOfAcceptedWordsAtEveryNode) {
  EXPECT_GT(checkNodes(1001, 4000, 1), 50000);
}

}  // namespace
