// SPDX-License-Identifier: MIT
// The searches: what an engine adds to bare propagation, and what picking a variable costs when there are many.
// Counters are the CPU time of one node (value or decision tried).
#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>

#include "models.h"

namespace koru::bench {

namespace {

int sizeOf(const Array &x) { return static_cast<int>(x.size()); }

// Runs the search again and again; it leaves everything as before and its nodes in the counters.
template <class Search>
void perNode(benchmark::State &state, const Search &search) {
  bool found = false;
  const double start = cpuSeconds();
  for (auto _ : state) found = search();
  const double seconds = cpuSeconds() - start;
  benchmark::DoNotOptimize(found);
  const int nodes = cs_getNbChoicePoints();
  state.counters["ns/node"] = seconds * 1e9 / (nodes * static_cast<double>(state.iterations()));
  state.counters["nodes"] = nodes;
}

// ----- engines: pigeons in one hole too few, so that every engine walks the whole tree

constexpr int kPigeons = 8;

struct Pigeons {
  Lifetime lifetime;
  Array &x = lifetime.array(kPigeons, 0, kPigeons - 2);
  CSint *cost = cs_createCSint(0, 9);
  bool posted = neqPairs(x);
};

// The values of x in turn, without an engine: what saving, binding and restoring cost. Returns the nodes.
long long bareNodes(const Array &x, std::size_t level) {
  long long nodes = 0;
  while (level < x.size() && !cs_isFree(x[level])) ++level;
  if (level == x.size()) return 0;
  const int last = cs_getMax(x[level]);
  for (int value = cs_getMin(x[level]);; value = cs_getNextValue(x[level], value)) {
    ++nodes;
    cs_saveContext();
    if (cs_EQ(x[level], value)) nodes += bareNodes(x, level + 1);
    cs_restoreContext();
    if (value == last) return nodes;
  }
}

void bare(benchmark::State &state) {
  Pigeons p;
  long long nodes = 0;
  const double start = cpuSeconds();
  for (auto _ : state) nodes = bareNodes(p.x, 0);
  const double seconds = cpuSeconds() - start;
  state.counters["ns/node"] = seconds * 1e9 / (static_cast<double>(nodes) * static_cast<double>(state.iterations()));
  state.counters["nodes"] = static_cast<double>(nodes);
}

int firstFree(CSint **array, int size) {
  for (int i = 0; i < size; ++i)
    if (cs_isFree(array[i])) return i;
  return -1;
}

int rowOf(CSint ***matrix, int, int columns) { return firstFree(matrix[0], columns) < 0 ? -1 : 0; }
int columnOf(int, CSint **row, int columns) { return firstFree(row, columns); }

bool searchFirst(Pigeons &p) { return cs_search(p.x.data(), kPigeons, cs_findFreeVar); }
bool searchAll(Pigeons &p) { return cs_findAll(p.x.data(), kPigeons, cs_findFreeVar, nullptr); }
bool searchCriteria(Pigeons &p) {
  return cs_searchCriteria(p.x.data(), kPigeons, firstFree, [](int, int value) { return value; });
}
bool searchMatrix(Pigeons &p) {
  CSint **rows[] = {p.x.data()};
  return cs_searchMatrix(rows, 1, kPigeons, rowOf, columnOf, [](int, int, int value) { return value; });
}

// A minimisation without solution leaves its context open.
bool minimizeNothing(Pigeons &p) {
  const bool found = cs_minimize(p.x.data(), kPigeons, cs_findFreeVar, p.cost, nullptr);
  cs_restoreAll();
  return found;
}

template <int kind>
bool searchSelectors(Pigeons &p) {
  CSvalueSelector *selectors[kPigeons];
  for (auto &each : selectors) each = cs_getValueSelector(kind);
  return cs_searchValueSelectorFail(p.x.data(), selectors, kPigeons, firstFree, 0, nullptr);
}

template <bool (*search)(Pigeons &)>
void engine(benchmark::State &state) {
  Pigeons p;
  if (!p.posted) return state.SkipWithError("a post failed");
  perNode(state, [&] { return search(p); });
}

BENCHMARK(bare)->Name("engine/none");
BENCHMARK(engine<searchFirst>)->Name("engine/cs_search");
BENCHMARK(engine<searchAll>)->Name("engine/cs_findAll");
BENCHMARK(engine<minimizeNothing>)->Name("engine/cs_minimize");
BENCHMARK(engine<searchCriteria>)->Name("engine/cs_searchCriteria");
BENCHMARK(engine<searchMatrix>)->Name("engine/cs_searchMatrix");
BENCHMARK(engine<searchSelectors<CS_SELECT_ASCENDING>>)->Name("engine/selectors, ascending");
BENCHMARK(engine<searchSelectors<CS_SELECT_LOWER_HALF>>)->Name("engine/selectors, lower half");
BENCHMARK(engine<searchSelectors<CS_SELECT_MEDIAN>>)->Name("engine/selectors, median");

// ----- selection: as many levels as variables, no constraint; the same function as a built-in and as the host's own

template <CSfindFreeVar select>
CSint *asHost(CSint **array, int size) {
  return select(array, size);
}

bool labelAll(Array &x, CSfindFreeVar select) {
  const bool found = cs_search(x.data(), sizeOf(x), select);
  cs_restoreAll();
  return found;
}

// Arguments: the number of variables, and that of their values.
template <CSfindFreeVar select>
void selection(benchmark::State &state) {
  Lifetime lifetime;
  Array &x = lifetime.array(static_cast<int>(state.range(0)), 1, static_cast<int>(state.range(1)));
  perNode(state, [&] { return labelAll(x, select); });
}

// The last pigeons of the array have no solution: the search goes back and forth far down.
template <CSfindFreeVar select>
void selectionAtTheBottom(benchmark::State &state) {
  Lifetime lifetime;
  Array &x = lifetime.array(static_cast<int>(state.range(0)), 0, 1);
  Array &pigeons = lifetime.array(kPigeons, 0, kPigeons - 2);
  if (!neqPairs(pigeons)) return state.SkipWithError("a post failed");
  x.insert(x.end(), pigeons.begin(), pigeons.end());
  perNode(state, [&] {
    const bool found = cs_searchFail(x.data(), sizeOf(x), select, 5000);
    cs_restoreAll();
    return found;
  });
}

void registerOne(const std::string &name, void (*select)(benchmark::State &), void (*atTheBottom)(benchmark::State &)) {
  benchmark::RegisterBenchmark(("select/" + name).c_str(), select)->Args({100, 2})->Args({10000, 2})->Args({10000, 5});
  benchmark::RegisterBenchmark(("select at the bottom/" + name).c_str(), atTheBottom)
      ->Arg(24)
      ->Arg(56)
      ->Arg(100)
      ->Arg(10000);
}

template <CSfindFreeVar select>
bool registerSelection(const std::string &name) {
  registerOne(name, selection<select>, selectionAtTheBottom<select>);
  registerOne(name + ", host", selection<asHost<select>>, selectionAtTheBottom<asHost<select>>);
  return true;
}

[[maybe_unused]] const bool registered =
    registerSelection<cs_findFreeVar>("cs_findFreeVar") &&
    registerSelection<cs_findFreeVarNbElements>("cs_findFreeVarNbElements") &&
    registerSelection<cs_findFreeVarNbElementsMin>("cs_findFreeVarNbElementsMin") &&
    registerSelection<cs_findFreeVarNbConstraints>("cs_findFreeVarNbConstraints");

}  // namespace

}  // namespace koru::bench
