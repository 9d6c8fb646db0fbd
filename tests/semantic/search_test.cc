// SPDX-License-Identifier: MIT
// Every search on seeded random problems: result, counters, contexts, calls in their order and the domains left behind,
// against the same search on a model; and the solutions against enumeration.
#include "core/solver.h"
#include "semantic/search_model_engines.h"
#include "support/kit/instrumented.h"
#include "support/kit/solver_test.h"

namespace koru::test::search {
namespace {

constexpr int kProblems = rounds(250);

std::string valuesOf(const Model::Domain &domain) {
  return ::testing::PrintToString(std::vector<int>(domain.begin(), domain.end()));
}

// One problem in the library and in the model, and the calls that the library makes.
class SearchModelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    cs_init();
    cs_setErrHandler(
        CS_ERR_MEMORY, [](CSint *, void *) { ADD_FAILURE() << "memory exhausted"; }, nullptr);
  }
  void TearDown() override { cs_end(); }

  // Calls check(problem, random) for random problems that are consistent when posted, in a new solver each.
  template <class Check>
  void forProblems(const Check &check) {
    int consistent = 0;
    for (unsigned seed = 0; seed < kProblems && !HasFailure(); ++seed) {
      SCOPED_TRACE("seed " + std::to_string(seed));
      Random random(seed);
      const Problem problem = randomProblem(random);
      cs_end();
      SetUp();
      const Posted real(problem);
      Model model(problem);
      ASSERT_EQ(real.consistent, model.consistent);
      if (!real.consistent) continue;
      ++consistent;
      lines.clear();
      solutions.clear();
      check(real, model, random);
    }
    EXPECT_GT(consistent, kProblems / 4);
  }

  static void log(const std::string &line) {
    lines.push_back(line);
    if (static_cast<int>(lines.size()) == whims.cancelAt) cs_cancelSearch();
  }
  static void found(CSint **array, int size) {
    std::vector<int> solution;
    for (int i = 0; i < size; ++i) solution.push_back(cs_getValue(array[i]));
    solutions.push_back(solution);
    log("found");
  }
  static void foundCost(CSint **array, int size, CSint *cost) {
    found(array, size);
    solutions.back().push_back(cs_getMin(cost));
  }

  // What a search leaves. The domains are comparable unless a failed propagation was left standing.
  static void expectSame(const Posted &real, const Engines &twin, bool comparable) {
    EXPECT_EQ(lines, twin.lines);
    EXPECT_EQ(solutions, twin.solutions);
    EXPECT_EQ(cs_getNbChoicePoints(), twin.choicePoints);
    EXPECT_EQ(cs_getNbFails(), twin.fails);
    EXPECT_EQ(solver::contexts.count(), twin.model.contexts());
    for (int i = 0; comparable && i < real.size(); ++i)
      EXPECT_EQ(::testing::PrintToString(values(real.array[static_cast<std::size_t>(i)])),
                valuesOf(twin.model.element(i)));
  }
  static void expectSameAfterRestore(const Posted &real, Engines &twin) {
    cs_restoreAll();
    twin.model.restoreUntil(1);
    for (int i = 0; i < real.size(); ++i)
      EXPECT_EQ(::testing::PrintToString(values(real.array[static_cast<std::size_t>(i)])),
                valuesOf(twin.model.element(i)));
  }

  // Some runs with a cancel, some with a fail limit, some with answers of no.
  static Engines twinFor(Model &model, Random &random) {
    whims = {random.next(), random.chance(30) ? random.between(2, 8) : 0,
             random.chance(30) ? random.between(1, 60) : -1};
    return {.model = model, .whims = whims, .limit = random.chance(30) ? random.between(1, 8) : random.between(-1, 0)};
  }

  static inline std::vector<std::string> lines;
  static inline std::vector<std::vector<int>> solutions;
  static inline Whims whims;
};

struct Selections {
  CSfindFreeVar real;
  Engines::Select model;
};
constexpr Selections kSelections[] = {{cs_findFreeVar, Engines::first},
                                      {cs_findFreeVarNbElements, Engines::fewest},
                                      {cs_findFreeVarNbElementsMin, Engines::fewestThenLowest}};

TEST_F(SearchModelTest, DepthFirstAgreesWithTheModel) {
  forProblems([](const Posted &real, Model &model, Random &random) {
    for (const Selections &select : kSelections) {
      Engines twin = twinFor(model, random);
      const bool result = cs_searchFail(real.array.data(), real.size(), select.real, twin.limit);
      EXPECT_EQ(result, twin.depthFirst(select.model));
      expectSame(real, twin, result || !twin.limitReached(twin.fails));
      expectSameAfterRestore(real, twin);
    }
  });
}

TEST_F(SearchModelTest, AllSolutionsAgreesWithTheModel) {
  forProblems([](const Posted &real, Model &model, Random &random) {
    Engines twin = twinFor(model, random);
    const Selections &select = kSelections[random.below(3)];
    const bool result = cs_findAll(real.array.data(), real.size(), select.real, found);
    twin.allSolutions(select.model);
    EXPECT_EQ(result, !twin.solutions.empty());
    expectSame(real, twin, true);
    expectSameAfterRestore(real, twin);
  });
}

// The bound that ends the search may fail in the middle of propagation, at the level of the caller.
TEST_F(SearchModelTest, MinimizeAgreesWithTheModel) {
  forProblems([](const Posted &real, Model &model, Random &random) {
    Engines twin = twinFor(model, random);
    twin.limit = 0;
    const Selections &select = kSelections[random.below(3)];
    const int cost = random.below(static_cast<int>(real.variables.size()));
    const bool result = cs_minimize(real.array.data(), real.size(), select.real, real.at(cost), foundCost);
    EXPECT_EQ(result, twin.minimize(select.model, cost));
    expectSame(real, twin, !result);
  });
}

int firstIndex(CSint **array, int size) { return firstFree(array, size); }

TEST_F(SearchModelTest, CriteriaAgreesWithTheModel) {
  const auto score = [](int index, int value) {
    log(lineOf("score", index, value));
    return whims.score(index, value);
  };
  forProblems([&](const Posted &real, Model &model, Random &random) {
    Engines twin = twinFor(model, random);
    const bool result = cs_searchCriteriaFail(real.array.data(), real.size(), firstIndex, score, twin.limit);
    EXPECT_EQ(result, twin.criteria());
    expectSame(real, twin, result || !twin.limitReached(twin.fails));
    expectSameAfterRestore(real, twin);
  });
}

// The array cut into rows of `columns`. The finders are told the number of columns and know the size.
class MatrixModelTest : public SearchModelTest {
 protected:
  static int columnsOf(int row) { return std::min(columns, total - row * columns); }
  static int row(CSint ***matrix, int rows, int) {
    int r = 0;
    while (r < rows && firstFree(matrix[r], columnsOf(r)) < 0) ++r;
    if (r == rows) r = -1;
    log(lineOf("row", r));
    return r;
  }
  static int column(int r, CSint **array, int) {
    log(lineOf("column", r, firstFree(array, columnsOf(r))));
    return firstFree(array, columnsOf(r));
  }
  static int score(int r, int c, int value) {
    log(lineOf("score", r * columns + c, value));
    return whims.score(r * columns + c, value);
  }
  static inline int columns = 0;
  static inline int total = 0;
};

TEST_F(MatrixModelTest, MatrixAgreesWithTheModel) {
  forProblems([](const Posted &real, Model &model, Random &random) {
    Engines twin = twinFor(model, random);
    columns = random.between(1, 3);
    total = real.size();
    std::vector<CSint **> rows;
    for (int i = 0; i < total; i += columns) rows.push_back(real.array.data() + i);
    const bool result =
        cs_searchMatrixFail(rows.data(), static_cast<int>(rows.size()), columns, row, column, score, twin.limit);
    const int firstRow = twin.freeRow(columns);
    EXPECT_EQ(result, twin.matrix(firstRow, columns));
    expectSame(real, twin, result || !twin.limitReached(twin.fails));
    expectSameAfterRestore(real, twin);
  });
}

// ----- selectors: a random kind for each position; hooks and selectors log every call and answer as the whims say

class SelectorModelTest : public SearchModelTest {
 protected:
  SelectorModelTest() {
    trace.onLine = [this](const std::string &) {
      if (static_cast<int>(trace.lines.size()) == whims.cancelAt) cs_cancelSearch();
    };
    trace.begins = trace.ends = [this](int) { return whims.says(trace.lines.size()); };
    trace.accepts = [this](CSint **array, int size) {
      if (whims.says(trace.lines.size())) return true;
      std::vector<int> solution;
      for (int i = 0; i < size; ++i) solution.push_back(cs_getValue(array[i]));
      solutions.push_back(solution);
      return false;
    };
  }

  bool search(const Posted &real, const std::vector<int> &kinds, int limit) {
    std::vector<CSvalueSelector *> selectors;
    for (const int kind : kinds) selectors.push_back(cs_getValueSelector(kind));
    trace.lines.clear();
    const bool result = cs_searchValueSelectorFail(real.array.data(), trace.logging(selectors), real.size(), firstIndex,
                                                   limit, trace.hooks());
    lines = trace.lines;
    return result;
  }

  static std::vector<int> randomKinds(int size, Random &random) {
    std::vector<int> kinds;
    const int only = random.chance(50) ? random.below(5) : -1;
    for (int i = 0; i < size; ++i) kinds.push_back(only < 0 ? random.below(5) : only);
    return kinds;
  }

  SearchTrace trace;
};

TEST_F(SelectorModelTest, TheSelectorEngineAgreesWithTheModelCallByCall) {
  std::size_t calls = 0;
  forProblems([&](const Posted &real, Model &model, Random &random) {
    for (int i = 0; i < 4; ++i) {
      solutions.clear();
      Engines twin = twinFor(model, random);
      const std::vector<int> kinds = randomKinds(real.size(), random);
      const bool result = search(real, kinds, twin.limit);
      twin.log(lineOf("start", twin.limit, real.size()));
      const bool expected = twin.selectors(kinds, 0);
      twin.log(lineOf("end", expected, twin.fails, twin.limit, real.size()));
      EXPECT_EQ(result, expected);
      expectSame(real, twin, !twin.limitReached(twin.runFails));
      expectSameAfterRestore(real, twin);
      calls += lines.size();
      if (HasFailure()) return;
    }
  });
  EXPECT_GT(calls, rounds(20000U));
}

// ----- solutions, by enumeration

using Solutions = std::set<std::vector<int>>;

bool satisfies(const Problem &p, const std::vector<int> &values) {
  const auto at = [&](int i) { return values[static_cast<std::size_t>(i)]; };
  for (const auto &[x, y] : p.different)
    if (at(x) == at(y)) return false;
  for (const auto &[x, y, a, b] : p.never)
    if (at(x) == a && at(y) == b) return false;
  return true;
}

void enumerate(const Problem &p, std::vector<int> &values, Solutions &solutions) {
  if (values.size() == p.domains.size()) {
    std::vector<int> ordered;
    for (const int i : p.order) ordered.push_back(values[static_cast<std::size_t>(i)]);
    if (satisfies(p, values)) solutions.insert(ordered);
    return;
  }
  for (const int value : p.domains[values.size()]) {
    values.push_back(value);
    enumerate(p, values, solutions);
    values.pop_back();
  }
}

Solutions allSolutions(const Problem &p) {
  Solutions solutions;
  std::vector<int> values;
  enumerate(p, values, solutions);
  return solutions;
}

class EnumerationTest : public SelectorModelTest {
 protected:
  void SetUp() override {
    SelectorModelTest::SetUp();
    whims = {};
  }
  // Each solution once.
  static void expectAll(const Problem &p) {
    EXPECT_EQ(Solutions(solutions.begin(), solutions.end()), allSolutions(p));
    EXPECT_EQ(solutions.size(), allSolutions(p).size());
  }
};

TEST_F(EnumerationTest, AllSolutionsVisitsEachSolutionOnce) {
  forProblems([](const Posted &real, Model &model, Random &) {
    for (const Selections &select : kSelections) {
      solutions.clear();
      cs_findAll(real.array.data(), real.size(), select.real, found);
      expectAll(model.problem);
    }
  });
}

TEST_F(EnumerationTest, EveryMixtureOfSelectorsVisitsEachSolutionOnceWhenAllAreRejected) {
  trace.accepts = [](CSint **array, int size) {
    found(array, size);
    return false;
  };
  trace.begins = trace.ends = nullptr;
  forProblems([&](const Posted &real, Model &model, Random &random) {
    for (int i = 0; i < 6; ++i) {
      solutions.clear();
      EXPECT_FALSE(search(real, randomKinds(real.size(), random), 0));
      expectAll(model.problem);
      EXPECT_EQ(solver::contexts.count(), 0);
    }
  });
}

TEST_F(EnumerationTest, SearchesForOneSolutionReachOneIfThereIsOne) {
  const auto score = [](int index, int value) { return value * (index % 2 == 0 ? 1 : -1); };
  forProblems([&](const Posted &real, Model &model, Random &random) {
    const Solutions expected = allSolutions(model.problem);
    const auto expectOne = [&](bool result) {
      EXPECT_EQ(result, !expected.empty());
      if (result) found(real.array.data(), real.size());
      EXPECT_TRUE(!result || expected.count(solutions.back()) == 1);
      cs_restoreAll();
    };
    for (const Selections &select : kSelections) expectOne(cs_search(real.array.data(), real.size(), select.real));
    expectOne(cs_searchCriteria(real.array.data(), real.size(), firstIndex, score));
    expectOne(search(real, randomKinds(real.size(), random), 0));
  });
}

TEST_F(EnumerationTest, MinimizeEndsWithTheLeastCost) {
  forProblems([](const Posted &real, Model &model, Random &random) {
    const int cost = random.below(real.size());
    std::vector<int> costs;
    for (const std::vector<int> &solution : allSolutions(model.problem))
      costs.push_back(solution[static_cast<std::size_t>(cost)]);
    const bool result = cs_minimize(real.array.data(), real.size(), cs_findFreeVarNbElements,
                                    real.array[static_cast<std::size_t>(cost)], foundCost);
    EXPECT_EQ(result, !costs.empty());
    EXPECT_TRUE(!result || solutions.back().back() == *std::min_element(costs.begin(), costs.end()));
    for (std::size_t i = 1; i < solutions.size(); ++i) EXPECT_LT(solutions[i].back(), solutions[i - 1].back());
  });
}

}  // namespace
}  // namespace koru::test::search
