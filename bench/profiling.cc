// SPDX-License-Identifier: MIT
// What sites and profilers cost: posting under either locator, handler runs and relations inside a callback with and
// without a profiler that is enabled.
#include "measure.h"
#include "models.h"

namespace koru::bench {

namespace {

constexpr int kBatch = 1000;

const char *tellPlace(void *) { return "model.c\t10\t0x401136\tpostModel"; }

// Argument: 0 for the built-in locator, 1 for one of the host's.
void postUnderLocator(benchmark::State &state) {
  Lifetime lifetime;
  const Array &x = lifetime.array(2, 0, 9);
  if (state.range(0) == 1) cs_setProfilerLocator("text", tellPlace, nullptr);
  const Stopwatch watch(state);
  for (auto _ : state) {
    cs_saveContext();
    for (int i = 0; i < kBatch; ++i) benchmark::DoNotOptimize(cs_Neq(x[0], x[1]));
    cs_restoreContext();
  }
  state.counters["ns/post"] = watch.nanosecondsPer(kBatch);
}

bool accept(CSint *, int, int, CSint **, int, void *) { return true; }

void enableProfilers(std::int64_t count) {
  for (std::int64_t i = 0; i < count; ++i) cs_enableProfiler(cs_createProfiler(0));
}

// Argument: the number of enabled profilers.
void runHandlers(benchmark::State &state) {
  Lifetime lifetime;
  Array x = lifetime.array(1, 0, kBatch);
  cs_eventNewMin(x.data(), 1, accept, nullptr);
  enableProfilers(state.range(0));
  const Stopwatch watch(state);
  for (auto _ : state) {
    cs_saveContext();
    for (int i = 1; i < kBatch; ++i) benchmark::DoNotOptimize(cs_GE(x[0], i));
    cs_restoreContext();
  }
  state.counters["ns/run"] = watch.nanosecondsPer(kBatch - 1);
}

bool narrowAgain(CSint *, int, int, CSint **, int, void *extra) {
  for (int i = 0; i < kBatch; ++i) benchmark::DoNotOptimize(cs_LE(static_cast<CSint *>(extra), 9));
  return true;
}

// Relations that change nothing. Argument: the number of enabled profilers.
void relationsInACallback(benchmark::State &state) {
  Lifetime lifetime;
  Array x = lifetime.array(2, 0, 9);
  cs_eventNewMin(x.data(), 1, narrowAgain, x[1]);
  enableProfilers(state.range(0));
  const Stopwatch watch(state);
  for (auto _ : state) {
    cs_saveContext();
    benchmark::DoNotOptimize(cs_GE(x[0], 1));
    cs_restoreContext();
  }
  state.counters["ns/relation"] = watch.nanosecondsPer(kBatch);
}

BENCHMARK(postUnderLocator)->ArgName("hosts")->Arg(0)->Arg(1);
BENCHMARK(runHandlers)->ArgName("profilers")->Arg(0)->Arg(1)->Arg(2);
BENCHMARK(relationsInACallback)->ArgName("profilers")->Arg(0)->Arg(1);

}  // namespace

}  // namespace koru::bench
