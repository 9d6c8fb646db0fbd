// SPDX-License-Identifier: MIT
#include "core/block_stack.h"

#include <climits>

#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"

namespace {

using namespace koru;
using namespace koru::test;

struct alignas(64) Line {
  int number;
};

template <class Record>
struct Owned {
  BlockStack<Record> stack;
  ~Owned() { stack.destroy(); }
};

class BlockStackTest : public SolverTest {
 protected:
  Owned<int> owned;
  BlockStack<int> &stack = owned.stack;

  void pushUpTo(int count) {
    while (stack.count() < count) {
      int *record = stack.push();
      ASSERT_NE(record, nullptr);
      *record = stack.count();
    }
  }
};

TEST_F(BlockStackTest, AStackThatWasNeverCreatedRefusesPushesWithoutAReport) {
  EXPECT_FALSE(stack.created());
  EXPECT_EQ(stack.push(), nullptr);
  EXPECT_EQ(stack.count(), 0);
  EXPECT_EQ(memoryReports, 0);
  EXPECT_TRUE(stack.sound());
}

TEST_F(BlockStackTest, KnowsTheIndexOfItsRecords) {
  ASSERT_TRUE(stack.create());
  pushUpTo(2500);
  for (const int index : {0, 1023, 1024, 2499}) EXPECT_EQ(stack.indexOf(&stack.at(index)), index);
  const int other = 0;
  EXPECT_EQ(stack.indexOf(&other), -1);
}

TEST_F(BlockStackTest, CreatingAllocatesOneBlockAndOnlyOnce) {
  const AllocationRule counted(allowAll());
  EXPECT_TRUE(stack.create());
  EXPECT_TRUE(stack.create());
  EXPECT_EQ(AllocationRule::count(), 1);
  EXPECT_EQ(stack.blockCount(), 1);
  EXPECT_EQ(stack.count(), 0);
}

TEST_F(BlockStackTest, ARefusedFirstBlockLeavesTheStackUncreated) {
  {
    const AllocationRule none(refuseAll());
    EXPECT_FALSE(stack.create());
  }
  EXPECT_FALSE(stack.created());
  EXPECT_EQ(stack.blockCount(), 0);
  EXPECT_EQ(memoryReports, 1);
  EXPECT_TRUE(stack.create());
}

TEST_F(BlockStackTest, RecordsComeBackNewestFirst) {
  ASSERT_TRUE(stack.create());
  pushUpTo(3);
  for (const int expected : {3, 2, 1}) EXPECT_EQ(*stack.pop(), expected);
  EXPECT_EQ(stack.count(), 0);
}

TEST_F(BlockStackTest, ThePushAfter1024RecordsCreatesASecondBlock) {
  ASSERT_TRUE(stack.create());
  pushUpTo(1024);
  EXPECT_EQ(stack.blockCount(), 1);
  pushUpTo(1025);
  EXPECT_EQ(stack.blockCount(), 2);
  EXPECT_TRUE(stack.sound());  // the second base is 1024
}

TEST_F(BlockStackTest, VisitsTheRecordsFromAnIndexOn) {
  const auto from = [&](int first) {
    std::vector<int> seen;
    stack.forEachFrom(first, [&](int record) { seen.push_back(record); });
    return seen;
  };
  EXPECT_TRUE(from(0).empty());
  EXPECT_EQ(stack.bytes(), 0U);
  ASSERT_TRUE(stack.create());
  EXPECT_TRUE(from(0).empty());
  pushUpTo(2050);
  EXPECT_EQ(stack.bytes(), 3U * 1024 * sizeof(int));
  EXPECT_EQ(from(2048), (std::vector<int>{2049, 2050}));
  EXPECT_EQ(from(2047), (std::vector<int>{2048, 2049, 2050}));
  EXPECT_EQ(from(1).size(), 2049U);
  EXPECT_EQ(from(1).front(), 2);
  EXPECT_TRUE(from(2050).empty());
  stack.popTo(1024);
  EXPECT_EQ(from(1022), (std::vector<int>{1023, 1024}));
}

TEST_F(BlockStackTest, PoppingBackAndPushingAgainReusesTheSecondBlock) {
  ASSERT_TRUE(stack.create());
  pushUpTo(1025);
  for (int expected = 1025; expected > 1000; --expected) ASSERT_EQ(*stack.pop(), expected);
  EXPECT_EQ(stack.blockCount(), 2);
  const AllocationRule counted(allowAll());
  pushUpTo(2048);
  EXPECT_EQ(AllocationRule::count(), 0);
  EXPECT_EQ(stack.blockCount(), 2);
  for (int expected = 2048; expected > 0; --expected) ASSERT_EQ(*stack.pop(), expected);
  EXPECT_TRUE(stack.sound());
}

TEST_F(BlockStackTest, SteppingToAndFroOverABlockEdgeAllocatesNothing) {
  ASSERT_TRUE(stack.create());
  pushUpTo(1025);
  const AllocationRule counted(allowAll());
  for (int i = 0; i < 10; ++i) {
    stack.pop();
    stack.pop();
    pushUpTo(1025);
    ASSERT_TRUE(stack.sound());
  }
  EXPECT_EQ(AllocationRule::count(), 0);
}

TEST_F(BlockStackTest, PoppingToACountLeavesThatManyInKeptBlocks) {
  ASSERT_TRUE(stack.create());
  for (const int count : {2999, 2048, 2047, 1024, 1, 0}) {
    pushUpTo(3000);
    stack.popTo(count);
    EXPECT_EQ(stack.count(), count);
    EXPECT_TRUE(stack.sound());
    int visited = 0;
    stack.forEach([&](const int &record) { ASSERT_EQ(record, ++visited); });
    EXPECT_EQ(visited, count);
  }
  EXPECT_EQ(stack.blockCount(), 3);
}

TEST_F(BlockStackTest, RecordsNeverMove) {
  ASSERT_TRUE(stack.create());
  int *first = stack.push();
  *first = 1;
  pushUpTo(5000);
  EXPECT_EQ(*first, 1);
}

TEST_F(BlockStackTest, APoppedRecordKeepsItsContentsUntilTheNextPush) {
  ASSERT_TRUE(stack.create());
  pushUpTo(1025);
  const int *popped = stack.pop();
  const int *below = stack.pop();
  EXPECT_EQ(*popped, 1025);
  EXPECT_EQ(*below, 1024);
}

TEST_F(BlockStackTest, ARefusedBlockLeavesTheStackUnchangedAndIsReportedOnce) {
  ASSERT_TRUE(stack.create());
  pushUpTo(1024);
  {
    const AllocationRule none(refuseAll());
    EXPECT_EQ(stack.push(), nullptr);
  }
  EXPECT_EQ(stack.count(), 1024);
  EXPECT_EQ(stack.blockCount(), 1);
  EXPECT_EQ(memoryReports, 1);
  EXPECT_TRUE(stack.sound());
  pushUpTo(1025);
  EXPECT_EQ(*stack.pop(), 1025);
  EXPECT_EQ(*stack.pop(), 1024);
}

TEST_F(BlockStackTest, VisitingGoesOldestFirstOverTheRecordsInUse) {
  ASSERT_TRUE(stack.create());
  for (const int count : {0, 1, 1024, 1025, 3000}) {
    pushUpTo(count);
    int visited = 0;
    stack.forEach([&](const int &record) { ASSERT_EQ(record, ++visited); });
    EXPECT_EQ(visited, count);
  }
  while (stack.count() > 10) stack.pop();
  int visited = 0;
  stack.forEach([&](const int &) { ++visited; });
  EXPECT_EQ(visited, 10);
}

TEST_F(BlockStackTest, DestroyingEmptiesTheStackAndItCanBeCreatedAgain) {
  ASSERT_TRUE(stack.create());
  pushUpTo(3000);
  stack.destroy();
  EXPECT_FALSE(stack.created());
  EXPECT_EQ(stack.count(), 0);
  EXPECT_EQ(stack.blockCount(), 0);
  EXPECT_EQ(stack.push(), nullptr);
  stack.destroy();
  EXPECT_TRUE(stack.create());
  pushUpTo(1);
  EXPECT_EQ(*stack.pop(), 1);
}

TEST_F(BlockStackTest, RecordsAreAlignedForTheirType) {
  Owned<Line> lines;
  ASSERT_TRUE(lines.stack.create());
  for (int i = 0; i < 1030; ++i) {
    const Line *line = lines.stack.push();
    ASSERT_EQ(reinterpret_cast<std::uintptr_t>(line) % 64, 0U);
  }
  EXPECT_TRUE(lines.stack.sound());
}

template <int capacity>
struct Refilled : BlockStack<char, capacity> {
  using BlockStack<char, capacity>::refill;
  ~Refilled() { this->destroy(); }
};

TEST_F(BlockStackTest, ABlockThatIsFilledAnewCountsAsAnother) {
  Refilled<4> refilled;
  EXPECT_FALSE(refilled.refill()) << "never created";
  ASSERT_TRUE(refilled.create());
  const std::uint64_t bytes = refilled.bytes();
  for (int count = 4; count <= 12; count += 4) {
    for (int i = 0; i < 4; ++i) refilled.push();
    const AllocationRule none(refuseAll());
    EXPECT_FALSE(refilled.hasRoom());
    ASSERT_TRUE(refilled.refill());
    EXPECT_TRUE(refilled.hasRoom());
    EXPECT_EQ(refilled.count(), count);
    EXPECT_EQ(refilled.blockCount(), count / 4 + 1);
    EXPECT_EQ(refilled.bytes(), bytes);
  }
  const char *first = refilled.push();
  EXPECT_EQ(refilled.indexOf(first), 12);
  while (refilled.count() < 18) refilled.push();
  EXPECT_EQ(refilled.blockCount(), 5);
  EXPECT_EQ(refilled.bytes(), 2 * bytes);
  refilled.popTo(15);
  EXPECT_EQ(&refilled.at(12), first);
  refilled.push();
  EXPECT_FALSE(refilled.refill()) << "there is a next one";
  EXPECT_EQ(refilled.count(), 16);
  EXPECT_EQ(refilled.blockCount(), 5);
}

TEST_F(BlockStackTest, AStackThatNoIntCanCountIsFull) {
  constexpr int kCapacity = 1 << 20;
  Refilled<kCapacity> refilled;
  ASSERT_TRUE(refilled.create());
  const auto fill = [&] {
    while (refilled.hasRoom()) refilled.pushInRoom();
  };
  for (int blocks = 1; blocks < 2047; ++blocks) ASSERT_TRUE(refilled.refill()) << blocks;
  fill();
  EXPECT_EQ(refilled.count(), INT_MAX - kCapacity + 1);
  EXPECT_FALSE(refilled.refill());
  EXPECT_EQ(memoryReports, 0);
  const AllocationRule counted(allowAll());
  EXPECT_EQ(refilled.push(), nullptr);
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(AllocationRule::count(), 0);
  EXPECT_EQ(refilled.count(), INT_MAX - kCapacity + 1);
}

}  // namespace
