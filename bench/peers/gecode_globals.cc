// SPDX-License-Identifier: MIT
// Element and occurrences as a Gecode user writes them: domain-consistent element, and a count for each value.
#include "gecode_problem.h"

namespace koru::bench {

namespace {

template <int n>
CostProblem *makeAssignment() {
  const CostMatrix matrix(n);
  auto *problem = new CostProblem(n, 0, n - 1, 100 * n);
  IntVarArgs costs;
  for (int i = 0; i < n; ++i) {
    costs << Gecode::IntVar(*problem, 1, 99);
    Gecode::element(*problem, Gecode::IntSharedArray(IntArgs(matrix.rows[static_cast<std::size_t>(i)])),
                    problem->vars[i], costs[i], Gecode::IPL_DOM);
  }
  problem->distinct(problem->vars);
  Gecode::linear(*problem, costs, Gecode::IRT_EQ, problem->cost);
  problem->inOrder(problem->vars);
  return problem;
}

template <int n>
Outcome assignment(const Recomputation &recomputation) {
  return minimizeByRestarts(makeAssignment<n>, recomputation);
}

template <int n>
Outcome magicSequence(const Recomputation &recomputation) {
  auto *problem = new Problem(n, 0, n - 1);
  const IntVarArray &x = problem->vars;
  for (int v = 0; v < n; ++v) Gecode::count(*problem, x, v, Gecode::IRT_EQ, x[v]);
  Gecode::linear(*problem, x, Gecode::IRT_EQ, n);
  Gecode::linear(*problem, IntArgs::create(n, 0), x, Gecode::IRT_EQ, n);
  problem->inOrder(x);
  Outcome outcome;
  search(outcome, problem, recomputation, 1);
  return outcome;
}

const PeerModel kPeers[] = {
    {"assign 14", assignment<14>},
    {"magic_seq 200", magicSequence<200>},
};

}  // namespace

std::span<const PeerModel> globalPeers() { return kPeers; }

}  // namespace koru::bench
