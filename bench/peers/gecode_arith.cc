// SPDX-License-Identifier: MIT
// Sums and scalar products as a Gecode user writes them: bounds-consistent linear equations without a variable for the
// sum, where it is a constant.
#include <gecode/minimodel.hh>

#include "gecode_problem.h"

namespace koru::bench {

namespace {

template <class Index>
IntVarArgs line(const IntVarArray &cells, int n, Index index) {
  IntVarArgs result;
  for (int i = 0; i < n; ++i) result << cells[index(i)];
  return result;
}

template <int n, long long solutions>
Outcome magicSquare(const Recomputation &recomputation) {
  constexpr int kSum = n * (n * n + 1) / 2;
  auto *problem = new Problem(n * n, 1, n * n);
  const IntVarArray &x = problem->vars;
  problem->distinct(x);
  const auto post = [&](auto index) { Gecode::linear(*problem, line(x, n, index), Gecode::IRT_EQ, kSum); };
  for (int k = 0; k < n; ++k) post([k](int i) { return k * n + i; });
  for (int k = 0; k < n; ++k) post([k](int i) { return k + i * n; });
  post([](int i) { return i * (n + 1); });
  post([](int i) { return (i + 1) * (n - 1); });
  Gecode::rel(*problem, x[0], Gecode::IRT_LE, x[n - 1]);
  Gecode::rel(*problem, x[n - 1], Gecode::IRT_LE, x[n * n - n]);
  Gecode::rel(*problem, x[0], Gecode::IRT_LE, x[n * n - 1]);
  problem->inOrder(x);
  Outcome outcome;
  search(outcome, problem, recomputation, solutions);
  return outcome;
}

Outcome sendMoreMoney(const Recomputation &recomputation) {
  Outcome outcome;
  for (int i = 0; i < 10000; ++i) {
    auto *problem = new Problem(8, 0, 9);
    const IntVarArray &x = problem->vars;
    Gecode::linear(*problem, IntArgs({1000, 91, -90, 1, -9000, -900, 10, -1}), x, Gecode::IRT_EQ, 0);
    problem->distinct(x);
    Gecode::rel(*problem, x[0], Gecode::IRT_GQ, 1);
    Gecode::rel(*problem, x[4], Gecode::IRT_GQ, 1);
    problem->inOrder(x);
    search(outcome, problem, recomputation, kAllSolutions);
  }
  return outcome;
}

CostProblem *makeKnapsack() {
  const Items &items = instances().items;
  const int n = static_cast<int>(items.profits.size());
  auto *problem = new CostProblem(n, 0, 1, 100 * n);
  for (const std::vector<int> &row : items.negatedWeights) {
    int total = 0;
    for (const int weight : row) total -= weight;
    Gecode::linear(*problem, IntArgs(row), problem->vars, Gecode::IRT_LQ, total / 2 - total);
  }
  Gecode::linear(*problem, IntArgs(items.profits), problem->vars, Gecode::IRT_EQ, problem->cost);
  problem->inOrder(problem->vars);
  return problem;
}

Outcome knapsack(const Recomputation &recomputation) { return minimizeByRestarts(makeKnapsack, recomputation); }

// Nothing is undone here: every round is a new space, and posting is a small part of it.
template <int terms, int times, bool weighted>
Outcome bindTerms(const Recomputation &) {
  const Sum sum(terms);
  Outcome outcome;
  for (int k = 0; k < times; ++k) {
    CostProblem problem(terms, 0, 1, 0);
    const Gecode::IntVar total(problem, -10 * terms, 10 * terms);
    if (weighted)
      Gecode::linear(problem, IntArgs(sum.coefficients), problem.vars, Gecode::IRT_EQ, total);
    else
      Gecode::linear(problem, problem.vars, Gecode::IRT_EQ, total);
    if (problem.status() == Gecode::SS_FAILED) return Outcome{};
    for (int i = 0; i < terms; ++i) {
      Gecode::rel(problem, problem.vars[i], Gecode::IRT_EQ, sum.values[static_cast<std::size_t>(i)]);
      if (problem.status() == Gecode::SS_FAILED) return Outcome{};
    }
    outcome.units += terms;
  }
  return outcome;
}

const PeerModel kPeers[] = {
    {"sum 10", bindTerms<10, 5000, false>},
    {"sum 100", bindTerms<100, 500, false>},
    {"sum 1000", bindTerms<1000, 10, false>},
    {"sum 10000", bindTerms<10000, 1, false>},
    {"scalprod 10", bindTerms<10, 5000, true>},
    {"scalprod 100", bindTerms<100, 500, true>},
    {"scalprod 1000", bindTerms<1000, 10, true>},
    {"scalprod 10000", bindTerms<10000, 1, true>},
    {"magic_square 4", magicSquare<4, kAllSolutions>},
    {"magic_square 5", magicSquare<5, 1>},
    {"knapsack 25x3", knapsack},
    {"send+more x 10^4", sendMoreMoney},
};

}  // namespace

std::span<const PeerModel> arithmeticPeers() { return kPeers; }

}  // namespace koru::bench
