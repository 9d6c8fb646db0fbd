// SPDX-License-Identifier: MIT
// cs_Element: the value's domain, how it is posted, and what each event of index and value passes to the other.
#include "support/kit/batch.h"
#include "support/kit/new_variables.h"

namespace {

using namespace koru;
using namespace koru::test;

class ElementTest : public SolverTest {
 protected:
  // value = {5, 3, 8, 3, 9, 1}[index]
  void post() {
    index = cs_createCSint(0, 5);
    value = cs_Element(index, table.data(), 6);
    ASSERT_NE(value, nullptr);
    expect(range(0, 5), {1, 3, 5, 8, 9});
  }
  void expect(const std::vector<int> &positions, const std::vector<int> &held) const {
    EXPECT_EQ(values(index), positions);
    EXPECT_EQ(values(value), held);
  }

  std::vector<int> table{5, 3, 8, 3, 9, 1};
  CSint *index = nullptr;
  CSint *value = nullptr;
};

TEST_F(ElementTest, NoElementGivesNullAndChangesNothing) {
  index = cs_createCSint(-3, 3);
  EXPECT_EQ(cs_Element(index, table.data(), 0), nullptr);
  EXPECT_EQ(cs_Element(nullptr, table.data(), 6), nullptr);
  EXPECT_EQ(cs_Element(index, nullptr, 6), nullptr);
  EXPECT_EQ(values(index), range(-3, 3));
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

// Deliberate: a negative size is found out when the index is narrowed to the array.
TEST_F(ElementTest, ANegativeSizeFailsAfterTheIndexHasLostItsNegatives) {
  for (const int n : {-1, -3, INT_MIN}) {
    index = cs_createCSint(-3, 3);
    EXPECT_EQ(cs_Element(index, table.data(), n), nullptr);
    EXPECT_EQ(values(index), range(0, 3));
    EXPECT_EQ(cs_getNbConstraints(index), 0);
  }
}

TEST_F(ElementTest, AnIndexOutsideTheArrayFails) {
  EXPECT_EQ(cs_Element(cs_createCSint(-4, -1), table.data(), 6), nullptr);
  EXPECT_EQ(cs_Element(cs_createCSint(6, 9), table.data(), 6), nullptr);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(ElementTest, TheIndexIsNarrowedToTheArrayAndTheValueHoldsWhatItReaches) {
  index = cs_createCSint(-2, 9);
  ASSERT_TRUE(cs_NEQ(index, 4));
  value = cs_Element(index, table.data(), 6);
  expect({0, 1, 2, 3, 5}, {1, 3, 5, 8});
  EXPECT_EQ(cs_getNbElements(value), 4);
}

TEST_F(ElementTest, ABoundIndexMakesAConstantThatIsPostedAllTheSame) {
  index = CSINT(4);
  value = cs_Element(index, table.data(), 6);
  expect({4}, {9});
  EXPECT_EQ(cs_getNbConstraints(index), 1);
}

TEST_F(ElementTest, IsAttachedToIndexAndValueWithoutPositions) {
  const int mark = solver::trail.count();
  post();
  EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{index, value}));
  for (CSint *v : {index, value}) {
    EXPECT_EQ(attachments(v), (Attached{{"cs_Element", -1}}));
    EXPECT_EQ(busySlots(v), "012345");
  }
  EXPECT_EQ(constraintOf(index), constraintOf(value));
}

struct EventRow {
  const char *name;
  bool (*narrow)(CSint *, int);
  int bound;
  std::vector<int> positions;
  std::vector<int> held;
};

void PrintTo(const EventRow &row, std::ostream *out) { *out << row.name; }

class ElementIndexEvent : public ElementTest, public ::testing::WithParamInterface<EventRow> {};
class ElementValueEvent : public ElementTest, public ::testing::WithParamInterface<EventRow> {};

TEST_P(ElementIndexEvent, TakesFromTheValueWhatHasNoPositionLeft) {
  post();
  ASSERT_TRUE(GetParam().narrow(index, GetParam().bound));
  expect(GetParam().positions, GetParam().held);
}

INSTANTIATE_TEST_SUITE_P(
    , ElementIndexEvent,
    ::testing::Values(EventRow{"minimum raised", cs_GE, 2, {2, 3, 4, 5}, {1, 3, 8, 9}},
                      EventRow{"minimum raised past a repeated value", cs_GE, 4, {4, 5}, {1, 9}},
                      EventRow{"maximum lowered", cs_LE, 3, {0, 1, 2, 3}, {3, 5, 8}},
                      EventRow{"bound by the minimum", cs_GE, 5, {5}, {1}},
                      EventRow{"bound by the maximum", cs_LE, 0, {0}, {5}},
                      EventRow{"bound inside", cs_EQ, 3, {3}, {3}},
                      EventRow{"inner position removed", cs_NEQ, 2, {0, 1, 3, 4, 5}, {1, 3, 5, 9}},
                      EventRow{"one of two positions removed", cs_NEQ, 1, {0, 2, 3, 4, 5}, {1, 3, 5, 8, 9}}));

TEST_P(ElementValueEvent, TakesFromTheIndexThePositionsOfWhatIsGone) {
  post();
  ASSERT_TRUE(GetParam().narrow(value, GetParam().bound));
  expect(GetParam().positions, GetParam().held);
}

INSTANTIATE_TEST_SUITE_P(, ElementValueEvent,
                         ::testing::Values(EventRow{"minimum raised", cs_GE, 4, {0, 2, 4}, {5, 8, 9}},
                                           EventRow{"maximum lowered", cs_LE, 5, {0, 1, 3, 5}, {1, 3, 5}},
                                           EventRow{"bound by the minimum", cs_GE, 9, {4}, {9}},
                                           EventRow{"bound by the maximum", cs_LE, 1, {5}, {1}},
                                           EventRow{"bound inside", cs_EQ, 8, {2}, {8}},
                                           EventRow{"bound to a repeated value", cs_EQ, 3, {1, 3}, {3}},
                                           EventRow{"inner value removed", cs_NEQ, 5, {1, 2, 3, 4, 5}, {1, 3, 8, 9}},
                                           EventRow{"repeated value removed", cs_NEQ, 3, {0, 2, 4, 5}, {1, 5, 8, 9}}));

TEST_F(ElementTest, ARepeatedValueGoesWithTheLastOfItsPositions) {
  post();
  ASSERT_TRUE(cs_NEQ(index, 3));
  expect({0, 1, 2, 4, 5}, {1, 3, 5, 8, 9});
  ASSERT_TRUE(cs_NEQ(index, 1));
  expect({0, 2, 4, 5}, {1, 5, 8, 9});
}

// By value upwards: positions 5 (the index's maximum), 1 and 3, then nothing: 5 itself is not below the bound.
TEST_F(ElementTest, ARaisedValueTakesPositionsInTheOrderOfTheirValues) {
  post();
  const CallLog log;
  ASSERT_TRUE(cs_GE(value, 4));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, value, 0, "cs_Element"},
                                          {true, index, 1, "cs_Element"},
                                          {true, index, 5, "cs_Element"},
                                          {true, index, 5, "cs_Element"}}));
}

// By value downwards: position 4 goes before position 2, which is the lower one.
TEST_F(ElementTest, ALoweredValueTakesPositionsFromTheLargestValueDown) {
  post();
  ASSERT_TRUE(cs_LE(index, 4));
  const CallLog log;
  ASSERT_TRUE(cs_LE(value, 5));
  EXPECT_EQ(log.calls,
            (std::vector<Call>{
                {true, value, 1, "cs_Element"}, {true, index, 1, "cs_Element"}, {true, index, 5, "cs_Element"}}));
  expect({0, 1, 3}, {3, 5});
}

TEST_F(ElementTest, ValueBoundToAValueThatStandsOnceBindsTheIndex) {
  post();
  const CallLog log;
  ASSERT_TRUE(cs_EQ(value, 8));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, value, 4, "cs_Element"}, {true, index, 4, "cs_Element"}}));
}

// The others go in the order of their positions 0, 2, 4 and 5. The removal of 4 is stale when its turn comes.
TEST_F(ElementTest, ValueBoundToARepeatedValueTakesTheOthersInArrayOrder) {
  post();
  const CallLog log;
  ASSERT_TRUE(cs_EQ(value, 3));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, value, 4, "cs_Element"},
                                          {true, index, 0, "cs_Element"},
                                          {true, index, 5, "cs_Element"},
                                          {true, index, 1, "cs_Element"}}));
}

TEST_F(ElementTest, ARestoredContextGivesBackPositionsAndValues) {
  post();
  for (int round = 0; round < 2; ++round) {
    cs_saveContext();
    ASSERT_TRUE(cs_GE(value, 4));
    cs_saveContext();
    ASSERT_TRUE(cs_LE(value, 8));
    expect({0, 2}, {5, 8});
    cs_restoreContext();
    expect({0, 2, 4}, {5, 8, 9});
    ASSERT_TRUE(cs_GE(value, 8));
    expect({2, 4}, {8, 9});
    cs_restoreContext();
    expect(range(0, 5), {1, 3, 5, 8, 9});
  }
}

// Only what the index reaches makes the value's range; the table may hold values from end to end of the ints.
TEST_F(ElementTest, ValuesFarApartAreComparedSafely) {
  table = {INT_MAX, 5, INT_MIN, 6, -7, 5};
  index = cs_createCSint(0, 5);
  ASSERT_TRUE(cs_NEQ(index, 2) && cs_NEQ(index, 0));
  value = cs_Element(index, table.data(), 6);
  expect({1, 3, 4, 5}, {-7, 5, 6});
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(value, 5));
  EXPECT_EQ(values(index), (std::vector{1, 5}));
  cs_restoreContext();
  ASSERT_TRUE(cs_NEQ(value, 5));
  EXPECT_EQ(values(index), (std::vector{3, 4}));
}

// Deliberate: the removal of position 1 is stale when it is heard, since the minimum has moved past it, and the raised
// minimum passes over it as a hole. So 20 keeps no support, until somebody wants it.
TEST_F(ElementTest, ARemovalThatABoundHasPassedLeavesAValueWithoutSupport) {
  table = {10, 20, 30, 40};
  index = cs_createCSint(0, 3);
  value = cs_Element(index, table.data(), 4);
  ASSERT_TRUE(together([this] { return cs_NEQ(index, 1) && cs_GE(index, 2); }));
  expect({2, 3}, {20, 30, 40});
  cs_saveContext();
  EXPECT_FALSE(cs_EQ(value, 20));
  cs_restoreContext();
  EXPECT_TRUE(cs_EQ(value, 40));
  expect({3}, {40});
}

// The same with two raises is heard in full: the first is stale, but the second tells of both.
TEST_F(ElementTest, ARaiseThatIsOvertakenByAnotherIsHeardInFull) {
  post();
  ASSERT_TRUE(together([this] { return cs_GE(index, 1) && cs_GE(index, 3); }));
  expect({3, 4, 5}, {1, 3, 9});
}

// What a moved bound asks of the other variable has become impossible meanwhile: it fails there, and not when the other
// one is heard.
TEST_F(ElementTest, FailsAtTheFirstChangeThatIsHeard) {
  struct Row {
    bool (*narrow)(CSint *, int);
    int bound;
    int other;  // what the other variable is bound to
    int code;
  };
  table = {1, 2, 3};
  index = cs_createCSint(0, 2);
  value = cs_Element(index, table.data(), 3);
  const auto expectFirst = [](CSint *v, const Row &row, CSint *other) {
    cs_saveContext();
    {
      const CallLog log;
      EXPECT_FALSE(together([&] { return row.narrow(v, row.bound) && cs_EQ(other, row.other); }));
      EXPECT_EQ(log.calls.back(), (Call{false, v, row.code, "cs_Element"}));
    }
    cs_restoreContext();
  };
  expectFirst(index, {cs_LE, 1, 3, 1}, value);
  expectFirst(index, {cs_GE, 1, 1, 0}, value);
  expectFirst(value, {cs_LE, 2, 2, 1}, index);
  expectFirst(value, {cs_GE, 2, 0, 0}, index);
}

// An inner context that is accepted leaves the constraint attached, an outer one that is restored widens the index past
// the array.
class ElementOutsideTest : public ElementTest {
 protected:
  void SetUp() override {
    ElementTest::SetUp();
    index = cs_createCSint(-5, 9);
    cs_saveContext();
    ASSERT_TRUE(cs_GE(index, -2) && cs_LE(index, 5));
    cs_saveContext();
    value = cs_Element(index, &around[1], 3);
    ASSERT_NE(value, nullptr);
    cs_acceptContext();
    cs_restoreContext();
    ASSERT_EQ(bounds(index), Bounds2(-5, 9));
    ASSERT_EQ(attachments(index), (Attached{{"cs_Element", -1}}));
  }

  // The array is the three in the middle; the others would be taken for elements.
  const int around[5] = {20, 10, 20, 10, 20};
};

TEST_F(ElementOutsideTest, AnIndexBoundOutsideTheArrayFails) {
  for (const int position : {-5, -1, 3, 9}) {
    cs_saveContext();
    EXPECT_FALSE(cs_EQ(index, position));
    cs_restoreContext();
  }
  EXPECT_TRUE(cs_EQ(index, 1));
  EXPECT_EQ(values(value), std::vector{20});
}

TEST_F(ElementOutsideTest, PositionsOutsideTheArrayThatGoTakeNoValue) {
  ASSERT_TRUE(cs_NEQ(index, -3) && cs_NEQ(index, 7) && cs_GE(index, -1) && cs_LE(index, 6));
  EXPECT_EQ(values(value), (std::vector{10, 20}));
  ASSERT_TRUE(cs_GE(index, 1) && cs_LE(index, 1));
  EXPECT_EQ(values(value), std::vector{20});
}

TEST_F(ElementOutsideTest, AValueThatLeavesSeveralPositionsTakesThoseOutsideTheArray) {
  ASSERT_TRUE(cs_EQ(value, 10));
  EXPECT_EQ(values(index), (std::vector{0, 2}));
}

}  // namespace
