// SPDX-License-Identifier: MIT
// Searches of koru.hpp: options, results, solutions that are kept, exceptions of callbacks, and the tree of the same
// model in C.
#include <sstream>

#include "brute_force.h"
#include "core/alloc.h"

namespace cpp_test {
namespace {

using koru::IntVar;
using koru::Model;

IntVars queens(Model &m, int n) {
  const IntVars q = m.ints(static_cast<std::size_t>(n), 0, n - 1);
  IntVars up;
  IntVars down;
  for (int i = 0; i < n; ++i) {
    up.push_back(m.var(q[static_cast<std::size_t>(i)] + i));
    down.push_back(m.var(q[static_cast<std::size_t>(i)] - i));
  }
  m.post(koru::all_different(q), koru::all_different(up), koru::all_different(down));
  return q;
}

TEST(CppSearch, FindsOneOrAsManyAsAskedFor) {
  Model m;
  const IntVars q = queens(m, 6);
  int seen = 0;
  const auto count = [&](const koru::Solution &) { ++seen; };
  const koru::Result first = m.solve({.vars = q, .order = koru::smallest, .found = count});
  EXPECT_EQ(first.status, koru::solution);
  EXPECT_TRUE(first.best);
  EXPECT_EQ(seen, 1);
  const koru::Result three = m.solve({.vars = q, .solutions = 3, .found = count});
  EXPECT_EQ(three.status, koru::solution_limit);
  EXPECT_EQ(three.statistics.solutions, 3);
  EXPECT_EQ(seen, 4);
  const koru::Result all = m.solve({.vars = q, .solutions = 100});
  EXPECT_EQ(all.status, koru::exhausted);
  EXPECT_EQ(all.statistics.solutions, 4);
  EXPECT_TRUE(q[0].size() == 6) << "all is as before";
}

// What is searched for may be written in the call, functions included.
TEST(CppSearch, GoesOnFromBetterToBetterWithOptionsOfItsOwn) {
  Model m;
  const IntVars x = m.ints(3, 0, 5);
  m.post(koru::all_different(x));
  const std::vector<int> most(100, 5);
  const auto better = [&] {
    return m.minimizing(x[0] + x[1],
                        {.vars = x, .value = [most](IntVar v) { return koru::Decision(std::min(most[99], v.max())); }});
  };
  std::vector<long long> costs;
  for (const koru::Solution &s : better()) costs.push_back(s[x[0] + x[1]]);
  EXPECT_EQ(costs, (std::vector<long long>{9, 8, 7, 6, 5, 4, 3, 2, 1}));
  costs.clear();
  for (const koru::Solution &s : m.maximizing(x[0] - x[1], {.vars = x})) costs.push_back(s[x[0] - x[1]]);
  EXPECT_EQ(costs.back(), 5);
}

TEST(CppSearch, FindsTheBest) {
  Model m;
  const IntVars x = m.ints(3, 0, 5);
  m.post(koru::all_different(x), x[0] + x[1] >= 4);
  std::vector<long long> costs;
  const koru::Linear cost = 3 * x[0] + 2 * x[1] + x[2];
  const auto note = [&](const koru::Solution &s) { costs.push_back(s[cost]); };
  const koru::Result least = m.minimize(cost, {.vars = x, .value = koru::max_value, .found = note});
  EXPECT_EQ(least.status, koru::optimal);
  EXPECT_EQ(least.best[cost], 9);  // 0, 4, 1
  EXPECT_EQ(costs.back(), 9);
  EXPECT_GT(costs.size(), 1u);
  EXPECT_EQ(least.statistics.objective, 9);
  const koru::Result most = m.maximize(x[0] - 2 * x[2], {.vars = x});
  EXPECT_EQ(most.status, koru::optimal);
  EXPECT_EQ(most.best[x[0]], 5);
  EXPECT_EQ(m.minimize(x[2], {.vars = x}).best[x[2]], 0);
}

TEST(CppSearch, LabelsAllVariablesUnlessToldOtherwise) {
  Model m;
  const IntVars x = m.ints(2, 0, 1);
  const koru::Result all = m.solve();
  EXPECT_EQ(all.best[x], (Values{0, 0}));
  const koru::Result some = m.solve({.vars = {x[0]}});
  EXPECT_EQ(some.best[x[0]], 0);
  EXPECT_THROW(static_cast<void>(some.best[x[1]]), std::logic_error);
}

// Every order, value, restart and neighbourhood leads to the same optimum and the same number of solutions.
TEST(CppSearch, HasTheSolutionsWhateverItsOptions) {
  Model m;
  const IntVars q = queens(m, 6);
  const std::vector<koru::Order> orders = {koru::input_order,
                                           koru::smallest,
                                           koru::largest,
                                           koru::smallest_min,
                                           koru::largest_max,
                                           koru::regret,
                                           koru::most_constrained,
                                           koru::dom_wdeg,
                                           koru::activity,
                                           koru::Order([](std::span<const IntVar> v) {
                                             std::size_t i = v.size() - 1;
                                             while (v[i].fixed()) --i;
                                             return i;
                                           })};
  const std::vector<koru::Value> values = {koru::min_value,
                                           koru::max_value,
                                           koru::middle_value,
                                           koru::median_value,
                                           koru::low_half,
                                           koru::high_half,
                                           koru::random_value,
                                           koru::prefer({1, 3, 5, 0, 2, 4}, koru::max_value),
                                           koru::Value([](IntVar v) { return v.max(); }),
                                           koru::Value([](IntVar v) {
                                             return koru::Decision{koru::Relation::gt, v.min()};
                                           })};
  const std::vector<koru::Restart> restarts = {{}, koru::constant(3), koru::luby(1), koru::geometric(1, 50)};
  for (const koru::Order &order : orders) {
    for (const koru::Value &value : values) {
      for (const koru::Restart &restart : restarts) {
        const koru::Search how = {.vars = q, .order = order, .value = value, .restart = restart, .seed = 5};
        koru::Solutions all = m.solutions(how);
        int n = 0;
        while (all.next()) ++n;
        EXPECT_EQ(n, 4);
        EXPECT_EQ(all.status(), koru::exhausted);
        EXPECT_EQ(all.statistics().solutions, 4);
      }
    }
  }
  std::size_t asked = 0;
  const koru::Neighbours ends = koru::chosen_neighbours(
      [&](std::span<const int> best) -> std::vector<std::size_t> {
        asked += best.size() == 6 ? 1 : 0;
        return {0, best.size() - 1};
      },
      5);
  for (const koru::Neighbours &n : {koru::random_neighbours(5, 50), koru::linked_neighbours(), ends}) {
    const koru::Result r =
        m.maximize(q[0] + q[3], {.vars = q, .restart = koru::constant(1), .neighbours = n, .random_ties = true});
    EXPECT_EQ(r.status, koru::optimal);
    EXPECT_EQ(r.best[q[0] + q[3]], 9);
  }
  EXPECT_GT(asked, 0u);
  const koru::Neighbours none =
      koru::chosen_neighbours([](std::span<const int>) { return std::vector{std::size_t{6}}; });
  const koru::Search wrong = {.vars = q, .restart = koru::constant(1), .neighbours = none};
  EXPECT_THROW(m.maximize(q[0] + q[3], wrong), std::out_of_range);
}

TEST(CppSearch, HonoursPreferencesAndPhases) {
  Model m;
  const IntVars x = m.ints(4, 0, 9);
  const IntVars first = {x[0], x[1]};
  const IntVars last = {x[2], x[3]};
  const koru::Result r =
      m.solve({.vars = first, .value = koru::prefer({4, 7}), .then = {{.vars = last, .value = koru::max_value}}});
  EXPECT_EQ(r.best[x], (Values{4, 7, 9, 9}));
  EXPECT_THROW(m.solve({.vars = first, .value = koru::prefer({4})}), std::invalid_argument);
}

// Two jobs on two machines: first 3 on one and 2 on the other, first 2 on the other and 4 on the one.
struct SmallShop {
  Model m;
  std::vector<IntVar> starts = m.ints(4, 0, 20);
  std::vector<IntVar> lengths;
  IntVar makespan = m.var(0, 20);
  koru::Orders orders;

  SmallShop() {
    for (const int length : {3, 2, 2, 4}) lengths.push_back(m.var(length, length));
    m.post(koru::precedence(starts[0], lengths[0], starts[1]), koru::precedence(starts[2], lengths[2], starts[3]));
    m.post(koru::precedence(starts[1], lengths[1], makespan), koru::precedence(starts[3], lengths[3], makespan));
    add(0, 3, 0);
    add(1, 2, 1);
  }
  void add(std::size_t a, std::size_t b, int machine) {
    orders.tasks.push_back({m.var(0, 1), starts[a], lengths[a], starts[b], lengths[b], machine});
    const koru::TaskOrder &t = orders.tasks.back();
    m.post(koru::either_before(t.first, t.start, t.duration, t.other_start, t.other_duration));
  }
};

TEST(CppSearch, DecidesOrdersOfTasks) {
  SmallShop shop;
  for (const auto order : {koru::slack_wdeg, koru::slack, koru::input_order})
    for (const auto value : {koru::slack_value, koru::max_value})
      for (const koru::Neighbours &neighbours :
           {koru::Neighbours(), koru::window_neighbours(), koru::machine_neighbours(5, 50), koru::task_neighbours()}) {
        shop.orders.order = order;
        shop.orders.value = value;
        const koru::Result r =
            shop.m.minimize(shop.makespan, {.orders = shop.orders,
                                            .then = {{.vars = shop.starts, .order = koru::smallest_min}},
                                            .restart = koru::geometric(10, 50),
                                            .neighbours = neighbours,
                                            .guided = true});
        EXPECT_EQ(r.status, koru::optimal);
        EXPECT_EQ(r.best[shop.starts], (Values{0, 3, 0, 3}));
        EXPECT_EQ(r.best[shop.orders.tasks[0].first], 1);
      }
}

TEST(CppSearch, SetsTimes) {
  Model m;
  const IntVars starts = m.ints(3, 0, 20);
  IntVars lengths;
  for (const int length : {3, 2, 4}) lengths.push_back(m.var(length, length));
  const IntVar makespan = m.var(0, 20);
  m.post(koru::disjunctive(starts, lengths));
  for (std::size_t i = 0; i < 3; ++i) m.post(koru::precedence(starts[i], lengths[i], makespan));
  const koru::Result r = m.minimize(makespan, {.vars = starts, .order = koru::set_times});
  EXPECT_EQ(r.status, koru::optimal);
  EXPECT_EQ(r.best[makespan], 9);
}

TEST(CppSearch, RefusesOrdersThatAreNotOfTasks) {
  SmallShop shop;
  shop.orders.order = koru::set_times;
  EXPECT_THROW(shop.m.solve({.orders = shop.orders}), std::invalid_argument);
  EXPECT_THROW(shop.m.solve({.vars = shop.starts, .order = koru::slack}), std::invalid_argument);
}

TEST(CppSearch, AsksValueSelectors) {
  Model m;
  const IntVars x = m.ints(3, 0, 9);
  CSvalueSelector *down = cs_getValueSelector(CS_SELECT_DESCENDING);
  CSvalueSelector *median = cs_getValueSelector(CS_SELECT_MEDIAN);
  const koru::Value by = koru::select({down, nullptr, median});
  EXPECT_EQ(m.solve({.vars = x, .value = by}).best[x], (Values{9, 0, 4}));
  const IntVars two = {x[0], x[1]};
  EXPECT_THROW(m.solve({.vars = two, .value = by}), std::invalid_argument);
  EXPECT_THROW(m.solve({.vars = two, .then = {{.vars = {x[2]}, .value = by}}}), std::invalid_argument);
}

TEST(CppSearch, StopsAtItsLimits) {
  Model m;
  const IntVars q = queens(m, 9);
  const koru::Search all = {.vars = q, .solutions = 1000000};
  const auto status = [&](auto change) {
    koru::Search how = all;
    change(how);
    return m.solve(how).status;
  };
  EXPECT_EQ(status([](koru::Search &s) { s.fails = 10; }), koru::fail_limit);
  EXPECT_EQ(status([](koru::Search &s) { s.choice_points = 10; }), koru::choice_limit);
  EXPECT_EQ(status([](koru::Search &s) { s.memory = 1; }), koru::memory);
  EXPECT_EQ(status([](koru::Search &s) {
              s.found = [](const koru::Solution &) {};
              s.progress = [](const koru::Statistics &) { return false; };
            }),
            koru::stopped);
  EXPECT_EQ(status([](koru::Search &s) {
              s.seconds = 1e-9;
              s.found = [](const koru::Solution &) {};
            }),
            koru::time_limit);
  EXPECT_THROW(m.solve({.vars = q, .fails = -1}), std::invalid_argument);
  EXPECT_THROW(m.solve({.vars = q, .seconds = -1}), std::invalid_argument);
  EXPECT_THROW(m.solve({.vars = q, .seconds = 1e300}), std::invalid_argument);
  koru::Solutions stopped = m.solutions({.vars = q});
  stopped.stop();
  EXPECT_FALSE(stopped.next());
  EXPECT_EQ(stopped.status(), koru::stopped);
}

TEST(CppSearch, ShowsItsStatusAndStatistics) {
  Model m;
  const IntVars q = queens(m, 4);
  const koru::Result r = m.solve({.vars = q});
  std::ostringstream out;
  out << r.status << ": " << r.statistics;
  EXPECT_EQ(out.str().rfind("solution: " + std::to_string(r.statistics.choicePoints) + " choice points, ", 0), 0u);
}

TEST(CppSolution, ACopyKeepsItsValues) {
  Model m;
  const IntVars x = m.ints(2, 0, 1);
  std::vector<koru::Solution> kept;
  for (auto s : m.solutions({.vars = x})) kept.push_back(std::move(s));
  ASSERT_EQ(kept.size(), 4u);
  EXPECT_EQ(kept[0][x], (Values{0, 0}));
  EXPECT_EQ(kept[3][x], (Values{1, 1}));
  koru::Solution assigned;
  EXPECT_FALSE(assigned);
  assigned = kept[2];
  EXPECT_EQ(assigned[x], (Values{1, 0}));
  EXPECT_THROW(static_cast<void>(koru::Solution()[x[0]]), std::logic_error);
  EXPECT_THROW(static_cast<void>(assigned[m.var(3, 3)]), std::logic_error) << "a variable that came later";
}

// --- Several searches ---

TEST(CppSearch, WithinAnother) {
  Model m;
  const IntVars x = m.ints(3, 0, 2);
  m.post(koru::all_different(x));
  int n = 0;
  for (const koru::Solution &outer : m.solutions({.vars = {x[0]}})) {
    const int first = outer[x[0]];
    m.post(x[1] != 2);
    for (const koru::Solution &inner : m.solutions({.vars = x})) {
      EXPECT_EQ(inner[x[0]], first);
      ++n;
    }
  }
  EXPECT_EQ(n, 4);
  EXPECT_EQ(x[1].max(), 2);
}

TEST(CppSearch, OnlyTheNewestGoesOn) {
  Model m;
  const IntVars x = m.ints(2, 0, 1);
  koru::Solutions first = m.solutions({.vars = x});
  EXPECT_TRUE(first.next());
  {
    koru::Solutions second = m.solutions({.vars = x});
    EXPECT_THROW(first.next(), std::logic_error);
  }
  EXPECT_TRUE(first.next());
}

TEST(CppSearch, FindsNothingAfterARefusalSinceItWasMade) {
  Model m;
  const IntVars x = m.ints(2, 0, 1);
  koru::Solutions all = m.solutions({.vars = x});
  m.post(x[0] == 2);
  EXPECT_FALSE(all.next());
  EXPECT_EQ(all.status(), koru::exhausted);
  EXPECT_EQ(all.statistics().solutions, 0);
  EXPECT_FALSE(m.failed()) << "it was posted within the search, and undone with it";
  EXPECT_EQ(found(m, x).size(), 4u);
}

// --- Exceptions ---

struct Thrown {};

TEST(CppException, OfEachCallbackArrivesAndTheModelGoesOn) {
  Model m;
  const IntVars q = queens(m, 6);
  bool armed = false;
  m.post(koru::propagator(q, [&](std::span<const IntVar> v) {
    if (armed && v[0].fixed()) throw Thrown();
    return true;
  }));
  const auto throwsAndRecovers = [&](const koru::Search &how) {
    EXPECT_THROW(m.solve(how), Thrown);
    EXPECT_THROW(m.minimize(q[5], how), Thrown);
    armed = false;
    EXPECT_EQ(q[0].size(), 6) << "not all was undone";
    EXPECT_FALSE(m.failed());
    EXPECT_EQ(found(m, q).size(), 4u);
  };
  throwsAndRecovers({.vars = q, .found = [](const koru::Solution &) { throw Thrown(); }});
  throwsAndRecovers({.vars = q, .progress = [](const koru::Statistics &) -> bool { throw Thrown(); }});
  throwsAndRecovers({.vars = q, .order = [](std::span<const IntVar>) -> std::size_t { throw Thrown(); }});
  throwsAndRecovers({.vars = q, .value = [](IntVar) -> int { throw Thrown(); }});
  armed = true;
  throwsAndRecovers({.vars = q});
}

TEST(CppException, InAPostingRefusesIt) {
  Model m;
  const IntVar x = m.var(0, 3);
  {
    const koru::Context context = m.context();
    EXPECT_THROW(m.post(koru::propagator({x}, [](auto) -> bool { throw Thrown(); })), Thrown);
    EXPECT_TRUE(m.failed());
  }
  EXPECT_FALSE(m.failed());
  EXPECT_EQ(found(m, {x}).size(), 4u);
}

TEST(CppException, InARangeIsThrownByTheLoop) {
  Model m;
  const IntVars q = queens(m, 6);
  int calls = 0;
  const koru::Search how = {.vars = q, .value = [&](IntVar v) {
                              if (++calls == 8) throw Thrown();
                              return v.min();
                            }};
  EXPECT_THROW(
      {
        for (const koru::Solution &s : m.solutions(how)) static_cast<void>(s);
      },
      Thrown);
  EXPECT_EQ(q[0].size(), 6);
}

// Each allocation of the library fails in turn: std::bad_alloc, or the status of a search; never a wrong answer.
int failing = -1;
bool decide(std::size_t) { return failing < 0 || failing-- != 0; }

TEST(CppException, ExhaustedMemory) {
  koru::allocationHook = decide;
  int failures = 0;
  for (int k = 0;; ++k) {
    failing = k;
    try {
      Model m;
      const IntVars q = queens(m, 6);
      const koru::Result r = m.solve({.vars = q, .restart = koru::luby(1), .solutions = 100});
      if (failing >= 0) {
        EXPECT_EQ(r.statistics.solutions, 4);
        EXPECT_EQ(r.status, koru::exhausted);
        break;
      }
      failures += 1;
      EXPECT_TRUE(r.status == koru::memory || r.statistics.solutions == 4) << k;
    } catch (const std::bad_alloc &) {
      failures += 1;
    }
  }
  failing = -1;
  koru::allocationHook = nullptr;
  EXPECT_GT(failures, 20);
}

TEST(CppException, AModelThatMissesAConstraintIsNotSearched) {
  Model m;
  const IntVars q = queens(m, 6);
  koru::allocationHook = [](std::size_t) { return false; };
  EXPECT_THROW(
      {
        for (int i = 0; i < 100000; ++i) m.post(q[0] != q[1]);
      },
      std::bad_alloc);
  koru::allocationHook = nullptr;
  EXPECT_THROW(m.solve({.vars = q}), std::bad_alloc);
}

// --- The same in C ---

struct Counters {
  long long choicePoints, fails, solutions, wakings;
  bool operator==(const Counters &) const = default;
};

Counters of(const CSsearchStats &s) { return {s.choicePoints, s.fails, s.solutions, s.wakings}; }

Counters inC(int n) {
  cs_init();
  std::vector<CSint *> q;
  std::vector<CSint *> up;
  std::vector<CSint *> down;
  for (int i = 0; i < n; ++i) q.push_back(cs_createCSint(0, n - 1));
  for (int i = 0; i < n; ++i) {
    const long long coefficients[] = {1, -1};
    up.push_back(cs_createCSint(i, n - 1 + i));
    CSint *a[] = {q[static_cast<std::size_t>(i)], up.back()};
    EXPECT_TRUE(i == 0 ? cs_Eq(a[0], a[1]) : cs_Linear(a, coefficients, 2, CS_METHOD_EQ, -i));
    down.push_back(cs_createCSint(-i, n - 1 - i));
    CSint *b[] = {q[static_cast<std::size_t>(i)], down.back()};
    EXPECT_TRUE(i == 0 ? cs_Eq(b[0], b[1]) : cs_Linear(b, coefficients, 2, CS_METHOD_EQ, i));
  }
  EXPECT_TRUE(cs_AllNeq(q.data(), n) && cs_AllNeq(up.data(), n) && cs_AllNeq(down.data(), n));
  CSsearchOptions options = {};
  options.size = sizeof options;
  options.order = CS_ORDER_SMALLEST;
  CSsearch *search = cs_createSearch(q.data(), n);
  EXPECT_TRUE(cs_setSearchOptions(search, &options));
  while (cs_nextSolution(search) == CS_STATUS_SOLUTION) {
  }
  CSsearchStats stats;
  EXPECT_TRUE(cs_getSearchStats(search, &stats, sizeof stats));
  cs_end();
  return of(stats);
}

Counters inCpp(int n) {
  Model m;
  const IntVars q = m.ints(static_cast<std::size_t>(n), 0, n - 1);
  IntVars up;
  IntVars down;
  for (int i = 0; i < n; ++i) {
    up.push_back(m.var(q[static_cast<std::size_t>(i)] + i, "up"));
    down.push_back(m.var(q[static_cast<std::size_t>(i)] - i, "down"));
  }
  m.post(koru::all_different(q), koru::all_different(up), koru::all_different(down));
  koru::Solutions all = m.solutions({.vars = q, .order = koru::smallest});
  for (const koru::Solution &s : all) static_cast<void>(s);
  return of(all.statistics());
}

TEST(CppSearch, HasTheTreeOfTheSameModelInC) {
  for (int n = 4; n <= 8; ++n) {
    const Counters c = inC(n);
    EXPECT_GT(c.wakings, 0);
    EXPECT_EQ(inCpp(n), c) << n;
  }
}

}  // namespace
}  // namespace cpp_test
