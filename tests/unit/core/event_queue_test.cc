// SPDX-License-Identifier: MIT
#include "core/event_queue.h"

#include <deque>

#include "support/kit/random.h"
#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"

namespace {

using namespace koru;
using namespace koru::test;

class EventQueueTest : public SolverTest {
 protected:
  EventQueue events;

  void SetUp() override {
    SolverTest::SetUp();
    ASSERT_TRUE(events.create());
  }
  void TearDown() override {
    events.destroy();
    SolverTest::TearDown();
  }
  void push(int value) {
    ASSERT_TRUE(events.makeRoom());
    events.push({nullptr, nullptr, value, kNewMin});
  }
  void pushFrom(int first, int count) {
    for (int i = 0; i < count; ++i) push(first + i);
  }
  void takeFrom(int first, int count) {
    for (int i = 0; i < count; ++i) {
      ASSERT_FALSE(events.empty());
      ASSERT_EQ(events.take().value, first + i);
    }
  }
};

TEST_F(EventQueueTest, CreatingAllocatesOneBlockAndOnlyOnce) {
  const AllocationRule counted(allowAll());
  EXPECT_TRUE(events.create());
  EXPECT_EQ(AllocationRule::count(), 0);
  EXPECT_EQ(events.blockCount(), 1);
  EXPECT_TRUE(events.empty());
}

TEST_F(EventQueueTest, AQueueThatWasNeverCreatedHasNoRoomAndReportsNothing) {
  EventQueue none;
  EXPECT_FALSE(none.created());
  EXPECT_FALSE(none.makeRoom());
  EXPECT_TRUE(none.empty());
  EXPECT_EQ(memoryReports, 0);
}

TEST_F(EventQueueTest, ARefusedFirstBlockLeavesItUncreated) {
  EventQueue none;
  const AllocationRule rule(refuseAll());
  EXPECT_FALSE(none.create());
  EXPECT_FALSE(none.created());
  EXPECT_EQ(memoryReports, 1);
}

TEST_F(EventQueueTest, EventsComeOutInTheOrderInWhichTheyWentIn) {
  pushFrom(0, 1);
  EXPECT_TRUE(events.single());
  pushFrom(1, 4);
  EXPECT_FALSE(events.single());
  EXPECT_EQ(events.size(), 5);
  takeFrom(0, 2);
  pushFrom(5, 3);
  takeFrom(2, 6);
  EXPECT_TRUE(events.empty());
  EXPECT_EQ(events.size(), 0);
}

TEST_F(EventQueueTest, AQueueThatGoesEmptyNeverNeedsASecondBlock) {
  for (int i = 0; i < 3000; ++i) {
    push(i);
    takeFrom(i, 1);
  }
  EXPECT_EQ(events.blockCount(), 1);
}

// Wherever in its block a queue has run empty: as many records as a block has, and no more.
TEST_F(EventQueueTest, ABlockHoldsAsManyAfterAnyNumberOfTakenEvents) {
  for (int taken = 0; taken < 200; ++taken) {
    EventQueue queue;
    ASSERT_TRUE(queue.create());
    const auto pushOne = [&](int value) {
      if (!queue.makeRoom()) return false;
      queue.push({nullptr, nullptr, value, kNewMin});
      return true;
    };
    for (int i = 0; i < taken; ++i) {
      ASSERT_TRUE(pushOne(i));
      ASSERT_EQ(queue.take().value, i);
    }
    const AllocationRule none(refuseAll());
    int pushed = 0;
    while (pushOne(pushed)) ++pushed;
    EXPECT_EQ(pushed, EventQueue::kCapacity) << taken;
    EXPECT_EQ(queue.size(), pushed);
    for (int i = 0; i < pushed; ++i) ASSERT_EQ(queue.take().value, i) << taken;
    EXPECT_TRUE(queue.empty());
    queue.destroy();
  }
}

// Against a plain list, with bursts of all lengths.
TEST_F(EventQueueTest, ForgetsAndMixesUpNothing) {
  Random random(1);
  for (int round = 0; round < 300; ++round) {
    std::deque<int> expected;
    const int most = random.below(4) == 0 ? 3000 : 70;
    for (int step = 0; step < 60; ++step) {
      for (int i = random.below(most); i > 0; --i) {
        expected.push_back(random.below(1000));
        push(expected.back());
      }
      for (int i = random.below(most); i > 0 && !expected.empty(); --i) {
        ASSERT_EQ(events.take().value, expected.front());
        expected.pop_front();
      }
      ASSERT_EQ(events.size(), static_cast<int>(expected.size()));
      ASSERT_EQ(events.empty(), expected.empty());
    }
    events.clear();
  }
}

TEST_F(EventQueueTest, AMovingQueueGoesRoundItsBlocks) {
  pushFrom(0, 1500);
  for (int i = 0; i < 10000; ++i) {
    push(1500 + i);
    takeFrom(i, 1);
    ASSERT_EQ(events.size(), 1500);
  }
  EXPECT_EQ(events.blockCount(), 3);
  takeFrom(10000, 1500);
  EXPECT_TRUE(events.empty());
}

TEST_F(EventQueueTest, BlocksAreReusedAfterALongQueue) {
  pushFrom(0, 5000);
  EXPECT_EQ(events.blockCount(), 5);
  takeFrom(0, 5000);
  const AllocationRule counted(allowAll());
  pushFrom(0, 5000);
  EXPECT_EQ(AllocationRule::count(), 0);
  events.clear();
  EXPECT_TRUE(events.empty());
  pushFrom(7, 3000);
  takeFrom(7, 3000);
  EXPECT_EQ(AllocationRule::count(), 0);
}

TEST_F(EventQueueTest, ARefusedBlockLeavesTheQueueAsItWas) {
  pushFrom(0, EventQueue::kCapacity);
  {
    const AllocationRule none(refuseAll());
    EXPECT_FALSE(events.makeRoom());
  }
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(events.size(), EventQueue::kCapacity);
  push(EventQueue::kCapacity);
  takeFrom(0, EventQueue::kCapacity + 1);
}

TEST_F(EventQueueTest, AnEmptyQueueWithoutRoomGoesOnInTheNextBlock) {
  events.startWithRoom(2);
  pushFrom(0, 2);
  EXPECT_FALSE(events.hasRoom());
  takeFrom(0, 2);
  events.startWithRoom(0);
  pushFrom(0, 3);
  EXPECT_EQ(events.blockCount(), 2);
  takeFrom(0, 3);
  EXPECT_TRUE(events.empty());
}

}  // namespace
