// SPDX-License-Identifier: MIT
// Cardinalities as a Gecode user writes them who wants all solutions: two counts for each value, since the propagator
// for all of them at once misses some. Packing with the propagator that there is.
#include "gecode_problem.h"
#include "models_counting.h"

namespace koru::bench {

namespace {

Problem *makeCardinalities(const Cardinalities &instance, int values) {
  auto *problem = new Problem(static_cast<int>(instance.domains.size()), 0, values - 1);
  const IntVarArray &x = problem->vars;
  for (int i = 0; i < x.size(); ++i)
    Gecode::dom(*problem, x[i], Gecode::IntSet(IntArgs(instance.domains[static_cast<std::size_t>(i)])));
  for (const Cardinalities::Scope &scope : instance.scopes) {
    IntVarArgs vars;
    for (const int i : scope.variables) vars << x[i];
    for (int value = 0; value < values; ++value) {
      const auto j = static_cast<std::size_t>(value);
      Gecode::count(*problem, vars, value, Gecode::IRT_GQ, scope.least[j]);
      Gecode::count(*problem, vars, value, Gecode::IRT_LQ, scope.most[j]);
    }
  }
  problem->smallestFirst(x);
  return problem;
}

template <const Cardinalities::Sizes &sizes, int seeds>
Outcome cardinalitiesOfGecode(const Recomputation &recomputation) {
  Outcome outcome;
  for (int seed = 1; seed <= seeds; ++seed)
    search(outcome, makeCardinalities(Cardinalities(sizes, seed), sizes.values), recomputation, 1);
  return outcome;
}

template <int items, int bins, int capacity, int seeds>
Outcome binPackingOfGecode(const Recomputation &recomputation) {
  Outcome outcome;
  for (int seed = 1; seed <= seeds; ++seed) {
    auto *problem = new Problem(items, 0, bins - 1);
    IntVarArgs loads;
    for (int j = 0; j < bins; ++j) loads << Gecode::IntVar(*problem, 0, capacity);
    Gecode::binpacking(*problem, loads, problem->vars, IntArgs(itemSizes(items, 20, 50, seed)));
    problem->inOrder(problem->vars);
    search(outcome, problem, recomputation, 1);
  }
  return outcome;
}

const PeerModel kPeers[] = {
    {"cardinality 40/8", cardinalitiesOfGecode<kTightScopes, 5>},
    {"cardinality 60/10", cardinalitiesOfGecode<kExactScopes, 3>},
    {"card_domain 40/8", cardinalitiesOfGecode<kTightScopes, 5>},
    {"card_domain 60/10", cardinalitiesOfGecode<kExactScopes, 3>},
    {"bin_packing 40/14", binPackingOfGecode<40, 14, 101, 3>},
};

}  // namespace

std::span<const PeerModel> countingPeers() { return kPeers; }

}  // namespace koru::bench
