// SPDX-License-Identifier: MIT
// Restarts with learning on random problems: no solution is lost, and no no-good forbids one that is still wanted.
#include <random>
#include <set>

#include "support/no_goods/restart_test.h"

namespace {

using namespace koru::test;
using namespace koru::test::nogood;

using Assignment = std::vector<int>;
using Solutions = std::set<Assignment>;

// Variables with relations between them, some of each kind, and all the solutions.
class Problem {
 public:
  explicit Problem(unsigned seed) : random_(seed) {
    cs_init();
    const int variables = 4 + below(3);
    for (int i = 0; i < variables; ++i) x.push_back(cs_createCSint(0, 1 + below(3)));
    for (auto &selector : selectors) selector = cs_getValueSelector(below(5));
    for (const int relations = 2 * variables + below(variables); posted_ < relations; ++posted_)
      consistent_ = post() && consistent_;
    if (consistent_) enumerate();
  }
  ~Problem() { cs_end(); }
  Problem(const Problem &) = delete;
  Problem &operator=(const Problem &) = delete;

  int below(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }
  int size() const { return static_cast<int>(x.size()); }
  bool consistent() const { return consistent_; }

  static Assignment assignmentOf(CSint **array, int size) {
    Assignment result;
    for (int i = 0; i < size; ++i) result.push_back(cs_getValue(array[i]));
    return result;
  }

  std::vector<CSint *> x;
  CSvalueSelector *selectors[6];
  static inline Solutions all;

 private:
  CSint *variable() { return x[static_cast<std::size_t>(below(size()))]; }

  bool post() {
    CSint *a = variable();
    CSint *b = variable();
    switch (below(5)) {
      case 0:
        return cs_IfEq(a, b, below(4), below(4));
      case 1:
        return cs_IfNeq(a, b, below(4), below(4));
      case 2:
        return a == b || cs_Neq(a, b);
      case 3:
        return cs_Neq(cs_Add(a, b), cs_Add(variable(), CSINT(below(3))));
      default:
        return cs_Neq(cs_Abs(cs_Sub(a, b)), variable());
    }
  }

  void enumerate() {
    all.clear();
    cs_findAll(x.data(), size(), cs_findFreeVar,
               [](CSint **array, int size) { all.insert(assignmentOf(array, size)); });
  }

  std::mt19937 random_;
  int posted_ = 0;
  bool consistent_ = true;
};

// What the callbacks of a search see.
struct Search {
  CSnoGoodSet *set;
  int limit;
  int step;
  bool rejectsAll;
  Solutions seen;
  int runs = 0;
  std::size_t learnt = 0;

  void check() {
    ++runs;
    const std::vector<Literals> noGoods = contents(set);
    learnt = std::max(learnt, noGoods.size());
    for (const Assignment &solution : Problem::all) {
      if (seen.contains(solution)) continue;
      for (const Literals &n : noGoods)
        EXPECT_FALSE(forbids(n, solution))
            << ::testing::PrintToString(n) << " forbids " << ::testing::PrintToString(solution);
    }
  }

  static int nextLimit(void *self) {
    auto &search = *static_cast<Search *>(self);
    return search.limit += search.step;
  }
  static void end(bool, int, int, CSint **, int, void *self) { static_cast<Search *>(self)->check(); }
  static bool found(int, CSint **array, int size, void *self) {
    auto &search = *static_cast<Search *>(self);
    search.seen.insert(Problem::assignmentOf(array, size));
    return !search.rejectsAll;
  }
};

int smallestDomain(CSint **array, int size) {
  int best = -1;
  for (int i = 0; i < size; ++i)
    if (cs_isFree(array[i]) && (best < 0 || cs_getNbElements(array[i]) < cs_getNbElements(array[best]))) best = i;
  return best;
}

struct Totals {
  int restarts = 0;
  std::size_t learnt = 0;
  std::size_t solutions = 0;
};

bool run(Problem &problem, Search &search, Totals &totals) {
  CSsearchNotify *notify = cs_createSearchNotify(&search);
  cs_searchNotifySetFound(cs_searchNotifySetSearchEnd(notify, Search::end), Search::found);
  search.set =
      cs_createNoGoodSet(problem.x.data(), problem.size(), nullptr, problem.below(4) == 0 ? 3 : 0, nullptr, nullptr);
  const CSfindFreeVarIndex select = problem.below(2) == 0 ? firstFree : smallestDomain;
  const bool result = cs_searchValueSelectorRestartNG(problem.x.data(), problem.selectors, problem.size(), select,
                                                      Search::nextLimit, &search, 0, search.set, notify);
  cs_freeSearchNotify(notify);
  totals.restarts += search.runs - 1;
  totals.learnt += search.learnt;
  totals.solutions += search.seen.size();
  return result;
}

template <class Check>
Totals onRandomProblems(unsigned firstSeed, unsigned count, bool rejectsAll, Check check) {
  Totals totals;
  for (unsigned seed = firstSeed; seed < firstSeed + count && !::testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Problem problem(seed);
    if (!problem.consistent()) continue;
    Search search{nullptr, problem.below(3), 1 + problem.below(2), rejectsAll, {}};
    check(search, run(problem, search, totals));
  }
  return totals;
}

// Few problems keep a search busy: for most, the first branch or the first run is enough.
Totals checkFirstSolution(unsigned firstSeed, unsigned count) {
  return onRandomProblems(firstSeed, count, false, [](const Search &search, bool found) {
    EXPECT_EQ(found, !Problem::all.empty());
    for (const Assignment &solution : search.seen) EXPECT_TRUE(Problem::all.contains(solution));
  });
}

Totals checkAllSolutions(unsigned firstSeed, unsigned count) {
  return onRandomProblems(firstSeed, count, true, [](const Search &search, bool found) {
    EXPECT_FALSE(found);
    EXPECT_EQ(search.seen, Problem::all);
  });
}

TEST(NoGoodRestartTest, ASolutionIsFoundExactlyWhenThereIsOneAndNoNoGoodForbidsAny) {
  const Totals totals = checkFirstSolution(1, 400);
  EXPECT_GT(totals.restarts, 300);
  EXPECT_GT(totals.learnt, 300U);
}

TEST(NoGoodRestartTest, RejectingEverySolutionVisitsAllAndNoGoodsForbidOnlyThoseSeen) {
  const Totals totals = checkAllSolutions(5000, 200);
  EXPECT_GT(totals.restarts, 1000);
  EXPECT_GT(totals.learnt, 500U);
  EXPECT_GT(totals.solutions, 1000U);
}

TEST(NoGoodRestartTest, BothHoldOnManyMoreProblemsHeavy) {
  EXPECT_GT(checkFirstSolution(20000, 8000).learnt, 1000U);
  EXPECT_GT(checkAllSolutions(50000, 2000).restarts, 5000);
}

}  // namespace
