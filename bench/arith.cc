// SPDX-License-Identifier: MIT
// Arithmetic: linear sums and reified comparisons as the CPU time of one event, and whole programs that rest on them
// as the time of one node, with posting and cs_end.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <vector>

#include "models.h"

namespace koru::bench {

namespace {

// Measures from its construction, right before the loop, to its end.
class Stopwatch {
 public:
  explicit Stopwatch(benchmark::State &state) : state_(state) {}

  double nanosecondsPer(double operations) const {
    return (cpuSeconds() - start_) * 1e9 / (operations * static_cast<double>(state_.iterations()));
  }

 private:
  benchmark::State &state_;
  double start_ = cpuSeconds();
};

int sizeOf(const Array &x) { return static_cast<int>(x.size()); }

std::vector<int> randomValues(Random &random, int size, int min, int max) {
  std::vector<int> result;
  while (static_cast<int>(result.size()) < size) result.push_back(min + random.below(max - min + 1));
  return result;
}

// Binds each variable in turn, in a context that is restored. False when a value was refused.
bool bindInTurn(const Array &x, const std::vector<int> &values) {
  bool bound = true;
  cs_saveContext();
  for (std::size_t i = 0; i < x.size(); ++i) bound = cs_EQ(x[i], values[i]) && bound;
  cs_restoreContext();
  return bound;
}

// One event for each variable, undo included. Returns the time of one.
double measureBinding(benchmark::State &state, const Array &x, const std::vector<int> &values) {
  bool bound = true;
  const Stopwatch watch(state);
  for (auto _ : state) bound = bindInTurn(x, values) && bound;
  const double perEvent = watch.nanosecondsPer(static_cast<double>(x.size()));
  if (!bound) state.SkipWithError("a value was refused");
  return perEvent;
}

// ----- linear sums of 0/1 variables bound one by one

CSint *sigma(Array &x, std::vector<int> &) { return cs_Sigma(x.data(), sizeOf(x)); }
CSint *scalarProduct(Array &x, std::vector<int> &coefficients) {
  return cs_ScalProd(x.data(), coefficients.data(), sizeOf(x));
}

// Argument: the number of terms. ns/term is the share of each of them in an event.
template <auto makeSum>
void sumBound(benchmark::State &state) {
  const auto terms = static_cast<int>(state.range(0));
  Random random(1);
  std::vector<int> coefficients = randomValues(random, terms, -9, 9);
  const std::vector<int> values = randomValues(random, terms, 0, 1);
  Lifetime lifetime;
  Array &x = lifetime.array(terms, 0, 1);
  if (makeSum(x, coefficients) == nullptr) return state.SkipWithError("a post failed");
  const double perEvent = measureBinding(state, x, values);
  state.counters["ns/event"] = perEvent;
  state.counters["ns/term"] = perEvent / terms;
}

BENCHMARK(sumBound<sigma>)->Name("sigma")->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(sumBound<scalarProduct>)->Name("scalar product")->RangeMultiplier(10)->Range(10, 10000);

// ----- reified chains: b[i] <=> x[i] < x[i + 1]

bool reifyChain(const Array &x, Array &b) {
  for (std::size_t i = 1; i < x.size(); ++i) {
    b.push_back(cs_ReifLt(x[i - 1], x[i]));
    if (b.back() == nullptr) return false;
  }
  return true;
}

// Argument: the number of variables 0..9, each bound to a random value, so that each b is decided in its turn.
void reifiedChain(benchmark::State &state, bool counted) {
  const auto length = static_cast<int>(state.range(0));
  Random random(2);
  const std::vector<int> values = randomValues(random, length, 0, 9);
  Lifetime lifetime;
  Array &x = lifetime.array(length, 0, 9);
  Array &b = lifetime.array();
  if (!reifyChain(x, b) || (counted && cs_Sigma(b.data(), sizeOf(b)) == nullptr))
    return state.SkipWithError("a post failed");
  state.counters["ns/event"] = measureBinding(state, x, values);
}

BENCHMARK_CAPTURE(reifiedChain, alone, false)->Name("reified chain")->Arg(10)->Arg(100)->Arg(1000);
BENCHMARK_CAPTURE(reifiedChain, counted, true)->Name("reified chain, counted")->Arg(10)->Arg(100)->Arg(1000);

// The chain of models.h with comparisons that a count imposes all at once: variable i in i..i+slack, then the first is
// raised step by step and pushes all others.
void imposedChain(benchmark::State &state) {
  const auto length = static_cast<int>(state.range(0));
  constexpr int kSlack = 50;
  Lifetime lifetime;
  Array &x = lifetime.array();
  for (int i = 0; i < length; ++i) x.push_back(cs_createCSint(i, i + kSlack));
  Array &b = lifetime.array();
  if (!reifyChain(x, b) || !cs_EQ(cs_Sigma(b.data(), sizeOf(b)), length - 1))
    return state.SkipWithError("a post failed");
  bool pushed = true;
  const Stopwatch watch(state);
  for (auto _ : state) {
    cs_saveContext();
    for (int q = 1; q <= kSlack; ++q) pushed = cs_GE(x[0], q) && pushed;
    pushed = pushed && cs_getMin(x.back()) == length - 1 + kSlack;
    cs_restoreContext();
  }
  state.counters["ns/event"] = watch.nanosecondsPer(static_cast<double>(length) * kSlack);
  if (!pushed) state.SkipWithError("the chain was not pushed");
}

BENCHMARK(imposedChain)->Name("reified chain, imposed")->Arg(10)->Arg(100)->Arg(1000);

// ----- magic squares

// Step `step` from cell `first` on: a row, a column or a diagonal.
bool postLine(Lifetime &lifetime, const Array &cells, int n, int first, int step) {
  Array &line = lifetime.array();
  for (int i = 0; i < n; ++i) line.push_back(cells[static_cast<std::size_t>(first + i * step)]);
  return cs_EQ(cs_Sigma(line.data(), n), n * (n * n + 1) / 2);
}

bool postLines(Lifetime &lifetime, const Array &cells, int n) {
  for (int i = 0; i < n; ++i)
    if (!postLine(lifetime, cells, n, i * n, 1)) return false;
  for (int i = 0; i < n; ++i)
    if (!postLine(lifetime, cells, n, i, n)) return false;
  return postLine(lifetime, cells, n, 0, n + 1) && postLine(lifetime, cells, n, n - 1, n - 1);
}

// One of the eight squares that turning and reflecting makes of one.
bool orderCorners(const Array &cells, std::size_t n) {
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

struct Items {
  std::vector<int> profits;
  std::vector<std::vector<int>> negatedWeights;  // a row for each capacity, which is half the sum of its weights

  Items(int count, int rows) {
    Random random(3);
    profits = randomValues(random, count, 50, 99);
    for (int row = 0; row < rows; ++row) negatedWeights.push_back(randomValues(random, count, -99, -10));
  }
};

// capacity >= total weight - weight of what is left out
bool postCapacities(Array &leftOut, Items &items) {
  for (std::vector<int> &row : items.negatedWeights) {
    int total = 0;
    for (const int weight : row) total -= weight;
    if (!cs_LE(cs_ScalProd(leftOut.data(), row.data(), sizeOf(leftOut)), total / 2 - total)) return false;
  }
  return true;
}

// Searches from the root for less and less lost profit; the last search proves that there is nothing better.
void minimize(Outcome &outcome, Array &x, CSint *cost) {
  bool improved = true;
  int best = cs_getMax(cost) + 1;
  while (improved) {
    const int label = cs_saveContext();
    improved = cs_LT(cost, best);
    if (improved) {
      findFirst(outcome, x, cs_findFreeVar);
      improved = solutionsFound == 1;
    }
    if (improved) best = cs_getMin(cost);
    cs_restoreContextUntil(label);
  }
}

template <int count, int rows>
Outcome knapsack() {
  Items items(count, rows);
  Lifetime lifetime;
  Outcome outcome;
  Array &leftOut = lifetime.array(count, 0, 1);
  if (!postCapacities(leftOut, items)) return outcome;
  minimize(outcome, leftOut, cs_ScalProd(leftOut.data(), items.profits.data(), count));
  return outcome;
}

// ----- whole programs

void program(benchmark::State &state, Outcome (*run)()) {
  Outcome outcome;
  const Stopwatch watch(state);
  for (auto _ : state) outcome = run();
  const double perNode = watch.nanosecondsPer(static_cast<double>(outcome.units));
  if (outcome.units == 0) return state.SkipWithError("a post failed");
  state.counters["ns/node"] = perNode;
  state.counters["choice_points"] = static_cast<double>(outcome.choicePoints);
  state.counters["fails"] = static_cast<double>(outcome.fails);
  state.counters["solutions"] = static_cast<double>(outcome.solutions);
}

BENCHMARK_CAPTURE(program, knapsack, knapsack<25, 3>)->Name("knapsack 25x3")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(program, all, magicSquare<4, findAll>)->Name("magic_square 4 all")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(program, first, magicSquare<5, findFirst>)
    ->Name("magic_square 5 first")
    ->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace koru::bench
