// SPDX-License-Identifier: MIT
// Search objects on small random schedules: whatever the order, the values and the neighbourhoods, the last schedule is
// the best one that enumeration finds.
#include <algorithm>
#include <climits>
#include <numeric>

#include "koru_extras.h"
#include "support/kit/failing_allocations.h"
#include "support/kit/random.h"
#include "support/kit/solver_test.h"

namespace koru::test::solve {
namespace {

struct Task {
  int job;
  int machine;
  int duration;
  int use;
};

// Jobs are chains of tasks. Each task needs its machine to itself, or a part of a resource that all tasks share.
class SmallShop {
 public:
  SmallShop(Random &random, bool sharesResource) : shares_(sharesResource) {
    const int jobs = random.between(2, 3);
    for (int job = 0; job < jobs; ++job)
      for (int k = random.between(1, 2); k > 0; --k)
        tasks_.push_back({job, random.between(0, 1), random.between(1, 3), random.between(0, 3)});
  }

  bool post() {
    starts.clear();
    orders.clear();
    const int horizon =
        std::accumulate(tasks_.begin(), tasks_.end(), 0, [](int sum, const Task &t) { return sum + t.duration; });
    makespan = cs_createCSint(0, horizon);
    bool posted = true;
    while (starts.size() < tasks_.size()) starts.push_back(cs_createCSint(0, horizon));
    for (std::size_t i = 0; i < tasks_.size(); ++i) {
      CSint *next = i + 1 < tasks_.size() && tasks_[i + 1].job == tasks_[i].job ? starts[i + 1] : makespan;
      posted = posted && cs_PrecedenceIf(nullptr, starts[i], CSINT(tasks_[i].duration), 0, next);
    }
    return posted && (shares_ ? postResource() : postMachines());
  }

  // By trying for each task each start, as long as nothing is longer than the best.
  int leastMakespan() {
    best_ = INT_MAX;
    place(0);
    return best_;
  }

  // The starts that the variables have.
  bool isSchedule() const {
    Times times;
    for (CSint *start : starts) times.push_back(cs_getValue(start));
    return isSchedule(times) && endOf(times) <= cs_getValue(makespan);
  }

  std::vector<CSint *> starts;
  std::vector<CSorder> orders;
  CSint *makespan = nullptr;

 private:
  using Times = std::vector<int>;

  bool postResource() {
    std::vector<CSint *> durations, uses;
    for (const Task &task : tasks_) {
      durations.push_back(CSINT(task.duration));
      uses.push_back(CSINT(task.use));
    }
    return cs_CumulativeTasks(starts.data(), durations.data(), uses.data(), nullptr, static_cast<int>(starts.size()),
                              CSINT(kCapacity));
  }

  bool postMachines() {
    bool posted = true;
    for (std::size_t i = 0; i < tasks_.size(); ++i)
      for (std::size_t j = i + 1; j < tasks_.size(); ++j) {
        if (tasks_[i].machine != tasks_[j].machine) continue;
        const CSorder order{cs_createCSint(0, 1),
                            {starts[i], starts[j]},
                            {CSINT(tasks_[i].duration), CSINT(tasks_[j].duration)},
                            tasks_[i].machine};
        posted = posted && cs_EitherBefore(order.first, order.starts[0], order.durations[0], nullptr, order.starts[1],
                                           order.durations[1], nullptr);
        orders.push_back(order);
      }
    return posted;
  }

  bool fit(const Times &times, std::size_t i, std::size_t j) const {
    const bool apart = times[i] + tasks_[i].duration <= times[j] || times[j] + tasks_[j].duration <= times[i];
    if (tasks_[i].job == tasks_[j].job) return (i < j) == (times[i] < times[j]) && apart;
    return apart || shares_ || tasks_[i].machine != tasks_[j].machine;
  }
  bool isWithinCapacity(const Times &times, int time) const {
    int taken = 0;
    for (std::size_t i = 0; i < times.size(); ++i)
      if (times[i] <= time && time < times[i] + tasks_[i].duration) taken += tasks_[i].use;
    return !shares_ || taken <= kCapacity;
  }
  bool isSchedule(const Times &times) const {
    for (std::size_t i = 0; i < times.size(); ++i) {
      if (!isWithinCapacity(times, times[i])) return false;
      for (std::size_t j = 0; j < i; ++j)
        if (!fit(times, i, j)) return false;
    }
    return true;
  }
  int endOf(const Times &times) const {
    int end = 0;
    for (std::size_t i = 0; i < times.size(); ++i) end = std::max(end, times[i] + tasks_[i].duration);
    return end;
  }
  void place(std::size_t i) {
    if (i == tasks_.size()) {
      best_ = std::min(best_, endOf(placed_));
      return;
    }
    for (int time = 0; time <= 15; ++time) {
      placed_.push_back(time);
      if (endOf(placed_) < best_ && isSchedule(placed_)) place(i + 1);
      placed_.pop_back();
    }
  }

  static constexpr int kCapacity = 3;
  bool shares_;
  std::vector<Task> tasks_;
  Times placed_;
  int best_ = 0;
};

class SchedulesTest : public SolverTest {
 protected:
  static CSsearchOptions anyOptions(Random &random, const SmallShop &shop) {
    CSsearchOptions o{};
    o.size = sizeof o;
    o.minimize = shop.makespan;
    o.branching = random.between(CS_BRANCH_BINARY, CS_BRANCH_VALUES);
    o.lastConflict = random.between(0, 1) == 1;
    o.randomTies = random.between(0, 1) == 1;
    o.guided = random.between(0, 1) == 1;
    o.seed = static_cast<unsigned long long>(random.between(0, 1000));
    o.restarts = random.between(0, 1) == 1 ? CS_RESTARTS_NONE : random.between(CS_RESTARTS_LUBY, CS_RESTARTS_GEOMETRIC);
    o.restartFails = random.between(1, 3);
    const int neighbours[] = {CS_NEIGHBOURS_NONE, CS_NEIGHBOURS_WINDOW, CS_NEIGHBOURS_MACHINES, CS_NEIGHBOURS_TASKS,
                              CS_NEIGHBOURS_LINKED};
    o.neighbours = neighbours[random.between(0, 4)];
    o.neighbourFails = random.between(1, 3);
    o.relaxed = random.between(1, 100);
    return o;
  }

  // Orders first, where there are any; then the starts.
  static CSsearch *begin(const CSsearchOptions &o, SmallShop &shop, int order, int value, int orderOfStarts) {
    CSsearch *s = cs_createSearch(nullptr, 0);
    if (s == nullptr) return s;
    const bool told =
        cs_setSearchOptions(s, &o) &&
        cs_addSearchOrders(s, shop.orders.data(), static_cast<int>(shop.orders.size()), order, value) &&
        cs_addSearchPhase(s, shop.starts.data(), static_cast<int>(shop.starts.size()), orderOfStarts, CS_VALUE_MIN);
    EXPECT_TRUE(told || cs_getErr() == CS_ERR_MEMORY);
    return s;
  }

  void proveOptimum(std::uint64_t seed) {
    TearDown();
    SetUp();
    Random random(seed);
    SmallShop shop(random, random.between(0, 1) == 1);
    ASSERT_TRUE(shop.post());
    const CSsearchOptions o = anyOptions(random, shop);
    const int orders[] = {CS_ORDER_SLACK, CS_ORDER_SLACK_WDEG, CS_ORDER_DOM_WDEG, CS_ORDER_INPUT};
    const int values[] = {CS_VALUE_SLACK, CS_VALUE_MIN, CS_VALUE_MAX};
    CSsearch *s = begin(o, shop, orders[random.between(0, 3)], values[random.between(0, 2)],
                        random.between(0, 3) == 0 ? CS_ORDER_SMALLEST_MIN : CS_ORDER_SET_TIMES);
    int best = INT_MAX;
    while (cs_nextSolution(s) == CS_STATUS_SOLUTION) {
      ASSERT_TRUE(shop.isSchedule()) << seed;
      ASSERT_LT(cs_getValue(shop.makespan), best) << seed;
      best = cs_getValue(shop.makespan);
    }
    EXPECT_EQ(cs_getSearchStatus(s), CS_STATUS_OPTIMAL) << seed;
    ASSERT_EQ(best, shop.leastMakespan()) << "seed " << seed;
    EXPECT_TRUE(cs_freeSearch(s));
  }
};

TEST_F(SchedulesTest, TheLastScheduleIsTheBest) {
  for (std::uint64_t seed = 1; seed <= 1000 && !HasFatalFailure(); ++seed) proveOptimum(seed);
}

TEST_F(SchedulesTest, TheLastScheduleIsTheBestHeavy) {
  for (std::uint64_t seed = 1001; seed <= 30000 && !HasFatalFailure(); ++seed) proveOptimum(seed);
}

// Two tasks of 3 and 4 on one machine, within 10.
class OneOrderTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    a = cs_createCSint(0, 6);
    b = cs_createCSint(0, 6);
    order = {cs_createCSint(0, 1), {a, b}, {CSINT(3), CSINT(4)}, 0};
    ASSERT_TRUE(cs_EitherBefore(order.first, a, CSINT(3), nullptr, b, CSINT(4), nullptr));
  }
  // What the first decision is.
  int firstDecision(int value) {
    CSsearch *s = cs_createSearch(nullptr, 0);
    EXPECT_TRUE(cs_addSearchOrders(s, &order, 1, CS_ORDER_SLACK, value));
    EXPECT_EQ(cs_nextSolution(s), CS_STATUS_SOLUTION);
    const int decision = cs_getValue(order.first);
    EXPECT_TRUE(cs_freeSearch(s));
    return decision;
  }
  // Those that the search binds, in that order.
  static std::vector<CSint *> boundInTurn(std::vector<CSint *> vars, CSsearch *s) {
    static std::vector<CSint *> bound;
    bound.clear();
    const auto note = [](int, int index, CSint **array, int, void *) {
      bound.push_back(array[index]);
      return true;
    };
    EXPECT_TRUE(cs_eventKnown(vars.data(), static_cast<int>(vars.size()), note, nullptr));
    cs_nextSolution(s);
    EXPECT_TRUE(cs_freeSearch(s));
    return bound;
  }
  CSint *a = nullptr;
  CSint *b = nullptr;
  CSorder order{};
};

TEST_F(OneOrderTest, TheOneWithMoreRoomIsTriedFirst) {
  EXPECT_EQ(firstDecision(CS_VALUE_SLACK), 1) << "a first leaves 6 - 0 - 3";
  ASSERT_TRUE(cs_GE(a, 2));
  EXPECT_EQ(firstDecision(CS_VALUE_SLACK), 0) << "1 against 2";
  EXPECT_EQ(firstDecision(CS_VALUE_MAX), 1);
  EXPECT_EQ(firstDecision(CS_VALUE_MIN), 0);
}

TEST_F(OneOrderTest, TheTightestOrderIsDecidedFirst) {
  CSint *c = cs_createCSint(0, 3);
  CSorder tight{cs_createCSint(0, 1), {a, c}, {CSINT(3), CSINT(4)}, 0};
  ASSERT_TRUE(cs_EitherBefore(tight.first, a, CSINT(3), nullptr, c, CSINT(4), nullptr));
  CSorder both[] = {order, tight};
  for (const int by : {CS_ORDER_SLACK, CS_ORDER_SLACK_WDEG}) {
    CSsearch *s = cs_createSearch(nullptr, 0);
    CSsearchOptions o{};
    o.size = sizeof o;
    o.choicePoints = 1;
    ASSERT_TRUE(cs_setSearchOptions(s, &o));
    ASSERT_TRUE(cs_addSearchOrders(s, both, 2, by, CS_VALUE_MIN));
    const std::vector<CSint *> bound = boundInTurn({order.first, tight.first}, s);
    ASSERT_FALSE(bound.empty());
    EXPECT_EQ(bound[0], tight.first);
  }
}

TEST_F(OneOrderTest, WhatMakesNoSenseIsRefused) {
  CSsearch *s = cs_createSearch(nullptr, 0);
  EXPECT_FALSE(cs_addSearchOrders(nullptr, &order, 1, CS_ORDER_SLACK, CS_VALUE_SLACK));
  EXPECT_FALSE(cs_addSearchOrders(s, nullptr, 1, CS_ORDER_SLACK, CS_VALUE_SLACK));
  EXPECT_FALSE(cs_addSearchOrders(s, &order, -1, CS_ORDER_SLACK, CS_VALUE_SLACK));
  EXPECT_FALSE(cs_addSearchOrders(s, &order, 1, CS_ORDER_SET_TIMES, CS_VALUE_SLACK));
  EXPECT_FALSE(cs_addSearchOrders(s, &order, 1, CS_ORDER_HOST, CS_VALUE_SLACK));
  EXPECT_FALSE(cs_addSearchOrders(s, &order, 1, CS_ORDER_SLACK, CS_VALUE_SLACK + 1));
  EXPECT_FALSE(cs_addSearchPhase(s, &a, 1, CS_ORDER_SLACK, CS_VALUE_MIN));
  EXPECT_FALSE(cs_addSearchPhase(s, &a, 1, CS_ORDER_INPUT, CS_VALUE_SLACK));
  CSint **const parts[] = {&order.first, &order.starts[0], &order.starts[1], &order.durations[0], &order.durations[1]};
  for (CSint **part : parts) {
    CSint *kept = *part;
    *part = nullptr;
    EXPECT_FALSE(cs_addSearchOrders(s, &order, 1, CS_ORDER_SLACK, CS_VALUE_SLACK));
    *part = kept;
  }
  EXPECT_TRUE(cs_addSearchOrders(s, nullptr, 0, CS_ORDER_SLACK, CS_VALUE_SLACK));
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_SOLUTION);
  EXPECT_FALSE(cs_addSearchOrders(s, &order, 1, CS_ORDER_SLACK, CS_VALUE_SLACK)) << "it has begun";
}

// A start that is put off is chosen again when its minimum has grown, and only then.
TEST_F(OneOrderTest, SetTimesComesBackToWhatHasMoved) {
  CSint *starts[] = {a, b};
  CSint *end = cs_createCSint(0, 20);
  ASSERT_TRUE(cs_PrecedenceIf(nullptr, a, CSINT(3), 5, end) && cs_PrecedenceIf(nullptr, b, CSINT(4), 8, end));
  CSsearchOptions o{};
  o.size = sizeof o;
  o.order = CS_ORDER_SET_TIMES;
  o.minimize = end;
  CSsearch *s = cs_createSearch(starts, 2);
  ASSERT_TRUE(cs_setSearchOptions(s, &o));
  ASSERT_EQ(cs_nextSolution(s), CS_STATUS_SOLUTION);
  EXPECT_EQ(cs_getValue(a), 0) << "both can be first: equal minima, equal maxima, and a stands first";
  EXPECT_EQ(cs_getValue(end), 15);
  ASSERT_EQ(cs_nextSolution(s), CS_STATUS_SOLUTION) << "a is put off until b has moved it";
  EXPECT_EQ(cs_getValue(b), 0);
  EXPECT_EQ(cs_getValue(a), 4);
  EXPECT_EQ(cs_getValue(end), 12);
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_OPTIMAL);
}

class ExhaustedSchedulesTest : public SchedulesTest {
 protected:
  // False when the search did not ask for a k-th allocation.
  bool failAt(std::uint64_t seed, int k) {
    TearDown();
    SetUp();
    Random random(seed);
    SmallShop shop(random, false);
    EXPECT_TRUE(shop.post());
    const CSsearchOptions o = anyOptions(random, shop);
    bool refused = false;
    {
      const FailingAllocator failing(k, Failing::kOnce);
      CSsearch *s = begin(o, shop, CS_ORDER_SLACK_WDEG, CS_VALUE_SLACK, CS_ORDER_SET_TIMES);
      if (s != nullptr) {
        while (cs_nextSolution(s) == CS_STATUS_SOLUTION) continue;
        EXPECT_TRUE(cs_freeSearch(s));
      }
      refused = FailingAllocator::failures() > 0;
    }
    cs_end();
    EXPECT_EQ(blocksAlive, 0) << seed << " " << k;
    return refused;
  }
};

TEST_F(ExhaustedSchedulesTest, NothingIsLost) {
  for (std::uint64_t seed = 1; seed <= 10; ++seed)
    for (int k = 0; failAt(seed, k); ++k) continue;
}

}  // namespace
}  // namespace koru::test::solve
