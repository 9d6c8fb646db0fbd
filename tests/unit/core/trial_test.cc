// SPDX-License-Identifier: MIT
// When handlers may take it that nobody of the host's looks on.
#include "core/trial.h"

#include "support/kit/solver_test.h"

namespace {

using namespace koru;
using namespace koru::test;

class TrialTest : public SolverTest {
 protected:
  static bool tries(bool hostLooks = false) {
    const Trial trial(hostLooks);
    return solver::queue.trying;
  }
};

TEST_F(TrialTest, IsUnderWayInsideAContextAndEndsByItself) {
  EXPECT_FALSE(tries()) << "nothing would undo what is refused";
  cs_saveContext();
  EXPECT_TRUE(tries());
  EXPECT_FALSE(solver::queue.trying);
  cs_restoreContext();
  EXPECT_FALSE(tries());
}

TEST_F(TrialTest, IsNoneWhereTheHostLooks) {
  cs_saveContext();
  EXPECT_FALSE(tries(true));
}

TEST_F(TrialTest, IsNoneWhileSomebodyProfiles) {
  cs_saveContext();
  Observer observer{[](void *, bool, CSint *, int, Site *) {}, nullptr, nullptr, true, nullptr};
  solver::ports.add(&observer);
  EXPECT_FALSE(tries());
  solver::ports.remove(&observer);
  EXPECT_TRUE(tries());
}

TEST_F(TrialTest, IsNoneWithHandlersOfTheHosts) {
  cs_saveContext();
  CSint *x = cs_createCSint(0, 9);
  cs_eventNewMin(
      &x, 1, [](CSint *, int, int, CSint **, int, void *) { return true; }, nullptr);
  EXPECT_FALSE(tries());
}

TEST_F(TrialTest, IsNoneOnceCountsMayBeWrong) {
  CSint *x = cs_createCSint(0, 9);
  cs_saveContext();
  cs_saveContext();
  ASSERT_TRUE(cs_NEQ(x, 5));
  cs_acceptContext();
  EXPECT_FALSE(tries());
}

}  // namespace
