// SPDX-License-Identifier: MIT
// Benchmark problems that rest on sums and scalar products, as programs for Koru.
#pragma once

#include <cstddef>

#include "instances.h"
#include "run.h"

namespace koru::bench {

// ----- magic squares

// Step `step` from cell `first` on: a row, a column or a diagonal.
inline bool postLine(Lifetime &lifetime, const Array &cells, int n, int first, int step) {
  Array &line = lifetime.array();
  for (int i = 0; i < n; ++i) line.push_back(cells[static_cast<std::size_t>(first + i * step)]);
  return cs_EQ(cs_Sigma(line.data(), n), n * (n * n + 1) / 2);
}

inline bool postLines(Lifetime &lifetime, const Array &cells, int n) {
  for (int i = 0; i < n; ++i)
    if (!postLine(lifetime, cells, n, i * n, 1)) return false;
  for (int i = 0; i < n; ++i)
    if (!postLine(lifetime, cells, n, i, n)) return false;
  return postLine(lifetime, cells, n, 0, n + 1) && postLine(lifetime, cells, n, n - 1, n - 1);
}

// One of the eight squares that turning and reflecting makes of one.
inline bool orderCorners(const Array &cells, std::size_t n) {
  CSint *topRight = cells[n - 1];
  CSint *bottomLeft = cells[n * n - n];
  return cs_Lt(cells[0], topRight) && cs_Lt(topRight, bottomLeft) && cs_Lt(cells[0], cells[n * n - 1]);
}

template <int n, auto search>
Outcome magicSquare() {
  Lifetime lifetime;
  Outcome outcome;
  Array &cells = lifetime.array(n * n, 1, n * n);
  if (allNeq(cells) && postLines(lifetime, cells, n) && orderCorners(cells, n)) search(outcome, cells, cs_findFreeVar);
  return outcome;
}

// ----- knapsack: variable i is 0 when item i is taken, which is tried first

// capacity >= total weight - weight of what is left out
inline bool postCapacities(Array &leftOut, Items &items) {
  for (std::vector<int> &row : items.negatedWeights) {
    int total = 0;
    for (const int weight : row) total -= weight;
    if (!cs_LE(cs_ScalProd(leftOut.data(), row.data(), static_cast<int>(row.size())), total / 2 - total)) return false;
  }
  return true;
}

inline Outcome knapsack(Items items) {
  const int count = static_cast<int>(items.profits.size());
  Lifetime lifetime;
  Outcome outcome;
  Array &leftOut = lifetime.array(count, 0, 1);
  if (postCapacities(leftOut, items))
    minimize(outcome, leftOut, cs_findFreeVar, cs_ScalProd(leftOut.data(), items.profits.data(), count));
  return outcome;
}

inline Outcome knapsackOf25() { return knapsack(instances().items); }

// ----- a sum of variables 0..1 that are bound one by one: nothing but its events

using MakeSum = CSint *(*)(Array &x, std::vector<int> &coefficients);

inline CSint *plainSum(Array &x, std::vector<int> &) { return cs_Sigma(x.data(), static_cast<int>(x.size())); }
inline CSint *weightedSum(Array &x, std::vector<int> &coefficients) {
  return cs_ScalProd(x.data(), coefficients.data(), static_cast<int>(x.size()));
}

template <int terms, int times, MakeSum makeSum>
Outcome bindTerms() {
  Sum sum(terms);
  Lifetime lifetime;
  Outcome outcome;
  Array &x = lifetime.array(terms, 0, 1);
  if (makeSum(x, sum.coefficients) == nullptr) return outcome;
  for (int k = 0; k < times; ++k) {
    cs_saveContext();
    for (std::size_t i = 0; i < x.size(); ++i)
      if (!cs_EQ(x[i], sum.values[i])) return Outcome{};
    cs_restoreContext();
    outcome.units += terms;
  }
  return outcome;
}

// ----- SEND + MORE = MONEY in one scalar product, posted, solved and undone again and again

inline bool postSendMoreMoney(Array &letters) {
  static int coefficients[] = {1000, 91, -90, 1, -9000, -900, 10, -1};  // S E N D M O R Y
  return cs_EQ(cs_ScalProd(letters.data(), coefficients, 8), 0) && allNeq(letters) && cs_GE(letters[0], 1) &&
         cs_GE(letters[4], 1);
}

template <int times>
Outcome sendMoreMoney() {
  Lifetime lifetime;
  Outcome outcome;
  Array &letters = lifetime.array(8, 0, 9);
  for (int i = 0; i < times; ++i) {
    cs_saveContext();
    if (!postSendMoreMoney(letters)) return Outcome{};
    findAll(outcome, letters, cs_findFreeVar);
    cs_restoreContext();
  }
  return outcome;
}

}  // namespace koru::bench
