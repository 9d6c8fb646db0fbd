// SPDX-License-Identifier: MIT
// Benchmark problems of values that are to be taken a number of times, and of bins, as programs for Koru.
#pragma once

#include <cstddef>
#include <numeric>
#include <vector>

#include "instances_counting.h"
#include "koru_extras.h"
#include "run.h"

namespace koru::bench {

using PostCardinality = bool (*)(CSint **, int, const int *, CSint **, int, bool);

inline bool postScope(PostCardinality post, Array &x, const Cardinalities::Scope &scope) {
  const auto m = static_cast<int>(scope.least.size());
  Array vars;
  Array counts;
  std::vector<int> numbers(static_cast<std::size_t>(m));
  std::iota(numbers.begin(), numbers.end(), 0);
  for (const int i : scope.variables) vars.push_back(x[static_cast<std::size_t>(i)]);
  for (std::size_t j = 0; j < numbers.size(); ++j) counts.push_back(cs_createCSint(scope.least[j], scope.most[j]));
  return post(vars.data(), static_cast<int>(vars.size()), numbers.data(), counts.data(), m, true);
}

template <PostCardinality post, const Cardinalities::Sizes &sizes, int seeds>
Outcome cardinalities() {
  Outcome outcome;
  for (int seed = 1; seed <= seeds; ++seed) {
    const Cardinalities instance(sizes, seed);
    Lifetime lifetime;
    Array &x = lifetime.array();
    for (const std::vector<int> &domain : instance.domains)
      x.push_back(cs_createCSintFromDomain(domain.data(), static_cast<int>(domain.size())));
    for (const Cardinalities::Scope &scope : instance.scopes)
      if (!postScope(post, x, scope)) return {};
    findFirst(outcome, x, cs_findFreeVarNbElements);
  }
  return outcome;
}

template <int items, int bins, int capacity, int seeds>
Outcome binPacking() {
  Outcome outcome;
  for (int seed = 1; seed <= seeds; ++seed) {
    const std::vector<int> sizes = itemSizes(items, 20, 50, seed);
    Lifetime lifetime;
    Array &x = lifetime.array(items, 0, bins - 1);
    Array &loads = lifetime.array(bins, 0, capacity);
    if (cs_BinPacking(x.data(), sizes.data(), items, loads.data(), bins)) {
      findFirst(outcome, x, cs_findFreeVar);
    } else {  // refuted without a search, which the peer counts as a fail and no node, not even the root
      --outcome.choicePoints;
      ++outcome.fails;
    }
  }
  return outcome;
}

}  // namespace koru::bench
