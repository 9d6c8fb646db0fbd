// SPDX-License-Identifier: MIT
// The cost of one sweep of cs_Cumulative, beside that of the literal twin of the tests: a context is opened, the start
// of one task raised by 1, which sets off one sweep, and the context restored.
#include <benchmark/benchmark.h>

#include "models.h"
#include "support/twins/cumulative.h"

namespace koru::bench {

namespace {

using PostCumulative = bool (*)(CSint **starts, CSint **durations, CSint **uses, int n, CSint *capacity);

bool postTwin(CSint **starts, CSint **durations, CSint **uses, int n, CSint *capacity) {
  return test::twin_cumulative::post(starts, durations, uses, n, capacity);
}

// Tasks in the order of their starts, about three at a time. Every second one is fixed, the others may move by up to
// `slack` / 100 of the whole time.
struct Schedule {
  static constexpr int kCapacity = 8;

  Array &starts;
  Array &durations;
  Array &uses;
  CSint *capacity = cs_createCSint(kCapacity, kCapacity);

  Schedule(Lifetime &lifetime, int n, int slack)
      : starts(lifetime.array()), durations(lifetime.array()), uses(lifetime.array()) {
    Random random(1);
    for (int i = 0; i < n; ++i) {
      const int start = i / 3 * 10 + random.below(3);
      const int room = i % 2 == 0 ? 0 : 8 + random.below(1 + n / 3 * 10 * slack / 100);
      starts.push_back(cs_createCSint(start, start + room));
      durations.push_back(CSINT(4 + random.below(5)));
      uses.push_back(CSINT(1 + random.below(2)));
    }
  }
};

template <PostCumulative post>
void sweep(benchmark::State &state) {
  Lifetime lifetime;
  const auto n = static_cast<int>(state.range(0));
  Schedule s(lifetime, n, static_cast<int>(state.range(1)));
  if (!post(s.starts.data(), s.durations.data(), s.uses.data(), n, s.capacity))
    return state.SkipWithError("not consistent");
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
