// SPDX-License-Identifier: MIT
// Search objects against enumeration: all solutions once, the optimum, the status, and everything as it was afterwards,
// with options drawn at random.
#include <algorithm>
#include <set>

#include "core/solver.h"
#include "support/kit/failing_allocations.h"
#include "support/kit/solver_test.h"
#include "unit/solve/small_problem.h"

namespace koru::test::solve {
namespace {

class RandomProblemsTest : public SolverTest {
 protected:
  // Variables live as long as the solver, and the invariant checker looks at all of them.
  void beginAnew() {
    TearDown();
    SetUp();
    cs_saveContext();
  }

  struct Before {
    explicit Before(const SmallProblem &p) : contexts(solver::contexts.count()), trail(solver::trail.count()) {
      for (CSint *v : p.vars) domains.push_back(values(v));
    }
    void expectRestored(const SmallProblem &p) const {
      EXPECT_EQ(solver::contexts.count(), contexts);
      EXPECT_EQ(solver::trail.count(), trail);
      for (std::size_t i = 0; i < domains.size(); ++i) EXPECT_EQ(values(p.vars[i]), domains[i]);
    }
    int contexts, trail;
    std::vector<Values> domains;
  };

  static Values valuesOf(const SmallProblem &p) {
    Values v;
    for (CSint *x : p.vars) v.push_back(cs_getValue(x));
    return v;
  }

  static CSsearch *start(SmallProblem &p, const CSsearchOptions &o, Random &random) {
    const int first = random.between(0, p.size());
    CSsearch *s = cs_createSearch(p.vars.data(), first);
    EXPECT_TRUE(cs_addSearchPhase(s, p.vars.data() + first, p.size() - first, CS_ORDER_SMALLEST,
                                  o.value >= CS_VALUE_HOST ? CS_VALUE_MAX : o.value));
    EXPECT_TRUE(cs_setSearchOptions(s, &o)) << textOf(o);
    if (random.between(0, 1) == 1) {
      EXPECT_TRUE(cs_setSearchHint(s, random.between(0, p.size() - 1), 1));
    }
    return s;
  }

  // Everything about one problem; the solver runs before and after.
  void findAll(std::uint64_t seed) {
    Random random(seed);
    Random hosts(seed);
    SmallProblem p(random);
    const CSsearchOptions o = anyOptions(random, hosts);
    beginAnew();
    if (p.post()) {
      const Before before(p);
      CSsearch *s = start(p, o, random);
      std::multiset<Values> found;
      while (cs_nextSolution(s) == CS_STATUS_SOLUTION) {
        found.insert(valuesOf(p));
        ASSERT_EQ(Values(cs_getBestSolution(s), cs_getBestSolution(s) + p.size()), valuesOf(p));
      }
      const std::vector<Values> wanted = p.solutions();
      ASSERT_EQ(found, std::multiset<Values>(wanted.begin(), wanted.end())) << "seed " << seed << " " << textOf(o);
      EXPECT_EQ(cs_getSearchStatus(s), CS_STATUS_EXHAUSTED);
      before.expectRestored(p);
      EXPECT_TRUE(cs_freeSearch(s));
      before.expectRestored(p);
    } else {
      EXPECT_TRUE(p.solutions().empty());
    }
    cs_restoreContext();
  }

  void optimize(std::uint64_t seed) {
    Random random(seed);
    Random hosts(seed);
    SmallProblem p(random);
    CSsearchOptions o = anyOptions(random, hosts);
    beginAnew();
    if (p.post()) {
      const Before before(p);
      const bool minimize = random.between(0, 1) == 1;
      (minimize ? o.minimize : o.maximize) = p.cost;
      o.neighbours = random.between(CS_NEIGHBOURS_NONE, CS_NEIGHBOURS_HOST);
      o.neighbourFails = random.between(1, 3);
      o.relaxed = random.between(1, 100);
      CSsearch *s = start(p, o, random);
      std::vector<int> costs;
      while (cs_nextSolution(s) == CS_STATUS_SOLUTION) {
        const int cost = p.costOf(valuesOf(p));
        EXPECT_EQ(cs_getValue(p.cost), cost);
        if (!costs.empty()) {
          ASSERT_TRUE(minimize ? cost < costs.back() : cost > costs.back());
        }
        costs.push_back(cost);
      }
      expectOptimum(p, s, minimize, costs, seed);
      before.expectRestored(p);
      EXPECT_TRUE(cs_freeSearch(s));
      before.expectRestored(p);
    }
    cs_restoreContext();
  }

  static void expectOptimum(const SmallProblem &p, CSsearch *s, bool minimize, const std::vector<int> &costs,
                            std::uint64_t seed) {
    std::vector<int> all;
    for (const Values &v : p.solutions()) all.push_back(p.costOf(v));
    ASSERT_EQ(all.empty(), costs.empty()) << seed;
    EXPECT_EQ(cs_getSearchStatus(s), all.empty() ? CS_STATUS_EXHAUSTED : CS_STATUS_OPTIMAL);
    if (all.empty()) return;
    const auto [least, greatest] = std::ranges::minmax_element(all);
    EXPECT_EQ(costs.back(), minimize ? *least : *greatest) << "seed " << seed;
    CSsearchStats stats;
    ASSERT_TRUE(cs_getSearchStats(s, &stats, sizeof stats));
    EXPECT_EQ(stats.objective, costs.back());
    EXPECT_EQ(stats.bound, costs.back());
    EXPECT_EQ(stats.solutions, static_cast<long long>(costs.size()));
  }
};

TEST_F(RandomProblemsTest, FindsEachSolutionOnce) {
  for (std::uint64_t seed = 1; seed <= 3000 && !HasFatalFailure(); ++seed) findAll(seed);
}

TEST_F(RandomProblemsTest, ProvesTheOptimum) {
  for (std::uint64_t seed = 1; seed <= 3000 && !HasFatalFailure(); ++seed) optimize(seed);
}

TEST_F(RandomProblemsTest, FindsEachSolutionOnceHeavy) {
  for (std::uint64_t seed = 10001; seed <= 60000 && !HasFatalFailure(); ++seed) findAll(seed);
}

TEST_F(RandomProblemsTest, ProvesTheOptimumHeavy) {
  for (std::uint64_t seed = 10001; seed <= 60000 && !HasFatalFailure(); ++seed) optimize(seed);
}

// A limit or a stop at the k-th choice point ends it there, and nothing that came before is different.
TEST_F(RandomProblemsTest, StopsWhereItIsTold) {
  for (std::uint64_t seed = 1; seed <= 300; ++seed) {
    std::vector<Values> whole;
    for (int k = 0; k <= 30; ++k) {
      Random random(seed);
      Random hosts(seed);
      SmallProblem p(random);
      CSsearchOptions o = anyOptions(random, hosts);
      o.choicePoints = k;
      beginAnew();
      if (p.post()) {
        const Before before(p);
        CSsearch *s = start(p, o, random);
        std::vector<Values> found;
        while (cs_nextSolution(s) == CS_STATUS_SOLUTION) found.push_back(valuesOf(p));
        if (k == 0) whole = found;
        ASSERT_LE(found.size(), whole.size());
        EXPECT_TRUE(std::equal(found.begin(), found.end(), whole.begin())) << seed << " " << k;
        CSsearchStats stats;
        ASSERT_TRUE(cs_getSearchStats(s, &stats, sizeof stats));
        if (cs_getSearchStatus(s) == CS_STATUS_CHOICE_POINTS) {
          EXPECT_EQ(stats.choicePoints, k);
        } else {
          EXPECT_EQ(found, whole);
        }
        before.expectRestored(p);
        EXPECT_TRUE(cs_freeSearch(s));
      }
      cs_restoreContext();
    }
  }
}

// A stop in the middle of a propagation, at each of its events: what came before is as without it, and no failure is
// taken for a proof.
class StoppedInsideTest : public RandomProblemsTest {
 protected:
  struct Stopper {
    CSsearch *search = nullptr;
    int left;
  };
  static bool count(CSint *, int, int, CSint **, int, void *extra) {
    auto &stopper = *static_cast<Stopper *>(extra);
    if (stopper.search != nullptr && --stopper.left == 0) cs_stopSearch(stopper.search);
    return true;
  }

  // The solutions up to a stop at the k-th event; 0: none.
  std::vector<Values> stopAt(std::uint64_t seed, int k, const std::vector<Values> &whole) {
    Random random(seed);
    Random hosts(seed);
    SmallProblem p(random);
    CSsearchOptions o = anyOptions(random, hosts);
    if (seed % 2 == 0) o.restarts = CS_RESTARTS_CONSTANT;
    beginAnew();
    std::vector<Values> found;
    if (p.post()) {
      if (seed % 3 == 0) o.minimize = p.cost;
      Stopper stopper{nullptr, k};
      cs_eventNewMin(p.vars.data(), p.size(), count, &stopper);
      cs_eventNewMax(p.vars.data(), p.size(), count, &stopper);
      const Before before(p);
      CSsearch *s = stopper.search = start(p, o, random);
      while (cs_nextSolution(s) == CS_STATUS_SOLUTION) found.push_back(valuesOf(p));
      const bool stopped = k > 0 && stopper.left <= 0;
      if (!stopped) {
        EXPECT_NE(cs_getSearchStatus(s), CS_STATUS_STOPPED);
      } else if (cs_getSearchStatus(s) != CS_STATUS_STOPPED) {
        EXPECT_EQ(found, whole) << "the stop came when all was done; seed " << seed << " event " << k;
      }
      before.expectRestored(p);
      EXPECT_TRUE(cs_freeSearch(s));
      before.expectRestored(p);
    }
    cs_restoreContext();
    return found;
  }
};

TEST_F(StoppedInsideTest, NothingBeforeIsDifferent) {
  for (std::uint64_t seed = 1; seed <= 300; ++seed) {
    const std::vector<Values> whole = stopAt(seed, 0, {});
    for (int k = 1; k <= 20; ++k) {
      const std::vector<Values> found = stopAt(seed, k, whole);
      ASSERT_LE(found.size(), whole.size());
      EXPECT_TRUE(std::equal(found.begin(), found.end(), whole.begin())) << seed << " " << k;
    }
  }
}

// Every allocation of a search can fail, once or from then on, also where the stacks are full to the last entry of a
// block: it says so, and nothing is lost.
class ExhaustedMemoryTest : public RandomProblemsTest {
 protected:
  static CSsearchOptions optionsFor(std::uint64_t seed, const SmallProblem &p, Random &random, Random &hosts) {
    CSsearchOptions o = anyOptions(random, hosts);
    if (seed % 2 == 0) o.restarts = CS_RESTARTS_CONSTANT;
    if (seed % 3 == 0) {
      o.minimize = p.cost;
      o.neighbours = random.between(CS_NEIGHBOURS_NONE, CS_NEIGHBOURS_HOST);
    }
    return o;
  }

  // False when the search did not ask for a k-th allocation.
  bool failAt(std::uint64_t seed, int k, Failing how, int contexts) {
    Random random(seed);
    Random hosts(seed);
    SmallProblem p(random);
    beginAnew();
    if (!p.post()) return false;
    const CSsearchOptions o = optionsFor(seed, p, random, hosts);
    while (solver::contexts.count() < contexts) cs_saveContext();
    const Before before(p);
    bool refused = false;
    {
      const FailingAllocator failing(k, how);
      CSsearch *s = cs_createSearch(p.vars.data(), p.size());
      if (s != nullptr) {
        EXPECT_TRUE(cs_setSearchOptions(s, &o));
        while (cs_nextSolution(s) == CS_STATUS_SOLUTION) continue;
        refused = FailingAllocator::failures() > 0;
        EXPECT_EQ(cs_getSearchStatus(s) == CS_STATUS_MEMORY, refused) << seed << " " << k << " " << textOf(o);
        EXPECT_TRUE(cs_freeSearch(s));
      } else {
        refused = true;
      }
    }
    before.expectRestored(p);
    cs_end();
    EXPECT_EQ(blocksAlive, 0) << seed << " " << k;
    return refused;
  }
};

TEST_F(ExhaustedMemoryTest, IsToldAndNothingIsLost) {
  for (std::uint64_t seed = 1; seed <= 40; ++seed)
    for (const Failing how : {Failing::kOnce, Failing::kForEver})
      for (const int contexts : {1, 1022, 1023, 1024})
        for (int k = 0; failAt(seed, k, how, contexts); ++k) continue;
}

}  // namespace
}  // namespace koru::test::solve
