// SPDX-License-Identifier: MIT
// Element over large tables, occurrence and minimum over large arrays: the CPU time of posting and of one event, and
// the memory of a table.
#include <cstddef>
#include <vector>

#include "instances.h"
#include "measure.h"

namespace koru::bench {

namespace {

// Values 0..distinct-1 in random order.
std::vector<int> randomTable(int size, int distinct) {
  Random random(1);
  std::vector<int> table;
  while (static_cast<int>(table.size()) < size) table.push_back(random.below(distinct));
  return table;
}

struct Element {
  CSint *index;
  CSint *value;
};

Element postElement(const std::vector<int> &table) {
  const auto size = static_cast<int>(table.size());
  CSint *index = cs_createCSint(0, size - 1);
  return {index, cs_Element(index, table.data(), size)};
}

// Arguments of the element benchmarks: entries of the table, and how many values they have.
void elementArguments(benchmark::internal::Benchmark *b) {
  b->Args({1000, 100})->Args({100000, 100})->Args({100000, 100000})->ArgNames({"entries", "values"});
}

std::vector<int> tableOf(const benchmark::State &state) {
  return randomTable(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
}

// Posting and cs_end. ns/entry and bytes/entry: its share, the variables and the bit array of the value included.
void elementPost(benchmark::State &state) {
  const std::vector<int> table = tableOf(state);
  double seconds = 0;
  double bytes = 0;
  for (auto _ : state) {
    const Lifetime lifetime;
    const double heap = heapBytes();
    const double start = cpuSeconds();
    if (postElement(table).value == nullptr) return state.SkipWithError("a post failed");
    seconds += cpuSeconds() - start;
    bytes = heapBytes() - heap;
  }
  const auto entries = static_cast<double>(table.size());
  state.counters["ns/entry"] = seconds * 1e9 / (entries * static_cast<double>(state.iterations()));
  state.counters["bytes/entry"] = bytes / entries;
}

BENCHMARK(elementPost)->Name("element, post")->Apply(elementArguments)->Unit(benchmark::kMillisecond);

// One narrowing at a time, as many as `steps`, in a context that is restored. ns/event: its share.
template <class Narrow>
void measureEvents(benchmark::State &state, int steps, Narrow narrow) {
  bool consistent = true;
  const double start = cpuSeconds();
  for (auto _ : state) {
    cs_saveContext();
    for (int i = 0; i < steps; ++i) consistent = narrow(i) && consistent;
    cs_restoreContext();
  }
  state.counters["ns/event"] =
      (cpuSeconds() - start) * 1e9 / (static_cast<double>(steps) * static_cast<double>(state.iterations()));
  if (!consistent) state.SkipWithError("a narrowing was refused");
}

enum class Change { kRaiseIndex, kRemoveIndex, kRaiseValue, kRemoveValue };

// The index loses half its positions, or the value half its values, one by one.
template <Change change>
void elementEvents(benchmark::State &state) {
  const std::vector<int> table = tableOf(state);
  const Lifetime lifetime;
  const Element e = postElement(table);
  if (e.value == nullptr) return state.SkipWithError("a post failed");
  const int positions = static_cast<int>(table.size()) / 2;
  const int values = static_cast<int>(state.range(1)) / 2;
  if constexpr (change == Change::kRaiseIndex)
    measureEvents(state, positions, [&](int i) { return cs_GE(e.index, i + 1); });
  else if constexpr (change == Change::kRemoveIndex)
    measureEvents(state, positions, [&](int i) { return cs_NEQ(e.index, 2 * i + 1); });
  else if constexpr (change == Change::kRaiseValue)
    measureEvents(state, values, [&](int i) { return cs_GE(e.value, i + 1); });
  else
    measureEvents(state, values, [&](int i) { return cs_NEQ(e.value, 2 * i + 1); });
}

BENCHMARK(elementEvents<Change::kRaiseIndex>)
    ->Name("element, index raised")
    ->Apply(elementArguments)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(elementEvents<Change::kRemoveIndex>)
    ->Name("element, index removed")
    ->Apply(elementArguments)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(elementEvents<Change::kRaiseValue>)
    ->Name("element, value raised")
    ->Apply(elementArguments)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(elementEvents<Change::kRemoveValue>)
    ->Name("element, value removed")
    ->Apply(elementArguments)
    ->Unit(benchmark::kMillisecond);

// ----- a function of an array, whose variables are changed one by one

using PostOverArray = CSint *(*)(Array &x);
using NarrowOne = bool (*)(CSint *v);

CSint *least(Array &x) { return cs_Min(x.data(), static_cast<int>(x.size())); }
CSint *occurrences(Array &x) { return cs_OccurDomain(4, x.data(), static_cast<int>(x.size())); }
CSint *position(Array &x) { return cs_Index(x.data(), static_cast<int>(x.size()), 4); }

bool raise(CSint *v) { return cs_GE(v, 3); }
bool removeFour(CSint *v) { return cs_NEQ(v, 4); }

// All but the last variable, 0..9 each.
template <PostOverArray post, NarrowOne narrow>
void arrayEvents(benchmark::State &state) {
  const auto size = static_cast<int>(state.range(0));
  Lifetime lifetime;
  Array &x = lifetime.array(size, 0, 9);
  if (post(x) == nullptr) return state.SkipWithError("a post failed");
  measureEvents(state, size - 1, [&](int i) { return narrow(x[static_cast<std::size_t>(i)]); });
}

BENCHMARK(arrayEvents<least, raise>)->Name("minimum, variable raised")->Arg(10)->Arg(1000)->Arg(100000);
BENCHMARK(arrayEvents<occurrences, removeFour>)->Name("occurrence, value removed")->Arg(10)->Arg(1000)->Arg(100000);
BENCHMARK(arrayEvents<position, removeFour>)->Name("index, value removed")->Arg(10)->Arg(1000)->Arg(100000);

}  // namespace

}  // namespace koru::bench
