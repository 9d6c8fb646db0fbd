// SPDX-License-Identifier: MIT
// Walks: what they visit beside the searches, positions, splitting, refusals, memory.
#include <climits>
#include <string>
#include <vector>

#include "koru_extras.h"
#include "support/kit/failing_allocations.h"
#include "unit/search/search_test.h"

namespace koru::test {
namespace {

constexpr long long kNoLimit = LLONG_MAX;

int goTo(CSwalk *walk, const CSwalkStep *steps, const CSwalkPosition &position) {
  return cs_setWalkPosition(walk, steps, &position);
}

std::vector<std::string> told;

void tell(CSint **array, int size) {
  std::string line;
  for (int i = 0; i < size; ++i) line += std::to_string(cs_getValue(array[i])) + " ";
  told.push_back(line);
}

struct Outcome {
  std::vector<std::string> solutions;
  long long fails;
  long long choicePoints;
  bool operator==(const Outcome &) const = default;
};

class WalkTest : public SearchTest {
 protected:
  // Queens on a board of n columns.
  void post(int n) {
    for (std::vector<CSint *> *array : {&queens, &up, &down}) array->clear();
    for (int i = 0; i < n; ++i) {
      queens.push_back(cs_createCSint(0, n - 1));
      up.push_back(cs_Add(queens.back(), CSINT(i)));
      down.push_back(cs_Sub(queens.back(), CSINT(i)));
    }
    for (std::vector<CSint *> *array : {&queens, &up, &down}) ASSERT_TRUE(cs_AllNeq(array->data(), n));
  }
  int size() const { return static_cast<int>(queens.size()); }

  Outcome findAll(CSfindFreeVar f) {
    told.clear();
    cs_findAll(queens.data(), size(), f, tell);
    return {told, cs_getNbFails(), cs_getNbChoicePoints()};
  }
  CSwalk *open(CSfindFreeVar f = cs_findFreeVar) { return cs_openWalk(queens.data(), size(), f); }
  static Outcome outcomeOf(const CSwalk *walk) {
    const CSwalkCounts counts = cs_getWalkCounts(walk);
    EXPECT_EQ(counts.solutions, static_cast<long long>(told.size()));
    return {told, counts.fails, counts.choicePoints};
  }

  std::vector<CSint *> queens, up, down;  // the constraints keep the arrays
};

CSint *hostSelection(CSint **array, int size) {
  for (int i = size - 1; i >= 0; --i)
    if (cs_isFree(array[i])) return array[i];
  return nullptr;
}

TEST_F(WalkTest, VisitsWhatFindAllVisitsInOneGoOrInMany) {
  post(6);
  for (const CSfindFreeVar f : {cs_findFreeVar, cs_findFreeVarNbElements, cs_findFreeVarNbElementsMin, hostSelection}) {
    const Outcome expected = findAll(f);
    EXPECT_EQ(expected.solutions.size(), 4U);
    for (const long long slice : {kNoLimit, 1LL, 3LL}) {
      told.clear();
      CSwalk *walk = open(f);
      CSstatus status = CS_STATUS_CHOICE_POINTS;
      while (status == CS_STATUS_CHOICE_POINTS || status == CS_STATUS_SOLUTION) {
        status = cs_goWalk(walk, slice, true);
        if (status == CS_STATUS_SOLUTION) tell(queens.data(), size());
      }
      EXPECT_EQ(status, CS_STATUS_EXHAUSTED);
      EXPECT_EQ(cs_goWalk(walk, 1, true), CS_STATUS_EXHAUSTED) << "once more";
      EXPECT_EQ(outcomeOf(walk), expected);
      EXPECT_EQ(openContexts(), 0);
      EXPECT_TRUE(cs_closeWalk(walk));
    }
  }
}

TEST_F(WalkTest, VisitsWhatFindAllVisitsInALongArray) {
  post(6);
  std::vector<CSint *> few(70001, CSINT(3));
  few.swap(queens);
  for (std::size_t i = 0; i < few.size(); ++i) queens[i * 14000] = few[i];
  for (const CSfindFreeVar f : {cs_findFreeVar, cs_findFreeVarNbElements, cs_findFreeVarNbConstraints}) {
    cs_findAll(queens.data(), size(), f, nullptr);
    CSwalk *walk = open(f);
    EXPECT_EQ(cs_goWalk(walk, kNoLimit, false), CS_STATUS_EXHAUSTED);
    const CSwalkCounts counts = cs_getWalkCounts(walk);
    EXPECT_EQ(counts.solutions, 4);
    EXPECT_EQ(counts.fails, cs_getNbFails());
    EXPECT_EQ(counts.choicePoints, cs_getNbChoicePoints());
    EXPECT_TRUE(cs_closeWalk(walk));
  }
}

TEST_F(WalkTest, CountsSolutionsWithoutStopping) {
  post(6);
  CSwalk *walk = open();
  EXPECT_EQ(cs_goWalk(walk, kNoLimit, false), CS_STATUS_EXHAUSTED);
  EXPECT_EQ(cs_getWalkCounts(walk).solutions, 4);
}

// A callback made of a function object.
template <class Found>
CSstatus goTelling(CSwalk *walk, long long choicePoints, Found found) {
  const auto call = [](CSwalk *, void *extra) { return (*static_cast<Found *>(extra))(); };
  return cs_goWalkTelling(walk, choicePoints, call, &found);
}

TEST_F(WalkTest, TellsOfEachSolutionAndGoesOn) {
  post(6);
  for (const CSfindFreeVar f : {cs_findFreeVar, cs_findFreeVarNbElementsMin, hostSelection}) {
    const Outcome expected = findAll(f);
    for (const long long slice : {kNoLimit, 1LL, 3LL}) {
      for (const bool stops : {false, true}) {
        told.clear();
        CSwalk *walk = open(f);
        const auto found = [&] {
          tell(queens.data(), size());
          EXPECT_EQ(cs_getWalkCounts(walk).solutions, static_cast<long long>(told.size()));
          EXPECT_EQ(cs_getWalkPosition(walk, nullptr, 0).depth, openContexts());
          return !stops;
        };
        CSstatus status = CS_STATUS_CHOICE_POINTS;
        int stopped = 0;
        while (status == CS_STATUS_CHOICE_POINTS || status == CS_STATUS_SOLUTION) {
          status = goTelling(walk, slice, found);
          stopped += status == CS_STATUS_SOLUTION ? 1 : 0;
        }
        EXPECT_EQ(status, CS_STATUS_EXHAUSTED);
        EXPECT_EQ(stopped, stops ? 4 : 0);
        EXPECT_EQ(outcomeOf(walk), expected);
        EXPECT_EQ(openContexts(), 0);
        EXPECT_TRUE(cs_closeWalk(walk));
      }
    }
  }
}

// What handlers were last told of bounds, where a value was refused and the walk stands still. Too great a value raises
// the shifted variable before it is refused.
TEST_F(WalkTest, LeavesARefusedValueAsAPostingDoes) {
  CSint *x = cs_createCSint(0, 9), *y = cs_createCSint(0, 9), *z = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_LE(cs_Add(x, z), 9));
  ASSERT_TRUE(cs_Lt(x, y));
  ASSERT_TRUE(cs_Le(y, z));
  CSint *shifted = cs_Add(y, CSINT(1));
  ASSERT_TRUE(cs_NEQ(shifted, 3));
  CSint *array[] = {x, y, z};
  const auto bounds = [&] {
    return std::vector<int>{shifted->min, shifted->max, shifted->reportedMin, shifted->reportedMax};
  };
  cs_saveContext();
  EXPECT_FALSE(cs_EQ(x, 5));
  const std::vector<int> posted = bounds();
  EXPECT_NE(posted[0], posted[2]) << "nobody was told";
  cs_restoreContext();
  CSwalk *walk = cs_openWalk(array, 3, cs_findFreeVar);
  CSwalkStep step{};
  while (step.value < 5) {
    ASSERT_EQ(cs_goWalk(walk, 1, false), CS_STATUS_CHOICE_POINTS);
    cs_getWalkPosition(walk, &step, 1);
  }
  EXPECT_EQ(openContexts(), 1);
  EXPECT_EQ(bounds(), posted);
}

TEST_F(WalkTest, TellsNobodyWithoutACallback) {
  post(6);
  CSwalk *walk = open();
  EXPECT_EQ(cs_goWalkTelling(walk, kNoLimit, nullptr, nullptr), CS_STATUS_EXHAUSTED);
  EXPECT_EQ(cs_getWalkCounts(walk).solutions, 4);
}

TEST_F(WalkTest, IsNotMovedWhileItTells) {
  post(6);
  CSwalk *walk = open();
  int asked = 0;
  const auto found = [&] {
    ++asked;
    CSwalkStep steps[6];
    const CSwalkPosition position = cs_getWalkPosition(walk, steps, 6);
    EXPECT_EQ(cs_goWalk(walk, 1, true), CS_STATUS_REFUSED);
    EXPECT_EQ(goTelling(walk, 1, [] { return true; }), CS_STATUS_REFUSED);
    EXPECT_EQ(goTo(walk, steps, position), -1);
    EXPECT_EQ(cs_splitWalk(walk, 0, steps, 6), 0);
    EXPECT_FALSE(cs_closeWalk(walk));
    EXPECT_EQ(cs_detachSolver(), nullptr);
    return true;
  };
  EXPECT_EQ(goTelling(walk, kNoLimit, found), CS_STATUS_EXHAUSTED);
  EXPECT_EQ(asked, 4);
  EXPECT_EQ(cs_goWalkTelling(nullptr, 1, nullptr, nullptr), CS_STATUS_REFUSED);
  EXPECT_EQ(cs_goWalkTelling(walk, 0, nullptr, nullptr), CS_STATUS_REFUSED);
}

// What is posted at a solution is undone; searches and other walks come back to it.
TEST_F(WalkTest, GoesOnAfterWhatTheHostDoesAtSolutions) {
  post(6);
  CSint *more = cs_createCSint(0, 2);
  const Outcome expected = findAll(cs_findFreeVar);
  told.clear();
  CSwalk *walk = open();
  const auto found = [&] {
    tell(queens.data(), size());
    cs_saveContext();
    EXPECT_TRUE(cs_NEQ(more, 1));
    cs_findAll(&more, 1, cs_findFreeVar, nullptr);
    EXPECT_EQ(cs_getNbChoicePoints(), 2);
    cs_restoreContext();
    CSwalk *inner = cs_openWalk(&more, 1, cs_findFreeVar);
    EXPECT_EQ(cs_goWalk(inner, kNoLimit, false), CS_STATUS_EXHAUSTED);
    EXPECT_EQ(cs_getWalkCounts(inner).solutions, 3);
    EXPECT_TRUE(cs_closeWalk(inner));
    EXPECT_TRUE(cs_EQ(more, 2));
    return true;
  };
  EXPECT_EQ(goTelling(walk, kNoLimit, found), CS_STATUS_EXHAUSTED);
  EXPECT_EQ(outcomeOf(walk), expected);
  EXPECT_EQ(cs_getNbElements(more), 3);
}

TEST_F(WalkTest, StopsAtACancelWhileItTellsAsFindAllDoes) {
  post(6);
  static int left;
  const auto cancelSome = [](CSint **, int) {
    if (left-- == 0) cs_cancelSearch();
  };
  for (int after = 0; after <= 4; ++after) {
    left = after;
    cs_findAll(queens.data(), size(), cs_findFreeVar, cancelSome);
    const int choicePoints = cs_getNbChoicePoints();
    const int contexts = openContexts();
    cs_restoreAll();
    left = after;
    CSwalk *walk = open();
    const auto found = [&] {
      cancelSome(queens.data(), size());
      return true;
    };
    EXPECT_EQ(goTelling(walk, kNoLimit, found), after < 4 ? CS_STATUS_STOPPED : CS_STATUS_EXHAUSTED);
    EXPECT_EQ(cs_getWalkCounts(walk).choicePoints, choicePoints);
    EXPECT_EQ(openContexts(), contexts);
    cs_restoreAll();
    cs_closeWalk(walk);
  }
}

TEST_F(WalkTest, HasASolutionAtTheRootWhenNothingIsFree) {
  post(1);
  CSwalk *walk = open();
  EXPECT_EQ(cs_goWalk(walk, 1, true), CS_STATUS_SOLUTION);
  EXPECT_EQ(cs_goWalk(walk, 1, true), CS_STATUS_EXHAUSTED);
  CSwalk *empty = cs_openWalk(nullptr, 0, cs_findFreeVar);
  EXPECT_EQ(cs_goWalk(empty, 1, true), CS_STATUS_SOLUTION);
}

TEST_F(WalkTest, ComesBackToAPositionThatItHadBefore) {
  post(6);
  const Outcome expected = findAll(cs_findFreeVar);
  for (long long stop = 1; stop < expected.choicePoints; ++stop) {
    told.clear();
    CSwalk *first = open(), *second = open();
    while (cs_getWalkCounts(first).choicePoints < stop)
      if (cs_goWalk(first, stop - cs_getWalkCounts(first).choicePoints, true) == CS_STATUS_SOLUTION)
        tell(queens.data(), size());
    CSwalkStep steps[6];
    const CSwalkPosition position = cs_getWalkPosition(first, steps, 6);
    ASSERT_EQ(goTo(second, steps, position), position.depth);
    while (cs_goWalk(second, kNoLimit, true) == CS_STATUS_SOLUTION) tell(queens.data(), size());
    EXPECT_EQ(told, expected.solutions);
    EXPECT_EQ(cs_getWalkCounts(first).choicePoints + cs_getWalkCounts(second).choicePoints, expected.choicePoints);
    EXPECT_EQ(cs_getWalkCounts(first).fails + cs_getWalkCounts(second).fails, expected.fails);
    EXPECT_EQ(cs_goWalk(first, 1, true), CS_STATUS_REFUSED) << "the other one has closed its contexts";
    ASSERT_EQ(goTo(first, steps, position), position.depth) << "it may be told its own";
    cs_restoreAll();
    cs_closeWalk(first);
    cs_closeWalk(second);
  }
}

// How many contexts are opened on the way to a position.
std::uint64_t opened(CSwalk *walk, const CSwalkStep *steps, CSwalkPosition position) {
  const std::uint64_t before = solver::contextSerial;
  EXPECT_EQ(goTo(walk, steps, position), position.depth);
  return solver::contextSerial - before;
}

// Steps name variables by their numbers, which are found by address.
TEST_F(WalkTest, ComesBackToVariablesFarApart) {
  CSint *first = cs_createCSint(0, 2);
  for (int i = 0; i < 3000; ++i) cs_createCSint(0, 1);
  queens = {first, cs_createCSint(0, 2)};
  CSwalk *walk = open();
  ASSERT_NE(walk, nullptr);
  ASSERT_EQ(cs_goWalk(walk, kNoLimit, true), CS_STATUS_SOLUTION);
  CSwalkStep steps[2];
  const CSwalkPosition position = cs_getWalkPosition(walk, steps, 2);
  ASSERT_EQ(position.depth, 2);
  EXPECT_NE(steps[0].check, steps[1].check);
  ASSERT_EQ(cs_goWalk(walk, kNoLimit, true), CS_STATUS_SOLUTION);
  EXPECT_EQ(goTo(walk, steps, position), 2);
  EXPECT_TRUE(cs_closeWalk(walk));
}

TEST_F(WalkTest, KeepsWhatTwoPositionsHaveInCommon) {
  post(6);
  CSwalk *walk = open();
  ASSERT_EQ(cs_goWalk(walk, kNoLimit, true), CS_STATUS_SOLUTION);
  CSwalkStep steps[6];
  CSwalkPosition position = cs_getWalkPosition(walk, steps, 6);
  EXPECT_TRUE(position.done);
  ASSERT_EQ(position.depth, 4) << "the other queens follow";
  position.done = false;
  EXPECT_EQ(opened(walk, steps, position), 1U) << "the last value no longer stands";
  EXPECT_EQ(opened(walk, steps, position), 0U);
  EXPECT_EQ(opened(walk, steps, {2, 0, false}), 0U);
  EXPECT_EQ(openContexts(), 2);
  EXPECT_EQ(opened(walk, steps, {2, 1, true}), 1U) << "its second value is to be left";
  cs_restoreAll();
  EXPECT_EQ(opened(walk, steps, position), 4U) << "somebody else has closed the contexts";
  EXPECT_EQ(opened(walk, nullptr, {0, 0, false}), 0U);
  EXPECT_EQ(openContexts(), 0);
}

// The pieces in tree order, each walked to its end, one of them split now and then.
Outcome inPieces(CSint **array, int size, CSfindFreeVar f, long long slice, long long least) {
  struct Piece {
    std::vector<CSwalkStep> steps;
    CSwalkPosition position;
  };
  told.clear();
  CSwalk *walk = cs_openWalk(array, size, f);
  std::vector<Piece> left{{{}, {0, 0, false}}};  // the leftmost last
  while (!left.empty()) {
    const Piece piece = left.back();
    left.pop_back();
    EXPECT_EQ(goTo(walk, piece.steps.data(), piece.position), piece.position.depth);
    CSstatus status = CS_STATUS_CHOICE_POINTS;
    while (status != CS_STATUS_EXHAUSTED) {
      status = cs_goWalk(walk, slice, true);
      if (status == CS_STATUS_SOLUTION) tell(array, size);
      std::vector<CSwalkStep> steps(16);
      while (const int depth = cs_splitWalk(walk, least, steps.data(), 16))
        left.push_back({{steps.begin(), steps.begin() + depth}, {depth, depth - 1, true}});
    }
  }
  const CSwalkCounts counts = cs_getWalkCounts(walk);
  cs_restoreAll();
  cs_closeWalk(walk);
  return {told, counts.fails, counts.choicePoints};
}

TEST_F(WalkTest, SplitsIntoPiecesThatAreTheWhole) {
  post(6);
  for (const CSfindFreeVar f : {cs_findFreeVar, cs_findFreeVarNbElements})
    for (const long long slice : {1, 2, 5, 40})
      for (const long long least : {0, 3, 1000}) EXPECT_EQ(inPieces(queens.data(), 6, f, slice, least), findAll(f));
}

TEST_F(WalkTest, SplitsNothingOffWithoutRoomOrWhereValuesAreCheap) {
  post(6);
  CSwalk *walk = open();
  CSwalkStep steps[6];
  EXPECT_EQ(cs_splitWalk(walk, 0, steps, 6), 0) << "there is no level";
  ASSERT_EQ(cs_goWalk(walk, 3, true), CS_STATUS_CHOICE_POINTS);
  EXPECT_EQ(cs_splitWalk(walk, 0, steps, 0), 0);
  EXPECT_EQ(cs_splitWalk(walk, 0, nullptr, 6), 0);
  EXPECT_EQ(cs_splitWalk(walk, 4, steps, 6), 0) << "the first value has taken three so far";
  EXPECT_EQ(cs_splitWalk(nullptr, 0, steps, 6), 0);
  EXPECT_EQ(cs_splitWalk(walk, 3, steps, 6), 1);
  EXPECT_EQ(steps[0].value, 0);
  EXPECT_EQ(steps[0].least, 0);
  EXPECT_EQ(steps[0].greatest, 5);
  EXPECT_EQ(cs_getWalkPosition(walk, nullptr, 0).base, 1);
}

TEST_F(WalkTest, KeepsSomethingWhenItSplits) {
  post(6);
  CSwalk *walk = open();
  ASSERT_EQ(cs_goWalk(walk, 3, true), CS_STATUS_CHOICE_POINTS);
  CSwalkStep steps[6];
  ASSERT_EQ(cs_splitWalk(walk, 0, steps, 6), 1);
  const CSwalkPosition given{1, 0, true};
  ASSERT_EQ(cs_setWalkPosition(walk, steps, &given), 1);
  EXPECT_EQ(cs_splitWalk(walk, 0, steps, 6), 0) << "it would give away all that it has";
  ASSERT_EQ(cs_goWalk(walk, 1, true), CS_STATUS_CHOICE_POINTS);
  EXPECT_EQ(cs_splitWalk(walk, 2, steps, 6), 0);
  EXPECT_EQ(cs_splitWalk(walk, 0, steps, 6), 1);
  EXPECT_EQ(steps[0].value, 1);
}

TEST_F(WalkTest, StopsAtACancelAsFindAllDoes) {
  post(6);
  int cancelled = 0;
  for (int after = 0; after <= 4; ++after) {
    static int left;
    left = after;
    const auto cancelSome = [](CSint **, int) {
      if (left-- == 0) cs_cancelSearch();
    };
    cs_findAll(queens.data(), size(), cs_findFreeVar, cancelSome);
    const long long choicePoints = cs_getNbChoicePoints();
    const int contexts = cs_saveContext();
    cs_restoreAll();
    EXPECT_EQ(cs_isSearchCancelled(), after < 4);

    CSwalk *walk = open();
    EXPECT_FALSE(cs_isSearchCancelled()) << "one before the walk is forgotten";
    for (int i = 0; i < after; ++i) EXPECT_EQ(cs_goWalk(walk, kNoLimit, true), CS_STATUS_SOLUTION);
    CSwalkStep steps[6];
    while (after == 0 && cs_splitWalk(walk, 0, steps, 6) > 0) continue;
    const bool cancels = cs_goWalk(walk, kNoLimit, true) == CS_STATUS_SOLUTION;
    if (cancels) cs_cancelSearch();
    if (after < 4 && cancels) {
      ++cancelled;
      EXPECT_EQ(cs_goWalk(walk, kNoLimit, true), CS_STATUS_STOPPED);
      EXPECT_EQ(cs_saveContext(), contexts);
      if (after == 0) {
        EXPECT_EQ(cs_getWalkCounts(walk).choicePoints, choicePoints);
      }
    }
    cs_restoreAll();
    cs_closeWalk(walk);
  }
  EXPECT_GT(cancelled, 1);
}

TEST_F(WalkTest, NoticesADifferentTree) {
  post(6);
  CSwalk *walk = open();
  ASSERT_EQ(cs_goWalk(walk, kNoLimit, true), CS_STATUS_SOLUTION);
  CSwalkStep steps[6];
  const CSwalkPosition position = cs_getWalkPosition(walk, steps, 6);
  ASSERT_GE(position.depth, 3);
  const auto reachedWith = [&](int index, CSwalkStep wrong) {
    std::vector<CSwalkStep> changed(steps, steps + position.depth);
    changed[static_cast<std::size_t>(index)] = wrong;
    const int reached = goTo(walk, changed.data(), position);
    EXPECT_EQ(cs_getWalkPosition(walk, nullptr, 0).depth, -1) << "it stands nowhere";
    EXPECT_EQ(cs_goWalk(walk, 1, true), CS_STATUS_REFUSED);
    return reached;
  };
  const CSwalkStep second = steps[1];
  EXPECT_EQ(reachedWith(1, {second.value, second.least, second.greatest, second.check + 1}), 1);
  EXPECT_EQ(reachedWith(1, {second.value, second.least, second.greatest + 1, second.check}), 1);
  EXPECT_EQ(reachedWith(1, {second.value, second.least + 1, second.greatest, second.check}), 1);
  EXPECT_EQ(reachedWith(1, {1, second.least, second.greatest, second.check}), 1) << "not in the domain";
  EXPECT_EQ(reachedWith(0, {9, steps[0].least, steps[0].greatest, steps[0].check}), 0);
  EXPECT_EQ(reachedWith(0, {0, steps[0].least, steps[0].greatest, steps[0].check}), 1) << "another tree below";
  cs_restoreAll();
  ASSERT_TRUE(cs_EQ(queens[2], 0));
  EXPECT_LT(goTo(walk, steps, position), position.depth) << "the model has changed";
}

TEST_F(WalkTest, RefusesWhatMakesNoSense) {
  post(4);
  EXPECT_EQ(cs_openWalk(queens.data(), 4, nullptr), nullptr);
  EXPECT_EQ(cs_openWalk(nullptr, 4, cs_findFreeVar), nullptr);
  CSwalk *walk = open();
  CSwalkStep steps[4] = {};
  EXPECT_EQ(cs_goWalk(nullptr, 1, true), CS_STATUS_REFUSED);
  EXPECT_EQ(cs_goWalk(walk, 0, true), CS_STATUS_REFUSED);
  EXPECT_EQ(cs_getWalkCounts(nullptr).choicePoints, 0);
  EXPECT_EQ(cs_getWalkPosition(nullptr, nullptr, 0).depth, -1);
  EXPECT_EQ(goTo(nullptr, nullptr, {0, 0, false}), -1);
  for (const CSwalkPosition none : {CSwalkPosition{-1, 0, false}, {1, -1, false}, {1, 2, false}, {0, 0, true}})
    EXPECT_EQ(goTo(walk, steps, none), -1);
  EXPECT_EQ(goTo(walk, nullptr, {1, 0, false}), -1);
  EXPECT_EQ(cs_setWalkPosition(walk, steps, nullptr), -1);
  cs_saveContext();
  EXPECT_EQ(cs_goWalk(walk, 1, true), CS_STATUS_REFUSED) << "a context that is not its own";
  CSwalk *inner = open();
  cs_restoreAll();
  EXPECT_EQ(cs_goWalk(walk, 1, true), CS_STATUS_CHOICE_POINTS);
  EXPECT_EQ(goTo(inner, nullptr, {0, 0, false}), -1) << "the context it was opened in is closed";
  EXPECT_FALSE(cs_closeWalk(nullptr));
  EXPECT_TRUE(cs_closeWalk(inner));
}

TEST_F(WalkTest, RefusesConstraintsWithMemory) {
  EXPECT_EQ(cs_findConstraintWithMemory(), nullptr);
  post(4);
  EXPECT_EQ(cs_findConstraintWithMemory(), nullptr);
  cs_saveContext();
  ASSERT_NE(cs_createNoGoodSet(queens.data(), 4, nullptr, 0, nullptr, nullptr), nullptr);
  EXPECT_STREQ(cs_findConstraintWithMemory(), "cs_createNoGoodSet");
  EXPECT_EQ(open(), nullptr);
  cs_restoreContext();
  EXPECT_EQ(cs_findConstraintWithMemory(), nullptr);
  EXPECT_NE(open(), nullptr);
  ASSERT_NE(cs_VarElement(queens[0], queens.data(), 4), nullptr);
  EXPECT_STREQ(cs_findConstraintWithMemory(), "cs_VarElement");
  EXPECT_EQ(open(), nullptr);
}

// The result of cs_Index is over the positions 1 and 2; its first event tells that it has begun with 0.
TEST_F(WalkTest, RefusesTheLeastOfWhatHasNotChanged) {
  CSint *array[] = {cs_createCSint(0, 1), cs_createCSint(0, 2), cs_createCSint(1, 2)};
  CSint *operands[] = {cs_Index(array, 3, 2), cs_createCSint(5, 9)};
  CSint *least = cs_Min(operands, 2);
  EXPECT_STREQ(cs_findConstraintWithMemory(), "cs_Min");
  const auto elementsWhenBound = [&] {
    cs_saveContext();
    EXPECT_TRUE(cs_EQ(operands[0], 2));
    const int elements = cs_getNbElements(least);
    cs_restoreContext();
    return elements;
  };
  EXPECT_EQ(elementsWhenBound(), 2);
  EXPECT_EQ(elementsWhenBound(), 1) << "the same decision in the same state";
  EXPECT_EQ(cs_findConstraintWithMemory(), nullptr);
}

CSwalk *running = nullptr;

CSint *meddle(CSint **array, int size) {
  EXPECT_EQ(cs_goWalk(running, 1, true), CS_STATUS_REFUSED);
  EXPECT_EQ(goTo(running, nullptr, {0, 0, false}), -1);
  EXPECT_FALSE(cs_closeWalk(running));
  EXPECT_EQ(cs_detachSolver(), nullptr);
  return cs_findFreeVar(array, size);
}

TEST_F(WalkTest, IsNotEnteredTwice) {
  post(4);
  running = open(meddle);
  EXPECT_EQ(cs_goWalk(running, kNoLimit, true), CS_STATUS_SOLUTION);
}

// Below the second value, three variables are to be different that have two values: seen when the level is opened.
CSint *postThreeInTwo(CSint **array, int size) {
  if (cs_isInstantiated(array[0]) && cs_getValue(array[0]) == 1) {
    cs_beginPosting();
    EXPECT_TRUE(cs_AllNeqDomain(array + 1, 3)) << "its run waits";
    for (int i = 1; i <= 3; ++i) EXPECT_TRUE(cs_LE(array[i], 1));
  }
  return cs_findFreeVar(array, size);
}

TEST_F(WalkTest, GoesOnAsFindAllWhereTheSelectionsPostingsFail) {
  for (int i = 0; i < 4; ++i) queens.push_back(cs_createCSint(0, 2));
  const Outcome expected = findAll(postThreeInTwo);
  EXPECT_EQ(expected.solutions.size(), 54U);
  EXPECT_EQ(inPieces(queens.data(), 4, postThreeInTwo, 3, 0), expected);
}

TEST_F(WalkTest, IsFreedByTheEndAndParkedWithItsSolver) {
  post(6);
  CSwalk *walk = open(cs_findFreeVarNbElements);
  ASSERT_EQ(cs_goWalk(walk, 20, false), CS_STATUS_CHOICE_POINTS);
  CSsolver *parked = cs_detachSolver();
  ASSERT_NE(parked, nullptr);
  cs_init();
  EXPECT_EQ(cs_openWalk(nullptr, 0, nullptr), nullptr);
  cs_end();
  EXPECT_EQ(cs_openWalk(nullptr, 0, cs_findFreeVar), nullptr) << "no solver";
  ASSERT_TRUE(cs_attachSolver(parked));
  EXPECT_EQ(cs_goWalk(walk, kNoLimit, false), CS_STATUS_EXHAUSTED);
  EXPECT_EQ(cs_getWalkCounts(walk).solutions, 4);
}

TEST_F(WalkTest, SaysWhenMemoryIsExhaustedAndCanBeToldAPositionThen) {
  int refused = 0;
  for (int k = 0, failures = 1; failures > 0; ++k) {
    post(6);
    leaveRoomForContexts(2);
    CSwalk *walk = nullptr;
    CSstatus status = CS_STATUS_MEMORY;
    {
      const FailingAllocator failing(k, Failing::kOnce);
      walk = open();
      if (walk != nullptr) status = cs_goWalk(walk, kNoLimit, false);
      failures = FailingAllocator::failures();
    }
    EXPECT_EQ(status, failures > 0 ? CS_STATUS_MEMORY : CS_STATUS_EXHAUSTED) << k;
    if (walk != nullptr && failures > 0) {
      EXPECT_EQ(cs_goWalk(walk, 1, false), CS_STATUS_REFUSED);
      EXPECT_EQ(cs_splitWalk(walk, 0, std::vector<CSwalkStep>(9).data(), 9), 0);
      ASSERT_EQ(goTo(walk, nullptr, {0, 0, false}), 0);
      EXPECT_EQ(cs_goWalk(walk, kNoLimit, false), CS_STATUS_EXHAUSTED);
    }
    refused += failures;
    cs_closeWalk(walk);
    cs_restoreAll();
  }
  EXPECT_GE(refused, 4) << "the positions (twice), the walk, its levels; contexts, once";
  expectSolverUsable();
}

TEST_F(WalkTest, GoesOnWhenMemoryIsExhaustedForTheHostAtASolution) {
  post(6);
  CSwalk *walk = open();
  int refused = 0;
  const auto found = [&] {
    const FailingAllocator failing(0, Failing::kOnce);
    cs_createNamedCSint(0, 1, "a name");
    refused += FailingAllocator::failures();
    return true;
  };
  EXPECT_EQ(goTelling(walk, kNoLimit, found), CS_STATUS_EXHAUSTED);
  EXPECT_EQ(refused, 4);
  EXPECT_EQ(cs_getWalkCounts(walk).solutions, 4);
}

TEST_F(WalkTest, TakesARefusalForWantOfMemoryForNoFail) {
  makeXy(2, 3);
  refuseY([](int value) { return value != 1 || cs_createNamedCSint(0, 1, "a name") != nullptr; });
  CSwalk *walk = cs_openWalk(xy, 2, cs_findFreeVar);
  {
    const FailingAllocator failing(0, Failing::kForEver);
    EXPECT_EQ(cs_goWalk(walk, kNoLimit, false), CS_STATUS_MEMORY);
  }
  ASSERT_EQ(goTo(walk, nullptr, {0, 0, false}), 0);
  EXPECT_EQ(cs_goWalk(walk, kNoLimit, false), CS_STATUS_EXHAUSTED);
}

}  // namespace
}  // namespace koru::test
