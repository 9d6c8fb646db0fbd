// SPDX-License-Identifier: MIT
// What sections 16 to 19 of koru.h say of cancelled searches, of what a search leaves open, of its counters, and of
// changes that its callbacks make.
#include <climits>

#include "support/kit/solver_test.h"

namespace {

using namespace koru::test;

int found;
int begun;
int ended;
int left;
int cancelAt;

int firstFree(CSint **array, int size) {
  for (int i = 0; i < size; ++i)
    if (cs_isFree(array[i])) return i;
  return -1;
}

class Searches : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    found = begun = ended = left = cancelAt = 0;
    for (CSint *&v : x) v = cs_createCSint(0, 2);
    for (CSvalueSelector *&s : ascending) s = cs_getValueSelector(CS_SELECT_ASCENDING);
  }

  static int contextsOpen() {
    const int label = cs_saveContext();
    cs_restoreContext();
    return label - 1;
  }

  CSint *x[3];
  CSvalueSelector *ascending[3];
};

void stopAtSecond(CSint **, int) {
  if (++found == 2) cs_cancelSearch();
}

TEST_F(Searches, FindAllLeavesContextsOpenAfterACancel) {
  EXPECT_TRUE(cs_findAll(x, 3, cs_findFreeVar, stopAtSecond)) << "it has found some";
  EXPECT_EQ(found, 2);
  EXPECT_GT(contextsOpen(), 0);
}

TEST_F(Searches, AContextAroundFindAllRestoresWhatACancelLeaves) {
  ASSERT_TRUE(cs_Neq(x[0], x[1]));
  const int before = contextsOpen();
  const int label = cs_saveContext();
  EXPECT_TRUE(cs_findAll(x, 3, cs_findFreeVar, stopAtSecond));
  cs_restoreContextUntil(label);
  EXPECT_EQ(contextsOpen(), before);
  for (CSint *v : x) EXPECT_EQ(cs_getNbElements(v), 3);
  found = 2;
  cs_findAll(x, 3, cs_findFreeVar, [](CSint **, int) { ++found; });
  EXPECT_EQ(found, 2 + 18) << "nothing is lost";
}

TEST_F(Searches, AFalseThatIsThrownAwayIsForgotten) {
  const bool imposed = cs_EQ(x[0], 7);
  EXPECT_FALSE(imposed);
  EXPECT_TRUE(cs_search(x, 3, cs_findFreeVar)) << "the search cannot know";
  EXPECT_EQ(cs_getValue(x[0]), 0);
}

// ----- arrays that a built-in selection cannot read

bool refusesArray(CSint **array, int size, CSfindFreeVar select) {
  return !cs_search(array, size, select) && !cs_searchFail(array, size, select, 9) &&
         !cs_findAll(array, size, select, nullptr) && !cs_minimize(array, size, select, CSINT(3), nullptr) &&
         cs_getNbChoicePoints() == 0;
}

TEST_F(Searches, ABuiltInSelectionIsRefusedAnArrayThatIsNullOrHoldsNull) {
  CSint *gap[] = {x[0], nullptr, x[2]};
  for (const CSfindFreeVar select :
       {cs_findFreeVar, cs_findFreeVarNbElements, cs_findFreeVarNbElementsMin, cs_findFreeVarNbConstraints}) {
    EXPECT_TRUE(refusesArray(nullptr, 2, select));
    EXPECT_TRUE(refusesArray(gap, 3, select));
    EXPECT_FALSE(cs_Vsearch(2, x[0], nullptr, select));
    EXPECT_TRUE(cs_search(gap, 1, select)) << "what lies past the size is not looked at";
    EXPECT_TRUE(cs_search(nullptr, 0, select));
    cs_restoreAll();
  }
  EXPECT_EQ(contextsOpen(), 0);
}

CSint *firstThatIs(CSint **array, int size) {
  for (int i = 0; i < size; ++i)
    if (array[i] != nullptr && cs_isFree(array[i])) return array[i];
  return nullptr;
}

TEST_F(Searches, ASelectionOfTheHostsOwnMayReadAnyArray) {
  CSint *gap[] = {x[0], nullptr, x[2]};
  EXPECT_TRUE(cs_search(gap, 3, firstThatIs));
  EXPECT_TRUE(cs_isInstantiated(x[2]));
  EXPECT_TRUE(cs_search(nullptr, 2, [](CSint **, int) { return static_cast<CSint *>(nullptr); }));
}

// ----- a cancel with selectors and hooks

bool begin(int, CSint **, int, void *) { return ++begun > 0; }
bool oneValue(CSvalueSelection *r, int index, CSint **array, int, void *state) {
  int *cursor = static_cast<int *>(state);
  *r = {CS_METHOD_EQ, cs_getMin(array[index]) + *cursor};
  return (*cursor)++ < cs_getNbElements(array[index]);
}
bool finish(int, CSint **, int, void *) { return ++ended > 0; }

void cancelWhenAllAreBound(bool, int depth, int, const CSvalueSelection *r, CSint **, int, void *) {
  if (depth == 2 && r->value == cancelAt) cs_cancelSearch();
}
bool reject(int, CSint **, int, void *) { return false; }
void countLeave(int depth, int, CSint **, int, void *) { left += 1 << depth; }

class CancelledSearches : public Searches {
 protected:
  void SetUp() override {
    Searches::SetUp();
    counting = cs_createValueSelector(begin, oneValue, finish);
    for (CSvalueSelector *&s : selectors) s = counting;
    notify = cs_createSearchNotify(nullptr);
    cs_searchNotifySetAfterValueSelection(notify, cancelWhenAllAreBound);
    cs_searchNotifySetFound(notify, reject);
    cs_searchNotifySetLeave(notify, countLeave);
  }
  void TearDown() override {
    cs_freeSearchNotify(notify);
    cs_freeValueSelector(counting);
    Searches::TearDown();
  }

  CSvalueSelector *counting;
  CSvalueSelector *selectors[3];
  CSsearchNotify *notify;
};

TEST_F(CancelledSearches, ALevelThatNoticesTheCancelCallsNeitherEndNorLeave) {
  EXPECT_FALSE(cs_searchValueSelectorFail(x, selectors, 3, firstFree, 0, notify));
  EXPECT_EQ(begun, 3);
  EXPECT_EQ(ended, 0) << "what init allocated is the host's to free";
  EXPECT_EQ(left, 0);
}

// x[0] and x[1] are at their only value when the cancel is noticed at x[2], so they are exhausted.
TEST_F(CancelledSearches, ALevelAboveWhoseLastDecisionThenFailsCallsBoth) {
  ASSERT_TRUE(cs_LE(x[1], 1));
  for (CSvalueSelector *&s : selectors) s = cs_getValueSelector(CS_SELECT_ASCENDING);
  CSvalueSelector *only = cs_createValueSelector(
      nullptr,
      [](CSvalueSelection *r, int, CSint **, int, void *state) {
        *r = {CS_METHOD_EQ, 1};
        return (*static_cast<int *>(state))++ == 0;
      },
      finish);
  selectors[0] = selectors[1] = only;
  EXPECT_FALSE(cs_searchValueSelectorFail(x, selectors, 3, firstFree, 0, notify));
  EXPECT_EQ(ended, 2);
  EXPECT_EQ(left, 0b11) << "depths 0 and 1, not 2";
  cs_freeValueSelector(only);
}

// ----- counters

TEST_F(Searches, SolutionsThatFoundRejectsAreFails) {
  CSsearchNotify *notify = cs_searchNotifySetFound(cs_createSearchNotify(nullptr), reject);
  EXPECT_FALSE(cs_searchValueSelectorFail(x, ascending, 3, firstFree, 0, notify));
  EXPECT_EQ(cs_getNbFails(), 27);
  cs_freeSearchNotify(notify);
}

TEST_F(Searches, CriteriaChoicesThatTryNothingCountAsChoicePointsAndFails) {
  ASSERT_TRUE(cs_NEQ(x[0], 0));
  EXPECT_FALSE(cs_searchCriteria(x, 1, firstFree, [](int, int) { return INT_MAX; }));
  EXPECT_EQ(cs_getNbChoicePoints(), 2);
  EXPECT_EQ(cs_getNbFails(), 2);
}

// ----- changes made by callbacks

std::vector<int> seen;

// Takes the value 0 away from the first variable, to which the second one is equal, and looks at the second.
void change(CSint **array) {
  if (cs_isIn(array[0], 0)) {
    cs_NEQ(array[0], 0);
    seen.push_back(cs_isIn(array[1], 0));
  }
}
CSint *changeAndSelect(CSint **array, int size) {
  change(array);
  return cs_findFreeVar(array, size);
}

TEST_F(Searches, ASelectionsChangesPropagateAtOnce) {
  seen.clear();
  ASSERT_TRUE(cs_Eq(x[0], x[1]));
  EXPECT_TRUE(cs_search(x, 3, changeAndSelect));
  EXPECT_EQ(seen, std::vector<int>{0});
  EXPECT_EQ(cs_getValue(x[1]), 1);
}

bool searchInside(CSint **array, int, void *) { return cs_search(array + 1, 2, changeAndSelect); }

// The search labels x[1] and x[2], which are equal.
TEST_F(Searches, InASearchOfAUserConstraintTheFirstSelectionsChangesWaitForTheFirstLevel) {
  seen.clear();
  ASSERT_TRUE(cs_Eq(x[1], x[2]));
  cs_saveContext();
  ASSERT_TRUE(cs_eventAllKnown(x, 1, searchInside, nullptr));
  ASSERT_TRUE(cs_EQ(x[0], 1));
  EXPECT_EQ(seen, std::vector<int>{1}) << "not propagated yet";
  EXPECT_EQ(cs_getValue(x[2]), 1) << "but before the first value was tried";
}

void changeAtStart(int, CSint **array, int, void *) { change(array); }
bool takeAnotherAway(int, CSint **array, int, void *) {
  const bool bound = cs_EQ(array[2], 2);
  seen.push_back(cs_isIn(array[3], 0));
  return bound;
}

// Labels x[1] and x[2], which are equal; the found hook binds one that is not labelled, and another one follows it.
bool searchWithHooks(CSint **array, int, void *extra) {
  CSvalueSelector *ascending[2];
  for (CSvalueSelector *&s : ascending) s = cs_getValueSelector(CS_SELECT_ASCENDING);
  return cs_searchValueSelectorFail(array + 1, ascending, 2, firstFree, 0, static_cast<CSsearchNotify *>(extra));
}

TEST_F(Searches, InASearchOfAUserConstraintHooksWaitUntilALevelIsOpen) {
  seen.clear();
  CSint *array[] = {x[0], x[1], x[2], cs_createCSint(0, 2), cs_createCSint(0, 2)};
  ASSERT_TRUE(cs_Eq(array[1], array[2]) && cs_Eq(array[3], array[4]));
  CSsearchNotify *notify = cs_createSearchNotify(nullptr);
  cs_searchNotifySetSearchStart(notify, changeAtStart);
  cs_searchNotifySetFound(notify, takeAnotherAway);
  ASSERT_TRUE(cs_eventAllKnown(array, 1, searchWithHooks, notify));
  ASSERT_TRUE(cs_EQ(x[0], 1));
  EXPECT_EQ(seen, (std::vector<int>{1, 0})) << "searchStart waits, found does not";
  cs_freeSearchNotify(notify);
}

// ----- value selectors

TEST_F(Searches, TheMedianSelectorTriesTheMinimumOnlyWhereTheNumberOfElementsHasWrapped) {
  CSint *wide = cs_createCSint(INT_MIN, INT_MAX);
  CSvalueSelector *median = cs_getValueSelector(CS_SELECT_MEDIAN);
  void *word = nullptr;
  CSvalueSelection decision{};
  ASSERT_TRUE(cs_initValueSelector(median, 0, &wide, 1, &word));
  ASSERT_TRUE(cs_selectNextValue(&decision, median, 0, &wide, 1, &word));
  EXPECT_EQ(decision.method, CS_METHOD_EQ);
  EXPECT_EQ(decision.value, INT_MIN);
  EXPECT_FALSE(cs_selectNextValue(&decision, median, 0, &wide, 1, &word));
}

}  // namespace
