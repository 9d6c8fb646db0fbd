// SPDX-License-Identifier: MIT
// Whole programs: the CPU time of one unit of work (node, event or constraint), with posting and cs_end, and the size
// of the search tree.
#include <benchmark/benchmark.h>

#include <string>

#include "models.h"

namespace koru::bench {

static double count(long long n) { return static_cast<double>(n); }

static void runModel(benchmark::State &state, const Model &model) {
  instances();
  Outcome outcome;
  const double endBefore = secondsInEnd;
  const double start = cpuSeconds();
  for (auto _ : state) outcome = model.run();
  const double seconds = cpuSeconds() - start;
  if (outcome.units == 0) return state.SkipWithError("a post failed");
  state.counters[std::string("ns/") + model.unit] =
      seconds * 1e9 / (count(outcome.units) * static_cast<double>(state.iterations()));
  state.counters["choice_points"] = count(outcome.choicePoints);
  state.counters["fails"] = count(outcome.fails);
  state.counters["solutions"] = count(outcome.solutions);
  state.counters["end_share"] = (secondsInEnd - endBefore) / seconds;
}

[[maybe_unused]] static const bool registered = [] {
  for (const Model &model : kModels)
    benchmark::RegisterBenchmark(model.name, runModel, model)->Unit(benchmark::kMillisecond);
  return true;
}();

}  // namespace koru::bench
