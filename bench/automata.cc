// SPDX-License-Identifier: MIT
// Automata and variable elements: posting, the CPU time of one event, and memory.
#include <cstddef>

#include "measure.h"
#include "models_automata.h"

namespace koru::bench {

namespace {

// ----- cs_Regular

// Arguments: positions, states, symbols. Memory and time are divided by all transitions of all positions, of which a
// few at both ends lie on no accepted word.
void regularPosting(benchmark::State &state) {
  const auto length = static_cast<int>(state.range(0));
  const Automaton automaton = randomAutomaton(static_cast<int>(state.range(1)), static_cast<int>(state.range(2)));
  const double edges = automaton.edges(length);
  bool posted = true;
  double bytes = 0;
  const Stopwatch watch(state);
  for (auto _ : state) {
    Lifetime lifetime;
    Array &x = lifetime.array(length, 0, automaton.symbols - 1);
    const double before = heapBytes();
    posted = automaton.post(x) && posted;
    bytes = heapBytes() - before;
  }
  state.counters["ns/edge"] = watch.nanosecondsPer(edges);
  state.counters["bytes/edge"] = bytes / edges;
  if (!posted) state.SkipWithError("a post failed");
}

// Events of one kind on every position, in a context that is restored.
template <class Narrow>
void regularEvents(benchmark::State &state, Narrow narrow) {
  const auto length = static_cast<int>(state.range(0));
  const Automaton automaton = randomAutomaton(static_cast<int>(state.range(1)), static_cast<int>(state.range(2)));
  Lifetime lifetime;
  Array &x = lifetime.array(length, 0, automaton.symbols - 1);
  if (!automaton.post(x)) return state.SkipWithError("a post failed");
  const Stopwatch watch(state);
  for (auto _ : state) {
    cs_saveContext();
    for (CSint *v : x) benchmark::DoNotOptimize(narrow(v));
    cs_restoreContext();
  }
  state.counters["ns/event"] = watch.nanosecondsPer(length);
}

void regularRemoved(benchmark::State &state) {
  regularEvents(state, [](CSint *v) { return cs_NEQ(v, cs_getMax(v) / 2); });
}

void regularHalved(benchmark::State &state) {
  regularEvents(state, [](CSint *v) { return cs_GE(v, (cs_getMax(v) + 1) / 2); });
}

void regularBound(benchmark::State &state) {
  regularEvents(state, [](CSint *v) { return cs_EQ(v, cs_getMin(v)); });
}

#define KORU_AUTOMATA Args({25, 40, 2})->Args({200, 50, 10})->Args({200, 500, 50})
BENCHMARK(regularPosting)->Name("regular, posting")->KORU_AUTOMATA->Unit(benchmark::kMillisecond);
BENCHMARK(regularRemoved)->Name("regular, value removed")->KORU_AUTOMATA->Unit(benchmark::kMicrosecond);
BENCHMARK(regularHalved)->Name("regular, domain halved")->KORU_AUTOMATA->Unit(benchmark::kMicrosecond);
BENCHMARK(regularBound)->Name("regular, variable bound")->KORU_AUTOMATA->Unit(benchmark::kMicrosecond);
#undef KORU_AUTOMATA

// ----- variable elements: position i ranges over i .. i + width

using PostElement = CSint *(*)(CSint *, CSint **, int);

struct Element {
  CSint *index;
  Array &vars;
  CSint *value;

  Element(Lifetime &lifetime, PostElement post, int n, int width) : vars(lifetime.array()) {
    index = cs_createCSint(0, n - 1);
    for (int i = 0; i < n; ++i) vars.push_back(cs_createCSint(i, i + width));
    value = post(index, vars.data(), n);
  }
};

constexpr int kWidth = 100;

// Argument: the number of variables.
void elementPosting(benchmark::State &state, PostElement post) {
  const auto n = static_cast<int>(state.range(0));
  bool posted = true;
  const Stopwatch watch(state);
  for (auto _ : state) {
    Lifetime lifetime;
    posted = Element(lifetime, post, n, kWidth).value != nullptr && posted;
  }
  state.counters["ns/variable"] = watch.nanosecondsPer(n);
  if (!posted) state.SkipWithError("a post failed");
}

// Every position in turn loses its lower half and leaves the index.
void elementEvents(benchmark::State &state, PostElement post) {
  const auto n = static_cast<int>(state.range(0));
  Lifetime lifetime;
  const Element element(lifetime, post, n, kWidth);
  if (element.value == nullptr) return state.SkipWithError("a post failed");
  bool consistent = true;
  const Stopwatch watch(state);
  for (auto _ : state) {
    cs_saveContext();
    for (int i = 0; i < n - 1; ++i) {
      consistent = cs_GE(element.vars[static_cast<std::size_t>(i)], i + kWidth / 2) && consistent;
      consistent = cs_NEQ(element.index, i) && consistent;
    }
    cs_restoreContext();
  }
  state.counters["ns/event"] = watch.nanosecondsPer(2.0 * (n - 1));
  if (!consistent) state.SkipWithError("a value was refused");
}

BENCHMARK_CAPTURE(elementPosting, domain, cs_VarElement)->Name("variable element, posting")->Arg(10)->Arg(1000);
BENCHMARK_CAPTURE(elementEvents, domain, cs_VarElement)->Name("variable element")->Arg(10)->Arg(1000);
BENCHMARK_CAPTURE(elementPosting, range, cs_VarElementRange)
    ->Name("variable element range, posting")
    ->Arg(10)
    ->Arg(1000);
BENCHMARK_CAPTURE(elementEvents, range, cs_VarElementRange)->Name("variable element range")->Arg(10)->Arg(1000);

}  // namespace

}  // namespace koru::bench
