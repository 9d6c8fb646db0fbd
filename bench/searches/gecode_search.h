// SPDX-License-Identifier: MIT
// How Gecode searches: by one thread, within a limit of processor time, as Koru does beside it.
#pragma once

#include <gecode/search.hh>

#include <chrono>

#include "run.h"
#include "searches/problem.h"

namespace koru::bench::searches {

class ProcessorTime : public Gecode::Search::Stop {
 public:
  explicit ProcessorTime(double seconds) : end_(cpuSeconds() + seconds) {}
  bool stop(const Gecode::Search::Statistics &, const Gecode::Search::Options &) override {
    return cpuSeconds() >= end_;
  }

 private:
  double end_;
};

// The first solution, or better and better ones until one is proved the best.
template <class Problem, class Engine>
Result runGecode(Engine &engine, bool first) {
  using Clock = std::chrono::steady_clock;
  const auto before = Clock::now();
  const auto now = [&] { return std::chrono::duration<double>(Clock::now() - before).count(); };
  Result result;
  long long solutions = 0;
  while (const Problem *solution = engine.next()) {
    ++solutions;
    result.objective = first ? 0 : solution->objective();
    result.secondsToBest = now();
    delete solution;
    if (first) break;
  }
  result.seconds = now();
  result.found = solutions > 0;
  result.status = first && result.found ? "solution"
                  : engine.stopped()    ? "time limit"
                  : first               ? "exhausted"
                                        : "optimal";
  result.fails = static_cast<long long>(engine.statistics().fail);
  // Of its nodes those where something is decided.
  result.choicePoints = static_cast<long long>(engine.statistics().node) - result.fails - solutions;
  return result;
}

// Once through the tree; takes the problem.
template <class Problem, template <class> class Engine>
Result searchOnce(Problem *problem, double seconds, bool first) {
  ProcessorTime limit(seconds);
  Gecode::Search::Options options;
  options.threads = 1;
  options.stop = &limit;
  Engine<Problem> engine(problem, options);
  delete problem;
  return runGecode<Problem>(engine, first);
}

// With restarts and no-goods; takes the problem and the cutoff.
template <class Problem, template <class> class Engine>
Result searchAgain(Problem *problem, Gecode::Search::Cutoff *cutoff, double seconds, bool first) {
  ProcessorTime limit(seconds);
  Gecode::Search::Options options;
  options.threads = 1;
  options.cutoff = cutoff;
  options.nogoods_limit = 128;
  options.stop = &limit;
  Gecode::RBS<Problem, Engine> engine(problem, options);
  delete problem;
  return runGecode<Problem>(engine, first);
}

}  // namespace koru::bench::searches
