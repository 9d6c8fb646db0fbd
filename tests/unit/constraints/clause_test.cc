// SPDX-License-Identifier: MIT
// cs_Clause, cs_ReifClause, cs_ClauseIff, cs_ClauseIf: what is attached, the watches, bad arguments, memory, and states
// that nobody restored.
#include "koru_extras.h"
#include "support/kit/batch.h"
#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;

class ClauseTest : public SolverTest {
 protected:
  static constexpr int kSize = 6;
  std::vector<CSint *> v;
  CSint *b = nullptr;

  void SetUp() override {
    SolverTest::SetUp();
    for (int i = 0; i < kSize; ++i) v.push_back(cs_createCSint(0, 1));
    b = cs_createCSint(0, 1);
  }
};

TEST_F(ClauseTest, HearsOnlyWhatMakesALiteralFalse) {
  ASSERT_TRUE(cs_Clause(&v[0], 2, &v[2], 1));
  EXPECT_EQ(attachments(v[0]), (std::vector<std::pair<std::string, int>>{{"cs_Clause", 0}}));
  EXPECT_EQ(attachments(v[2]), (std::vector<std::pair<std::string, int>>{{"cs_Clause", 2}}));
  EXPECT_EQ(v[0]->constraints->heard, events(kNewMax, kMaxBound, kBound));
  EXPECT_EQ(v[2]->constraints->heard, events(kNewMin, kMinBound, kBound));
  const CallLog log;
  EXPECT_TRUE(cs_EQ(v[1], 1));
  EXPECT_TRUE(cs_EQ(v[2], 0));
  EXPECT_EQ(log.calls.size(), 2U) << "an observer is told of all calls, and of those that do nothing";
}

TEST_F(ClauseTest, TheLastLiteralIsMadeTrueInWhateverOrderTheOthersGo) {
  std::vector<int> order = range(0, kSize - 1);
  do {
    cs_saveContext();
    ASSERT_TRUE(cs_Clause(v.data(), 3, &v[3], 3));
    for (int k = 0; k < kSize; ++k) {
      const int i = order[static_cast<std::size_t>(k)];
      const bool isLast = k == kSize - 1;
      CSint *variable = v[static_cast<std::size_t>(i)];
      EXPECT_EQ(cs_isFree(variable), !isLast);
      if (!isLast) {
        EXPECT_TRUE(cs_EQ(variable, i < 3 ? 0 : 1));
      } else {
        EXPECT_EQ(cs_getMin(variable), i < 3 ? 1 : 0);
      }
    }
    cs_restoreContext();
  } while (std::next_permutation(order.begin(), order.end()) && order[0] < 2);
}

TEST_F(ClauseTest, ALiteralThatIsGivenTwiceCountsOnce) {
  CSint *twice[] = {v[0], v[1], v[0]};
  ASSERT_TRUE(cs_Clause(twice, 3, nullptr, 0));
  EXPECT_TRUE(cs_EQ(v[1], 0));
  EXPECT_EQ(values(v[0]), (std::vector<int>{1}));
}

TEST_F(ClauseTest, AVariableAndItsOppositeSatisfyIt) {
  const int before = cs_getNbConstraints(v[0]);
  EXPECT_TRUE(cs_Clause(&v[0], 2, &v[0], 1));
  EXPECT_TRUE(cs_ClauseIf(b, &v[0], 1, &v[0], 1));
  EXPECT_EQ(cs_getNbConstraints(v[0]), before);
  EXPECT_EQ(cs_getMin(cs_ReifClause(&v[0], 1, &v[0], 1)), 1);
  EXPECT_TRUE(cs_ClauseIff(b, &v[0], 1, &v[0], 1));
  EXPECT_EQ(cs_getMin(b), 1);
}

TEST_F(ClauseTest, WithoutLiteralsItIsFalse) {
  EXPECT_FALSE(cs_Clause(nullptr, 0, nullptr, 0));
  EXPECT_EQ(cs_getMax(cs_ReifClause(nullptr, 0, nullptr, 0)), 0);
  EXPECT_TRUE(cs_ClauseIf(b, nullptr, 0, nullptr, 0));
  EXPECT_EQ(values(b), (std::vector<int>{0}));
  EXPECT_FALSE(cs_ClauseIff(v[0], nullptr, 0, nullptr, 0) && cs_EQ(v[0], 1));
}

TEST_F(ClauseTest, BadArgumentsAreRefusedAndPostNothing) {
  CSint *hole[] = {v[0], nullptr};
  const auto refused = [&](CSint **pos, int p, CSint **neg, int q) {
    return !cs_Clause(pos, p, neg, q) && cs_ReifClause(pos, p, neg, q) == nullptr && !cs_ClauseIff(b, pos, p, neg, q) &&
           !cs_ClauseIf(b, pos, p, neg, q);
  };
  EXPECT_TRUE(refused(nullptr, 1, nullptr, 0));
  EXPECT_TRUE(refused(nullptr, 0, nullptr, 1));
  EXPECT_TRUE(refused(hole, 2, nullptr, 0));
  EXPECT_TRUE(refused(nullptr, 0, hole, 2));
  for (const int size : {-1, INT_MIN}) {
    EXPECT_TRUE(refused(v.data(), size, v.data(), 1));
    EXPECT_TRUE(refused(v.data(), 1, v.data(), size));
  }
  EXPECT_FALSE(cs_ClauseIff(nullptr, v.data(), 1, nullptr, 0));
  EXPECT_FALSE(cs_ClauseIf(nullptr, v.data(), 1, nullptr, 0));
  EXPECT_EQ(cs_getNbConstraints(v[0]), 0);
  EXPECT_EQ(cs_getNbConstraints(b), 0);
  cs_end();
  EXPECT_TRUE(refused(v.data(), 1, nullptr, 0));
}

TEST_F(ClauseTest, EachFailingAllocationIsReportedOnceAndIsFalse) {
  struct Operands {
    CSint *x[4];
  };
  const auto make = [] {
    return Operands{{cs_createCSint(0, 1), cs_createCSint(0, 1), cs_createCSint(0, 1), cs_createCSint(0, 1)}};
  };
  EXPECT_GT(failEachAllocation(make, [](Operands &o) { return cs_Clause(o.x, 2, o.x + 2, 1); }), 4);
  EXPECT_GT(failEachAllocation(make, [](Operands &o) { return cs_ReifClause(o.x, 2, o.x + 2, 1) != nullptr; }), 6);
  EXPECT_GT(failEachAllocation(make, [](Operands &o) { return cs_ClauseIff(o.x[3], o.x, 2, o.x + 2, 1); }), 6);
  EXPECT_GT(failEachAllocation(make, [](Operands &o) { return cs_ClauseIf(o.x[3], o.x, 2, o.x + 2, 1); }), 4);
}

// The constraint stays while what was known when it was posted is taken back.
TEST_F(ClauseTest, HoldsWhenItWasAcceptedAndWhatWasBeforeItRestored) {
  cs_saveContext();
  for (int i = 1; i < 4; ++i) EXPECT_TRUE(cs_EQ(v[static_cast<std::size_t>(i)], 0));
  cs_saveContext();
  EXPECT_TRUE(cs_Clause(v.data(), 4, nullptr, 0));
  EXPECT_EQ(cs_getMin(v[0]), 1);
  cs_acceptContext();
  cs_restoreContext();
  for (int i = 1; i < 4; ++i) EXPECT_TRUE(cs_isFree(v[static_cast<std::size_t>(i)]));
  EXPECT_TRUE(cs_EQ(v[3], 0));
  EXPECT_TRUE(cs_EQ(v[1], 0));
  cs_saveContext();
  const bool consistent = cs_EQ(v[2], 0) && cs_EQ(v[0], 0);
  EXPECT_FALSE(consistent);
}

// The events of a propagation that fails are lost, also those of the watched literals.
TEST_F(ClauseTest, HoldsInAStateThatFailedAndWasNotRestored) {
  ASSERT_TRUE(cs_Clause(v.data(), 4, nullptr, 0));
  EXPECT_FALSE(together([&] {
    cs_EQ(v[0], 0);
    cs_EQ(v[3], 0);
    return false;
  }));
  EXPECT_TRUE(cs_EQ(v[1], 0));
  EXPECT_FALSE(cs_EQ(v[2], 0));
}

}  // namespace
