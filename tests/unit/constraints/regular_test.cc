// SPDX-License-Identifier: MIT
// cs_Regular: posting, what each of the six events narrows, and what becomes of layers and supports.
#include <climits>

#include "constraints/global/regular_graph.h"
#include "support/constraints/automaton.h"
#include "support/kit/batch.h"
#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;

using Values = std::vector<int>;
using Sets = std::vector<Values>;

class RegularTest : public SolverTest {
 protected:
  void makeVariables(const std::vector<Values> &domains) {
    vars.clear();
    for (const Values &domain : domains) vars.push_back(fromValues(domain));
  }

  int post(const TestAutomaton &automaton) {
    const int mark = solver::trail.count();
    const int result = automaton.post(vars.data(), static_cast<int>(vars.size()));
    layers.clear();
    for (const CSint *v : attachOrder(mark)) layers.push_back(const_cast<CSint *>(v));
    layers.erase(layers.begin(), layers.begin() + static_cast<std::ptrdiff_t>(std::min(vars.size(), layers.size())));
    return result;
  }

  Sets sets(const std::vector<CSint *> &of) const {
    Sets result;
    for (CSint *v : of) result.push_back(values(v));
    return result;
  }

  // The record of the constraint on the variables begins with the graph.
  const regular::Graph &graph() const {
    return *static_cast<const regular::Graph *>(vars[0]->constraints->constraint->record());
  }

  std::vector<CSint *> vars;
  std::vector<CSint *> layers;  // 1 to n
};

// At most one 1 in a row: state 1 is "the last symbol was a 1".
const TestAutomaton kNoTwoOnes{2, 2, 0, {0, 1, 0, -1}, {0, 1}};
// The symbol is never smaller than the one before: state q allows q and above.
const TestAutomaton kAscending{4, 4, 0, {0, 1, 2, 3, -1, 1, 2, 3, -1, -1, 2, 3, -1, -1, -1, 3}, {0, 1, 2, 3}};

// ----- posting

TEST_F(RegularTest, NoVariableIsOneAndPostsNothing) {
  const FailingAllocation failing(0);
  for (const int n : {0, -1, INT_MIN}) {
    EXPECT_EQ(cs_Regular(nullptr, n, nullptr, 0, 0, 0, nullptr, 0), 1);
    EXPECT_EQ(cs_Regular(vars.data(), n, kNoTwoOnes.table.data(), 2, 2, 0, nullptr, 0), 1);
  }
  EXPECT_EQ(memoryReports, 0);
}

TEST_F(RegularTest, WithoutAValidFinalStateItIsZeroAndTouchesNothing) {
  makeVariables({range(-1, 5)});
  const int *table = kNoTwoOnes.table.data();
  const int outside[] = {-1, 2, INT_MIN, INT_MAX};
  for (const int count : {0, -1, INT_MIN}) EXPECT_EQ(cs_Regular(vars.data(), 1, table, 2, 2, 0, outside, count), 0);
  EXPECT_EQ(cs_Regular(vars.data(), 1, table, 2, 2, 0, outside, 4), 0);
  EXPECT_EQ(cs_Regular(vars.data(), 1, table, 0, 2, 0, outside, 4), 0);
  EXPECT_EQ(cs_Regular(vars.data(), 1, table, 2, 2, 0, nullptr, 1), 0);
  EXPECT_EQ(sets(vars), Sets{range(-1, 5)});
  EXPECT_EQ(cs_getNbConstraints(vars[0]), 0);
}

TEST_F(RegularTest, NullPointersAreZeroAndTouchNothing) {
  makeVariables({range(-1, 5)});
  vars.push_back(nullptr);
  const int final = 0;
  EXPECT_EQ(cs_Regular(vars.data(), 2, kNoTwoOnes.table.data(), 2, 2, 0, &final, 1), 0);
  EXPECT_EQ(cs_Regular(nullptr, 1, kNoTwoOnes.table.data(), 2, 2, 0, &final, 1), 0);
  EXPECT_EQ(cs_Regular(vars.data(), 1, nullptr, 2, 2, 0, &final, 1), 0);
  EXPECT_EQ(values(vars[0]), range(-1, 5));
}

TEST_F(RegularTest, VariablesAreRestrictedToTheAlphabetInTurn) {
  makeVariables({range(-1, 5), range(0, 2), range(2, 4), range(-1, 5)});
  EXPECT_EQ(post(kNoTwoOnes), 0);
  EXPECT_EQ(sets(vars), (Sets{{0, 1}, {0, 1}, range(2, 4), range(-1, 5)}));
  const int final = 0;
  for (const int symbols : {0, -1, INT_MIN}) {
    makeVariables({range(-1, 5)});
    EXPECT_EQ(cs_Regular(vars.data(), 1, kNoTwoOnes.table.data(), 2, symbols, 0, &final, 1), 0);
    EXPECT_EQ(sets(vars), (Sets{range(0, 5)}));
  }
}

TEST_F(RegularTest, AnInvalidStartIsZeroOnceTheVariablesAreRestricted) {
  for (const int start : {-1, 2, INT_MIN, INT_MAX}) {
    makeVariables({range(-1, 5)});
    TestAutomaton automaton = kNoTwoOnes;
    automaton.start = start;
    EXPECT_EQ(post(automaton), 0);
    EXPECT_EQ(sets(vars), (Sets{{0, 1}}));
    EXPECT_EQ(cs_getNbConstraints(vars[0]), 0);
  }
}

TEST_F(RegularTest, TargetsThatAreNoStatesAreAbsentEdges) {
  for (const int nowhere : {-1, 2, INT_MIN, INT_MAX}) {
    makeVariables({{0, 1}, {0, 1}});
    ASSERT_EQ(post({2, 2, 0, {1, nowhere, nowhere, 1}, {1}}), 1);
    EXPECT_EQ(sets(vars), (Sets{{0}, {1}}));
  }
}

TEST_F(RegularTest, ValuesOnNoAcceptedWordAreRemovedAtPosting) {
  makeVariables({range(0, 3), range(0, 2), range(0, 3)});
  vars.push_back(CSINT(1));
  ASSERT_EQ(post(kAscending), 1);
  EXPECT_EQ(sets(vars), (Sets{{0, 1}, {0, 1}, {0, 1}, {1}}));
  EXPECT_EQ(sets(layers), (Sets{{0, 1}, {0, 1}, {0, 1}, {1}}));
}

TEST_F(RegularTest, WithoutAnAcceptedWordItIsZeroAndNothingIsAttached) {
  makeVariables({{1}, {1}});
  EXPECT_EQ(post(kNoTwoOnes), 0);
  EXPECT_EQ(cs_getNbConstraints(vars[0]), 0);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(RegularTest, FinalsMayRepeatAndNameNoStates) {
  makeVariables({{0, 1}});
  ASSERT_EQ(post({2, 2, 0, {0, 1, 0, -1}, {-3, 1, 7, 1}}), 1);
  EXPECT_EQ(sets(vars), (Sets{{1}}));
}

TEST_F(RegularTest, OneConstraintIsAttachedToTheVariablesThenOneToTheLayersFromTheFirstOn) {
  makeVariables({{0, 1}, {0, 1}, {0, 1}});
  const int mark = solver::trail.count();
  ASSERT_EQ(post(kNoTwoOnes), 1);
  const auto order = attachOrder(mark);
  ASSERT_EQ(order.size(), 6U);
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_EQ(order[k], vars[k]);
    EXPECT_EQ(attachments(vars[k]), (std::vector<std::pair<std::string, int>>{{"cs_Regular", static_cast<int>(k)}}));
    EXPECT_EQ(attachments(layers[k]),
              (std::vector<std::pair<std::string, int>>{{"cs_Regular", static_cast<int>(k) + 1}}));
    EXPECT_EQ(busySlots(vars[k]), "012345");
    EXPECT_EQ(busySlots(layers[k]), "012345");
  }
  const Constraint *onVars = vars[0]->constraints->constraint;
  const Constraint *onLayers = layers[0]->constraints->constraint;
  EXPECT_NE(onVars, onLayers);
  EXPECT_EQ(onVars, vars[2]->constraints->constraint);
  EXPECT_EQ(onLayers, layers[2]->constraints->constraint);
  EXPECT_EQ(onVars->site, onLayers->site);
  EXPECT_EQ(onVars->site->references, 2);
  EXPECT_EQ(graph().layer(0)->constraints, nullptr);
}

// Site, two for the transitions, rows, supports, layers, and a record and an entry per variable on each side; the bit
// arrays of layers with holes.
TEST_F(RegularTest, EachFailingAllocationIsReportedOnceAndIsZero) {
  struct Operands {
    CSint *x[2];
  };
  const auto prepare = [] { return Operands{{cs_createCSint(0, 3), cs_createCSint(0, 3)}}; };
  EXPECT_EQ(failEachAllocation(prepare, [](Operands &o) { return kAscending.post(o.x, 2) == 1; }), 12);
  const TestAutomaton even{4, 4, 0, {0, -1, 2, 3, -1, -1, -1, -1, 0, -1, 2, 3, 0, -1, 2, 3}, {0, 2, 3}};
  // Two layers without state 1, and two variables without symbol 1.
  EXPECT_EQ(failEachAllocation(prepare, [&](Operands &o) { return even.post(o.x, 2) == 1; }), 16);
}

// Live states and symbols are too many for the stack.
TEST_F(RegularTest, EachFailingAllocationOfAWideOneIsReportedOnceAndIsZero) {
  constexpr int kSymbols = 20;
  constexpr int kVariables = 40;
  struct Operands {
    std::vector<CSint *> x;
  };
  const auto prepare = [] {
    Operands operands;
    for (int i = 0; i < kVariables; ++i) operands.x.push_back(cs_createCSint(0, kSymbols - 1));
    return operands;
  };
  const TestAutomaton any{1, kSymbols, 0, std::vector<int>(kSymbols, 0), {0}};
  EXPECT_EQ(failEachAllocation(prepare, [&](Operands &o) { return any.post(o.x.data(), kVariables) == 1; }),
            10 + 2 * kVariables);
}

TEST_F(RegularTest, ATrailThatCannotGrowIsReportedOnceAndIsZero) {
  struct Operands {
    CSint *x[2];
  };
  for (int room = 1; room <= 6; ++room) {
    const auto prepare = [room] {
      const Operands operands{{cs_createCSint(0, 3), cs_createCSint(0, 3)}};
      while ((solver::trail.count() + room) % Trail::kCapacity != 0) cs_backtrack(nullptr, 0, nullptr);
      return operands;
    };
    EXPECT_GE(failEachAllocation(prepare, [](Operands &o) { return kAscending.post(o.x, 2) == 1; }), 12);
  }
}

// ----- events: x ascends over four positions

struct Row {
  const char *name;
  int k;
  bool (*narrow)(CSint *, int);
  int to;
  Sets vars;
  Sets layers;
};

void PrintTo(const Row &row, std::ostream *out) { *out << row.name; }

class RegularEventTest : public RegularTest, public ::testing::WithParamInterface<Row> {};

TEST_P(RegularEventTest, LeavesExactlyThis) {
  makeVariables({range(0, 3), range(0, 3), range(0, 3), range(0, 3)});
  ASSERT_EQ(post(kAscending), 1);
  const Row &row = GetParam();
  ASSERT_TRUE(row.narrow(vars[static_cast<std::size_t>(row.k)], row.to));
  EXPECT_EQ(sets(vars), row.vars);
  EXPECT_EQ(sets(layers), row.layers);
}

const Values kFull = range(0, 3);
const Values kUpper = range(2, 3);
const Values kLower = range(0, 1);

INSTANTIATE_TEST_SUITE_P(
    , RegularEventTest,
    ::testing::Values(
        Row{"MinimumRaised", 1, cs_GE, 2, {kFull, kUpper, kUpper, kUpper}, {kFull, kUpper, kUpper, kUpper}},
        Row{"MaximumLowered", 2, cs_LE, 1, {kLower, kLower, kLower, kFull}, {kLower, kLower, kLower, kFull}},
        Row{"BoundByMinimum", 1, cs_GE, 3, {kFull, {3}, {3}, {3}}, {kFull, {3}, {3}, {3}}},
        Row{"BoundByMaximum", 2, cs_LE, 0, {{0}, {0}, {0}, kFull}, {{0}, {0}, {0}, kFull}},
        Row{"BoundInside",
            1,
            cs_EQ,
            1,
            {{0, 1}, {1}, range(1, 3), range(1, 3)},
            {{0, 1}, {1}, range(1, 3), range(1, 3)}},
        Row{"InnerValueRemoved", 1, cs_NEQ, 1, {kFull, {0, 2, 3}, kFull, kFull}, {kFull, {0, 2, 3}, kFull, kFull}},
        Row{"FirstBound", 0, cs_EQ, 2, {{2}, kUpper, kUpper, kUpper}, {{2}, kUpper, kUpper, kUpper}},
        Row{"LastBound", 3, cs_EQ, 1, {kLower, kLower, kLower, {1}}, {kLower, kLower, kLower, {1}}}),
    [](const auto &row) { return std::string(row.param.name); });

TEST_F(RegularTest, TheLastAcceptedWordGoneFails) {
  makeVariables({{0, 1}, {0, 1}, {0, 1}});
  ASSERT_EQ(post(kNoTwoOnes), 1);
  ASSERT_TRUE(cs_EQ(vars[0], 1));
  EXPECT_EQ(sets(vars), (Sets{{1}, {0}, {0, 1}}));
  EXPECT_FALSE(cs_EQ(vars[1], 1));
}

// Each list has one entry: the word is 0 1 or 1 0.
TEST_F(RegularTest, AListWithASingleEntryLosesItsValueOrStateAtOnce) {
  makeVariables({{0, 1}, {0, 1}});
  ASSERT_EQ(post({4, 2, 0, {1, 2, -1, 3, 3, -1, -1, -1}, {3}}), 1);
  EXPECT_EQ(sets(layers), (Sets{{1, 2}, {3}}));
  const CallLog log;
  ASSERT_TRUE(cs_NEQ(vars[0], 0));
  EXPECT_EQ(sets(vars), (Sets{{1}, {0}}));
  EXPECT_EQ(sets(layers), (Sets{{2}, {3}}));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, vars[0], 2, "cs_Regular"},
                                          {true, layers[0], 2, "cs_Regular"},
                                          {true, vars[1], 3, "cs_Regular"}}));
}

// The words are 0 0 and 1 1. After the first symbol one state is left between the two; the second one takes it away.
TEST_F(RegularTest, ALayerThatLosesItsLastStateFailsAtOnce) {
  makeVariables({{0, 1}, {0, 1}});
  ASSERT_EQ(post({4, 2, 0, {1, 2, 3, -1, -1, 3, -1, -1}, {3}}), 1);
  const CallLog log;
  EXPECT_FALSE(together([this] { return cs_EQ(vars[0], 0) && cs_EQ(vars[1], 1); }));
  EXPECT_EQ(log.calls.back(), (Call{false, vars[1], 2, "cs_Regular"}));
}

// The same with four words, and a layer that has lost states from its middle.
TEST_F(RegularTest, ALayerWithHolesThatLosesItsLastStateFailsAtOnce) {
  makeVariables({range(0, 3), range(0, 3)});
  Values table(24, -1);
  for (std::size_t a = 0; a < 4; ++a) {
    table[a] = static_cast<int>(a) + 1;
    table[4 * (a + 1) + a] = 5;
  }
  ASSERT_EQ(post({6, 4, 0, table, {5}}), 1);
  ASSERT_TRUE(cs_NEQ(vars[0], 1));
  EXPECT_EQ(sets(layers), (Sets{{1, 3, 4}, {5}}));
  const CallLog log;
  EXPECT_FALSE(together([this] { return cs_EQ(vars[0], 0) && cs_EQ(vars[1], 3); }));
  EXPECT_EQ(log.calls.back(), (Call{false, vars[1], 2, "cs_Regular"}));
}

// The layer after the position first, by sources, then by targets; the symbols before the states.
TEST_F(RegularTest, RemovalsCascadeAlongTheLayersInOrder) {
  makeVariables({range(0, 3), range(0, 3), range(0, 3)});
  ASSERT_EQ(post(kAscending), 1);
  const CallLog log;
  ASSERT_TRUE(cs_LE(vars[1], 2));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, vars[1], 1, "cs_Regular"},
                                          {true, layers[0], 1, "cs_Regular"},
                                          {true, layers[1], 1, "cs_Regular"},
                                          {true, vars[0], 1, "cs_Regular"}}));
}

// ----- layers and supports

TEST_F(RegularTest, IntervalsWiderThanAWordAreWalkedOver) {
  constexpr int kSymbols = 150;
  TestAutomaton ascending{kSymbols, kSymbols, 0, {}, range(0, kSymbols - 1)};
  for (int q = 0; q < kSymbols; ++q)
    for (int a = 0; a < kSymbols; ++a) ascending.table.push_back(a >= q ? a : -1);
  for (int i = 0; i < 3; ++i) vars.push_back(cs_createCSint(0, kSymbols - 1));
  ASSERT_EQ(post(ascending), 1);
  ASSERT_TRUE(cs_GE(vars[0], 70) && cs_LE(vars[2], 140));
  EXPECT_EQ(sets(vars), (Sets{range(70, 140), range(70, 140), range(70, 140)}));
  ASSERT_TRUE(cs_GE(vars[1], 100));
  EXPECT_EQ(sets(vars), (Sets{range(70, 140), range(100, 140), range(100, 140)}));
  ASSERT_TRUE(cs_EQ(vars[2], 120));
  EXPECT_EQ(sets(vars), (Sets{range(70, 120), range(100, 120), {120}}));
  EXPECT_FALSE(cs_GE(vars[0], 121));
}

TEST_F(RegularTest, RestoringAContextRestoresEveryLayer) {
  makeVariables({range(0, 3), range(0, 3), range(0, 3), range(0, 3)});
  ASSERT_EQ(post(kAscending), 1);
  const auto counts = [&] {
    Values result;
    for (CSint *v : layers) result.push_back(cs_getNbElements(v));
    return result;
  };
  const Sets before = sets(layers);
  cs_saveContext();
  ASSERT_TRUE(cs_NEQ(vars[1], 1) && cs_GE(vars[0], 1));
  const Sets between = sets(layers);
  EXPECT_EQ(between, (Sets{range(1, 3), range(2, 3), range(2, 3), range(2, 3)}));
  cs_saveContext();
  EXPECT_FALSE(cs_EQ(vars[2], 2) && cs_EQ(vars[1], 3));
  cs_restoreContext();
  EXPECT_EQ(sets(layers), between);
  cs_restoreContext();
  EXPECT_EQ(sets(layers), before);
  EXPECT_EQ(counts(), (Values{4, 4, 4, 4}));
}

// Deliberate: supports are not trailed, and a search steps on from the one it has, around the end of the list.
TEST_F(RegularTest, SupportsStepOnFromTheLastOneAndStayAfterARestore) {
  makeVariables({range(0, 3)});
  ASSERT_EQ(post({1, 4, 0, {0, 0, 0, 0}, {0}}), 1);
  const regular::Support &support = graph().sources(0)[0];
  EXPECT_EQ(support.place, 0);
  cs_saveContext();
  ASSERT_TRUE(cs_GE(vars[0], 2));
  EXPECT_EQ(support.place, 2);
  cs_restoreContext();
  EXPECT_EQ(support.place, 2);
  ASSERT_TRUE(cs_NEQ(vars[0], 1));
  EXPECT_EQ(support.place, 2) << "valid, so nothing is searched";
  ASSERT_TRUE(cs_NEQ(vars[0], 2));
  EXPECT_EQ(support.place, 3);
  ASSERT_TRUE(cs_LE(vars[0], 2));
  EXPECT_EQ(support.place, 0) << "around the end";
  EXPECT_EQ(support.edge.x, 0);
}

TEST_F(RegularTest, RestoringDetachesIt) {
  makeVariables({{0, 1}, {0, 1}});
  cs_saveContext();
  ASSERT_EQ(post(kNoTwoOnes), 1);
  cs_restoreContext();
  ASSERT_TRUE(cs_EQ(vars[0], 1));
  EXPECT_EQ(sets(vars), (Sets{{1}, {0, 1}}));
  EXPECT_EQ(solver::ownersAlive, 0);
}

// The constraint on the variables goes first here: the one on the layers goes with them.
TEST_F(RegularTest, AnAcceptedPostingDiesWithItsVariablesEntries) {
  makeVariables({{0, 1}});
  cs_saveContext();
  ASSERT_TRUE(cs_Neq(vars[0], CSINT(7)));
  cs_saveContext();
  ASSERT_EQ(post(kNoTwoOnes), 1);
  cs_acceptContext();
  EXPECT_EQ(solver::ownersAlive, 1);
  cs_restoreContext();  // takes the newest entry, whichever it is
  EXPECT_EQ(solver::ownersAlive, 0);
  EXPECT_EQ(attachments(vars[0]), (std::vector<std::pair<std::string, int>>{{"cs_Neq", -1}}));
}

// An outer restore brings values back that the accepted posting had removed: no list, no support, refused when bound.
TEST_F(RegularTest, ValuesWithoutAnEdgeThatComeBackAreRefusedWhenBound) {
  makeVariables({range(-2, 4), {0, 1}});
  cs_saveContext();
  ASSERT_TRUE(cs_GE(vars[0], 0) && cs_LE(vars[0], 1));
  cs_saveContext();
  ASSERT_EQ(post(kNoTwoOnes), 1);
  cs_acceptContext();
  cs_restoreContext();
  ASSERT_EQ(values(vars[0]), range(-2, 4));
  for (const int foreign : {-2, 4}) {
    cs_saveContext();
    EXPECT_FALSE(cs_EQ(vars[0], foreign));
    cs_restoreContext();
  }
  ASSERT_TRUE(cs_EQ(vars[1], 1));
  EXPECT_EQ(values(vars[0]), without(range(-2, 4), 1));
}

TEST_F(RegularTest, AVariableAtSeveralPositionsIsHeardAtEach) {
  CSint *x = cs_createCSint(0, 3);
  vars = {x, cs_createCSint(0, 3), x};
  ASSERT_EQ(post(kAscending), 1);
  EXPECT_EQ(attachments(x), (std::vector<std::pair<std::string, int>>{{"cs_Regular", 2}, {"cs_Regular", 0}}));
  ASSERT_TRUE(cs_EQ(x, 2));
  EXPECT_EQ(values(vars[1]), std::vector{2});
}

}  // namespace
