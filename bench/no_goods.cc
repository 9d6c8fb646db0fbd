// SPDX-License-Identifier: MIT
// Sets of no-goods: the CPU time of an event, of an insertion, and of a restart.
#include <benchmark/benchmark.h>

#include <vector>

#include "instances.h"
#include "measure.h"
#include "run.h"

namespace koru::bench {

namespace {

constexpr int kValues = 10;
constexpr int kElements = 10;
constexpr int kSets = 10;
constexpr int kVariables = kSets * kElements;

// Equalities on different variables. cs_addNoGood wants indexes below the number of elements, so each set is over ten
// variables.
class NoGoods {
 public:
  NoGoods(Lifetime &lifetime, int sets, int count, int most) : x_(lifetime.array(sets * kElements, 0, kValues - 1)) {
    for (int i = 0; i < sets * kElements; i += kElements)
      sets_.push_back(cs_createNoGoodSet(&x_[static_cast<std::size_t>(i)], kElements, nullptr, most, nullptr, nullptr));
    for (int i = 0; i < count; ++i) add(i % static_cast<int>(sets_.size()));
  }

  void add(int set) {
    const std::vector<int> indexes = random_.permutation(kElements);
    CSvalueSelection decisions[kElements];
    for (CSvalueSelection &d : decisions) d = {CS_METHOD_EQ, random_.below(kValues)};
    cs_addNoGood(sets_[static_cast<std::size_t>(set)], indexes.data(), decisions, kElements);
  }

  // Binds every variable in turn to a value of its own. Returns how many of them could be bound.
  int bindAll(const std::vector<int> &values) {
    int bound = 0;
    cs_saveContext();
    for (std::size_t i = 0; i < x_.size(); ++i) bound += cs_EQ(x_[i], values[i]) ? 1 : 0;
    cs_restoreContext();
    return bound;
  }

 private:
  Random random_{4};
  Array &x_;
  std::vector<CSnoGoodSet *> sets_;
};

// Argument: the number of no-goods of ten elements. A variable is watched by 2 / 100 of them; ns/watch is the share of
// each in an event.
void event(benchmark::State &state) {
  const auto count = static_cast<int>(state.range(0));
  Lifetime lifetime;
  NoGoods noGoods(lifetime, kSets, count, 0);
  Random random(5);
  std::vector<int> values;
  while (values.size() < kVariables) values.push_back(random.below(kValues));
  int bound = 0;
  const Stopwatch watch(state);
  for (auto _ : state) bound = noGoods.bindAll(values);
  if (bound == 0) return state.SkipWithError("no value could be bound");
  const double perEvent = watch.nanosecondsPer(bound);
  state.counters["ns/event"] = perEvent;
  state.counters["ns/watch"] = perEvent * kVariables / (2.0 * count);
}

BENCHMARK(event)->Name("no-goods: event")->Arg(10)->Arg(1000)->Arg(100000);

// Argument: the number of no-goods in the set, which is full. Each insertion compares with all of them and evicts one.
void insertion(benchmark::State &state) {
  const auto count = static_cast<int>(state.range(0));
  Lifetime lifetime;
  NoGoods noGoods(lifetime, 1, count, count);
  const Stopwatch watch(state);
  for (auto _ : state) noGoods.add(0);
  const double perInsertion = watch.nanosecondsPer(1);
  state.counters["ns/insertion"] = perInsertion;
  state.counters["ns/comparison"] = perInsertion / count;
}

BENCHMARK(insertion)->Name("no-goods: insertion")->Arg(10)->Arg(1000)->Arg(10000);

int firstFree(CSint **array, int size) {
  for (int i = 0; i < size; ++i)
    if (cs_isFree(array[i])) return i;
  return -1;
}

// Runs of one fail each, at the last of so many levels.
void restart(benchmark::State &state, bool learns) {
  constexpr int kRuns = 100;
  const auto levels = static_cast<int>(state.range(0));
  double seconds = 0;
  for (auto _ : state) {
    Lifetime lifetime;
    Array &x = lifetime.array(levels, 0, 50);
    CSint *last = cs_createCSint(0, 50);
    if (!cs_Neq(x.back(), last) || !cs_Eq(x.back(), last)) return state.SkipWithError("a post failed");
    std::vector<CSvalueSelector *> selectors(x.size(), cs_getValueSelector(CS_SELECT_ASCENDING));
    CSnoGoodSet *set = learns ? cs_createNoGoodSet(x.data(), levels, nullptr, 0, nullptr, nullptr) : nullptr;
    const auto one = [](void *) { return 1; };
    const double start = cpuSeconds();
    cs_searchValueSelectorRestartNG(x.data(), selectors.data(), levels, firstFree, one, nullptr, kRuns, set, nullptr);
    seconds += cpuSeconds() - start;
    if (cs_getNbFails() != kRuns) return state.SkipWithError("not the fails that were expected");
  }
  state.counters["ns/run"] = seconds * 1e9 / (kRuns * static_cast<double>(state.iterations()));
}

BENCHMARK_CAPTURE(restart, plain, false)->Name("restart")->Arg(1)->Arg(10)->Arg(40);
BENCHMARK_CAPTURE(restart, learning, true)->Name("restart, learning")->Arg(1)->Arg(10)->Arg(40);

}  // namespace

}  // namespace koru::bench
