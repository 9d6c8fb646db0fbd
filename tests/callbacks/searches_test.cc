// SPDX-License-Identifier: MIT
// What the callbacks of the searches may do: each action is taken in every callback of every search, and the search
// must go its way as if nothing had happened.
#include "core/solver.h"
#include "support/kit/search_trace.h"
#include "support/kit/solver_test.h"
#include "support/kit/written_text.h"

namespace {

using namespace koru;
using namespace koru::test;

constexpr int kSize = 4;

// x[i] in 0..3, all different, x[0] < x[3].
struct Puzzle {
  CSint *x[kSize];

  Puzzle() {
    for (CSint *&v : x) v = cs_createCSint(0, 3);
    EXPECT_EQ(cs_AllNeq(x, kSize), 1);
    EXPECT_TRUE(cs_Lt(x[0], x[3]));
  }
};

Puzzle *puzzle;
void (*action)();
int callbacks;
std::vector<std::vector<int>> solutions;

void disturb() {
  ++callbacks;
  if (action != nullptr) action();
}

void noteSolution(CSint **array) {
  std::vector<int> solution;
  for (int i = 0; i < kSize; ++i) solution.push_back(cs_getValue(array[i]));
  solutions.push_back(solution);
}

// ----- the callbacks

CSint *select(CSint **array, int size) {
  disturb();
  return cs_findFreeVarNbElements(array, size);
}
int selectIndex(CSint **array, int size) {
  disturb();
  return firstFree(array, size);
}
void found(CSint **array, int) {
  noteSolution(array);
  disturb();
}
void foundCost(CSint **array, int, CSint *) { found(array, kSize); }
int score(int index, int value) {
  disturb();
  return index % 2 == 0 ? value : -value;
}
int cellScore(int, int column, int value) { return score(column, value); }
int row(CSint ***matrix, int, int columns) {
  disturb();
  return firstFree(matrix[0], columns) < 0 ? -1 : 0;
}
int column(int, CSint **cells, int columns) {
  disturb();
  return firstFree(cells, columns);
}

// ----- the searches

bool runFirst() { return cs_search(puzzle->x, kSize, select); }
bool runAll() { return cs_findAll(puzzle->x, kSize, select, found); }
bool runBuiltIn() { return cs_findAll(puzzle->x, kSize, cs_findFreeVarNbElementsMin, found); }
bool runMinimize() { return cs_minimize(puzzle->x, kSize, select, puzzle->x[1], foundCost); }
bool runCriteria() { return cs_searchCriteria(puzzle->x, kSize, selectIndex, score); }
bool runMatrix() {
  CSint **rows[] = {puzzle->x};
  return cs_searchMatrix(rows, 1, kSize, row, column, cellScore);
}
bool runSelectors() {
  SearchTrace trace;
  trace.onLine = [](const std::string &) { disturb(); };
  trace.accepts = [](CSint **array, int) {
    noteSolution(array);
    return false;
  };
  CSvalueSelector **selectors =
      trace.logging({cs_getValueSelector(1), cs_getValueSelector(2), cs_getValueSelector(3), cs_getValueSelector(4)});
  return cs_searchValueSelectorFail(puzzle->x, selectors, kSize, selectIndex, 0, trace.hooks());
}

struct Search {
  const char *name;
  bool (*run)();
};

constexpr Search kSearches[] = {{"cs_search", runFirst},
                                {"cs_findAll", runAll},
                                {"built-in selection", runBuiltIn},
                                {"cs_minimize", runMinimize},
                                {"cs_searchCriteria", runCriteria},
                                {"cs_searchMatrix", runMatrix},
                                {"selectors", runSelectors}};

// ----- the actions

void createVariables() {
  CSint *v = cs_createNamedCSint(0, 9, "made in a callback");
  EXPECT_TRUE(cs_NEQ(v, 4));
}

void postConstraints() {
  CSint *sum = cs_Add(puzzle->x[0], puzzle->x[1]);
  ASSERT_NE(sum, nullptr);
  EXPECT_TRUE(cs_Le(sum, cs_createCSint(0, 9)));
}

void saveAndRestore() {
  cs_saveContext();
  for (CSint *v : puzzle->x)
    if (!cs_EQ(v, cs_getMax(v))) break;
  cs_restoreContext();
}

void queryAndPrint() {
  std::FILE *file = temporaryFile();
  cs_fprintf(file, "%A\n", puzzle->x, kSize);
  cs_fprintStats(file);
  std::fclose(file);
}

// A solution of the rest of the puzzle, looked at and taken back.
void searchInside() {
  const int label = cs_saveContext();
  cs_search(puzzle->x, kSize, cs_findFreeVarNbElements);
  cs_restoreContextUntil(label);
  cs_searchCriteria(puzzle->x, kSize, firstFree, [](int, int value) { return value; });
  cs_restoreContextUntil(label);
}

void searchForAllInside() {
  cs_findAll(puzzle->x, kSize, cs_findFreeVar, nullptr);
  const int label = cs_saveContext();
  cs_minimize(puzzle->x, kSize, cs_findFreeVar, puzzle->x[2], nullptr);
  cs_restoreContextUntil(label);
}

void searchWithSelectorsInside() {
  CSvalueSelector *selectors[kSize];
  for (auto &each : selectors) each = cs_getValueSelector(CS_SELECT_UPPER_HALF);
  const int label = cs_saveContext();
  cs_searchValueSelectorFail(puzzle->x, selectors, kSize, firstFree, 2, nullptr);
  cs_restoreContextUntil(label);
}

struct Action {
  const char *name;
  void (*take)();
  bool countersKept;  // a search inside starts the counters anew
};

constexpr Action kActions[] = {{"create variables", createVariables, true},
                               {"post constraints", postConstraints, true},
                               {"save and restore", saveAndRestore, true},
                               {"query and print", queryAndPrint, true},
                               {"search inside", searchInside, false},
                               {"search for all inside", searchForAllInside, false},
                               {"search with selectors inside", searchWithSelectorsInside, false}};

struct Outcome {
  bool result = false;
  std::vector<std::vector<int>> solutions;
  std::string domains;
  int contexts = 0;
  int callbacks = 0;
  bool operator==(const Outcome &) const = default;
};

void PrintTo(const Outcome &o, std::ostream *out) {
  *out << o.result << ", " << ::testing::PrintToString(o.solutions) << ", " << o.domains << ", " << o.contexts
       << " contexts, " << o.callbacks << " callbacks";
}

struct Counters {
  int choicePoints;
  int fails;
};

class SearchCallbackTest : public ::testing::Test {
 protected:
  // A run in a solver of its own.
  Outcome run(const Search &search, void (*take)()) {
    cs_init();
    Puzzle fresh;
    puzzle = &fresh;
    action = take;
    callbacks = 0;
    solutions.clear();
    Outcome outcome;
    outcome.result = search.run();
    counters = {cs_getNbChoicePoints(), cs_getNbFails()};
    for (CSint *v : fresh.x) outcome.domains += ::testing::PrintToString(values(v));
    outcome.solutions = solutions;
    outcome.contexts = solver::contexts.count();
    outcome.callbacks = callbacks;
    cs_end();
    return outcome;
  }

  Counters counters{};
};

TEST_F(SearchCallbackTest, NoActionChangesTheCourseOfASearch) {
  for (const Search &search : kSearches) {
    const Outcome undisturbed = run(search, nullptr);
    const Counters expected = counters;
    EXPECT_GT(undisturbed.callbacks, 3) << search.name;
    for (const Action &each : kActions) {
      SCOPED_TRACE(std::string(search.name) + ", " + each.name);
      EXPECT_EQ(run(search, each.take), undisturbed);
      if (!each.countersKept) continue;
      EXPECT_EQ(counters.choicePoints, expected.choicePoints);
      EXPECT_EQ(counters.fails, expected.fails);
    }
  }
}

// Cancelling in the k-th callback, for every k: the search returns, and all it leaves can be restored.
TEST_F(SearchCallbackTest, ACancelInAnyCallbackEndsTheSearchAndIsRestorable) {
  static int left;
  for (const Search &search : kSearches) {
    const int total = run(search, nullptr).callbacks;
    for (int k = 1; k <= total; ++k) {
      SCOPED_TRACE(std::string(search.name) + ", callback " + std::to_string(k));
      left = k;
      cs_init();
      Puzzle fresh;
      puzzle = &fresh;
      solutions.clear();
      callbacks = 0;
      action = [] {
        if (--left == 0) cs_cancelSearch();
      };
      search.run();
      // After the cancel: at most the rest of the level's step, and one more step on each level above.
      EXPECT_LE(callbacks - k, 8 * (kSize + 1));
      cs_restoreAll();
      if (search.run != runMinimize) {
        EXPECT_EQ(values(fresh.x[1]), (std::vector{0, 1, 2, 3}));
      }
      cs_end();
    }
  }
}

}  // namespace
