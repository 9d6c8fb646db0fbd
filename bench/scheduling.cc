// SPDX-License-Identifier: MIT
// The cost of one sweep of cs_Cumulative, beside that of the literal twin of the tests: a context is opened, the start
// of one task raised by 1, which sets off one sweep, and the context restored.
#include <benchmark/benchmark.h>

#include "models_scheduling.h"
#include "support/twins/cumulative.h"

namespace koru::bench {

namespace {

bool postTwin(CSint **starts, CSint **durations, CSint **uses, int n, CSint *capacity) {
  return test::twin_cumulative::post(starts, durations, uses, n, capacity);
}

template <PostCumulative post>
void sweep(benchmark::State &state) {
  Lifetime lifetime;
  const auto n = static_cast<int>(state.range(0));
  const Schedule s(lifetime, Tasks(n, static_cast<int>(state.range(1))));
  if (!s.post(post)) return state.SkipWithError("not consistent");
  CSint *start = s.starts[static_cast<std::size_t>(n / 2 | 1)];
  for (auto _ : state) {
    cs_saveContext();
    benchmark::DoNotOptimize(cs_GE(start, cs_getMin(start) + 1));
    cs_restoreContext();
  }
}

void sizes(benchmark::internal::Benchmark *bench) {
  bench->ArgNames({"tasks", "slack"});
  for (const int slack : {0, 100})
    for (const int n : {10, 50, 60, 100, 200, 500, 1000}) bench->Args({n, slack});
}

}  // namespace

BENCHMARK(sweep<cs_Cumulative>)->Name("cumulative")->Apply(sizes);
BENCHMARK(sweep<postTwin>)->Name("cumulative, literal")->Apply(sizes);

}  // namespace koru::bench
