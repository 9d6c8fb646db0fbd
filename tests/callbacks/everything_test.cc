// SPDX-License-Identifier: MIT
// Every kind of callback doing every kind of thing that a callback may do: the library's answer is the one it gives
// when the callback does nothing, the solver keeps its invariants, and what is open can be restored.
//
// A kind is a scenario in which a callback calls act(); an action works on variables of its own, but for one that
// posts what holds anyway on those of the scenario. A callback that is called by what the action does, does nothing.
#include <functional>
#include <numeric>
#include <string>
#include <vector>

#include "callbacks/hooks.h"
#include "core/solver.h"
#include "support/kit/written_text.h"

namespace koru::test {
namespace {

std::function<void()> action;
bool acting = false;
int calls = 0;
CSint *x[3] = {};
CSint *cost = nullptr;

void act() {
  ++calls;
  if (acting) return;
  acting = true;
  action();
  acting = false;
}

using Outcome = std::vector<int>;

// Results and counts, and then the values of the scenario's variables.
Outcome outcome(std::vector<int> numbers) {
  for (CSint *v : x)
    for (const int value : values(v)) numbers.push_back(value);
  return numbers;
}

// ----- the callbacks, acting and plain

int firstFree(CSint **array, int size) {
  for (int i = 0; i < size; ++i)
    if (cs_isFree(array[i])) return i;
  return -1;
}

CSint *selects(CSint **array, int size) {
  act();
  return cs_findFreeVar(array, size);
}
int selectsIndex(CSint **array, int size) {
  act();
  return firstFree(array, size);
}
void finds(CSint **, int) { act(); }
void findsCost(CSint **, int, CSint *) { act(); }
int scores(int, int value) {
  act();
  return -value;
}
int plainScore(int, int value) { return -value; }
int findsRow(CSint ***matrix, int, int size) {
  act();
  return firstFree(matrix[0], size) < 0 ? -1 : 0;
}
int plainRow(CSint ***matrix, int, int size) { return firstFree(matrix[0], size) < 0 ? -1 : 0; }
int findsColumn(int, CSint **row, int size) {
  act();
  return firstFree(row, size);
}
int plainColumn(int, CSint **row, int size) { return firstFree(row, size); }
int scoresCell(int, int, int value) {
  act();
  return value;
}
int plainCellScore(int, int, int value) { return value; }

bool begins(int, CSint **, int, void *) {
  act();
  return true;
}
bool produces(CSvalueSelection *r, int index, CSint **array, int size, void *state) {
  act();
  return cs_selectNextValue(r, cs_getValueSelector(CS_SELECT_ASCENDING), index, array, size, state);
}
bool ends(int, CSint **, int, void *) {
  act();
  return true;
}
int givesLimit(void *) {
  act();
  return 2;
}
bool filters(CSnoGoodSet *, CSnoGood *, CSint **, int, void *) {
  act();
  return true;
}

// ----- the scenarios

int found = 0;

void countFound(CSint **, int) { ++found; }
void countImprovement(CSint **, int, CSint *) { ++found; }

Outcome selectorSearch(CSvalueSelector own, const CSsearchNotify &hooks, CSfindFreeVarIndex select = firstFree) {
  CSvalueSelector *selectors[] = {&own, &own, &own};
  return outcome({cs_searchValueSelectorFail(x, selectors, 3, select, 0, &hooks)});
}

const CSvalueSelector kAscending = *cs_getValueSelector(CS_SELECT_ASCENDING);
const CSsearchNotify kNoHooks{};

Outcome restartSearch(CSfailLimit limit, CSnoGoodSet *set, const CSsearchNotify &hooks = kNoHooks) {
  CSvalueSelector own = kAscending;
  CSvalueSelector *selectors[] = {&own, &own, &own};
  return outcome({cs_searchValueSelectorRestartNG(x, selectors, 3, firstFree, limit, nullptr, 40, set, &hooks)});
}

bool refuseFirstSolutions(int, CSint **, int, void *) { return ++found > 3; }

Outcome rejectingRestarts() {
  CSsearchNotify hooks{};
  hooks.found = refuseFirstSolutions;
  return restartSearch(givesLimit, nullptr, hooks);
}

bool refusesLowest(int value, int, CSint **, int, void *) { return value > 0; }

// The first decision is refused, and with a limit of one fail that is recorded. The second run has more to go on.
Outcome refusingRestarts() {
  EXPECT_TRUE(cs_eventKnown(x, 1, refusesLowest, nullptr));
  return restartSearch([](void *) { return ++found; }, cs_createNoGoodSet(x, 3, filters, 0, nullptr, nullptr));
}

bool knows(int, int, CSint **, int, void *) {
  act();
  return true;
}
bool knowsAll(CSint **, int, void *) {
  act();
  return true;
}
bool hears(CSint *, int, int, CSint **, int, void *) {
  act();
  return true;
}
void hearsConflict(CSint *, int, CSconflictInfo *, CSint **, int, void *) { act(); }
bool refuses(CSint *, int, int, CSint **, int, void *) { return false; }

Outcome narrowThree() { return outcome({cs_GE(x[0], 1), cs_NEQ(x[1], 1), cs_LE(x[2], 1), cs_EQ(x[1], 0)}); }

template <class Register>
Outcome heard(Register registration) {
  registration();
  return narrowThree();
}

const char *tells(void *) {
  act();
  return "a place";
}

void handles(CSint *, void *) { act(); }

Outcome failAnAllocation() {
  cs_setErrHandler(CS_ERR_MEMORY, handles, nullptr);
  allocationHook = [](std::size_t) {
    allocationHook = nullptr;
    return false;
  };
  const bool posted = cs_Neq(x[0], x[1]);
  return outcome({posted, cs_getErr() == CS_ERR_MEMORY});
}

Outcome overflow() {
  cs_setErrHandler(CS_ERR_OVERFLOW, handles, nullptr);
  static CSint *wide[3];
  for (CSint *&v : wide) v = cs_createCSint(0, kIntMax);
  static int coefficients[] = {kIntMax, kIntMax, kIntMax};
  CSint *sum = cs_ScalProd(wide, coefficients, 3);
  return outcome({sum == nullptr, cs_getErr() == CS_ERR_OVERFLOW});
}

Outcome askTooEarly() {
  cs_setErrHandler(CS_ERR_NOT_INSTANTIATED, handles, nullptr);
  cs_getValue(x[0]);
  return outcome({cs_getErr() == CS_ERR_NOT_INSTANTIATED});
}

void undoes(CSint *, int) { act(); }

Outcome undo(void (*backtrack)(CSint *, int, CSbacktrackCallback)) {
  cs_saveContext();
  backtrack(x[0], 7, undoes);
  const bool consistent = cs_GE(x[0], 1);
  cs_restoreContext();
  return outcome({consistent});
}

CSsearchNotify hookedWith(void (*set)(CSsearchNotify &)) {
  CSsearchNotify hooks{};
  set(hooks);
  return hooks;
}

struct Kind {
  const char *name;
  Outcome (*run)();
};

void PrintTo(const Kind &kind, std::ostream *out) { *out << kind.name; }

const Kind kKinds[] = {
    {"SelectionOfSearch", [] { return outcome({cs_search(x, 3, selects)}); }},
    {"SelectionOfSearchFail", [] { return outcome({cs_searchFail(x, 3, selects, 0)}); }},
    {"SelectionOfVsearch", [] { return outcome({cs_Vsearch(3, x[0], x[1], x[2], selects)}); }},
    {"SelectionOfFindAll",
     [] {
       const bool result = cs_findAll(x, 3, selects, countFound);
       return outcome({result, found});
     }},
    {"FoundOfFindAll", [] { return outcome({cs_findAll(x, 3, cs_findFreeVar, finds)}); }},
    {"SelectionOfMinimize",
     [] {
       const bool result = cs_minimize(x, 3, selects, cost, countImprovement);
       return outcome({result, found, cs_getMax(cost)});
     }},
    {"FoundOfMinimize",
     [] {
       const bool result = cs_minimize(x, 3, cs_findFreeVar, cost, findsCost);
       return outcome({result, cs_getMax(cost)});
     }},
    {"SelectionOfCriteria", [] { return outcome({cs_searchCriteria(x, 3, selectsIndex, plainScore)}); }},
    {"Criteria", [] { return outcome({cs_searchCriteria(x, 3, firstFree, scores)}); }},
    {"RowOfMatrix",
     [] {
       CSint **rows[] = {x};
       return outcome({cs_searchMatrix(rows, 1, 3, findsRow, plainColumn, plainCellScore)});
     }},
    {"ColumnOfMatrix",
     [] {
       CSint **rows[] = {x};
       return outcome({cs_searchMatrix(rows, 1, 3, plainRow, findsColumn, plainCellScore)});
     }},
    {"CriteriaOfMatrix",
     [] {
       CSint **rows[] = {x};
       return outcome({cs_searchMatrix(rows, 1, 3, plainRow, plainColumn, scoresCell)});
     }},
    {"SelectionOfSelectors", [] { return selectorSearch(kAscending, kNoHooks, selectsIndex); }},
    {"SelectorInit",
     [] {
       return selectorSearch({begins, kAscending.next, nullptr}, kNoHooks);
     }},
    {"SelectorNext",
     [] {
       return selectorSearch({kAscending.init, produces, nullptr}, kNoHooks);
     }},
    {"SelectorEnd",
     [] {
       return selectorSearch({kAscending.init, kAscending.next, ends}, kNoHooks);
     }},
    {"HookSearchStart",
     [] {
       return selectorSearch(kAscending, hookedWith([](CSsearchNotify &hooks) {
                               hooks.searchStart = [](int, CSint **, int, void *) { act(); };
                             }));
     }},
    {"HookSearchEnd",
     [] {
       return selectorSearch(kAscending, hookedWith([](CSsearchNotify &hooks) {
                               hooks.searchEnd = [](bool, int, int, CSint **, int, void *) { act(); };
                             }));
     }},
    {"HookBeforeValueSelection",
     [] {
       return selectorSearch(kAscending, hookedWith([](CSsearchNotify &hooks) {
                               hooks.beforeValueSelection = [](int, int, const CSvalueSelection *, CSint **, int,
                                                               void *) { act(); };
                             }));
     }},
    {"HookAfterValueSelection",
     [] {
       return selectorSearch(kAscending, hookedWith([](CSsearchNotify &hooks) {
                               hooks.afterValueSelection = [](bool, int, int, const CSvalueSelection *, CSint **, int,
                                                              void *) { act(); };
                             }));
     }},
    {"HookEnter",
     [] {
       return selectorSearch(kAscending, hookedWith([](CSsearchNotify &hooks) {
                               hooks.enter = [](int, int, CSint **, int, void *) { act(); };
                             }));
     }},
    {"HookLeave",
     [] {
       return selectorSearch(kAscending, hookedWith([](CSsearchNotify &hooks) {
                               hooks.leave = [](int, int, CSint **, int, void *) { act(); };
                               hooks.found = refuseFirstSolutions;
                             }));
     }},
    {"HookFound",
     [] {
       return selectorSearch(kAscending, hookedWith([](CSsearchNotify &hooks) {
                               hooks.found = [](int, CSint **, int, void *) {
                                 act();
                                 return true;
                               };
                             }));
     }},
    {"LimitOfRestarts", rejectingRestarts},
    {"FilterOfRecording", refusingRestarts},
    {"FilterOfAdding",
     [] {
       CSnoGoodSet *set = cs_createNoGoodSet(x, 3, filters, 0, nullptr, nullptr);
       const int indexes[] = {0, 1};
       const CSvalueSelection decisions[] = {{CS_METHOD_EQ, 0}, {CS_METHOD_EQ, 2}};
       cs_addNoGood(set, indexes, decisions, 2);
       return outcome({cs_EQ(x[0], 0), cs_getNbNoGoods(set)});
     }},
    {"KeepOfFiltering",
     [] {
       CSnoGoodSet *set = cs_createNoGoodSet(x, 3, nullptr, 0, nullptr, nullptr);
       const int indexes[] = {0, 1};
       const CSvalueSelection decisions[] = {{CS_METHOD_EQ, 0}, {CS_METHOD_EQ, 2}};
       cs_addNoGood(set, indexes, decisions, 2);
       cs_filterNoGood(set, filters);
       return outcome({cs_getNbNoGoods(set)});
     }},
    {"EventAllKnown", [] { return heard([] { cs_eventAllKnown(x, 2, knowsAll, nullptr); }); }},
    {"EventAllKnownAtOnce",
     [] {
       CSint *bound[] = {CSINT(1)};
       return outcome({cs_eventAllKnown(bound, 1, knowsAll, nullptr)});
     }},
    {"EventKnown", [] { return heard([] { cs_eventKnown(x, 3, knows, nullptr); }); }},
    {"EventKnownAtOnce",
     [] {
       CSint *array[] = {CSINT(1), x[0]};
       return outcome({cs_eventKnown(array, 2, knows, nullptr)});
     }},
    {"EventNewMin", [] { return heard([] { cs_eventNewMin(x, 3, hears, nullptr); }); }},
    {"EventNewMax", [] { return heard([] { cs_eventNewMax(x, 3, hears, nullptr); }); }},
    {"EventNeq", [] { return heard([] { cs_eventNeq(x, 3, hears, nullptr); }); }},
    {"EventConflict",
     [] {
       cs_eventNewMin(x, 3, refuses, nullptr);
       cs_eventConflict(x, 3, hearsConflict, nullptr);
       return outcome({cs_GE(x[0], 1)});
     }},
    {"Locator",
     [] {
       cs_setProfilerLocator("mine", tells, nullptr);
       return outcome({cs_Neq(x[0], x[1])});
     }},
    {"HandlerOfMemory", failAnAllocation},
    {"HandlerOfOverflow", overflow},
    {"HandlerOfNotInstantiated", askTooEarly},
    {"Backtrack", [] { return undo(cs_backtrack); }},
    {"BacktrackExt", [] { return undo(cs_backtrackExt); }},
};

// ----- the actions

CSint *own(int max) { return cs_createCSint(0, max); }

void print() {
  std::FILE *file = temporaryFile();
  cs_fprintf(file, "%A %T %d\n", x, 3, x[0], 7);
  cs_fprintStats(file);
  std::fclose(file);
}

void query() {
  for (CSint *v : x) {
    EXPECT_LE(cs_getMin(v), cs_getMax(v));
    EXPECT_TRUE(cs_isIn(v, cs_getMin(v)));
    int *domain = cs_getDomain(v);
    EXPECT_NE(domain, nullptr);
    cs_freeDomain(domain);
  }
}

void narrow() {
  CSint *v = own(9);
  EXPECT_TRUE(cs_GE(v, 2) && cs_NEQ(v, 5) && cs_LE(v, 8) && cs_EQ(v, 4));
  EXPECT_FALSE(cs_EQ(v, 5));
}

void post() {
  CSint *array[] = {own(5), own(5), own(5)};
  EXPECT_TRUE(cs_Lt(array[0], array[1]) && cs_AllNeq(array, 3) == 1);
  EXPECT_NE(cs_Sigma(array, 3), nullptr);
  EXPECT_NE(cs_ReifLe(array[0], array[2]), nullptr);
}

void failAPosting() {
  CSint *v = own(3);
  EXPECT_FALSE(cs_GT(v, 3));
  EXPECT_FALSE(cs_Lt(v, v));
}

void saveAndRestore() {
  CSint *v = own(9);
  const int label = cs_saveContext();
  EXPECT_TRUE(cs_EQ(v, 3));
  cs_saveContext();
  cs_restoreContextUntil(label);
  EXPECT_EQ(cs_getNbElements(v), 10);
}

void saveAndAccept() {
  CSint *v = own(9);
  cs_saveContext();
  EXPECT_TRUE(cs_EQ(v, 3));
  cs_acceptContext();
  EXPECT_EQ(cs_getNbElements(v), 1);
}

void search() {
  CSint *array[] = {own(2), own(2)};
  const int label = cs_saveContext();
  EXPECT_TRUE(cs_Lt(array[0], array[1]));
  EXPECT_TRUE(cs_search(array, 2, cs_findFreeVarNbElements));
  EXPECT_EQ(cs_getValue(array[1]), 1);
  cs_restoreContextUntil(label);
}

void searchWithSelectors() {
  CSint *array[] = {own(2), own(2)};
  CSvalueSelector *median = cs_getValueSelector(CS_SELECT_MEDIAN);
  CSvalueSelector *selectors[] = {median, median};
  const int label = cs_saveContext();
  EXPECT_TRUE(cs_searchValueSelectorFail(array, selectors, 2, firstFree, 0, nullptr));
  cs_restoreContextUntil(label);
}

void enumerate() {
  CSint *array[] = {own(1), own(1)};
  static int solutions;
  solutions = 0;
  EXPECT_TRUE(cs_findAll(array, 2, cs_findFreeVar, [](CSint **, int) { ++solutions; }));
  EXPECT_EQ(solutions, 4);
}

void registerEvents() {
  CSint *array[] = {own(9), own(9)};
  cs_eventNewMin(
      array, 2, [](CSint *, int, int, CSint **, int, void *) { return true; }, nullptr);
  EXPECT_TRUE(cs_GE(array[0], 3));
}

void profile() {
  CSprofiler *profiler = cs_createProfiler(0);
  cs_enableProfiler(profiler);
  EXPECT_TRUE(cs_Neq(own(3), own(3)));
  cs_disableProfiler(profiler);
}

// What holds anyway: the scenario's variables are all different.
void postOnTheirs() { EXPECT_TRUE(cs_Neq(x[0], x[2]) || cs_isInstantiated(x[0])); }

void noteUndo() {
  cs_backtrack(nullptr, 3, [](CSint *, int index) { EXPECT_EQ(index, 3); });
}

void everything() { doEverything(); }

struct ActionOf {
  const char *name;
  void (*run)();
};

void PrintTo(const ActionOf &what, std::ostream *out) { *out << what.name; }

const ActionOf kActions[] = {
    {"Queries", query},
    {"Prints", print},
    {"CreatesAndNames", [] { EXPECT_NE(cs_createNamedCSint(0, 3, "own"), nullptr); }},
    {"Narrows", narrow},
    {"Posts", post},
    {"PostsInVain", failAPosting},
    {"PostsOnTheSameVariables", postOnTheirs},
    {"SavesAndRestores", saveAndRestore},
    {"SavesAndAccepts", saveAndAccept},
    {"Searches", search},
    {"SearchesWithSelectors", searchWithSelectors},
    {"Enumerates", enumerate},
    {"RegistersEvents", registerEvents},
    {"NotesAnUndo", noteUndo},
    {"Profiles", profile},
    {"DoesEverything", everything},
};

// ----- the test

class CallbackDoing : public ::testing::TestWithParam<std::tuple<Kind, ActionOf>> {
 protected:
  void TearDown() override {
    allocationHook = nullptr;
    cs_end();
  }
  // In a solver of its own: what the scenario answers.
  static Outcome runWith(const Kind &kind, std::function<void()> what) {
    cs_end();
    cs_init();
    action = std::move(what);
    calls = found = 0;
    for (CSint *&v : x) v = cs_createCSint(0, 2);
    EXPECT_EQ(cs_AllNeq(x, 3), 1);
    static int weights[] = {1, 5, 2};
    cost = cs_ScalProd(x, weights, 3);
    return kind.run();
  }
};

TEST_P(CallbackDoing, WhatItMayChangesNothing) {
  const auto &[kind, what] = GetParam();
  const Outcome plain = runWith(kind, [] {});
  const int plainCalls = calls;
  const int plainContexts = solver::contexts.count();
  ASSERT_GT(plainCalls, 0) << "the callback is called";
  EXPECT_EQ(runWith(kind, what.run), plain);
  EXPECT_GE(calls, plainCalls);
  EXPECT_EQ(solver::contexts.count(), plainContexts);
  EXPECT_EQ(solver::userSite, nullptr);
  EXPECT_EQ(solver::queue.depth, 0U);
  cs_restoreAll();
  EXPECT_TRUE(cs_GE(cs_createCSint(0, 9), 4)) << "the solver goes on working";
}

INSTANTIATE_TEST_SUITE_P(, CallbackDoing,
                         ::testing::Combine(::testing::ValuesIn(kKinds), ::testing::ValuesIn(kActions)),
                         [](const auto &row) {
                           return std::string(std::get<0>(row.param).name) + "_" + std::get<1>(row.param).name;
                         });

// A cancel ends a search wherever it is made; whatever is open can be restored, and the next search is not cancelled.
class CallbackCancelling : public CallbackDoing {};

TEST_P(CallbackCancelling, LeavesASolverThatCanBeRestored) {
  const Kind &kind = std::get<0>(GetParam());
  runWith(kind, cs_cancelSearch);
  EXPECT_GT(calls, 0);
  cs_restoreAll();
  EXPECT_EQ(solver::contexts.count(), 0);
  EXPECT_EQ(solver::queue.depth, 0U);
  for (CSint *v : x) EXPECT_GT(cs_getNbElements(v), 0);
  CSint *fresh[] = {own(3), own(3)};
  EXPECT_TRUE(cs_search(fresh, 2, cs_findFreeVar));
}

INSTANTIATE_TEST_SUITE_P(, CallbackCancelling,
                         ::testing::Combine(::testing::ValuesIn(kKinds), ::testing::Values(kActions[0])),
                         [](const auto &row) { return std::string(std::get<0>(row.param).name); });

}  // namespace
}  // namespace koru::test
