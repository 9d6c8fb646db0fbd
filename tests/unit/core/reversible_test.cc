// SPDX-License-Identifier: MIT
#include "core/reversible.h"

#include <random>

#include "core/solver.h"
#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"

namespace {

using namespace koru;
using namespace koru::test;

class ReversibleTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    word.init(1);
  }
  bool set(std::uint64_t bits) { return word.set(bits, WordStamp::now()); }

  ReversibleWord word;
};

TEST_F(ReversibleTest, ARestoreGivesAll64BitsBack) {
  for (std::uint64_t old : {std::uint64_t{0}, ~std::uint64_t{0}, std::uint64_t{0x80000000}, std::uint64_t{1} << 63,
                            std::uint64_t{0xffffffff00000000}, std::uint64_t{0x7fffffff12345678}}) {
    word.init(old);
    cs_saveContext();
    EXPECT_TRUE(set(42));
    cs_restoreContext();
    EXPECT_EQ(word.bits(), old);
  }
}

TEST_F(ReversibleTest, NumbersMayBeNegative) {
  word.init(7);
  EXPECT_TRUE(word.setNumber(-3, WordStamp::now()));
  EXPECT_EQ(word.number(), -3);
}

TEST_F(ReversibleTest, AContextNotesAWordOnce) {
  cs_saveContext();
  const int before = solver::trail.count();
  for (const unsigned bits : {2U, 3U, 4U, 5U}) EXPECT_TRUE(set(bits));
  EXPECT_EQ(solver::trail.count(), before + 1);
  cs_saveContext();
  EXPECT_TRUE(set(6));
  EXPECT_EQ(solver::trail.count(), before + 2);
  cs_restoreContext();
  EXPECT_EQ(word.bits(), 5U);
  cs_restoreContext();
  EXPECT_EQ(word.bits(), 1U);
}

TEST_F(ReversibleTest, WhatDoesNotChangeAndWhatCannotBeUndoneIsNotNoted) {
  const int before = solver::trail.count();
  EXPECT_TRUE(set(2));
  cs_saveContext();
  EXPECT_TRUE(set(2));
  EXPECT_EQ(solver::trail.count(), before);
}

TEST_F(ReversibleTest, AForgottenContextIsPartOfTheOuterOne) {
  cs_saveContext();
  cs_saveContext();
  EXPECT_TRUE(set(2));
  cs_forgetSaveContext();
  EXPECT_TRUE(set(3));
  cs_restoreContext();
  EXPECT_EQ(word.bits(), 1U);
}

TEST_F(ReversibleTest, ExhaustedMemoryLeavesTheWord) {
  cs_saveContext();
  fillTrail();
  {
    const AllocationRule none(refuseAll());
    EXPECT_FALSE(set(2));
  }
  EXPECT_EQ(word.bits(), 1U);
  EXPECT_EQ(memoryReports, 1);
  EXPECT_TRUE(set(3));
  cs_restoreContext();
  EXPECT_EQ(word.bits(), 1U);
}

ReversibleWord *changedByUndo = nullptr;
void changeTwice(CSint *, int index) {
  EXPECT_TRUE(changedByUndo->set(static_cast<std::uint64_t>(index), WordStamp::now()));
  EXPECT_TRUE(changedByUndo->set(static_cast<std::uint64_t>(index) + 1, WordStamp::now()));
}

TEST_F(ReversibleTest, ChangesOfARunningUndoAreTakenBackToo) {
  changedByUndo = &word;
  for (bool outer : {false, true}) {
    if (outer) cs_saveContext();
    cs_saveContext();
    cs_backtrack(nullptr, 20, changeTwice);
    EXPECT_TRUE(set(2));
    cs_restoreContext();
    EXPECT_EQ(word.bits(), 1U);
    EXPECT_TRUE(set(3));
    if (!outer) word.init(1);
  }
  cs_restoreContext();
  EXPECT_EQ(word.bits(), 1U) << "noted in the outer context, though the undo left it as the newest one";
}

// Random contexts against copies of the word.
TEST_F(ReversibleTest, RestoresGiveBackWhatWasThere) {
  std::mt19937 random(5);
  std::vector<std::uint64_t> saved;
  for (int i = 0; i < 20000; ++i) {
    const unsigned choice = random() % 8;
    if (choice == 0 && saved.size() < 30) {
      cs_saveContext();
      saved.push_back(word.bits());
    } else if (choice == 1 && !saved.empty()) {
      cs_restoreContext();
      ASSERT_EQ(word.bits(), saved.back());
      saved.pop_back();
    } else if (choice == 2 && !saved.empty()) {
      cs_forgetSaveContext();
      saved.pop_back();
    } else {
      ASSERT_TRUE(set(random() % 5));
    }
  }
}

// ----- words and domains

TEST_F(ReversibleTest, AnAcceptInsideAContextBreaksTheStepUntilTheNextNote) {
  CSint *x = cs_createCSint(0, 9);
  Lockstep step;
  cs_saveContext();
  EXPECT_TRUE(cs_LE(x, 8));
  cs_saveContext();
  EXPECT_TRUE(cs_LE(x, 3));
  step.note();
  EXPECT_TRUE(step.kept());
  cs_acceptContext();
  cs_restoreContext();
  EXPECT_FALSE(step.kept());
  step.note();
  EXPECT_TRUE(step.kept());
}

TEST_F(ReversibleTest, OtherwiseItIsKept) {
  CSint *x = cs_createCSint(0, 9);
  Lockstep step;
  cs_saveContext();
  step.note();
  cs_saveContext();
  cs_acceptContext();  // of nothing
  EXPECT_TRUE(cs_LE(x, 3));
  cs_acceptContext();  // with none around it
  cs_saveContext();
  EXPECT_TRUE(cs_LE(x, 2));
  cs_restoreContext();
  EXPECT_TRUE(step.kept());
}

}  // namespace
