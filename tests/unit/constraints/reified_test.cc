// SPDX-License-Identifier: MIT
// Comparisons and membership tied to a truth value that the host has already: what is attached, memory, bad arguments,
// the ends of the int range, and states that nobody restored.
#include <climits>

#include "core/trail.h"
#include "koru_extras.h"
#include "support/kit/batch.h"
#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;

constexpr int kValues[] = {2, 4};

struct Form {
  const char *name;
  bool full;
  bool (*post)(CSint *b, CSint *x, CSint *y);
  int x, y;    // where the statement holds
  int x2, y2;  // where it does not
};

void PrintTo(const Form &form, std::ostream *out) { *out << form.name; }

#define KORU_PAIR(name, ...) \
  {"cs_" #name "Iff", true, cs_##name##Iff, __VA_ARGS__}, { "cs_" #name "If", false, cs_##name##If, __VA_ARGS__ }
#define KORU_INT(name, v, ...)                                                                                   \
  {"cs_" #name "Iff", true, [](CSint *b, CSint *x, CSint *) { return cs_##name##Iff(b, x, v); }, __VA_ARGS__}, { \
    "cs_" #name "If", false, [](CSint *b, CSint *x, CSint *) { return cs_##name##If(b, x, v); }, __VA_ARGS__     \
  }
#define KORU_SET(name, ...)                                                                                           \
  {"cs_" #name "Iff", true, [](CSint *b, CSint *x, CSint *) { return cs_##name##Iff(b, x, __VA_ARGS__); }, 2, 0, 5, 0}, {                                       \
    "cs_" #name "If", false, [](CSint *b, CSint *x, CSint *) { return cs_##name##If(b, x, __VA_ARGS__); }, 2, 0, 5, 0 \
  }
#define KORU_NOT(name, ...)                                                                                           \
  {"cs_" #name "Iff", true, [](CSint *b, CSint *x, CSint *) { return cs_##name##Iff(b, x, __VA_ARGS__); }, 5, 0, 2, 0}, {                                       \
    "cs_" #name "If", false, [](CSint *b, CSint *x, CSint *) { return cs_##name##If(b, x, __VA_ARGS__); }, 5, 0, 2, 0 \
  }

constexpr Form kForms[] = {KORU_PAIR(Eq, 3, 3, 3, 4),     KORU_PAIR(Neq, 3, 4, 3, 3),       KORU_PAIR(Le, 3, 3, 4, 3),
                           KORU_PAIR(Lt, 3, 4, 3, 3),     KORU_PAIR(Ge, 3, 3, 3, 4),        KORU_PAIR(Gt, 4, 3, 3, 3),
                           KORU_INT(EQ, 3, 3, 0, 4, 0),   KORU_INT(NEQ, 3, 4, 0, 3, 0),     KORU_INT(LE, 3, 3, 0, 4, 0),
                           KORU_INT(LT, 3, 2, 0, 3, 0),   KORU_INT(GE, 3, 3, 0, 2, 0),      KORU_INT(GT, 3, 4, 0, 3, 0),
                           KORU_SET(InArray, kValues, 2), KORU_NOT(NotInArray, kValues, 2), KORU_SET(InInterval, 2, 4),
                           KORU_NOT(NotInInterval, 2, 4)};

class ReifiedTest : public SolverTest, public ::testing::WithParamInterface<Form> {
 protected:
  CSint *b = nullptr;
  CSint *x = nullptr;
  CSint *y = nullptr;

  void SetUp() override {
    SolverTest::SetUp();
    b = cs_createCSint(0, 1);
    x = cs_createCSint(0, 9);
    y = cs_createCSint(0, 9);
  }
  bool bindTo(int first, int second) { return cs_EQ(x, first) && cs_EQ(y, second); }
};

INSTANTIATE_TEST_SUITE_P(, ReifiedTest, ::testing::ValuesIn(kForms),
                         [](const auto &row) { return std::string(row.param.name); });

TEST_P(ReifiedTest, OneConstraintUnderItsOwnNameIsAttachedToXAndB) {
  ASSERT_TRUE(GetParam().post(b, x, y));
  ASSERT_EQ(attachments(x).size(), 1U);
  EXPECT_EQ(attachments(x).front().first, GetParam().name);
  EXPECT_EQ(attachments(b), (std::vector<std::pair<std::string, int>>{{GetParam().name, 2}}));
  EXPECT_EQ(x->constraints->constraint, b->constraints->constraint);
  EXPECT_EQ(values(b), range(0, 1));
  EXPECT_EQ(values(x), range(0, 9));
}

TEST_P(ReifiedTest, WhatIsComparedDecidesB) {
  ASSERT_TRUE(GetParam().post(b, x, y));
  cs_saveContext();
  ASSERT_TRUE(bindTo(GetParam().x, GetParam().y));
  EXPECT_EQ(values(b), GetParam().full ? range(1, 1) : range(0, 1));
  cs_restoreContext();
  ASSERT_TRUE(bindTo(GetParam().x2, GetParam().y2));
  EXPECT_EQ(values(b), range(0, 0));
}

TEST_P(ReifiedTest, BDecidesWhatIsCompared) {
  ASSERT_TRUE(GetParam().post(b, x, y));
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(b, 1));
  EXPECT_FALSE(bindTo(GetParam().x2, GetParam().y2));
  cs_restoreContext();
  ASSERT_TRUE(cs_EQ(b, 0));
  EXPECT_EQ(bindTo(GetParam().x, GetParam().y), !GetParam().full);
}

TEST_P(ReifiedTest, NullVariablesAreRefusedAndPostNothing) {
  EXPECT_FALSE(GetParam().post(nullptr, x, y));
  EXPECT_FALSE(GetParam().post(b, nullptr, y));
  EXPECT_EQ(cs_getNbConstraints(b) + cs_getNbConstraints(x) + cs_getNbConstraints(y), 0);
  cs_end();
  EXPECT_FALSE(GetParam().post(b, x, y));
}

TEST_P(ReifiedTest, EachFailingAllocationIsReportedOnceAndIsFalse) {
  struct Operands {
    CSint *b, *x, *y;
  };
  const auto make = [] { return Operands{cs_createCSint(0, 1), cs_createCSint(0, 9), cs_createCSint(0, 9)}; };
  const auto post = [](Operands &o) { return GetParam().post(o.b, o.x, o.y); };
  EXPECT_GE(failEachAllocation(make, post), 4);
  for (const int outcome : {0, 1})
    failEachAllocation(
        [&] {
          const Operands o = make();
          cs_EQ(o.b, outcome);
          cs_EQ(o.y, 4);
          return o;
        },
        post);
}

TEST_P(ReifiedTest, HoldsWhenItWasAcceptedAndWhatWasBeforeItRestored) {
  cs_saveContext();
  ASSERT_TRUE(bindTo(GetParam().x, GetParam().y) && cs_EQ(b, 1));
  cs_saveContext();
  EXPECT_TRUE(GetParam().post(b, x, y));
  cs_acceptContext();
  cs_restoreContext();
  EXPECT_EQ(values(x), range(0, 9));
  EXPECT_EQ(values(b), range(0, 1));
  EXPECT_FALSE(cs_EQ(b, 1) && bindTo(GetParam().x2, GetParam().y2));
}

// The event of b is lost with the propagation that fails.
TEST_P(ReifiedTest, HoldsInAStateThatFailedAndWasNotRestored) {
  ASSERT_TRUE(GetParam().post(b, x, y));
  EXPECT_FALSE(together([&] {
    cs_EQ(b, 1);
    return false;
  }));
  EXPECT_FALSE(bindTo(GetParam().x2, GetParam().y2));
}

using ReifiedEndsTest = SolverTest;

TEST_F(ReifiedEndsTest, NothingIsBeyondTheEndsOfTheIntRange) {
  CSint *x = cs_createCSint(INT_MIN, INT_MAX);
  CSint *b[6];
  for (CSint *&each : b) each = cs_createCSint(0, 1);
  ASSERT_TRUE(cs_LTIff(b[0], x, INT_MIN) && cs_GTIff(b[1], x, INT_MAX) && cs_GEIff(b[2], x, INT_MIN));
  ASSERT_TRUE(cs_LEIff(b[3], x, INT_MAX) && cs_InIntervalIff(b[4], x, INT_MIN, INT_MAX));
  ASSERT_TRUE(cs_InIntervalIff(b[5], x, INT_MAX, INT_MIN));
  const int wanted[] = {0, 0, 1, 1, 1, 0};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(values(b[i]), range(wanted[i], wanted[i])) << i;
}

TEST_F(ReifiedEndsTest, AVariableOverAllIntsIsCompared) {
  CSint *x = cs_createCSint(INT_MIN, INT_MAX);
  CSint *y = cs_createCSint(INT_MIN, INT_MAX);
  CSint *b[5];
  for (CSint *&each : b) each = cs_createCSint(0, 1);
  const int ends[] = {INT_MIN, INT_MAX};
  ASSERT_TRUE(cs_EqIff(b[0], x, y) && cs_LtIff(b[1], x, y) && cs_InArrayIff(b[2], x, ends, 2));
  ASSERT_TRUE(cs_EQIff(b[3], x, INT_MAX) && cs_InIntervalIff(b[4], x, INT_MAX, INT_MAX));
  for (CSint *each : b) EXPECT_TRUE(cs_isFree(each));
  ASSERT_TRUE(cs_EQ(x, INT_MAX));
  const int wanted[] = {-1, 0, 1, 1, 1};
  for (int i = 1; i < 5; ++i) EXPECT_EQ(values(b[i]), range(wanted[i], wanted[i])) << i;
  ASSERT_TRUE(cs_EQ(b[0], 1));
  EXPECT_EQ(values(y), (std::vector<int>{INT_MAX}));
}

TEST_F(ReifiedEndsTest, OnlyWhatLiesBetweenTheValuesGoesOneByOne) {
  const int ends[] = {INT_MIN, 7, 9, INT_MAX};
  CSint *x = cs_createCSint(0, 1000000);
  const int before = solver::trail.count();
  ASSERT_TRUE(cs_InArrayIf(CSINT(1), x, ends, 4));
  EXPECT_EQ(values(x), (std::vector{7, 9}));
  EXPECT_LT(solver::trail.count(), before + 10);
  CSint *y = cs_createCSint(0, 1000000);
  const int none[] = {INT_MIN, -1, INT_MAX};
  EXPECT_FALSE(cs_InArrayIf(CSINT(1), y, none, 3));
  EXPECT_EQ(cs_getMax(y), 1000000);
}

TEST_F(ReifiedEndsTest, ABadArrayIsRefused) {
  CSint *x = cs_createCSint(0, 9);
  CSint *b = cs_createCSint(0, 1);
  for (const auto post : {cs_InArrayIff, cs_InArrayIf, cs_NotInArrayIff, cs_NotInArrayIf}) {
    EXPECT_FALSE(post(b, x, nullptr, 1));
    EXPECT_FALSE(post(b, x, kValues, -1));
    EXPECT_FALSE(post(b, x, kValues, INT_MIN));
  }
  EXPECT_EQ(cs_getNbConstraints(b), 0);
  EXPECT_TRUE(cs_InArrayIf(b, x, nullptr, 0));
  EXPECT_EQ(values(b), range(0, 0));
}

TEST_F(ReifiedEndsTest, ATruthValueOfMoreThanTwoValuesIsTrueFrom1On) {
  CSint *x = cs_createCSint(0, 9);
  CSint *b = cs_createCSint(-3, 3);
  ASSERT_TRUE(cs_LEIff(b, x, 4));
  cs_saveContext();
  ASSERT_TRUE(cs_LE(x, 4));
  EXPECT_EQ(values(b), range(1, 3));
  cs_restoreContext();
  ASSERT_TRUE(cs_LE(b, 0));
  EXPECT_EQ(values(x), range(5, 9));
}

}  // namespace
