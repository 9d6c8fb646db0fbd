// SPDX-License-Identifier: MIT
// cs_searchCriteria and cs_searchCriteriaFail: which scores are asked for, what is tried, counted and left behind.
#include <climits>

#include "support/kit/probe.h"
#include "support/kit/search_trace.h"
#include "unit/search/search_test.h"

namespace {

using namespace koru;
using namespace koru::test;

class CriteriaTest : public SearchTest {
 protected:
  void SetUp() override {
    SearchTest::SetUp();
    asked.clear();
    score = [](int, int value) { return value; };
    accepts = [this](int value) {
      tried.push_back(value);
      return false;
    };
  }

  static int criteria(int index, int value) {
    asked.push_back({index, value});
    return score(index, value);
  }
  static int selectIndex(CSint **array, int size) {
    ++selections;
    if (onSelection) onSelection(selections);
    return firstFree(array, size);
  }
  bool search(int size, int limit = 0) { return cs_searchCriteriaFail(xy, size, selectIndex, criteria, limit); }

  // The values of one variable in the order in which they are tried, all being refused.
  std::vector<int> order(CSint *x) {
    EXPECT_TRUE(postRefuser(x, accepts));
    EXPECT_FALSE(cs_searchCriteria(&x, 1, firstFree, criteria));
    EXPECT_EQ(openContexts(), 0);
    return tried;
  }

  static inline std::vector<std::pair<int, int>> asked;
  static inline std::function<int(int, int)> score;
  std::vector<int> tried;
};

TEST_F(CriteriaTest, TheValueAsItsScoreIsAscendingOrder) {
  EXPECT_EQ(order(cs_createCSint(-1, 2)), (std::vector{-1, 0, 1, 2}));
  expectCounters(4, 4);
}

TEST_F(CriteriaTest, TheNegatedValueAsItsScoreIsDescendingOrder) {
  score = [](int, int value) { return -value; };
  EXPECT_EQ(order(cs_createCSint(-1, 2)), (std::vector{2, 1, 0, -1}));
}

TEST_F(CriteriaTest, OfEqualScoresTheSmallestValueIsFirst) {
  score = [](int, int value) { return value % 2; };
  EXPECT_EQ(order(cs_createCSint(0, 5)), (std::vector{0, 2, 4, 1, 3, 5}));
}

TEST_F(CriteriaTest, ScoresMayBeAnyIntBelowTheLargest) {
  const int scores[] = {INT_MAX - 1, 0, INT_MIN, -1};
  score = [&](int, int value) { return scores[value]; };
  EXPECT_EQ(order(cs_createCSint(0, 3)), (std::vector{2, 3, 1, 0}));
}

TEST_F(CriteriaTest, EveryValueThatIsLeftIsAskedForBeforeEachChoiceInAscendingOrder) {
  score = [](int, int value) { return value == 4 ? 0 : value; };
  EXPECT_EQ(order(fromValues({2, 4, 9})), (std::vector{4, 2, 9}));
  EXPECT_EQ(asked, (std::vector<std::pair<int, int>>{{0, 2}, {0, 4}, {0, 9}, {0, 2}, {0, 9}, {0, 9}}));
}

// The scores of a level may depend on what has been tried before.
TEST_F(CriteriaTest, ScoresAreNotRemembered) {
  score = [this](int, int value) { return tried.size() % 2 == 0 ? value : -value; };
  EXPECT_EQ(order(cs_createCSint(0, 3)), (std::vector{0, 3, 1, 2}));
}

TEST_F(CriteriaTest, AValueOfTheLargestScoreIsNeverTriedAndItsTurnIsAFail) {
  score = [](int, int value) { return value == 1 ? INT_MAX : value; };
  EXPECT_EQ(order(cs_createCSint(0, 2)), (std::vector{0, 2}));
  expectCounters(3, 3);
  EXPECT_EQ(asked.size(), 3U + 2U + 1U);
}

TEST_F(CriteriaTest, WithoutAnyOtherScoreNothingIsTried) {
  score = [](int, int) { return INT_MAX; };
  EXPECT_TRUE(order(cs_createCSint(0, 2)).empty());
  expectCounters(3, 3);
  EXPECT_EQ(asked.size(), 9U);
  EXPECT_TRUE(order(cs_createCSint(INT_MIN, INT_MIN + 1)).empty());
  expectCounters(2, 2);
}

// The score of the largest int is itself.
TEST_F(CriteriaTest, DomainsAtTheEndsOfTheIntRangeAreWalkedWithoutOverflow) {
  EXPECT_EQ(order(cs_createCSint(INT_MAX - 1, INT_MAX)), (std::vector{INT_MAX - 1}));
  expectCounters(2, 2);
  tried.clear();
  EXPECT_EQ(order(cs_createCSint(INT_MIN, INT_MIN + 1)), (std::vector{INT_MIN, INT_MIN + 1}));
}

TEST_F(CriteriaTest, TheFirstSolutionLeavesAContextPerLevel) {
  makeXy(2, 3);
  score = [](int index, int value) { return index == 0 ? value : -value; };
  EXPECT_TRUE(search(2));
  EXPECT_EQ(values(xy[0]), std::vector{0});
  EXPECT_EQ(values(xy[1]), std::vector{2});
  expectCounters(2, 0);
  EXPECT_EQ(openContexts(), 2);
  cs_restoreAll();
  EXPECT_EQ(values(xy[1]), (std::vector{0, 1, 2}));
}

TEST_F(CriteriaTest, AnExhaustedTreeLeavesEverythingAsBefore) {
  makeXy(2, 3);
  refuseY(never);
  EXPECT_FALSE(search(2));
  expectCounters(2 + 2 * 3, 2 * 3);
  EXPECT_EQ(openContexts(), 0);
  EXPECT_EQ(values(xy[0]), (std::vector{0, 1}));
  EXPECT_EQ(values(xy[1]), (std::vector{0, 1, 2}));
}

TEST_F(CriteriaTest, NothingToChooseIsASolution) {
  EXPECT_TRUE(cs_searchCriteria(nullptr, 0, firstFree, criteria));
  expectCounters(0, 0);
  EXPECT_EQ(openContexts(), 0);
}

TEST_F(CriteriaTest, TheFailLimitLeavesTheFailingBranch) {
  makeXy(2, 3);
  refuseY(never);
  EXPECT_FALSE(search(2, 4));
  expectCounters(6, 4);
  EXPECT_EQ(openContexts(), 2);
  EXPECT_EQ(values(xy[0]), std::vector{1});
  EXPECT_EQ(values(xy[1]), std::vector{0});
  cs_restoreAll();
  for (const int limit : {0, -1, INT_MIN, 7}) {
    EXPECT_FALSE(search(2, limit));
    expectCounters(8, 6);
  }
}

TEST_F(CriteriaTest, ACancelIsNoticedBeforeTheChoiceThatWasScored) {
  makeXy(2, 3);
  score = [](int, int) {
    cs_cancelSearch();
    return 0;
  };
  EXPECT_FALSE(search(2));
  EXPECT_EQ(asked.size(), 2U);
  expectCounters(1, 0);
  EXPECT_EQ(openContexts(), 1);
  EXPECT_EQ(values(xy[0]), (std::vector{0, 1}));
}

TEST_F(CriteriaTest, TheLevelAboveACancelledOneStopsAtItsOwnNextChoice) {
  makeXy(2, 2);
  onSelection = [](int call) {
    if (call == 2) cs_cancelSearch();
  };
  EXPECT_FALSE(search(2));
  expectCounters(3, 0);
  EXPECT_EQ(openContexts(), 2);
}

TEST_F(CriteriaTest, ALevelWhoseBitArrayCannotBeHadFailsBeforeItOpensAContext) {
  makeXy(2, 2);
  {
    const FailingAllocation failing(0);
    EXPECT_FALSE(search(2));
    EXPECT_TRUE(FailingAllocation::failed());
  }
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
  expectCounters(0, 0);
  EXPECT_EQ(openContexts(), 0);
  EXPECT_TRUE(asked.empty());
}

TEST_F(CriteriaTest, TheLevelAboveGoesOn) {
  makeXy(2, 2);
  {
    const FailingAllocation failing(1);
    EXPECT_TRUE(search(2));
    EXPECT_TRUE(FailingAllocation::failed());
  }
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(values(xy[0]), std::vector{1});
  expectCounters(3, 0);
}

TEST_F(CriteriaTest, ALevelWithoutAContextFails) {
  makeXy(2, 2);
  leaveRoomForContexts(0);
  {
    const FailingAllocation failing(1);
    EXPECT_FALSE(search(2));
  }
  EXPECT_EQ(openContexts(), 1024);
  expectCounters(0, 0);
}

TEST_F(CriteriaTest, NullArgumentsFindNothing) {
  makeXy(2, 2);
  CSint *nobody = nullptr;
  const auto first = [](CSint **, int) { return 0; };
  EXPECT_FALSE(cs_searchCriteria(xy, 2, nullptr, criteria));
  EXPECT_FALSE(cs_searchCriteria(xy, 2, firstFree, nullptr));
  EXPECT_FALSE(cs_searchCriteriaFail(xy, 2, nullptr, criteria, 3));
  EXPECT_FALSE(cs_searchCriteria(&nobody, 1, first, criteria));
  EXPECT_FALSE(cs_searchCriteria(nullptr, 1, first, criteria));
  EXPECT_EQ(openContexts(), 0);
}

// The count says 3 and one value is left: see cs_getDomain. Three choices are made; 0 can be chosen once.
TEST_F(CriteriaTest, AsManyChoicesAreMadeAsTheCountSays) {
  CSint *x = withCountTooHigh();
  const auto firstLevelOnly = [](CSint **, int) { return openContexts() == 0 ? 0 : 1; };
  CSint *pair[] = {x, nullptr};
  EXPECT_FALSE(cs_searchCriteria(pair, 2, firstLevelOnly, criteria));
  expectCounters(3, 2);
  EXPECT_EQ(asked, (std::vector<std::pair<int, int>>{{0, 0}}));
}

}  // namespace
