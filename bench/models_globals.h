// SPDX-License-Identifier: MIT
// Benchmark problems that rest on element and occurrence constraints, as programs for Koru.
#pragma once

#include <cstddef>
#include <vector>

#include "instances.h"
#include "run.h"

namespace koru::bench {

// ----- assignment: worker i takes job p[i] at the cost of row i

inline Array *postCosts(Lifetime &lifetime, const Array &jobs, const CostMatrix &matrix) {
  Array &costs = lifetime.array();
  for (std::size_t i = 0; i < jobs.size(); ++i)
    costs.push_back(cs_Element(jobs[i], matrix.rows[i].data(), static_cast<int>(jobs.size())));
  return &costs;
}

template <int n>
Outcome assignment() {
  const CostMatrix matrix(n);
  Lifetime lifetime;
  Outcome outcome;
  Array &jobs = lifetime.array(n, 0, n - 1);
  Array *costs = postCosts(lifetime, jobs, matrix);
  CSint *total = cs_Sigma(costs->data(), n);
  if (total != nullptr && allNeq(jobs)) minimize(outcome, jobs, cs_findFreeVar, total);
  return outcome;
}

// ----- magic sequences: x[v] is the number of times v comes in x

inline bool postMagicSequence(Array &x, std::vector<int> &numbers) {
  const auto n = static_cast<int>(x.size());
  for (int v = 0; v < n; ++v)
    if (!cs_OccurConstraints(x[static_cast<std::size_t>(v)], v, x.data(), n)) return false;
  return cs_EQ(cs_Sigma(x.data(), n), n) && cs_EQ(cs_ScalProd(x.data(), numbers.data(), n), n);
}

template <int n>
Outcome magicSequence() {
  std::vector<int> numbers;
  for (int v = 0; v < n; ++v) numbers.push_back(v);
  Lifetime lifetime;
  Outcome outcome;
  Array &x = lifetime.array(n, 0, n - 1);
  if (postMagicSequence(x, numbers)) findFirst(outcome, x, cs_findFreeVar);
  return outcome;
}

}  // namespace koru::bench
