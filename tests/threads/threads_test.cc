// SPDX-License-Identifier: MIT
// The flavour for threads: each thread comes to what one alone comes to, and a parked solver may change threads. Run
// under the thread sanitizer by "./dev tsan", where KORU_SOLVES says how often each thread solves.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include "koru_extras.h"

namespace {

constexpr int kThreads = 8;

int solvesPerThread() {
  const char *text = std::getenv("KORU_SOLVES");
  return text != nullptr ? std::atoi(text) : 20;
}

// What a solve came to, to the counter.
struct Outcome {
  long long choicePoints = 0, fails = 0, solutions = 0, checksum = 0;
  bool operator==(const Outcome &) const = default;
};

struct Queens {
  std::vector<CSint *> x, up, down;
  std::vector<int> weights;  // constraints keep the arrays
  CSint *cost;

  explicit Queens(int n) {
    for (int i = 0; i < n; ++i) {
      x.push_back(cs_createCSint(0, n - 1));
      up.push_back(cs_Add(x.back(), CSINT(i)));
      down.push_back(cs_Sub(x.back(), CSINT(i)));
    }
    EXPECT_TRUE(cs_AllNeq(x.data(), n) && cs_AllNeqDomain(up.data(), n) && cs_AllNeqBounds(down.data(), n));
    weights.resize(x.size());
    std::iota(weights.begin(), weights.end(), 1);
    cost = cs_ScalProd(x.data(), weights.data(), n);
  }
  int size() const { return static_cast<int>(x.size()); }
};

CSsearchOptions optionsOf(int kind, const Queens &q) {
  CSsearchOptions o{};
  o.size = sizeof o;
  o.seed = static_cast<unsigned long long>(kind);
  o.order = kind % 3 == 0 ? CS_ORDER_DOM_WDEG : kind % 3 == 1 ? CS_ORDER_ACTIVITY : CS_ORDER_SMALLEST;
  o.value = kind % 2 == 0 ? CS_VALUE_RANDOM : CS_VALUE_MIN;
  o.randomTies = kind % 4 == 1;
  if (kind % 3 == 0) {
    o.minimize = q.cost;
    o.restarts = CS_RESTARTS_LUBY;
    o.restartFails = 5;
    o.neighbours = CS_NEIGHBOURS_LINKED;
  }
  return o;
}

void goOn(CSsearch *s, const Queens &q, Outcome &outcome) {
  while (cs_nextSolution(s) == CS_STATUS_SOLUTION)
    for (CSint *v : q.x) outcome.checksum = outcome.checksum * 31 % 1000000007 + cs_getValue(v);
  CSsearchStats stats;
  EXPECT_TRUE(cs_getSearchStats(s, &stats, sizeof stats));
  outcome.choicePoints = stats.choicePoints;
  outcome.fails = stats.fails;
  outcome.solutions = stats.solutions;
}

Outcome solve(int kind) {
  Outcome outcome;
  cs_init();
  const Queens q(5 + kind % 3);
  CSsearch *s = cs_createSearch(const_cast<CSint **>(q.x.data()), q.size());
  const CSsearchOptions o = optionsOf(kind, q);
  EXPECT_TRUE(cs_setSearchOptions(s, &o));
  goOn(s, q, outcome);
  EXPECT_TRUE(cs_freeSearch(s));
  EXPECT_EQ(cs_findAll(const_cast<CSint **>(q.x.data()), q.size(), cs_findFreeVarNbElements, nullptr),
            outcome.solutions > 0);
  outcome.checksum = outcome.checksum * 31 + cs_getNbChoicePoints();
  cs_end();
  return outcome;
}

TEST(ThreadsTest, EachComesToWhatOneAloneComesTo) {
  constexpr int kKinds = 12;
  std::vector<Outcome> alone;
  for (int kind = 0; kind < kKinds; ++kind) alone.push_back(solve(kind));
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] {
      for (int i = 0; i < solvesPerThread(); ++i)
        if (solve((t + i) % kKinds) != alone[static_cast<std::size_t>((t + i) % kKinds)]) ++wrong;
    });
  for (std::thread &thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

TEST(ThreadsTest, AThreadBeginsWithoutASolver) {
  cs_init();
  std::thread([] {
    EXPECT_EQ(cs_createCSint(0, 1), nullptr);
    EXPECT_EQ(cs_detachSolver(), nullptr);
  }).join();
  cs_end();
}

TEST(ThreadsTest, AParkedSolverGoesOnInAnotherThread) {
  const Outcome alone = solve(1);
  CSsolver *parked = nullptr;
  CSsearch *search = nullptr;
  std::unique_ptr<Queens> q;
  std::thread([&] {
    cs_init();
    q = std::make_unique<Queens>(6);
    const CSsearchOptions o = optionsOf(1, *q);
    search = cs_createSearch(q->x.data(), q->size());
    EXPECT_TRUE(cs_setSearchOptions(search, &o));
    EXPECT_EQ(cs_nextSolution(search), CS_STATUS_SOLUTION);
    parked = cs_detachSolver();
  }).join();
  ASSERT_NE(parked, nullptr);
  std::thread([&] {
    ASSERT_TRUE(cs_attachSolver(parked));
    int solutions = 1;
    while (cs_nextSolution(search) == CS_STATUS_SOLUTION) ++solutions;
    EXPECT_EQ(solutions, alone.solutions);
    EXPECT_TRUE(cs_freeSearch(search));
    EXPECT_TRUE(cs_findAll(q->x.data(), q->size(), cs_findFreeVar, nullptr));
    cs_end();
  }).join();
}

// The one call that is for any thread, whatever the other one is doing.
// Narrowings are read off the trail of the thread that runs.
TEST(ThreadsTest, DetailsOfAProfileGoOnInAnotherThread) {
  CSsolver *parked = nullptr;
  CSint *x[3] = {};
  CSprofiler *profiler = nullptr;
  std::thread([&] {
    cs_init();
    for (CSint *&v : x) v = cs_createCSint(0, 99);
    profiler = cs_createProfiler(0);
    cs_setProfilerDetails(profiler, true);
    cs_enableProfiler(profiler);
    EXPECT_TRUE(cs_Lt(x[0], x[1]));
    parked = cs_detachSolver();
  }).join();
  ASSERT_TRUE(cs_attachSolver(parked));
  for (int bound = 1; bound <= 20; ++bound) EXPECT_TRUE(cs_GE(x[0], bound));
  std::string report(10000, ' ');
  std::FILE *f = std::tmpfile();
  ASSERT_NE(f, nullptr);
  cs_profilerWriteDetails(profiler, f);
  std::rewind(f);
  report.resize(std::fread(report.data(), 1, report.size(), f));
  std::fclose(f);
  EXPECT_NE(report.find("\tcs_Lt\t42\t0\t22\t20\t"), std::string::npos) << report;
  cs_end();
}

TEST(ThreadsTest, AnyThreadMayStopASearch) {
  for (int i = 0; i < 20; ++i) {
    cs_init();
    std::vector<CSint *> x(12);
    for (CSint *&v : x) v = cs_createCSint(0, 10);
    for (std::size_t a = 0; a < x.size(); ++a)
      for (std::size_t b = a + 1; b < x.size(); ++b) EXPECT_TRUE(cs_Neq(x[a], x[b]));
    CSsearch *s = cs_createSearch(x.data(), 12);
    std::thread stopper([s] { cs_stopSearch(s); });
    EXPECT_EQ(cs_nextSolution(s), CS_STATUS_STOPPED) << "12 pigeons and 11 holes take much longer";
    stopper.join();
    EXPECT_TRUE(cs_freeSearch(s));
    cs_end();
  }
}

}  // namespace
