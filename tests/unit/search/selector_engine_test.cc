// SPDX-License-Identifier: MIT
// The selector-driven engine on trees small enough to write down: every call it makes, in order, and what it leaves.
#include "search/selector_engine.h"
#include "search/state.h"

#include "support/kit/search_trace.h"
#include "unit/search/search_test.h"

namespace {

using namespace koru;
using namespace koru::test;

class SelectorEngineTest : public SearchTest {
 protected:
  bool search(int size, int kind, int limit = 0) {
    std::vector<CSvalueSelector *> selectors(static_cast<std::size_t>(size), cs_getValueSelector(kind));
    return cs_searchValueSelectorFail(xy, trace.logging(selectors), size, firstFree, limit, trace.hooks());
  }
  void expectTrace(const std::string &text) const { EXPECT_EQ(trace.lines, linesOf(text)); }
  int count(const std::string &start) const {
    int lines = 0;
    for (const std::string &line : trace.lines) lines += line.rfind(start, 0) == 0 ? 1 : 0;
    return lines;
  }

  SearchTrace trace;
};

TEST_F(SelectorEngineTest, TheFirstSolutionIsFoundAndLeftInPlace) {
  makeXy(2, 3);
  EXPECT_TRUE(search(2, CS_SELECT_DESCENDING));
  expectTrace(
      "start 0 2\n"
      "enter 0 0\ninit 0\nnext 0 EQ 1\nnext 0 EQ 0\nbefore 0 0 EQ 1\nafter yes 0 0 EQ 1\n"
      "enter 1 1\ninit 1\nnext 1 EQ 2\nnext 1 EQ 1\nbefore 1 1 EQ 2\nafter yes 1 1 EQ 2\n"
      "found 1\nendSelector 1\nendSelector 0\n"
      "end yes 0 0 2");
  expectCounters(2, 0);
  EXPECT_EQ(openContexts(), 2);
  EXPECT_EQ(values(xy[0]), std::vector{1});
  EXPECT_EQ(values(xy[1]), std::vector{2});
}

// The worked example of docs/search.md.
TEST_F(SelectorEngineTest, TheDocumentedTraceIsThatOfTheEngine) {
  makeXy(3, 3);
  ASSERT_TRUE(cs_Neq(xy[0], xy[1]) && cs_IfNeq(xy[0], xy[1], 0, 1) && cs_IfNeq(xy[0], xy[1], 0, 2));
  CSvalueSelector **selectors =
      trace.logging({cs_getValueSelector(CS_SELECT_ASCENDING), cs_getValueSelector(CS_SELECT_UPPER_HALF)});
  EXPECT_TRUE(cs_searchValueSelectorFail(xy, selectors, 2, firstFree, 0, trace.hooks()));
  expectTrace(
      "start 0 2\n"
      "enter 0 0\ninit 0\nnext 0 EQ 0\nnext 0 EQ 1\n"
      "before 0 0 EQ 0\nafter no 0 0 EQ 0\n"
      "next 0 EQ 2\n"
      "before 0 0 EQ 1\nafter yes 0 0 EQ 1\n"
      "enter 1 1\ninit 1\nnext 1 GE 1\nnext 1 LT 1\n"
      "before 1 1 GE 1\nafter yes 1 1 GE 1\n"
      "found 1\nendSelector 1\nendSelector 0\n"
      "end yes 1 0 2");
  expectCounters(3, 1);
}

TEST_F(SelectorEngineTest, AnExhaustedLevelAsksOnceMoreThanItTriesAndIsLeft) {
  makeXy(2, 2);
  refuseY(never);
  EXPECT_FALSE(search(2, CS_SELECT_ASCENDING));
  expectTrace(
      "start 0 2\n"
      "enter 0 0\ninit 0\nnext 0 EQ 0\nnext 0 EQ 1\nbefore 0 0 EQ 0\nafter yes 0 0 EQ 0\n"
      "enter 1 1\ninit 1\nnext 1 EQ 0\nnext 1 EQ 1\nbefore 1 1 EQ 0\nafter no 1 1 EQ 0\n"
      "next 1 no\nbefore 1 1 EQ 1\nafter no 1 1 EQ 1\nendSelector 1\nleave 1 1\n"
      "next 0 no\nbefore 0 0 EQ 1\nafter yes 0 0 EQ 1\n"
      "enter 1 1\ninit 1\nnext 1 EQ 0\nnext 1 EQ 1\nbefore 1 1 EQ 0\nafter no 1 1 EQ 0\n"
      "next 1 no\nbefore 1 1 EQ 1\nafter no 1 1 EQ 1\nendSelector 1\nleave 1 1\n"
      "endSelector 0\nleave 0 0\n"
      "end no 4 0 2");
  expectCounters(6, 4);
  EXPECT_EQ(openContexts(), 0);
  EXPECT_EQ(values(xy[0]), (std::vector{0, 1}));
  EXPECT_EQ(values(xy[1]), (std::vector{0, 1}));
}

// A variable in 0..2 that is halved is chosen again while it is not bound.
TEST_F(SelectorEngineTest, AVariableIsSplitOnAsManyLevelsAsItTakes) {
  makeXy(3, 1);
  accepts = never;
  ASSERT_TRUE(postRefuser(xy[0], accepts));
  EXPECT_FALSE(search(1, CS_SELECT_LOWER_HALF));
  expectTrace(
      "start 0 1\n"
      "enter 0 0\ninit 0\nnext 0 LE 1\nnext 0 GT 1\nbefore 0 0 LE 1\nafter yes 0 0 LE 1\n"
      "enter 1 0\ninit 0\nnext 0 LE 0\nnext 0 GT 0\nbefore 1 0 LE 0\nafter no 1 0 LE 0\n"
      "next 0 no\nbefore 1 0 GT 0\nafter no 1 0 GT 0\nendSelector 0\nleave 1 0\n"
      "next 0 no\nbefore 0 0 GT 1\nafter no 0 0 GT 1\nendSelector 0\nleave 0 0\n"
      "end no 3 0 1");
  expectCounters(4, 3);
}

TEST_F(SelectorEngineTest, EachVariableHasItsOwnSelector) {
  makeXy(2, 3);
  std::vector<std::vector<int>> solutions;
  trace.accepts = [&](CSint **array, int) {
    solutions.push_back({cs_getValue(array[0]), cs_getValue(array[1])});
    return false;
  };
  CSvalueSelector **mixed =
      trace.logging({cs_getValueSelector(CS_SELECT_MEDIAN), cs_getValueSelector(CS_SELECT_DESCENDING)});
  EXPECT_FALSE(cs_searchValueSelectorFail(xy, mixed, 2, firstFree, 0, trace.hooks()));
  EXPECT_EQ(solutions, (std::vector<std::vector<int>>{{0, 2}, {0, 1}, {0, 0}, {1, 2}, {1, 1}, {1, 0}}));
}

TEST_F(SelectorEngineTest, NothingToChooseIsASolutionAtDepthMinusOne) {
  EXPECT_TRUE(search(0, CS_SELECT_ASCENDING));
  expectTrace("start 0 0\nfound -1\nend yes 0 0 0");
  expectCounters(0, 0);
  EXPECT_EQ(openContexts(), 0);
}

TEST_F(SelectorEngineTest, NothingToChooseCanBeRejected) {
  trace.accepts = [](CSint **, int) { return false; };
  EXPECT_FALSE(search(0, CS_SELECT_ASCENDING));
  expectTrace("start 0 0\nfound -1\nend no 1 0 0");
  expectCounters(0, 1);
}

TEST_F(SelectorEngineTest, RejectingEverySolutionVisitsAllAndCountsAFailForEach) {
  makeXy(2, 3);
  trace.accepts = [](CSint **, int) { return false; };
  EXPECT_FALSE(search(2, CS_SELECT_ASCENDING));
  EXPECT_EQ(count("found 1"), 6);
  expectCounters(2 + 2 * 3, 6);
  EXPECT_EQ(trace.lines.back(), "end no 6 0 2");
  EXPECT_EQ(openContexts(), 0);
}

TEST_F(SelectorEngineTest, HooksAndSelectorFunctionsMayBeMissing) {
  makeXy(2, 3);
  CSvalueSelector *selectors[] = {cs_getValueSelector(0), cs_getValueSelector(1)};
  EXPECT_TRUE(cs_searchValueSelectorFail(xy, selectors, 2, firstFree, 0, nullptr));
  EXPECT_EQ(values(xy[0]), std::vector{0});
  EXPECT_EQ(values(xy[1]), std::vector{2});
  cs_restoreAll();
  EXPECT_TRUE(cs_searchValueSelectorFail(xy, selectors, 2, firstFree, 0, &noHooks()));
  expectCounters(2, 0);
}

// The third fail is that of x = 1, y = 0. Neither of the two levels is left.
TEST_F(SelectorEngineTest, TheFailLimitAbandonsTheLevelsWithoutLeavingThem) {
  makeXy(2, 2);
  refuseY(never);
  EXPECT_FALSE(search(2, CS_SELECT_ASCENDING, 3));
  EXPECT_EQ(trace.lines.back(), "end no 3 3 2");
  const std::vector<std::string> tail(trace.lines.end() - 5, trace.lines.end() - 1);
  EXPECT_EQ(tail, (std::vector<std::string>{"before 1 1 EQ 0", "after no 1 1 EQ 0", "endSelector 1", "endSelector 0"}));
  EXPECT_EQ(count("leave"), 1) << "that of y below x = 0";
  expectCounters(5, 3);
  EXPECT_EQ(openContexts(), 2);
  EXPECT_EQ(values(xy[0]), std::vector{1});
  EXPECT_EQ(values(xy[1]), std::vector{0});
  cs_restoreAll();
  EXPECT_EQ(values(xy[1]), (std::vector{0, 1}));
}

TEST_F(SelectorEngineTest, ALimitBelowOneIsNone) {
  makeXy(2, 2);
  refuseY(never);
  for (const int limit : {0, -1, INT_MIN, 5}) {
    EXPECT_FALSE(search(2, CS_SELECT_ASCENDING, limit));
    expectCounters(6, 4);
    EXPECT_EQ(openContexts(), 0);
  }
}

TEST_F(SelectorEngineTest, ARejectedSolutionCanReachTheLimit) {
  makeXy(2, 2);
  trace.accepts = [](CSint **, int) { return false; };
  EXPECT_FALSE(search(2, CS_SELECT_ASCENDING, 2));
  EXPECT_EQ(count("found"), 2);
  EXPECT_EQ(count("leave"), 0);
  expectCounters(3, 2);
  EXPECT_EQ(openContexts(), 2);
}

TEST_F(SelectorEngineTest, ASelectorThatRefusesToBeginAbandonsItsLevelUncounted) {
  makeXy(2, 2);
  trace.begins = [](int index) { return index == 0; };
  EXPECT_FALSE(search(2, CS_SELECT_ASCENDING));
  expectTrace(
      "start 0 2\n"
      "enter 0 0\ninit 0\nnext 0 EQ 0\nnext 0 EQ 1\nbefore 0 0 EQ 0\nafter yes 0 0 EQ 0\n"
      "enter 1 1\ninit 1\n"
      "next 0 no\nbefore 0 0 EQ 1\nafter yes 0 0 EQ 1\n"
      "enter 1 1\ninit 1\n"
      "endSelector 0\nleave 0 0\n"
      "end no 0 0 2");
  expectCounters(2, 0);
  EXPECT_EQ(openContexts(), 0);
}

TEST_F(SelectorEngineTest, ASelectorWithoutDecisionsIsEndedAndLeft) {
  makeXy(2, 1);
  CSvalueSelector none{nullptr, [](CSvalueSelection *, int, CSint **, int, void *) { return false; }, nullptr};
  EXPECT_FALSE(cs_searchValueSelectorFail(xy, trace.logging({&none}), 1, firstFree, 0, trace.hooks()));
  expectTrace("start 0 1\nenter 0 0\ninit 0\nnext 0 no\nendSelector 0\nleave 0 0\nend no 0 0 1");
  expectCounters(0, 0);
}

TEST_F(SelectorEngineTest, ANullSelectorAbandonsItsLevel) {
  makeXy(2, 2);
  CSvalueSelector *selectors[] = {nullptr, nullptr};
  EXPECT_FALSE(cs_searchValueSelectorFail(xy, selectors, 2, firstFree, 0, trace.hooks()));
  expectTrace("start 0 2\nenter 0 0\nend no 0 0 2");
  EXPECT_FALSE(cs_searchValueSelectorFail(xy, nullptr, 2, firstFree, 0, nullptr));
  EXPECT_FALSE(cs_searchValueSelectorFail(
      nullptr, selectors, 2, [](CSint **, int) { return 0; }, 0, nullptr));
  EXPECT_EQ(openContexts(), 0);
}

TEST_F(SelectorEngineTest, ANullVariableFailsAtItsDecisions) {
  CSint *nobody = nullptr;
  CSvalueSelector ownValue{
      nullptr,
      [](CSvalueSelection *, int, CSint **, int, void *state) { return ++*static_cast<std::intptr_t *>(state) == 1; },
      nullptr};
  CSvalueSelector *selectors[] = {&ownValue};
  EXPECT_FALSE(cs_searchValueSelectorFail(
      &nobody, selectors, 1, [](CSint **, int) { return 0; }, 0, nullptr));
  expectCounters(1, 1);
}

TEST_F(SelectorEngineTest, ANullSelectionFindsNothingAndCallsNothing) {
  makeXy(2, 2);
  CSvalueSelector *selectors[] = {cs_getValueSelector(0), cs_getValueSelector(0)};
  EXPECT_FALSE(cs_searchValueSelectorFail(xy, selectors, 2, nullptr, 0, trace.hooks()));
  EXPECT_TRUE(trace.lines.empty());
}

TEST_F(SelectorEngineTest, AnEndThatRefusesTurnsTheSuccessIntoAFailure) {
  makeXy(2, 2);
  trace.ends = [](int index) { return index != 0; };
  EXPECT_FALSE(search(2, CS_SELECT_ASCENDING));
  EXPECT_EQ(count("found"), 1);
  EXPECT_EQ(trace.lines.back(), "end no 0 0 2");
  EXPECT_EQ(openContexts(), 2);
  EXPECT_EQ(values(xy[1]), std::vector{0});
}

// y's level gives up its solution and keeps its context. The restore of x's level closes that one, so x stays 0: x = 1
// is refused, and the context of x = 0 is left open.
TEST_F(SelectorEngineTest, AnEndThatRefusesBelowIsAFailedBranchAboveThatKeepsItsContext) {
  makeXy(2, 2);
  trace.ends = [](int index) { return index != 1; };
  EXPECT_FALSE(search(2, CS_SELECT_ASCENDING));
  expectTrace(
      "start 0 2\n"
      "enter 0 0\ninit 0\nnext 0 EQ 0\nnext 0 EQ 1\nbefore 0 0 EQ 0\nafter yes 0 0 EQ 0\n"
      "enter 1 1\ninit 1\nnext 1 EQ 0\nnext 1 EQ 1\nbefore 1 1 EQ 0\nafter yes 1 1 EQ 0\n"
      "found 1\nendSelector 1\n"
      "next 0 no\nbefore 0 0 EQ 1\nafter no 0 0 EQ 1\nendSelector 0\nleave 0 0\n"
      "end no 1 0 2");
  expectCounters(3, 1);
  EXPECT_EQ(openContexts(), 1);
  EXPECT_EQ(values(xy[0]), std::vector{0});
  EXPECT_EQ(values(xy[1]), (std::vector{0, 1}));
}

TEST_F(SelectorEngineTest, AnEndThatRefusesAfterExhaustionKeepsTheLevelFromBeingLeft) {
  makeXy(2, 1);
  accepts = never;
  ASSERT_TRUE(postRefuser(xy[0], accepts));
  trace.ends = [](int) { return false; };
  EXPECT_FALSE(search(1, CS_SELECT_ASCENDING));
  EXPECT_EQ(count("endSelector 0"), 1);
  EXPECT_EQ(count("leave"), 0);
  EXPECT_EQ(openContexts(), 0);
}

TEST_F(SelectorEngineTest, ACancelIsNoticedAfterTheNextBefore) {
  makeXy(2, 2);
  trace.onLine = [](const std::string &line) {
    if (line == "enter 0 0") cs_cancelSearch();
  };
  EXPECT_FALSE(search(2, CS_SELECT_ASCENDING));
  expectTrace("start 0 2\nenter 0 0\ninit 0\nnext 0 EQ 0\nnext 0 EQ 1\nbefore 0 0 EQ 0\nend no 0 0 2");
  expectCounters(1, 0);
  EXPECT_EQ(openContexts(), 1);
}

// x = 0 is accepted, y's level stops at y = 0 and keeps its context; x's level restores that one, opens another for
// x = 1 and stops.
TEST_F(SelectorEngineTest, TheLevelAboveACancelledOneStopsAtItsOwnNextDecision) {
  makeXy(2, 2);
  trace.onLine = [](const std::string &line) {
    if (line == "after yes 0 0 EQ 0") cs_cancelSearch();
  };
  EXPECT_FALSE(search(2, CS_SELECT_ASCENDING));
  expectTrace(
      "start 0 2\n"
      "enter 0 0\ninit 0\nnext 0 EQ 0\nnext 0 EQ 1\nbefore 0 0 EQ 0\nafter yes 0 0 EQ 0\n"
      "enter 1 1\ninit 1\nnext 1 EQ 0\nnext 1 EQ 1\nbefore 1 1 EQ 0\n"
      "next 0 no\nbefore 0 0 EQ 1\n"
      "end no 0 0 2");
  expectCounters(3, 0);
  EXPECT_EQ(openContexts(), 2);
}

TEST_F(SelectorEngineTest, ACancelInSearchStartIsKept) {
  makeXy(2, 2);
  trace.onLine = [](const std::string &line) {
    if (line == "start 0 2") cs_cancelSearch();
  };
  EXPECT_FALSE(search(2, CS_SELECT_ASCENDING));
  expectCounters(1, 0);
}

// The run's own counter goes on; the shared one starts anew with the search inside.
TEST_F(SelectorEngineTest, ASearchInAHookLeavesTheFailLimitOfTheRunAlone) {
  makeXy(2, 2);
  refuseY(never);
  CSint *u = cs_createCSint(0, 1);
  trace.onLine = [&](const std::string &line) {
    if (line != "leave 1 1") return;
    EXPECT_TRUE(cs_search(&u, 1, cs_findFreeVar));
    cs_restoreContext();
  };
  EXPECT_FALSE(search(2, CS_SELECT_ASCENDING, 3));
  EXPECT_EQ(trace.lines.back(), "end no 1 3 2");
  expectCounters(1 + 2, 1);
}

TEST_F(SelectorEngineTest, AContextThatCannotBeOpenedFindsNothingAndClosesNoneOfTheCallers) {
  makeXy(2, 2);
  expectFailureWithoutAContext([this] { return search(2, CS_SELECT_ASCENDING); });
}

TEST_F(SelectorEngineTest, ALevelWithoutAContextFails) {
  makeXy(2, 2);
  expectTheBranchWithoutAContextToFail([this] { return search(2, CS_SELECT_ASCENDING); });
  EXPECT_EQ(values(xy[0]), std::vector{1});
  EXPECT_EQ(values(xy[1]), std::vector{0});
  expectCounters(3, 0);
  EXPECT_EQ(openContexts(), 1023 + 2);
}

// ----- the path that is recorded when the fail limit is reached

struct PathStep {
  int index;
  std::string decision;
  std::string firstFailed;  // empty when none
  bool isLast;
  bool operator==(const PathStep &) const = default;
};

void PrintTo(const PathStep &step, std::ostream *out) {
  *out << step.index << ": " << step.decision << " (" << step.firstFailed << ") " << step.isLast;
}

class PathTest : public SelectorEngineTest {
 protected:
  PathTest() { resetCounters(); }  // as the exported searches do before they start an engine

  bool run(int limit) {
    CSvalueSelector *selectors[] = {cs_getValueSelector(0), cs_getValueSelector(0)};
    SelectorRun run{xy, selectors, 2, firstFree, &noHooks(), limit, {record, this}};
    const bool result = run.search();
    fails = run.fails;
    return result;
  }

  static void record(void *self, const LevelNode &deepest, int depth) {
    auto *test = static_cast<PathTest *>(self);
    ++test->records;
    test->depth = depth;
    test->contexts = openContexts();
    for (const LevelNode *node = &deepest; node != nullptr; node = node->parent)
      test->path.push_back({node->index, decisionText(node->decision),
                            node->hasFirstFailed ? decisionText(node->firstFailed) : "", node->isLast});
  }

  std::vector<PathStep> path;  // from the deepest level to the root
  int records = 0;
  int depth = -1;
  int contexts = -1;
  int fails = -1;
};

TEST_F(PathTest, IsThatOfTheDecisionWhoseRefusalReachedTheLimit) {
  makeXy(3, 3);
  refuseY(never);
  EXPECT_FALSE(run(5));
  EXPECT_EQ(records, 1);
  EXPECT_EQ(depth, 1);
  EXPECT_EQ(contexts, 2) << "the contexts of the path are still open";
  EXPECT_EQ(fails, 5);
  EXPECT_EQ(path, (std::vector<PathStep>{{1, "EQ 1", "EQ 0", false}, {0, "EQ 1", "EQ 0", false}}));
}

TEST_F(PathTest, KnowsTheLastDecisionsAndTheFirstThatFailed) {
  makeXy(2, 3);
  refuseY(never);
  EXPECT_FALSE(run(6));
  EXPECT_EQ(path, (std::vector<PathStep>{{1, "EQ 2", "EQ 0", true}, {0, "EQ 1", "EQ 0", true}}));
}

TEST_F(PathTest, OfAFirstFailHasNoFailedDecisionBefore) {
  makeXy(2, 2);
  refuseY(never);
  EXPECT_FALSE(run(1));
  EXPECT_EQ(path, (std::vector<PathStep>{{1, "EQ 0", "", false}, {0, "EQ 0", "", false}}));
}

TEST_F(PathTest, IsNotRecordedWithoutALimitOrBelowIt) {
  makeXy(2, 2);
  refuseY(never);
  EXPECT_FALSE(run(0));
  EXPECT_EQ(fails, 4);
  EXPECT_FALSE(run(5));
  EXPECT_FALSE(run(-4));
  EXPECT_EQ(records, 0);
}

TEST_F(PathTest, IsNotRecordedForARejectedSolution) {
  makeXy(2, 2);
  CSsearchNotify notify{};
  notify.found = [](int, CSint **, int, void *) { return false; };
  CSvalueSelector *selectors[] = {cs_getValueSelector(0), cs_getValueSelector(0)};
  SelectorRun run{xy, selectors, 2, firstFree, &notify, 1, {record, this}};
  EXPECT_FALSE(run.search());
  EXPECT_EQ(run.fails, 1);
  EXPECT_EQ(records, 0);
}

TEST_F(PathTest, IsNotRecordedWhenTheSelectorRefusesToEnd) {
  makeXy(2, 2);
  refuseY(never);
  trace.ends = [](int index) { return index != 1; };
  CSvalueSelector **logging = trace.logging({cs_getValueSelector(0), cs_getValueSelector(0)});
  SelectorRun run{xy, logging, 2, firstFree, &noHooks(), 1, {record, this}};
  EXPECT_FALSE(run.search());
  EXPECT_EQ(records, 0);
}

}  // namespace
