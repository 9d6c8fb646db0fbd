// SPDX-License-Identifier: MIT
// Removals without jumps: they leave what others leave, on the domain, the trail and the queue, for every domain of a
// few values.
#include "core/take.h"

#include <tuple>

#include "core/narrow.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru;
using namespace koru::test;

class TakeTest : public SolverTest {
 protected:
  static constexpr int kLow = -3;
  static constexpr int kWidth = 7;

  void SetUp() override {
    SolverTest::SetUp();
    cs_saveContext();
    solver::queue.depth = 1;  // as in a handler
    solver::queue.trying = true;
  }
  void TearDown() override {
    solver::queue.trying = false;
    solver::events.clear();
    solver::queue.depth = 0;
    SolverTest::TearDown();
  }

  // Over kLow and the values after it whose bit is set, of a variable that could take more on both sides.
  static CSint *make(unsigned set) {
    CSint *v = cs_createCSint(kLow - 5, kLow + kWidth + 5);
    solver::queue.depth = 0;
    EXPECT_TRUE(cs_NEQ(v, kLow - 2));  // now it has bits
    for (int i = 0; i < kWidth; ++i) EXPECT_TRUE((set >> i & 1) != 0 || cs_NEQ(v, kLow + i));
    EXPECT_TRUE(cs_GE(v, kLow) && cs_LE(v, kLow + kWidth - 1));
    solver::queue.depth = 1;
    return v;
  }

  // All that a removal can leave.
  struct State {
    std::vector<int> values;
    int min, max, count, reportedMin, reportedMax;
    int records;
    bool operator==(const State &) const = default;
  };
  static State stateOf(CSint *v, int mark) {
    return {values(v), v->min, v->max, v->count, v->reportedMin, v->reportedMax, solver::trail.count() - mark};
  }

  using Told = std::vector<std::tuple<int, int>>;  // code and value
  static Told takeEvents(const CSint *v) {
    Told told;
    while (!solver::events.empty()) {
      const EventRecord event = solver::events.take();
      EXPECT_EQ(event.variable, v);
      EXPECT_EQ(event.entries, v->constraints);
      told.emplace_back(event.code, event.value);
    }
    return told;
  }

  struct Left {
    bool consistent;
    State state, restored;
    Told told;
    bool operator==(const Left &) const = default;
  };
  template <class Remove>
  static Left leftBy(Remove remove, CSint *v, int value) {
    cs_saveContext();
    solver::queue.limit = 0;  // a context of the handler's would have changes propagate at once
    const int mark = solver::trail.count();
    Left left{};
    left.consistent = remove(v, value);
    left.state = stateOf(v, mark);
    left.told = takeEvents(v);
    cs_restoreContext();
    left.restored = stateOf(v, mark);
    return left;
  }

  void compareAll(bool removalsAreHeard) {
    int compared = 0;
    for (unsigned set = 1; set < 1U << kWidth; ++set) {
      CSint *v = make(set);
      solver::queue.depth = 0;
      CSint *other = cs_createCSint(kLow, kLow + kWidth);
      ASSERT_TRUE(removalsAreHeard ? cs_Eq(v, other) != 0 : cs_Neq(v, other) != 0);
      solver::queue.depth = 1;
      ASSERT_TRUE(has(v, kEasy));
      ASSERT_TRUE(canTakeEasily(1));
      for (const int value : values(v)) {
        const Left expected = leftBy(removeHeld, v, value);
        const Left left = leftBy(takeEasily, v, value);
        ASSERT_TRUE(left == expected) << set << " without " << value;
        EXPECT_EQ(expected.restored.records, 0);
        ++compared;
      }
    }
    EXPECT_EQ(compared, kWidth << (kWidth - 1));
  }
};

TEST_F(TakeTest, LeavesWhatARemovalLeaves) { compareAll(false); }
TEST_F(TakeTest, LeavesWhatARemovalLeavesThatIsHeard) { compareAll(true); }

TEST_F(TakeTest, IsForTrialsWhoseChangesWaitAndForWhichThereIsRoom) {
  EXPECT_TRUE(canTakeEasily(64));
  solver::queue.trying = false;
  EXPECT_FALSE(canTakeEasily(1));
  solver::queue.trying = true;
  solver::queue.depth = 0;
  EXPECT_FALSE(canTakeEasily(1)) << "changes would propagate at once";
  solver::queue.depth = 1;
  solver::events.startWithRoom(2);
  EXPECT_TRUE(canTakeEasily(2));
  EXPECT_FALSE(canTakeEasily(3));
  solver::events.clear();
  while (solver::trail.count() % Trail::kCapacity != Trail::kCapacity - 2) cs_backtrack(nullptr, 0, nullptr);
  EXPECT_TRUE(canTakeEasily(2));
  EXPECT_FALSE(canTakeEasily(3));
}

}  // namespace
