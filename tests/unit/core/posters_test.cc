// SPDX-License-Identifier: MIT
#include "core/posters.h"

#include <string>

#include "core/solver.h"
#include "koru_extras.h"
#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"

namespace {

using namespace koru;
using namespace koru::test;

constexpr int kFirstRoom = 16;
constexpr char kNames[4][8] = {"cs_Le", "cs_Lt", "cs_Ge", "cs_Gt"};

// Addresses as postings have them that follow each other in one function.
const void *at(int place) { return reinterpret_cast<const void *>(static_cast<std::uintptr_t>(0x401000 + 23 * place)); }
// The n-th of as many as one likes, no two of them equal.
Poster nth(int n) { return {kNames[n % 4], at(n / 4)}; }

class PostersTest : public SolverTest {
 protected:
  Posters posters;

  void TearDown() override {
    posters.destroy();
    SolverTest::TearDown();
    EXPECT_EQ(blocksAlive, 0);
  }
  void fillTo(int count) {
    for (int n = posters.count(); n < count; ++n) ASSERT_EQ(posters.numberOf(nth(n)), n);
  }
  void expectTheFirst(int count) {
    EXPECT_EQ(posters.count(), count);
    for (int n = 0; n < count; ++n) {
      ASSERT_EQ(posters.numberOf(nth(n)), n);
      ASSERT_EQ(posters[n], nth(n));
    }
  }
};

TEST_F(PostersTest, NumbersAreGivenInOrderOfAppearanceAndKept) {
  fillTo(3);
  for (const int n : {2, 0, 0, 1, 2}) EXPECT_EQ(posters.numberOf(nth(n)), n);
  expectTheFirst(3);
}

TEST_F(PostersTest, NamesAndAddressesBothTell) {
  EXPECT_EQ(posters.numberOf({kNames[0], at(1)}), 0);
  EXPECT_EQ(posters.numberOf({kNames[1], at(1)}), 1) << "another name at one address";
  EXPECT_EQ(posters.numberOf({kNames[0], at(2)}), 2) << "one name at another address";
  EXPECT_EQ(posters.numberOf({kNames[1], at(2)}), 3);
  EXPECT_EQ(posters.numberOf({kNames[1], nullptr}), 4);
  EXPECT_EQ(posters.numberOf({kNames[0], nullptr}), 5);
  const std::string copy = kNames[0];
  EXPECT_EQ(posters.numberOf({copy.c_str(), at(1)}), 6) << "a name is its address";
  EXPECT_EQ(posters.numberOf({kNames[0], at(1)}), 0);
}

// The hash adds 31 times the name's address to the caller's: these are the same to it, in a table of any size.
TEST_F(PostersTest, ThoseThatShareABucketAreToldApart) {
  static constexpr char kText[64] = {};
  const auto colliding = [](int n) {
    return Poster(kText + n, reinterpret_cast<const void *>(static_cast<std::uintptr_t>(0x401000 - 31 * n)));
  };
  for (int round = 0; round < 3; ++round)
    for (int n = 0; n < 40; ++n) EXPECT_EQ(posters.numberOf(colliding(n)), n);
  for (int n = 39; n >= 0; --n) EXPECT_EQ(posters.numberOf(colliding(n)), n);
  EXPECT_EQ(posters.count(), 40);
}

TEST_F(PostersTest, TheRoomDoublesEachTimeThatItIsFull) {
  const AllocationRule counted(allowAll());
  EXPECT_EQ(posters.bytes(), 0U);
  fillTo(1);
  const std::uint64_t first = posters.bytes();
  ASSERT_EQ(AllocationRule::sizes(), (std::vector<std::size_t>{static_cast<std::size_t>(first)}));
  fillTo(kFirstRoom);
  EXPECT_EQ(AllocationRule::count(), 1);
  std::size_t room = kFirstRoom;
  for (int growths = 1; growths < 12; ++growths, room *= 2) {
    fillTo(static_cast<int>(room) + 1);
    ASSERT_EQ(AllocationRule::count(), growths + 1);
    EXPECT_EQ(AllocationRule::sizes().back(), first << growths);
    EXPECT_EQ(posters.bytes(), first << growths);
  }
  expectTheFirst(posters.count());
  EXPECT_EQ(AllocationRule::count(), 12) << "those that are there take none";
}

TEST_F(PostersTest, TheOneAskedForLastIsTheSameBeforeAndAfterAGrowth) {
  for (const int asked : {0, 7, kFirstRoom - 1}) {
    posters.destroy();
    fillTo(kFirstRoom);
    EXPECT_EQ(posters.numberOf(nth(asked)), asked);
    EXPECT_EQ(posters.numberOf(nth(kFirstRoom)), kFirstRoom) << "the table has grown";
    EXPECT_EQ(posters.numberOf(nth(kFirstRoom)), kFirstRoom);
    EXPECT_EQ(posters.numberOf(nth(asked)), asked);
    EXPECT_EQ(posters.numberOf(nth(asked)), asked);
    expectTheFirst(kFirstRoom + 1);
  }
}

TEST_F(PostersTest, WithoutMemoryToGrowThereIsNoNumberAndNothingElseIsLost) {
  for (int room = 0; room <= 2048; room = room == 0 ? kFirstRoom : 2 * room) {
    fillTo(room);
    memoryReports = 0;
    {
      const AllocationRule none(refuseAll());
      EXPECT_EQ(posters.numberOf(nth(room)), Posters::kNone);
      EXPECT_EQ(memoryReports, 1);
      EXPECT_EQ(posters.numberOf(nth(room)), Posters::kNone) << "nor is it remembered";
      EXPECT_EQ(memoryReports, 2);
      expectTheFirst(room);
      EXPECT_EQ(AllocationRule::count(), 2);
    }
    EXPECT_EQ(posters.numberOf(nth(room)), room);
    expectTheFirst(room + 1);
  }
}

// The host's handler for exhausted memory may give some back, and post.
TEST_F(PostersTest, PostersMayAppearWhileMemoryForTheTableIsReportedToBeExhausted) {
  fillTo(kFirstRoom);
  bool first = true;
  const AllocationRule rule([&first](std::size_t) { return !std::exchange(first, false); });
  cs_setErrHandler(
      CS_ERR_MEMORY,
      [](CSint *, void *self) {
        for (int n = kFirstRoom; n < 5 * kFirstRoom; ++n) EXPECT_EQ(static_cast<Posters *>(self)->numberOf(nth(n)), n);
      },
      &posters);
  EXPECT_EQ(posters.numberOf(nth(99)), Posters::kNone);
  expectTheFirst(5 * kFirstRoom);
}

TEST_F(PostersTest, DestroyedItIsAsNew) {
  fillTo(100);
  posters.destroy();
  EXPECT_EQ(posters.count(), 0);
  EXPECT_EQ(posters.bytes(), 0U);
  EXPECT_EQ(posters.numberOf(nth(99)), 0) << "also the one asked for last";
  posters.destroy();
  posters.destroy();
}

// ----- of the solver

TEST_F(PostersTest, TheTableIsMadeByTheFirstPostingAndEndsWithTheSolver) {
  for (int round = 0; round < 2; ++round) {
    CSint **x = cs_createCSintArray(2, 0, 9);
    EXPECT_TRUE(cs_EQ(x[0], 3));
    EXPECT_EQ(solver::posters.bytes(), 0U) << "that posts nothing";
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(cs_Le(x[0], x[1]));
    EXPECT_TRUE(cs_Neq(x[0], x[1]));
    EXPECT_EQ(solver::posters.count(), 2);
    EXPECT_STREQ(solver::posters[1].name, "cs_Neq");
    cs_end();
    EXPECT_EQ(solver::posters.count(), 0);
    EXPECT_EQ(solver::posters.bytes(), 0U);
    EXPECT_EQ(blocksAlive, 0);
    cs_init();
  }
}

TEST_F(PostersTest, WithoutMemoryForTheTableTheFirstPostingFailsAndTheNextGoesOn) {
  CSint **x = cs_createCSintArray(2, 0, 9);
  {
    const AllocationRule rule(refuseOnly(0));
    EXPECT_FALSE(cs_Lt(x[0], x[1]));
    EXPECT_EQ(AllocationRule::count(), 1);
  }
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getMax(x[0]), 9);
  EXPECT_TRUE(cs_Lt(x[0], x[1]));
  EXPECT_EQ(cs_getMax(x[0]), 8);
  EXPECT_EQ(memoryReports, 1);
}

}  // namespace
