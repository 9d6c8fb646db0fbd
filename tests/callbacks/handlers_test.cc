// SPDX-License-Identifier: MIT
// What a constraint's handler may do while propagation runs, and what happens when it never returns.
#include <csetjmp>
#include <stdexcept>
#include <vector>

#include "callbacks/hooks.h"
#include "core/solver.h"

namespace koru::test {
namespace {

class HandlerTest : public SolverTest {};

TEST_F(HandlerTest, MayQueryCreatePostNarrowPrintSaveRestoreAndSearch) {
  CSint *x = cs_createCSint(0, 9);
  int calls = 0;
  hook(x, [&](CSint *v) {
    ++calls;
    EXPECT_EQ(v, x);
    const int contexts = solver::contexts.count();
    doEverything();
    EXPECT_EQ(solver::contexts.count(), contexts);
    return true;
  });
  EXPECT_TRUE(cs_GE(x, 3));
  EXPECT_TRUE(cs_NEQ(x, 5));
  EXPECT_TRUE(cs_EQ(x, 7));
  EXPECT_EQ(calls, 3);
}

TEST_F(HandlerTest, ANarrowingOutsideAChoicePointWaitsForTheRunningLoop) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(0, 9);
  CSint *z = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_Le(y, z));
  int seenInHandler = -1;
  hook(x, [&](CSint *) {
    const bool result = cs_GE(y, 4);
    seenInHandler = cs_getMin(z);
    return result;
  });
  EXPECT_TRUE(cs_GE(x, 1));
  EXPECT_EQ(seenInHandler, 0) << "only queued";
  EXPECT_EQ(cs_getMin(z), 4) << "propagated before the outermost change returns";
}

TEST_F(HandlerTest, ANarrowingInsideItsOwnChoicePointPropagatesAtOnceAndIsUndoneByItsRestore) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(0, 9);
  CSint *z = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_Le(y, z));
  int inside = -1;
  int afterwards = -1;
  hook(x, [&](CSint *) {
    cs_saveContext();
    EXPECT_TRUE(cs_GE(y, 4));
    inside = cs_getMin(z);
    EXPECT_FALSE(cs_LE(z, 3)) << "a failure inside is the inner call's own";
    cs_restoreContext();
    afterwards = cs_getMin(z);
    return true;
  });
  EXPECT_TRUE(cs_GE(x, 1));
  EXPECT_EQ(inside, 4);
  EXPECT_EQ(afterwards, 0);
  EXPECT_EQ(cs_getNbElements(z), 10);
}

TEST_F(HandlerTest, AConstraintPostedByAHandlerHearsOnlyLaterEvents) {
  CSint *x = cs_createCSint(0, 9);
  int innerCalls = 0;
  bool posted = false;
  hook(x, [&](CSint *v) {
    if (posted) return true;
    posted = true;
    return hook(v, [&](CSint *) { return ++innerCalls > 0; });
  });
  EXPECT_TRUE(cs_GE(x, 1));
  EXPECT_EQ(innerCalls, 0) << "the event's list was taken before the attachment";
  EXPECT_TRUE(cs_GE(x, 2));
  EXPECT_EQ(innerCalls, 1);
}

TEST_F(HandlerTest, AHandlerMayRefuseByNarrowingItsOwnVariableToNothing) {
  CSint *x = cs_createCSint(0, 9);
  hook(x, [&](CSint *v) { return cs_GT(v, cs_getMax(v)); });
  EXPECT_FALSE(cs_GE(x, 3));
  EXPECT_TRUE(solver::events.empty());
  EXPECT_EQ(cs_getMin(x), 3) << "what was done before the failure stays";
}

// ----- snapshots

// Closing and reopening the choice point in which a list was built takes its entries away under the walk.
TEST_F(HandlerTest, AConstraintDetachedWhileASnapshotIsWalkedIsStillCalledAndFreedAfterwards) {
  CSint *y = cs_createCSint(0, 9);
  std::vector<int> order;
  const auto record = [&order](int id) { return [&order, id](CSint *) { return order.push_back(id), true; }; };
  hook(y, record(1));
  cs_saveContext();
  hook(y, record(2));
  hook(y, [&](CSint *v) {
    order.push_back(3);
    EXPECT_EQ(cs_restoreAndSaveContext(), 1);
    EXPECT_EQ(v->constraints->next, nullptr) << "only the outer attachment is left on the list";
    EXPECT_NE(solver::graveyard, nullptr);
    return true;
  });
  EXPECT_TRUE(cs_NEQ(y, 5));
  EXPECT_EQ(order, (std::vector<int>{3, 2, 1})) << "called as the event's list says";
  EXPECT_EQ(solver::graveyard, nullptr);
  EXPECT_EQ(cs_getNbElements(y), 10);
  EXPECT_TRUE(cs_NEQ(y, 6));
  EXPECT_EQ(order, (std::vector<int>{3, 2, 1, 1}));
}

TEST_F(HandlerTest, AConstraintDetachedDuringItsOwnPostingIsFreedWhenThePostingEnds) {
  CSint *x = cs_createCSint(5, 9);
  CSint *y = cs_createCSint(0, 9);
  int calls = 0;
  hook(y, [&](CSint *) {
    ++calls;
    return cs_restoreAndSaveContext() == 1;
  });
  cs_saveContext();
  EXPECT_TRUE(cs_Lt(x, y));
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(cs_getNbElements(y), 10) << "the first rule's narrowing of y is undone";
  EXPECT_EQ(cs_getMax(x), 8) << "the second rule still runs on the record that the posting holds";
  EXPECT_EQ(x->constraints, nullptr);
}

TEST_F(HandlerTest, AConstraintUndoneByTheHandlerThatPostedItIsFreedOnlyAfterTheWalk) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(0, 9);
  std::vector<int> order;
  hook(x, [&](CSint *) {
    cs_saveContext();
    hook(y, [&](CSint *) {
      order.push_back(2);
      return true;
    });
    hook(y, [&](CSint *) {
      order.push_back(1);
      return true;
    });
    EXPECT_TRUE(cs_GE(y, 5));
    cs_restoreContext();
    EXPECT_NE(solver::graveyard, nullptr) << "kept until the outermost propagation ends";
    EXPECT_EQ(y->constraints, nullptr);
    order.push_back(3);
    return true;
  });
  EXPECT_TRUE(cs_GE(x, 1));
  EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(solver::graveyard, nullptr);
}

TEST_F(HandlerTest, AWalkGoesOnOverEntriesThatItsOwnHandlersAddedAndUndid) {
  CSint *x = cs_createCSint(0, 9);
  std::vector<int> order;
  hook(x, [&](CSint *) {
    order.push_back(2);
    return true;
  });
  hook(x, [&](CSint *v) {
    order.push_back(1);
    for (int i = 0; i < 3; ++i) {
      cs_saveContext();
      hook(v, [&](CSint *) {
        order.push_back(9);
        return true;
      });
      cs_restoreContext();
    }
    return true;
  });
  EXPECT_TRUE(cs_GE(x, 1));
  EXPECT_EQ(order, (std::vector<int>{1, 2}));
  EXPECT_TRUE(cs_GE(x, 2));
  EXPECT_EQ(order, (std::vector<int>{1, 2, 1, 2}));
}

// ----- what a handler must not do

TEST_F(HandlerTest, ClosingAChoicePointThatItDidNotOpenIsRefusedByTestBuilds) {
  CSint *x = cs_createCSint(0, 9);
  cs_saveContext();
  hook(x, [](CSint *) { return cs_restoreContext(), true; });
  EXPECT_DEATH(cs_GE(x, 1), "invariant violated.*callback");
}

TEST_F(HandlerTest, EndingTheSolverIsRefusedByTestBuilds) {
  CSint *x = cs_createCSint(0, 9);
  hook(x, [](CSint *) { return cs_end(), true; });
  EXPECT_DEATH(cs_GE(x, 1), "invariant violated.*callback");
}

// ----- leaving for good

TEST_F(HandlerTest, AnExceptionThatLeavesAPostingFreesWhatThePostingHeld) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(2, 9);
  hook(x, [](CSint *) -> bool { throw std::runtime_error("left"); });
  // The posting is under way, holding its references, when the handler throws.
  EXPECT_THROW(cs_Lt(y, x), std::runtime_error);
  cs_end();
  cs_init();
  CSint *again = cs_createCSint(0, 9);
  EXPECT_TRUE(cs_EQ(again, 4));
  EXPECT_EQ(cs_saveContext(), 1);
}

TEST_F(HandlerTest, AnExceptionThatLeavesASearchLeavesTheSolverFitForCsEnd) {
  CSint *x[3] = {cs_createCSint(0, 2), cs_createCSint(0, 2), cs_createCSint(0, 2)};
  ASSERT_EQ(cs_AllNeq(x, 3), 1);
  hook(x[2], [](CSint *) -> bool { throw 5; });
  EXPECT_THROW(cs_Vsearch(3, x[0], x[1], x[2], cs_findFreeVar), int);
  cs_end();
  cs_init();
  EXPECT_EQ(cs_saveContext(), 1) << "no choice point of the search is left";
}

std::jmp_buf way;

TEST_F(HandlerTest, ALongjmpOutOfAHandlerLeavesTheSolverFitForCsEnd) {
  CSint *x = cs_createCSint(0, 9);
  hook(x, [](CSint *) -> bool { std::longjmp(way, 1); });
  if (setjmp(way) == 0) {
    cs_GE(x, 3);
    FAIL() << "the handler did not leave";
  }
  cs_end();
  cs_init();
  CSint *again = cs_createCSint(0, 9);
  CSint *other = cs_createCSint(0, 9);
  EXPECT_TRUE(cs_Lt(again, other));
  EXPECT_EQ(cs_getMin(other), 1);
}

}  // namespace
}  // namespace koru::test
