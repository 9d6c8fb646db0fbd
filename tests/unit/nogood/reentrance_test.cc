// SPDX-License-Identifier: MIT
// Callbacks that change the set that calls them: its filter, the callback of cs_filterNoGood, and the memory handler.
#include "support/no_goods/no_goods.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::nogood;

class ReentranceTest : public NoGoodTest {
 protected:
  void addFour() {
    for (int value = 0; value < 4; ++value) add(set, {eq(0, value), eq(1, value)});
  }
  void deleteAll() {
    cs_filterNoGood(set, [](CSnoGoodSet *, CSnoGood *, CSint **, int, void *) { return false; });
  }
  // Asks about each no-good by the value of its first element.
  std::vector<int> visit(const std::function<bool(int)> &answer) {
    std::vector<int> visited;
    filterBy([&](CSnoGood *noGood) {
      visited.push_back(literalsOf(noGood)[0].value);
      return answer(visited.back());
    });
    return visited;
  }
  void whenMemoryIsExhausted(std::function<void()> reaction) {
    onExhausted = std::move(reaction);
    cs_setErrHandler(
        CS_ERR_MEMORY, [](CSint *, void *self) { static_cast<ReentranceTest *>(self)->onExhausted(); }, this);
  }
  std::vector<int> left() {
    return visit([](int) { return true; });
  }

  std::function<void()> onExhausted;
};

TEST_F(ReentranceTest, TheFilterMayAddAnotherNoGoodFirst) {
  filter = [&](CSnoGood *noGood) {
    if (literalsOf(noGood)[0].value == 1) add(set, {eq(0, 2)});
    return true;
  };
  add(set, {eq(0, 1)});
  EXPECT_EQ(left(), (std::vector{2, 1}));
}

TEST_F(ReentranceTest, TheFilterMayAddTheSameNoGoodFirst) {
  bool outermost = true;
  filter = [&](CSnoGood *noGood) {
    if (std::exchange(outermost, false)) add(set, literalsOf(noGood));
    return true;
  };
  add(set, {eq(0, 1)});
  EXPECT_EQ(left(), std::vector{1});
}

TEST_F(ReentranceTest, TheFilterMayDeleteEverything) {
  addFour();
  filter = [&](CSnoGood *) {
    deleteAll();
    return true;
  };
  add(set, {eq(0, 1)});
  EXPECT_EQ(left(), std::vector{1});
}

TEST_F(ReentranceTest, TheFilterMayLowerTheMaximum) {
  addFour();
  filter = [&](CSnoGood *) {
    cs_setMaxNbNoGoods(set, 1);
    return true;
  };
  add(set, {eq(0, 7)});
  EXPECT_EQ(left(), std::vector{7});
}

TEST_F(ReentranceTest, TheFilterMayCreatePostAndSearch) {
  filter = [&](CSnoGood *) {
    CSint *y[2] = {cs_createCSint(0, 9), cs_createCSint(0, 9)};
    EXPECT_TRUE(cs_Lt(y[0], y[1]));
    const int label = cs_saveContext();
    EXPECT_TRUE(cs_search(y, 2, cs_findFreeVar));
    cs_restoreContextUntil(label);
    cs_cancelSearch();
    return true;
  };
  addFour();
  EXPECT_EQ(cs_getNbNoGoods(set), 4);
}

TEST_F(ReentranceTest, NoGoodsThatKeepAddsAreNotAskedAbout) {
  addFour();
  const auto visited = visit([&](int value) {
    add(set, {eq(0, value + 10)});
    return true;
  });
  EXPECT_EQ(visited, range(0, 3));
  EXPECT_EQ(cs_getNbNoGoods(set), 8);
}

TEST_F(ReentranceTest, NoGoodsThatKeepDeletesAreNotAskedAboutAgain) {
  addFour();
  const auto visited = visit([&](int) {
    deleteAll();
    EXPECT_EQ(cs_getNbNoGoods(set), 0);
    return true;
  });
  EXPECT_EQ(visited, std::vector{0});
  EXPECT_EQ(left(), std::vector<int>{});
}

TEST_F(ReentranceTest, ANoGoodThatKeepDeletesAndThenRefusesIsDeletedOnce) {
  addFour();
  visit([&](int) {
    cs_setMaxNbNoGoods(set, 1);
    return false;
  });
  EXPECT_EQ(left(), std::vector<int>{});
}

TEST_F(ReentranceTest, ADeletedNoGoodCanBeReadUntilItsCallbackReturns) {
  addFour();
  filterBy([&](CSnoGood *noGood) {
    deleteAll();
    EXPECT_EQ(literalsOf(noGood), (Literals{eq(0, 0), eq(1, 0)}));
    return true;
  });
}

TEST_F(ReentranceTest, KeepMayReplaceTheNoGoodsByShorterOnes) {
  addFour();
  visit([&](int value) {
    add(set, {eq(0, value)});
    return true;
  });
  EXPECT_EQ(contents(set), (std::vector<Literals>{{eq(0, 0)}, {eq(0, 1)}, {eq(0, 2)}, {eq(0, 3)}}));
}

TEST_F(ReentranceTest, ADeletedNoGoodNeitherSubsumesNorCountsWhileTheFilterRuns) {
  cs_setMaxNbNoGoods(set, 4);
  addFour();
  visit([&](int value) {
    if (value == 3) add(set, {eq(0, 0), eq(1, 0)});
    return value == 3;
  });
  EXPECT_EQ(left(), (std::vector{3, 0}));
}

TEST_F(ReentranceTest, ADeletedNoGoodConcludesNothingWhileTheFilterRuns) {
  addFour();
  visit([&](int value) {
    if (value == 3) {
      cs_saveContext();
      EXPECT_TRUE(cs_EQ(x[0], 0));
      EXPECT_EQ(values(x[1]), range(0, 9));
      cs_restoreContext();
    }
    return false;
  });
}

TEST_F(ReentranceTest, TheOldestThatIsLeftIsEvictedWhileTheFilterRuns) {
  cs_setMaxNbNoGoods(set, 3);
  for (int value = 0; value < 3; ++value) add(set, {eq(0, value)});
  visit([&](int value) {
    if (value == 1) {
      add(set, {eq(0, 7)});  // 0 is gone: there is room
      add(set, {eq(0, 8)});
    }
    return value != 0;
  });
  EXPECT_EQ(left(), (std::vector{2, 7, 8}));
}

TEST_F(ReentranceTest, AMemoryHandlerMayDeleteTheNoGoodThatFails) {
  add(set, {eq(0, 1), eq(1, 5)});
  add(set, {eq(0, 1), eq(1, 6)});
  whenMemoryIsExhausted([&] { deleteAll(); });
  cs_saveContext();
  {
    const FailingAllocation failing(0);
    EXPECT_FALSE(cs_EQ(x[0], 1));
  }
  cs_restoreContext();
  EXPECT_EQ(left(), std::vector<int>{});
}

// The handler propagates in a context of its own: watches move under the walk that is waiting for it.
TEST_F(ReentranceTest, AMemoryHandlerMayMoveWatchesUnderAWalk) {
  for (int value = 0; value < 5; ++value) addFreely(set, {eq(0, 1), eq(1, value), eq(2, 1), eq(3, 1)});
  add(set, {eq(0, 1), eq(1, 5)});
  for (int value = 6; value < 10; ++value) addFreely(set, {eq(0, 1), eq(1, value), eq(2, 1), eq(3, 1)});
  whenMemoryIsExhausted([&] {
    cs_saveContext();
    EXPECT_TRUE(cs_EQ(x[2], 1));
    cs_restoreContext();
  });
  cs_saveContext();
  {
    const FailingAllocation failing(0);
    EXPECT_FALSE(cs_EQ(x[0], 1));
  }
  cs_restoreContext();
  EXPECT_EQ(cs_getNbNoGoods(set), 10);
  expectSound(set);
}

}  // namespace
