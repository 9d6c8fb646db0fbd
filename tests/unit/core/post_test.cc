// SPDX-License-Identifier: MIT
#include "core/post.h"

#include "core/solver.h"
#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"
#include "unit/core/recorder.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::journal;

using PostTest = JournalTest;

// ----- tables

TEST_F(PostTest, HandlersFillTheSlotsInEventOrderAndSayWhichAreHeard) {
  EXPECT_EQ(kHearsAll.heard, 0b111111);
  EXPECT_EQ(kHearsNewMax.heard, 1 << kNewMax);
  EXPECT_EQ(kHearsNothing.heard, 0);
  for (int code = 0; code < kEventCodes; ++code) {
    EXPECT_EQ(kHearsNothing.handlers[code], doNothing);
    EXPECT_NE(kHearsAll.handlers[code], doNothing);
    EXPECT_EQ(kHearsNewMax.handlers[code] == doNothing, code != kNewMax);
  }
  EXPECT_TRUE(doNothing(nullptr, nullptr, 0, 0));
}

struct Plain {
  int number;
};
bool plainRule(Plain &, const Event &) { return true; }

TEST_F(PostTest, OnlyRecordsThatNeedItAreDestroyed) {
  EXPECT_EQ(handlers<Plain>({.bound = on<plainRule>}).destroy, nullptr);
  EXPECT_NE(kHearsAll.destroy, nullptr);
}

// ----- postings

TEST_F(PostTest, APostingNamesItsSiteAndAsksTheLocator) {
  static int asked;
  asked = 0;
  solver::ports.locator.text = [](void *) -> const char * {
    ++asked;
    return "main.c:7";
  };
  ASSERT_TRUE(watch(journal, 1, {x, y}, {.name = "cs_Test"}));
  EXPECT_STREQ(x->constraints->constraint->site->name(), "cs_Test");
  EXPECT_STREQ(x->constraints->constraint->site->text(), "main.c:7");
  EXPECT_EQ(asked, 1);
}

TEST_F(PostTest, WithoutALocatorThePlaceIsTheOneThatCalledThePoster) {
  const Posting posting{"cs_Test"};
  EXPECT_STREQ(posting.site()->text(), placeOf(__builtin_return_address(0)));
}

TEST_F(PostTest, ConstraintsOfOnePostingShareTheirSite) {
  cs_saveContext();
  {
    Posting posting{"chain"};
    auto first = posting.add(kHearsAll, Watcher{&journal, 1, nullptr});
    auto second = posting.add(kHearsAll, Watcher{&journal, 2, nullptr});
    first.attach(x);
    second.attach(y);
    EXPECT_TRUE(posting);
  }
  Site *site = x->constraints->constraint->site;
  EXPECT_EQ(y->constraints->constraint->site, site);
  EXPECT_EQ(site->references, 2);
  cs_restoreContext();
}

TEST_F(PostTest, ThePostersOwnReferenceEndsWithIt) {
  Posting posting{"held"};
  {
    auto held = posting.add(kHearsAll, Watcher{&journal, 1, life});
    held.attach(x);
    EXPECT_EQ(x->constraints->constraint->references, 2);
  }
  EXPECT_EQ(x->constraints->constraint->references, 1);
}

TEST_F(PostTest, AnUnattachedConstraintDiesWithItsPoster) {
  Posting posting{"loose"};
  {
    auto held = posting.add(kHearsAll, Watcher{&journal, 1, life});
    EXPECT_EQ(held->number, 1);
    EXPECT_EQ((*held).journal, &journal);
    EXPECT_TRUE(alive());
  }
  EXPECT_FALSE(alive());
}

TEST_F(PostTest, AConstraintDetachedDuringItsFirstFilteringLivesUntilThePosterIsDone) {
  cs_saveContext();
  {
    Posting posting{"filtering"};
    auto held = posting.add(kHearsAll, Watcher{&journal, 1, life});
    held.attach(x);
    cs_restoreContext();
    EXPECT_EQ(x->constraints, nullptr);
    EXPECT_TRUE(alive());
    EXPECT_EQ(held->number, 1);
  }
  EXPECT_FALSE(alive());
}

TEST_F(PostTest, AnIndexIsMinusOneUnlessGiven) {
  Posting posting{"index"};
  auto held = posting.add(kHearsAll, Watcher{&journal, 1, nullptr});
  held.attach(x);
  held.attach(y, 5);
  EXPECT_EQ(x->constraints->index, -1);
  EXPECT_EQ(y->constraints->index, 5);
}

TEST_F(PostTest, FlagsReachTheConstraint) {
  ASSERT_TRUE(watch(journal, 1, {x}, {.flags = kConflictListener}));
  EXPECT_EQ(x->constraints->constraint->flags, kConflictListener);
}

TEST_F(PostTest, WithoutARunningSolverAPostingHasFailedFromTheStart) {
  cs_end();
  const Posting posting{"early"};
  EXPECT_FALSE(posting);
  EXPECT_EQ(memoryReports, 0);
}

TEST_F(PostTest, AllPresentLooksAtEveryVariable) {
  CSint *variables[] = {x, y, nullptr};
  EXPECT_TRUE(allPresent(variables, 2));
  EXPECT_FALSE(allPresent(variables, 3));
  EXPECT_TRUE(allPresent(variables + 2, 0));
}

// ----- failures

TEST_F(PostTest, EachRefusedAllocationFailsThePostingWithOneReportAndNoLeak) {
  // Site, constraint and one entry per variable.
  for (int refused = 0; refused < 5; ++refused) {
    cs_saveContext();
    memoryReports = 0;
    {
      const AllocationRule rule(refuseOnly(refused));
      EXPECT_EQ(watch(journal, 1, {x, y}, {}, life), refused >= 4) << refused;
    }
    EXPECT_EQ(memoryReports, refused < 4 ? 1 : 0) << refused;
    cs_restoreContext();
    EXPECT_FALSE(alive());
    EXPECT_EQ(x->constraints, nullptr);
    EXPECT_EQ(y->constraints, nullptr);
  }
}

TEST_F(PostTest, ARefusedTrailRecordFailsThePostingWithOneReportAndNoLeak) {
  fillTrail();
  const AllocationRule noBlocks([](std::size_t size) { return size < 1024; });
  EXPECT_FALSE(watch(journal, 1, {x, y}, {}, life));
  EXPECT_EQ(memoryReports, 1);
  EXPECT_FALSE(alive());
  EXPECT_EQ(x->constraints, nullptr);
}

TEST_F(PostTest, AfterTheFirstFailureNothingIsTriedAnyMore) {
  const AllocationRule rule(refuseOnly(1));
  Posting posting{"latched"};
  auto first = posting.add(kHearsAll, Watcher{&journal, 1, nullptr});
  auto second = posting.add(kHearsAll, Watcher{&journal, 2, nullptr});
  first.attach(x);
  second.attach(y);
  EXPECT_FALSE(posting);
  EXPECT_EQ(AllocationRule::count(), 2);
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getNbConstraints(x), 0);
}

TEST_F(PostTest, ABufferIsKeptOnTheTrailUnlessThePostingHasFailed) {
  const int records = solver::trail.count();
  {
    Posting posting{"buffer"};
    posting.keepOnTrail(Shared<int>(3));
    EXPECT_TRUE(posting);
  }
  EXPECT_EQ(solver::trail.count(), records + 1);
  {
    Posting posting{"buffer"};
    posting.keepOnTrail(Shared<int>());
    EXPECT_FALSE(posting) << "a buffer that could not be had";
    posting.keepOnTrail(Shared<int>(3));
    EXPECT_FALSE(posting);
  }
  EXPECT_EQ(solver::trail.count(), records + 1);
}

TEST_F(PostTest, ABufferThatTheTrailRefusesFailsThePosting) {
  const Shared<int> buffer(3);
  fillTrail();
  Posting posting{"buffer"};
  const AllocationRule none(refuseAll());
  posting.keepOnTrail(buffer);
  EXPECT_FALSE(posting);
  EXPECT_EQ(memoryReports, 1);
}

}  // namespace
