// SPDX-License-Identifier: MIT
// cs_AllNeq: value elimination and the span test with its two witnesses.
#include <random>

#include "core/trial.h"
#include "support/kit/batch.h"
#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;

class AllNeqTest : public SolverTest {
 protected:
  CSint *array[5] = {};  // kept by the constraint until the solver ends

  // The array's variables and so many more, bound to other values: beyond 16 the constraint keeps account of those that
  // have been eliminated.
  static constexpr int kFew = 5;
  static constexpr int kMany = 20;
  std::vector<CSint *> padded;
  [[nodiscard]] int postPadded(int count) {
    padded.assign(std::begin(array), std::end(array));
    while (static_cast<int>(padded.size()) < count) padded.push_back(CSINT(100 + static_cast<int>(padded.size())));
    return cs_AllNeq(padded.data(), count);
  }
};

TEST_F(AllNeqTest, NoVariableIsTrueAndPostsNothing) {
  array[0] = cs_createCSint(0, 1);
  const FailingAllocation failing(0);
  for (const int count : {0, -1, INT_MIN}) {
    EXPECT_EQ(cs_AllNeq(array, count), 1);
    EXPECT_EQ(cs_AllNeq(nullptr, count), 1);
  }
  EXPECT_EQ(cs_getNbConstraints(array[0]), 0);
  EXPECT_EQ(memoryReports, 0);
}

TEST_F(AllNeqTest, OneVariableIsPostedAndAlwaysSucceeds) {
  array[0] = CSINT(3);
  EXPECT_EQ(cs_AllNeq(array, 1), 1);
  array[1] = cs_createCSint(0, 2);
  EXPECT_EQ(cs_AllNeq(array + 1, 1), 1);
  EXPECT_EQ(cs_getNbConstraints(array[1]), 1);
  EXPECT_TRUE(cs_EQ(array[1], 1));
}

TEST_F(AllNeqTest, NullVariablesGiveZeroAndPostNothing) {
  array[0] = cs_createCSint(0, 1);
  EXPECT_EQ(cs_AllNeq(array, 2), 0);
  EXPECT_EQ(cs_AllNeq(nullptr, 2), 0);
  EXPECT_EQ(cs_getNbConstraints(array[0]), 0);
}

TEST_F(AllNeqTest, IsAttachedInArrayOrderWithItsPositions) {
  for (CSint *&v : array) v = cs_createCSint(0, 9);
  const int mark = solver::trail.count();
  ASSERT_EQ(cs_AllNeq(array, 5), 1);
  EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>(array, array + 5)));
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(attachments(array[i]), (std::vector<std::pair<std::string, int>>{{"cs_AllNeq", i}}));
    EXPECT_EQ(busySlots(array[i]), "01234");
  }
  EXPECT_EQ(trailRecords(TrailKind::kBuffer), 0);
}

TEST_F(AllNeqTest, ThreeVariablesOverTwoValuesFailAtPostingAndStayAttached) {
  for (CSint *&v : array) v = cs_createCSint(1, 2);
  EXPECT_EQ(cs_AllNeq(array, 3), 0);
  EXPECT_EQ(cs_getNbConstraints(array[2]), 1);
  EXPECT_EQ(values(array[0]), range(1, 2));
}

TEST_F(AllNeqTest, TwoVariablesBoundToTheSameValueFailAtPosting) {
  array[0] = CSINT(2);
  array[1] = CSINT(2);
  EXPECT_EQ(cs_AllNeq(array, 2), 0);
}

TEST_F(AllNeqTest, PostingTakesTheValuesOfBoundVariablesFromTheOthers) {
  array[0] = cs_createCSint(0, 4);
  array[1] = CSINT(2);
  array[2] = cs_createCSint(2, 4);
  ASSERT_EQ(cs_AllNeq(array, 3), 1);
  EXPECT_EQ(values(array[0]), (std::vector{0, 1, 3, 4}));
  EXPECT_EQ(values(array[2]), range(3, 4));
}

// Posting takes 1 from y, which becomes 2; the constraint hears it at once and takes 2 from z.
TEST_F(AllNeqTest, PostingPropagatesVariablesThatItBinds) {
  array[0] = cs_createCSint(2, 3);
  array[1] = cs_createCSint(1, 2);
  array[2] = CSINT(1);
  ASSERT_EQ(cs_AllNeq(array, 3), 1);
  EXPECT_EQ(values(array[1]), std::vector{2});
  EXPECT_EQ(values(array[0]), std::vector{3});
}

// No Hall intervals: two variables over {1, 2} leave the third alone.
TEST_F(AllNeqTest, NothingIsDoneBeyondEliminationAndSpan) {
  array[0] = cs_createCSint(1, 2);
  array[1] = cs_createCSint(1, 2);
  array[2] = cs_createCSint(1, 3);
  ASSERT_EQ(cs_AllNeq(array, 3), 1);
  EXPECT_EQ(values(array[2]), range(1, 3));
}

TEST_F(AllNeqTest, TheSpanGoesByBoundsNotByValues) {
  for (CSint *&v : array) v = fromValues({0, 9});
  EXPECT_EQ(cs_AllNeq(array, 5), 1);
}

struct EventRow {
  const char *name;
  bool (*narrow)(CSint *, int);
  int v;
  std::vector<int> left;  // of the other two, which are 0..4 as well
};

void PrintTo(const EventRow &row, std::ostream *out) { *out << row.name; }

class AllNeqEventTest : public AllNeqTest, public ::testing::WithParamInterface<EventRow> {};

TEST_P(AllNeqEventTest, TakesAValueFromTheOthersOnlyWhenItBinds) {
  for (CSint *&v : array) v = cs_createCSint(0, 4);
  ASSERT_EQ(cs_AllNeq(array, 3), 1);
  ASSERT_TRUE(GetParam().narrow(array[1], GetParam().v));
  EXPECT_EQ(values(array[0]), GetParam().left);
  EXPECT_EQ(values(array[2]), GetParam().left);
}

INSTANTIATE_TEST_SUITE_P(, AllNeqEventTest,
                         ::testing::Values(EventRow{"minimum raised", cs_GE, 2, {0, 1, 2, 3, 4}},
                                           EventRow{"maximum lowered", cs_LE, 2, {0, 1, 2, 3, 4}},
                                           EventRow{"bound by the minimum", cs_GE, 4, {0, 1, 2, 3}},
                                           EventRow{"bound by the maximum", cs_LE, 0, {1, 2, 3, 4}},
                                           EventRow{"bound inside", cs_EQ, 2, {0, 1, 3, 4}},
                                           EventRow{"inner value removed", cs_NEQ, 2, {0, 1, 2, 3, 4}}));

// A value that is out of the others' reach makes no event on them: one call, for the variable that was bound.
TEST_F(AllNeqTest, VariablesThatDoNotHoldTheValueAreSkipped) {
  array[0] = cs_createCSint(0, 4);
  array[1] = cs_createCSint(5, 9);
  array[2] = fromValues({1, 3, 8});
  ASSERT_EQ(cs_AllNeq(array, 3), 1);
  const int trail = solver::trail.count();
  const CallLog log;
  ASSERT_TRUE(cs_EQ(array[0], 2));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, array[0], 4, "cs_AllNeq"}}));
  EXPECT_EQ(solver::trail.count(), trail + 2);
  EXPECT_EQ(values(array[1]), range(5, 9));
}

TEST_F(AllNeqTest, EliminationGoesInArrayOrder) {
  for (CSint *&v : array) v = cs_createCSint(0, 4);
  ASSERT_EQ(cs_AllNeq(array, 4), 1);
  const CallLog log;
  ASSERT_TRUE(cs_EQ(array[2], 0));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, array[2], 3, "cs_AllNeq"},
                                          {true, array[0], 0, "cs_AllNeq"},
                                          {true, array[1], 0, "cs_AllNeq"},
                                          {true, array[3], 0, "cs_AllNeq"}}));
}

TEST_F(AllNeqTest, ASpanThatBecomesTooNarrowFails) {
  for (CSint *&v : array) v = cs_createCSint(0, 4);
  ASSERT_EQ(cs_AllNeq(array, 5), 1);
  for (int i = 0; i < 4; ++i) ASSERT_TRUE(cs_GE(array[i], 1));
  EXPECT_FALSE(cs_GE(array[4], 1));
}

// The witnesses are array[0], which has the smallest minimum, and array[2], which has the largest maximum.
class AllNeqWitnessTest : public AllNeqTest {
 protected:
  void SetUp() override {
    AllNeqTest::SetUp();
    array[0] = cs_createCSint(0, 5);
    array[1] = cs_createCSint(0, 9);
    array[2] = cs_createCSint(2, 9);
    ASSERT_EQ(cs_AllNeq(array, 3), 1);
  }
};

TEST_F(AllNeqWitnessTest, WitnessesThatBecomeTooTightAreReplacedWhileAPairIsWideEnough) {
  ASSERT_TRUE(cs_GE(array[0], 4));   // 4..9
  ASSERT_TRUE(cs_LE(array[2], 4));   // 4..4 is too tight: array[1] takes over at both ends, 0..9
  ASSERT_TRUE(cs_GE(array[1], 4));   // 4..9
  ASSERT_TRUE(cs_LE(array[1], 5));   // 4..5 is too tight: array[2] takes over below, 2..5
  ASSERT_TRUE(cs_GE(array[2], 3));   // 3..5
  EXPECT_FALSE(cs_GE(array[2], 4));  // 4..5, and nobody reaches further
}

TEST_F(AllNeqWitnessTest, BindingAVariableThatIsNoWitnessEliminates) {
  const CallLog log;
  ASSERT_TRUE(cs_EQ(array[1], 7));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, array[1], 4, "cs_AllNeq"}, {true, array[2], 5, "cs_AllNeq"}}));
  EXPECT_EQ(values(array[2]), without(range(2, 9), 7));
}

// Deliberate: witnesses are not trailed; what was wide enough deeper in the search is so after backtracking.
TEST_F(AllNeqWitnessTest, WitnessesFoundInAContextServeAfterItIsRestored) {
  cs_saveContext();
  ASSERT_TRUE(cs_GE(array[0], 5));
  ASSERT_TRUE(cs_LE(array[2], 6));  // 5..6 is too tight: array[1] takes over
  cs_restoreContext();
  cs_saveContext();
  ASSERT_TRUE(cs_LE(array[0], 2) && cs_LE(array[1], 2));
  EXPECT_TRUE(cs_LE(array[2], 2));  // bound; the others lose 2
  EXPECT_EQ(values(array[0]), range(0, 1));
  cs_restoreContext();
  ASSERT_TRUE(cs_GE(array[0], 1) && cs_LE(array[0], 2) && cs_GE(array[1], 1) && cs_LE(array[1], 2));
  EXPECT_FALSE(cs_LE(array[2], 2));
}

// Of equals the first is the witness. When nobody is wide enough any more, its event is where it fails.
class AllNeqEqualsTest : public AllNeqTest {
 protected:
  void post(std::initializer_list<std::pair<int, int>> domains) {
    int n = 0;
    for (const auto &[min, max] : domains) array[n++] = cs_createCSint(min, max);
    ASSERT_EQ(cs_AllNeq(array, n), 1);
  }
  // Moves a bound of all, the first one's first.
  void expectTheFirstToFail(bool (*narrow)(CSint *, int), int bound, int code) {
    const CallLog log;
    EXPECT_FALSE(together([=, this] {
      bool done = true;
      for (CSint *v : array) done = v == nullptr || (done && narrow(v, bound));
      return done;
    }));
    EXPECT_EQ(log.calls.back(), (Call{false, array[0], code, "cs_AllNeq"}));
  }
};

TEST_F(AllNeqEqualsTest, TheFirstWithTheSmallestMinimumIsAWitness) {
  post({{0, 7}, {0, 7}, {1, 9}, {1, 9}, {1, 9}});
  expectTheFirstToFail(cs_GE, 6, 0);
}

TEST_F(AllNeqEqualsTest, TheFirstWithTheLargestMaximumIsAWitness) {
  post({{2, 9}, {2, 9}, {0, 8}, {0, 8}, {0, 8}});
  expectTheFirstToFail(cs_LE, 3, 1);
}

// The second and third steps make the witnesses too tight; the last variable's other bound helps.
TEST_F(AllNeqEqualsTest, AWitnessForTheMinimumIsNotReplacedByItsEqual) {
  post({{0, 7}, {5, 7}, {5, 9}, {5, 8}});
  ASSERT_TRUE(cs_LE(array[2], 7) && cs_GE(array[0], 5));
  expectTheFirstToFail(cs_GE, 6, 0);
}

TEST_F(AllNeqEqualsTest, AWitnessForTheMaximumIsNotReplacedByItsEqual) {
  post({{2, 9}, {2, 4}, {0, 4}, {1, 4}});
  ASSERT_TRUE(cs_GE(array[2], 2) && cs_LE(array[0], 4));
  expectTheFirstToFail(cs_LE, 3, 1);
}

TEST_F(AllNeqTest, TheSameVariableTwiceThatIsBoundFailsAtPosting) {
  array[0] = array[1] = CSINT(4);
  EXPECT_EQ(cs_AllNeq(array, 2), 0);
}

// Deliberate: elimination tells the bound variable from the others by identity, so only the span test objects.
TEST_F(AllNeqTest, TheSameVariableTwiceIsNotItsOwnRival) {
  array[0] = array[1] = cs_createCSint(0, 4);
  array[2] = cs_createCSint(0, 4);
  ASSERT_EQ(cs_AllNeq(array, 3), 1);
  ASSERT_TRUE(cs_EQ(array[0], 1));
  EXPECT_EQ(values(array[2]), without(range(0, 4), 1));
  EXPECT_TRUE(cs_EQ(array[2], 4));
}

TEST_F(AllNeqTest, AnotherVariableTwiceLosesTheValueOnce) {
  array[0] = cs_createCSint(0, 5);
  array[1] = array[2] = cs_createCSint(0, 5);
  ASSERT_TRUE(cs_NEQ(array[1], 3));  // has bits now
  ASSERT_EQ(cs_AllNeq(array, 3), 1);
  ASSERT_TRUE(cs_EQ(array[0], 2));
  EXPECT_EQ(values(array[1]), (std::vector{0, 1, 4, 5}));
}

// A context that the host opens in a handler, and leaves open: what comes after propagates at once.
TEST_F(AllNeqTest, EliminatesWhileChangesPropagateAtOnce) {
  for (const int count : {kFew, kMany}) {
    cs_end();
    cs_init();
    for (CSint *&v : array) v = cs_createCSint(0, 5);
    ASSERT_TRUE(cs_NEQ(array[2], 4));
    ASSERT_EQ(postPadded(count), 1);
    const auto open = [](int, int, CSint **, int, void *) {
      cs_saveContext();
      return true;
    };
    cs_eventKnown(array, 1, open, nullptr);
    std::vector<int> lost;
    const auto note = [](CSint *, int index, int, CSint **, int, void *extra) {
      static_cast<std::vector<int> *>(extra)->push_back(index);
      return true;
    };
    cs_eventNeq(array + 1, 4, note, &lost);
    ASSERT_TRUE(cs_EQ(array[0], 2));
    EXPECT_EQ(lost, (std::vector{0, 1, 2, 3}));
    for (int i = 1; i < 5; ++i) EXPECT_FALSE(cs_isIn(array[i], 2)) << i;
    ASSERT_TRUE(cs_EQ(array[1], 5));
    EXPECT_FALSE(cs_EQ(array[2], 5));
  }
}

TEST_F(AllNeqTest, SpansBeyondTheIntRangeAreCountedInFull) {
  array[0] = cs_createCSint(INT_MIN, INT_MIN + 1);
  array[1] = cs_createCSint(INT_MAX - 1, INT_MAX);
  array[2] = cs_createCSint(INT_MIN, INT_MAX);
  ASSERT_EQ(cs_AllNeq(array, 3), 1);
  EXPECT_TRUE(cs_EQ(array[0], INT_MIN));
  EXPECT_EQ(cs_getMin(array[2]), INT_MIN + 1);
}

// A callback of the undo binds x while the restore is under way, which takes that back; x is then open again.
TEST_F(AllNeqTest, AVariableBoundWhileAContextIsRestoredIsOpenAfterwards) {
  for (const int count : {kFew, kMany}) {
    cs_end();
    cs_init();
    for (CSint *&v : array) v = cs_createCSint(0, 9);
    ASSERT_EQ(postPadded(count), 1);
    cs_saveContext();
    ASSERT_TRUE(cs_NEQ(array[0], 3));
    cs_backtrack(array[0], 2, [](CSint *x, int value) { EXPECT_TRUE(cs_EQ(x, value)); });
    cs_restoreContext();
    ASSERT_EQ(values(array[0]), range(0, 9));
    ASSERT_TRUE(cs_EQ(array[1], 2));
    EXPECT_EQ(values(array[0]), without(range(0, 9), 2));
  }
}

// A block of the trail or of the queue that is nearly full, while a search tries a value.
TEST_F(AllNeqTest, EliminatesWhereThereIsLittleRoom) {
  for (const int count : {kFew, kMany}) {
    for (int room = 1; room <= 130; ++room) {
      cs_end();
      cs_init();
      for (CSint *&v : array) v = cs_createCSint(0, 5);
      for (CSint *v : array) ASSERT_TRUE(cs_NEQ(v, 3));
      ASSERT_EQ(postPadded(count), 1);
      cs_saveContext();
      if (room % 2 == 0) solver::events.startWithRoom(room / 2);
      while (room % 2 == 1 && (solver::trail.count() + room / 2) % Trail::kCapacity != 0)
        cs_backtrack(nullptr, 0, nullptr);
      {
        const Trial trial(false);
        ASSERT_TRUE(cs_EQ(array[0], 2) && cs_EQ(array[1], 0));
      }
      for (int i = 2; i < 5; ++i) ASSERT_EQ(values(array[i]), (std::vector{1, 4, 5})) << room;
      cs_restoreContext();
      for (CSint *v : array) ASSERT_EQ(values(v), (std::vector{0, 1, 2, 4, 5})) << room;
    }
  }
}

TEST_F(AllNeqTest, EachFailingAllocationOfManyIsReportedOnceAndIsZero) {
  struct Operands {
    std::vector<CSint *> x;
  };
  const auto prepare = [] {
    Operands operands;
    for (int i = 0; i < kMany; ++i) operands.x.push_back(cs_createCSint(0, kMany));
    return operands;
  };
  // Site, two for the account of the open ones, record and entries.
  EXPECT_EQ(failEachAllocation(prepare, [](Operands &o) { return cs_AllNeq(o.x.data(), kMany) == 1; }), 4 + kMany);
}

// One problem with few variables and with many, on whose bound ones nothing depends: the same results, domains and
// searches. Domains of a word and wider ones, where contexts come and go.
class AllNeqSizeTest : public AllNeqTest {
 protected:
  // What the steps came to, written down.
  std::vector<int> run(unsigned seed, int count) {
    cs_end();
    cs_init();
    std::mt19937 random(seed);
    const int width = seed % 3 == 0 ? 70 : 6;
    const int step = width / 6;
    for (CSint *&v : array) v = cs_createCSint(0, width);
    if (seed % 5 == 0) array[3] = array[1];
    std::vector<int> seen{postPadded(count)};
    const auto see = [&] {
      for (CSint *v : array)
        for (const int value : values(v)) seen.push_back(value);
    };
    int open = 0;
    for (int i = 0; i < 25; ++i) {
      CSint *v = array[random() % 5];
      const int value = static_cast<int>(random() % 7) * step;
      switch (random() % 6) {
        case 0:
          open = cs_saveContext();
          break;
        case 1:
          cs_restoreContext();
          open -= open > 0 ? 1 : 0;
          break;
        case 2:
          seen.push_back(open > 0 ? cs_EQ(v, value) : -1);
          break;
        default:
          seen.push_back(open > 0 ? cs_NEQ(v, value) : -1);
      }
      if (seen.back() == 0) cs_restoreAll(), open = 0;
      see();
    }
    cs_restoreAll();
    for (CSint *v : array)
      for (int value = 0; value <= width; ++value)
        if (value % step != 0 || value > 5 * step) cs_NEQ(v, value);
    solutions = 0;
    cs_findAll(array, 5, cs_findFreeVarNbElements, [](CSint **, int) { ++solutions; });
    for (const int end : {solutions, cs_getNbFails(), cs_getNbChoicePoints()}) seen.push_back(end);
    return seen;
  }
  static inline int solutions = 0;
};

TEST_F(AllNeqSizeTest, FewAndManyComeToTheSame) {
  int found = 0;
  for (unsigned seed = 0; seed < 300; ++seed) {
    // Both with variables that are far off: the span is wide enough in either.
    ASSERT_EQ(run(seed, 16), run(seed, 17)) << seed;
    found += solutions;
  }
  EXPECT_GT(found, 10000);
}

}  // namespace
