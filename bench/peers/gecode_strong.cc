// SPDX-License-Identifier: MIT
// The problems of models_strong.h as a Gecode user writes them, at the strongest level that Gecode has for them.
#include <gecode/minimodel.hh>

#include <algorithm>

#include "gecode_problem.h"
#include "models_strong.h"

namespace koru::bench {

namespace {

template <int times>
Outcome tooFewSlots(const Recomputation &) {
  Outcome outcome;
  for (int i = 0; i < times; ++i) {
    Problem problem(11, 1, 10);
    Gecode::distinct(problem, problem.vars, Gecode::IPL_DOM);
    if (problem.status() != Gecode::SS_FAILED) return Outcome{};
    ++outcome.units;
  }
  return outcome;
}

Gecode::BoolVarArgs truthValues(Problem &problem) {
  Gecode::BoolVarArgs result;
  for (int i = 0; i < problem.vars.size(); ++i) result << Gecode::channel(problem, problem.vars[i]);
  return result;
}

template <int n, int m, int seeds>
Outcome threeSat(const Recomputation &recomputation) {
  Outcome outcome;
  for (int seed = 1; seed <= seeds; ++seed) {
    auto *problem = new Problem(n, 0, 1);
    const Gecode::BoolVarArgs x = truthValues(*problem);
    for (const ThreeClause &clause : threeClauses(seed, n, m)) {
      Gecode::BoolVarArgs positive;
      Gecode::BoolVarArgs negative;
      for (const int literal : clause) (literal > 0 ? positive : negative) << x[std::abs(literal) - 1];
      Gecode::clause(*problem, Gecode::BOT_OR, positive, negative, 1);
    }
    problem->inOrder(problem->vars);
    search(outcome, problem, recomputation, 1);
  }
  return outcome;
}

template <int v, int k, int lambda>
Outcome blockDesign(const Recomputation &recomputation) {
  constexpr Design design{v, k, lambda};
  const int b = design.blocks();
  auto *problem = new Problem(v * b, 0, 1);
  const Gecode::BoolVarArgs x = truthValues(*problem);
  const Gecode::Matrix<Gecode::BoolVarArgs> matrix(x, b, v);
  for (int i = 0; i < v; ++i) Gecode::linear(*problem, matrix.row(i), Gecode::IRT_EQ, design.perPoint());
  for (int j = 0; j < b; ++j) Gecode::linear(*problem, matrix.col(j), Gecode::IRT_EQ, k);
  for (int i = 0; i < v; ++i)
    for (int j = i + 1; j < v; ++j) {
      Gecode::BoolVarArgs both;
      for (int c = 0; c < b; ++c) {
        both << Gecode::BoolVar(*problem, 0, 1);
        Gecode::rel(*problem, matrix(c, i), Gecode::BOT_AND, matrix(c, j), both[both.size() - 1]);
      }
      Gecode::linear(*problem, both, Gecode::IRT_EQ, lambda);
    }
  for (int i = 1; i < v; ++i) Gecode::rel(*problem, matrix.row(i - 1), Gecode::IRT_GQ, matrix.row(i));
  for (int j = 1; j < b; ++j) Gecode::rel(*problem, matrix.col(j - 1), Gecode::IRT_GQ, matrix.col(j));
  problem->inOrder(problem->vars);
  Outcome outcome;
  search(outcome, problem, recomputation, 1);
  return outcome;
}

template <const TableProblem &(*instance)()>
Outcome tables(const Recomputation &recomputation) {
  const TableProblem &data = instance();
  auto *problem = new Problem(data.variables, 0, data.values - 1);
  for (const TableOfRows &table : data.tables) {
    const auto arity = static_cast<int>(table.scope.size());
    Gecode::TupleSet tuples(arity);
    for (int row = 0; row < table.rows(); ++row)
      tuples.add(IntArgs(arity, &table.cells[static_cast<std::size_t>(row * arity)]));
    tuples.finalize();
    IntVarArgs scope;
    for (const std::size_t i : table.scope) scope << problem->vars[static_cast<int>(i)];
    Gecode::extensional(*problem, scope, tuples);
  }
  problem->smallestFirst(problem->vars);
  Outcome outcome;
  search(outcome, problem, recomputation, 1);
  return outcome;
}

template <int width, int height>
Outcome knightsTours(const Recomputation &recomputation) {
  constexpr int n = width * height;
  auto *problem = new Problem(n, 0, n - 1);
  for (int from = 0; from < n; ++from)
    Gecode::dom(*problem, problem->vars[from], Gecode::IntSet(IntArgs(knightMoves(width, height, from))));
  Gecode::circuit(*problem, problem->vars, Gecode::IPL_DOM);
  problem->smallestFirst(problem->vars);
  Outcome outcome;
  search(outcome, problem, recomputation, kAllSolutions);
  return outcome;
}

template <int n>
CostProblem *makeTour() {
  const CostMatrix matrix(n);
  auto *problem = new CostProblem(n, 0, n - 1, 99 * n);
  Gecode::circuit(*problem, problem->vars, Gecode::IPL_DOM);
  IntVarArgs costs;
  for (int i = 0; i < n; ++i) {
    costs << Gecode::IntVar(*problem, 1, 99);
    Gecode::element(*problem, Gecode::IntSharedArray(IntArgs(matrix.rows[static_cast<std::size_t>(i)])),
                    problem->vars[i], costs[i], Gecode::IPL_DOM);
  }
  Gecode::linear(*problem, costs, Gecode::IRT_EQ, problem->cost);
  problem->inOrder(problem->vars);
  return problem;
}

template <int n>
Outcome shortestTour(const Recomputation &recomputation) {
  return minimizeByRestarts(makeTour<n>, recomputation);
}

// With resources along both axes, which cs_NoOverlap has by itself.
template <int n, int width, int height, int times>
Outcome squares(const Recomputation &recomputation) {
  Outcome outcome;
  for (int i = 0; i < times; ++i) {
    auto *problem = new Problem(2 * n, 0, std::max(width, height));
    IntVarArgs x;
    IntVarArgs y;
    IntArgs sides;
    for (int k = 0; k < n; ++k) {
      x << problem->vars[2 * k];
      y << problem->vars[2 * k + 1];
      sides << n - k;
      Gecode::rel(*problem, x[k], Gecode::IRT_LQ, width - sides[k]);
      Gecode::rel(*problem, y[k], Gecode::IRT_LQ, height - sides[k]);
    }
    Gecode::nooverlap(*problem, x, sides, y, sides);
    Gecode::cumulative(*problem, height, x, sides, sides);
    Gecode::cumulative(*problem, width, y, sides, sides);
    problem->inOrder(problem->vars);
    search(outcome, problem, recomputation, 1);
  }
  return outcome;
}

const PeerModel kPeers[] = {
    {"exams 11/10 x 10^3", tooFewSlots<1000>},
    {"3-sat 80/340", threeSat<80, 340, 5>},
    {"3-sat 100/425", threeSat<100, 425, 3>},
    {"bibd 13,3,1", blockDesign<13, 3, 1>},
    {"bibd 9,3,4", blockDesign<9, 3, 4>},
    {"table sparse", tables<tableProblem<1, 30, 6, 27, 5, 1000>>},
    {"table dense", tables<tableProblem<3, 20, 10, 38, 3, 300>>},
    {"table 20000", tables<tableProblem<2, 20, 8, 11, 6, 20000>>},
    {"table 20000 long", tables<tableProblem<1, 22, 8, 14, 6, 20000>>},
    {"table 20000 dense", tables<tableProblem<1, 12, 8, 30, 5, 20000>>},
    {"crossword 4", tables<crosswordProblem<1, 4, 2000>>},
    {"knight 6x5", knightsTours<6, 5>},
    {"tour 14", shortestTour<14>},
    {"squares 9 x 100", squares<9, 15, 20, 100>},
};

}  // namespace

std::span<const PeerModel> strongPeers() { return kPeers; }

}  // namespace koru::bench
