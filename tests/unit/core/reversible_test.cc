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

// ----- many words

class ReversibleWordsTest : public SolverTest {
 public:
  void SetUp() override {
    SolverTest::SetUp();
    ASSERT_TRUE(words.create(kCount));
    for (int i = 0; i < kCount; ++i) words.init(i, 0);
  }
  // A run that sets some words; with `all` it says that it changes most of the first half.
  bool run(const std::vector<std::pair<int, std::uint64_t>> &changes, bool all = false) {
    words.begin();
    if ((all && !words.hold(kCount / 2)) || !words.prepare(changes.size())) return false;
    for (const auto &[i, bits] : changes) {
      if (all && i < kCount / 2)
        words.held()[i] = bits;
      else
        words.set(i, bits);
    }
    return true;
  }
  // As a run finds them.
  std::vector<std::uint64_t> found() {
    words.begin();
    return {words.from(0), words.from(0) + kCount};
  }

  static constexpr int kCount = 6;
  ReversibleWords words;
};

TEST_F(ReversibleWordsTest, ARunFindsWhatWasThereBeforeTheContext) {
  EXPECT_TRUE(run({{0, 1}, {5, ~std::uint64_t{0}}}));
  cs_saveContext();
  EXPECT_TRUE(run({{0, 2}, {1, 3}, {0, 4}}));
  EXPECT_EQ(words[0], 4U);
  cs_restoreContext();
  EXPECT_EQ(found(), (std::vector<std::uint64_t>{1, 0, 0, 0, 0, ~std::uint64_t{0}}));
}

TEST_F(ReversibleWordsTest, AContextHasOneRecordOnTheTrailAndHoldsOnce) {
  cs_saveContext();
  EXPECT_TRUE(run({{0, 1}, {1, 2}, {4, 3}}, true));
  const int before = solver::trail.count();
  EXPECT_TRUE(run({{0, 7}, {1, 8}, {5, 9}}, true));
  EXPECT_EQ(solver::trail.count(), before);
  cs_restoreContext();
  EXPECT_EQ(found(), std::vector<std::uint64_t>(kCount, 0));
}

TEST_F(ReversibleWordsTest, WhatCannotBeUndoneTakesNoRoom) {
  cs_saveContext();
  cs_forgetSaveContext();
  const long before = blocksAlive;
  for (unsigned i = 0; i < 1000; ++i) ASSERT_TRUE(run({{1, i}, {2, i}}, i % 2 == 0));
  EXPECT_EQ(blocksAlive, before);
  EXPECT_EQ(words[2], 999U);
}

TEST_F(ReversibleWordsTest, ExhaustedMemoryChangesNothing) {
  cs_saveContext();
  std::vector<std::pair<int, std::uint64_t>> changes(100, {3, 1});
  {
    const AllocationRule none(refuseAll());
    EXPECT_FALSE(run(changes)) << "the log cannot grow";
  }
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(words[3], 0U);
  EXPECT_TRUE(run(changes));
  cs_restoreContext();
  EXPECT_EQ(words[3], 1U) << "until the next run";
  EXPECT_EQ(found()[3], 0U);
}

TEST_F(ReversibleWordsTest, AFullTrailChangesNothing) {
  cs_saveContext();
  fillTrail();
  {
    const AllocationRule none(refuseAll());
    EXPECT_FALSE(run({{1, 1}}));
    EXPECT_FALSE(run({{1, 1}}, true));
  }
  EXPECT_EQ(words[1], 0U);
}

ReversibleWordsTest *runByUndo = nullptr;
void runWithin(CSint *, int) { EXPECT_TRUE(runByUndo->run({{0, 50}, {4, 51}}, true)); }

TEST_F(ReversibleWordsTest, ARunOfARunningUndoIsTakenBackToo) {
  runByUndo = this;
  cs_saveContext();
  EXPECT_TRUE(run({{0, 1}, {4, 2}}));
  cs_saveContext();
  EXPECT_TRUE(run({{0, 3}}));
  cs_backtrack(nullptr, 0, runWithin);
  EXPECT_TRUE(run({{4, 5}}, true));
  cs_restoreContext();
  EXPECT_EQ(found(), (std::vector<std::uint64_t>{1, 0, 0, 0, 2, 0}));
  cs_restoreContext();
  EXPECT_EQ(found(), std::vector<std::uint64_t>(kCount, 0));
}

// Nothing is taken back any more, for nobody relies on it; the log does not grow either.
TEST_F(ReversibleWordsTest, AfterAnAcceptInsideAContextTheLogIsNotUsed) {
  cs_saveContext();
  EXPECT_TRUE(run({{0, 1}}));
  cs_saveContext();
  EXPECT_TRUE(run({{0, 2}}));
  ASSERT_TRUE(cs_LE(cs_createCSint(0, 9), 8));
  cs_acceptContext();
  cs_restoreContext();
  EXPECT_EQ(found()[0], 2U);
  cs_saveContext();
  const long before = blocksAlive;
  for (unsigned i = 0; i < 1000; ++i) ASSERT_TRUE(run({{1, i}}));
  EXPECT_EQ(blocksAlive, before);
}

// Random runs and contexts against copies of the words.
TEST_F(ReversibleWordsTest, RestoresGiveBackWhatWasThere) {
  std::mt19937 random(7);
  std::vector<std::vector<std::uint64_t>> saved;
  for (int i = 0; i < 20000; ++i) {
    const unsigned choice = random() % 8;
    if (choice <= 1 && saved.size() < 30) {
      saved.push_back(found());
      cs_saveContext();
    } else if (choice == 2 && !saved.empty()) {
      cs_restoreContext();
      if (random() % 2 == 0) {
        ASSERT_EQ(found(), saved.back());
      }
      saved.pop_back();
    } else if (choice == 3 && !saved.empty()) {
      cs_forgetSaveContext();
      saved.pop_back();
    } else {
      std::vector<std::pair<int, std::uint64_t>> changes;
      while (random() % 4 != 0) changes.emplace_back(static_cast<int>(random() % kCount), random() % 5);
      ASSERT_TRUE(run(changes, random() % 2 == 0));
    }
  }
}

// ----- words and domains

// Words are ahead of what an undo has not come to.
void askWhileUndoing(CSint *, int) {
  Lockstep step;
  step.note();
  EXPECT_FALSE(step.kept());
}

TEST_F(ReversibleTest, WhileAnUndoRunsNoStepIsKept) {
  cs_saveContext();
  cs_backtrack(nullptr, 0, askWhileUndoing);
  cs_restoreContext();
  Lockstep step;
  step.note();
  EXPECT_TRUE(step.kept());
}

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
