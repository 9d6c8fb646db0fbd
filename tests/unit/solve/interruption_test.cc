// SPDX-License-Identifier: MIT
// The clock, a stop and the limit on memory inside one long propagation: it is cut short, the search says why, and
// everything is as it was.
#include <chrono>

#include "core/solver.h"
#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace koru::test::solve {
namespace {

class InterruptionTest : public SolverTest {
 protected:
  static constexpr int kLength = 2000;

  std::vector<CSint *> chain;
  std::vector<CSint *> label;
  CSsearch *search = nullptr;
  int heard = 0;
  int stopsAt = -1;
  std::chrono::microseconds takes{0};
  CSsearch *toStop = nullptr;

  void SetUp() override {
    SolverTest::SetUp();
    solver::checked.period = solver::checked.untilNext = 1000;
    for (int i = 0; i < kLength; ++i) chain.push_back(cs_createCSint(i, i + 9));
    for (int i = 1; i < kLength; ++i) ASSERT_TRUE(cs_Lt(chain[index(i - 1)], chain[index(i)]));
    cs_eventNewMin(chain.data(), kLength, hear, this);
    cs_eventNewMax(chain.data(), kLength, hear, this);
    label = {chain[0]};
  }
  void TearDown() override {
    SolverTest::TearDown();
    solver::checked.period = solver::checked.untilNext = 1;
  }
  static long long bytesWithoutPosters() {
    return static_cast<long long>(solver::trail.bytes() + solver::variables.bytes() + solver::contexts.bytes() +
                                  solver::events.bytes() + solver::pool.bytes());
  }
  static std::size_t index(int i) { return static_cast<std::size_t>(i); }

  static bool hear(CSint *, int, int, CSint **, int, void *extra) {
    auto &self = *static_cast<InterruptionTest *>(extra);
    if (++self.heard == self.stopsAt) cs_stopSearch(self.toStop);
    self.pass();
    return true;
  }

  // Not asleep: some systems sleep in whole milliseconds.
  void pass() const {
    const auto until = std::chrono::steady_clock::now() + takes;
    while (takes.count() > 0 && std::chrono::steady_clock::now() < until) continue;
  }

  // The first value of the first variable leaves everything as it is; its opposite moves all.
  CSstatus searchWith(CSsearchOptions o) {
    o.size = sizeof o;
    o.branching = CS_BRANCH_BINARY;
    if (o.value == CS_VALUE_MIN) o.value = CS_VALUE_HIGH_HALF;
    search = toStop = cs_createSearch(label.data(), static_cast<int>(label.size()));
    EXPECT_TRUE(cs_setSearchOptions(search, &o));
    CSstatus status = CS_STATUS_READY;
    while ((status = cs_nextSolution(search)) == CS_STATUS_SOLUTION) continue;
    return status;
  }
  CSsearchStats stats() const {
    CSsearchStats s;
    EXPECT_TRUE(cs_getSearchStats(search, &s, sizeof s));
    return s;
  }
  void expectRestored() {
    EXPECT_TRUE(cs_freeSearch(search));
    EXPECT_EQ(solver::contexts.count(), 0);
    EXPECT_TRUE(solver::events.empty());
    EXPECT_EQ(solver::queue.supervisor.mustEnd, nullptr);
    for (int i = 0; i < kLength; ++i) ASSERT_EQ(cs_getMin(chain[index(i)]), i);
    EXPECT_TRUE(cs_GE(chain[0], 5));
    EXPECT_EQ(cs_getMin(chain.back()), kLength + 4);
  }
};

TEST_F(InterruptionTest, WithoutAReasonThePropagationIsWhole) {
  EXPECT_EQ(searchWith({}), CS_STATUS_EXHAUSTED);
  EXPECT_GE(heard, kLength);
  EXPECT_EQ(stats().solutions, 10);
  EXPECT_GT(stats().wakings, kLength);
  expectRestored();
}

TEST_F(InterruptionTest, AStopCutsItShort) {
  stopsAt = 500;
  EXPECT_EQ(searchWith({}), CS_STATUS_STOPPED);
  EXPECT_GE(heard, 500);
  EXPECT_LE(heard, 500 + 64);
  EXPECT_EQ(stats().choicePoints, 1);
  EXPECT_EQ(stats().fails, 0) << "what was cut short has refuted nothing";
  expectRestored();
}

TEST_F(InterruptionTest, TheClockCutsItShort) {
  takes = std::chrono::microseconds(200);
  CSsearchOptions o{};
  o.milliseconds = 10;
  EXPECT_EQ(searchWith(o), CS_STATUS_TIME);
  EXPECT_LT(heard, 10 * 5 + 64 + 1) << "each call takes 200 microseconds or more";
  takes = {};
  expectRestored();
}

TEST_F(InterruptionTest, TheMemoryLimitCutsItShort) {
  CSsearchOptions o{};
  o.memory = bytesWithoutPosters() + static_cast<long long>(solver::posters.bytes()) + 100;
  EXPECT_EQ(searchWith(o), CS_STATUS_MEMORY);
  EXPECT_EQ(memoryReports, 0) << "it is a limit, not an error";
  expectRestored();
}

TEST_F(InterruptionTest, TheTableOfPostersCountsAsMemory) {
  CSsearchOptions o{};
  o.memory = bytesWithoutPosters() + (1 << 20);
  EXPECT_EQ(searchWith(o), CS_STATUS_EXHAUSTED);
  EXPECT_TRUE(cs_freeSearch(search));
  for (std::uintptr_t place = 0; place < 100000; ++place)
    solver::posters.numberOf({"from many places", reinterpret_cast<const void *>(place)});
  EXPECT_GT(solver::posters.bytes(), 2U << 20);
  EXPECT_EQ(searchWith(o), CS_STATUS_MEMORY);
  expectRestored();
}

TEST_F(InterruptionTest, AMemoryLimitThatIsWideChangesNothing) {
  CSsearchOptions o{};
  o.memory = 1LL << 40;
  EXPECT_EQ(searchWith(o), CS_STATUS_EXHAUSTED);
  EXPECT_EQ(stats().solutions, 10);
  expectRestored();
}

// A bound on the objective whose propagation is cut short proves nothing.
TEST_F(InterruptionTest, IsNoProof) {
  CSsearchOptions o{};
  o.size = sizeof o;
  o.minimize = chain.back();
  o.value = CS_VALUE_MAX;
  search = toStop = cs_createSearch(label.data(), 1);
  ASSERT_TRUE(cs_setSearchOptions(search, &o));
  ASSERT_EQ(cs_nextSolution(search), CS_STATUS_SOLUTION);
  heard = 0;
  stopsAt = 1;
  EXPECT_EQ(cs_nextSolution(search), CS_STATUS_STOPPED);
  EXPECT_LE(heard, 1 + 64);
  EXPECT_EQ(stats().objective, kLength + 8);
  expectRestored();
}

// A search within a propagation of another one ends with it, and the other one says why.
class NestedInterruptionTest : public InterruptionTest {
 protected:
  CSstatus inner = CS_STATUS_READY;
  std::vector<CSint *> others;

  static bool searchInside(CSint **, int, void *extra) {
    auto &self = *static_cast<NestedInterruptionTest *>(extra);
    self.toStop = self.search;
    CSsearch *s = cs_createSearch(self.others.data(), 1);
    while ((self.inner = cs_nextSolution(s)) == CS_STATUS_SOLUTION) continue;
    EXPECT_TRUE(cs_freeSearch(s));
    return true;
  }
  void SetUp() override {
    InterruptionTest::SetUp();
    others = {cs_createCSint(0, 3)};
    label = {cs_createCSint(0, 1)};
    ASSERT_TRUE(cs_eventAllKnown(label.data(), 1, searchInside, this));
    ASSERT_TRUE(cs_IfEq(others[0], chain[0], 1, 9));
  }
};

TEST_F(NestedInterruptionTest, TheOuterStopEndsBoth) {
  stopsAt = 100;
  EXPECT_EQ(searchWith({}), CS_STATUS_STOPPED);
  EXPECT_EQ(inner, CS_STATUS_STOPPED);
  EXPECT_LE(heard, 100 + 64);
  expectRestored();
}

TEST_F(NestedInterruptionTest, WithoutAStopBothAreWhole) {
  EXPECT_EQ(searchWith({}), CS_STATUS_EXHAUSTED);
  EXPECT_EQ(inner, CS_STATUS_EXHAUSTED);
  EXPECT_EQ(stats().solutions, 2);
  expectRestored();
}

// The posting phase that a search ends may leave no solution; told or not, the search says so.
class PostingPhaseTest : public SolverTest {
 protected:
  CSint **x = nullptr;
  void SetUp() override {
    SolverTest::SetUp();
    x = cs_createCSintArray(3, 0, 2);
    ASSERT_TRUE(cs_beginPosting());
    ASSERT_TRUE(cs_AllNeqDomain(x, 3)) << "its run waits";
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(cs_LE(x[i], 1));
  }
};

TEST_F(PostingPhaseTest, ASearchThatEndsItSaysThatThereIsNoSolution) {
  CSsearch *s = cs_createSearch(x, 3);
  ASSERT_NE(s, nullptr);
  CSsearchOptions o{};
  o.size = sizeof o;
  EXPECT_TRUE(cs_setSearchOptions(s, &o));
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_EXHAUSTED);
  CSsearchStats stats;
  EXPECT_TRUE(cs_getSearchStats(s, &stats, sizeof stats));
  EXPECT_EQ(stats.choicePoints, 0);
  EXPECT_TRUE(cs_freeSearch(s));
  EXPECT_FALSE(cs_endPosting());
}

TEST_F(PostingPhaseTest, SoDoesASearchBeforeTheFailureWasTold) {
  cs_saveContext();
  CSsearch *s = cs_createSearch(x, 3);
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_EXHAUSTED);
  EXPECT_TRUE(cs_freeSearch(s));
  EXPECT_FALSE(cs_search(x, 3, cs_findFreeVar));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_EXHAUSTED);
  EXPECT_EQ(cs_getNbChoicePoints(), 0);
}

}  // namespace
}  // namespace koru::test::solve
