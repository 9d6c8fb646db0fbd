// SPDX-License-Identifier: MIT
// How soon a search ends that is stopped, or whose time is up, in the middle of one long propagation: a chain of a
// million variables that moves as a whole, and a resource with two thousand tasks.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

#include "searches/problem.h"

namespace koru::bench::searches {

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point then) {
  return std::chrono::duration<double, std::milli>(Clock::now() - then).count();
}

CSsearch *begin(const Model &model, long long milliseconds) {
  CSsearchOptions options = model.options;
  options.milliseconds = milliseconds;
  CSsearch *search = cs_createSearch(const_cast<CSint **>(model.vars.data()), static_cast<int>(model.vars.size()));
  cs_setSearchOptions(search, &options);
  return search;
}

// Milliseconds from the stop to the end, all undone by then.
double stopAfter(const Model &model, int milliseconds) {
  CSsearch *search = begin(model, 0);
  Clock::time_point asked;
  std::thread stopper([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    asked = Clock::now();
    cs_stopSearch(search);
  });
  while (cs_nextSolution(search) == CS_STATUS_SOLUTION) continue;
  const Clock::time_point ended = Clock::now();
  stopper.join();
  cs_freeSearch(search);
  return std::max(0.0, std::chrono::duration<double, std::milli>(ended - asked).count());
}

double endAfter(const Model &model, int milliseconds) {
  CSsearch *search = begin(model, milliseconds);
  const Clock::time_point begun = Clock::now();
  while (cs_nextSolution(search) == CS_STATUS_SOLUTION) continue;
  const double late = millisecondsSince(begun) - milliseconds;
  cs_freeSearch(search);
  return std::max(0.0, late);
}

void measure(const char *name, const Model &model) {
  for (const int milliseconds : {5, 20, 50})
    std::printf("%-20s after %2d ms  stop: %6.2f ms later  clock: %6.2f ms late\n", name, milliseconds,
                stopAfter(model, milliseconds), endAfter(model, milliseconds));
}

void measureChain() {
  constexpr int kLength = 1000000;
  constexpr int kSlack = 1000;
  Model model;
  Array &x = model.array();
  for (int i = 0; i < kLength; ++i) x.push_back(cs_createCSint(i, i + kSlack));
  for (std::size_t i = 1; i < x.size(); ++i) model.require(cs_Lt(x[i - 1], x[i]));
  model.vars = {x[0]};
  model.options.value = CS_VALUE_HIGH_HALF;
  const Clock::time_point before = Clock::now();
  cs_saveContext();
  model.require(cs_GE(x[0], kSlack / 2));
  const double propagation = millisecondsSince(before);
  cs_restoreContext();
  std::printf("%-20s propagation %.0f ms, its undo %.0f ms\n", "chain 10^6", propagation,
              millisecondsSince(before) - propagation);
  measure("chain 10^6", model);
}

void measureTasks() {
  constexpr int kTasks = 2000;
  Model model;
  Array &starts = model.array(kTasks, 0, 10 * kTasks);
  Array &durations = model.array();
  Array &uses = model.array();
  for (int i = 0; i < kTasks; ++i) {
    durations.push_back(CSINT(1 + i * 7 % 20));
    uses.push_back(CSINT(1 + i * 3 % 5));
  }
  model.require(cs_Cumulative(starts.data(), durations.data(), uses.data(), kTasks, CSINT(10)));
  model.vars = starts;
  measure("cumulative 2,000", model);
}

}  // namespace

void measureStopping() {
  measureChain();
  measureTasks();
}

}  // namespace koru::bench::searches
