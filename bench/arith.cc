// SPDX-License-Identifier: MIT
// Linear sums and reified comparisons: the CPU time of one event.
#include <cstddef>
#include <vector>

#include "measure.h"
#include "models_arith.h"

namespace koru::bench {

namespace {

int sizeOf(const Array &x) { return static_cast<int>(x.size()); }

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

// Argument: the number of terms. ns/term is the share of each of them in an event.
template <MakeSum makeSum>
void sumBound(benchmark::State &state) {
  const auto terms = static_cast<int>(state.range(0));
  Sum sum(terms);
  Lifetime lifetime;
  Array &x = lifetime.array(terms, 0, 1);
  if (makeSum(x, sum.coefficients) == nullptr) return state.SkipWithError("a post failed");
  const double perEvent = measureBinding(state, x, sum.values);
  state.counters["ns/event"] = perEvent;
  state.counters["ns/term"] = perEvent / terms;
}

BENCHMARK(sumBound<plainSum>)->Name("sigma")->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(sumBound<weightedSum>)->Name("scalar product")->RangeMultiplier(10)->Range(10, 10000);

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

}  // namespace

}  // namespace koru::bench
