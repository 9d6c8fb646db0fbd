// SPDX-License-Identifier: MIT
// cs_ScalProd and cs_VScalProd: the result's domain, how they are posted, and their failures.
#include "support/kit/new_variables.h"

namespace {

using namespace koru;
using namespace koru::test;

class ScalProdTest : public SolverTest {
 protected:
  // s = 2x - 3y, x in 0..5, y in 0..4
  void makeExample() {
    v[0] = cs_createCSint(0, 5);
    v[1] = cs_createCSint(0, 4);
    s = cs_ScalProd(v, c, 2);
    ASSERT_NE(s, nullptr);
    expect({0, 5}, {0, 4}, {-12, 10});
  }
  void expect(Bounds2 ofX, Bounds2 ofY, Bounds2 ofS) {
    EXPECT_EQ(bounds(v[0]), ofX);
    EXPECT_EQ(bounds(v[1]), ofY);
    EXPECT_EQ(bounds(s), ofS);
  }

  CSint *v[3] = {};
  int c[3] = {2, -3, 0};
  CSint *s = nullptr;
};

// ----- posting

TEST_F(ScalProdTest, TheSumSpansTheTotals) {
  makeExample();
  EXPECT_EQ(s->bits, nullptr);
  EXPECT_EQ(cs_getNbElements(s), 23);
}

TEST_F(ScalProdTest, TheProductOfNothingIsZeroAndPostsNothing) {
  const int mark = solver::trail.count();
  s = cs_ScalProd(v, c, 0);
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(values(s), std::vector{0});
  EXPECT_EQ(cs_getNbConstraints(s), 0);
  EXPECT_NE(cs_ScalProd(nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(values(cs_VScalProd(0)), std::vector{0});
  EXPECT_EQ(solver::trail.count(), mark);
}

TEST_F(ScalProdTest, OneTermWithTheCoefficientOneGivesANewVariable) {
  v[0] = cs_createCSint(-2, 5);
  c[0] = 1;
  s = cs_ScalProd(v, c, 1);
  ASSERT_NE(s, nullptr);
  EXPECT_NE(s, v[0]);
  EXPECT_EQ(values(s), range(-2, 5));
  EXPECT_EQ(attachments(s), (Attached{{"cs_ScalProd", -1}}));
  EXPECT_EQ(attachments(v[0]), (Attached{{"cs_ScalProd", 0}}));
  ASSERT_TRUE(cs_GE(s, 1) && cs_LE(v[0], 3));
  EXPECT_EQ(bounds(v[0]), Bounds2(1, 3));
  EXPECT_EQ(bounds(s), Bounds2(1, 3));
  v[0] = cs_createCSint(-2, 5);
  EXPECT_NE(cs_VScalProd(1, v[0], 1), v[0]);
}

TEST_F(ScalProdTest, OneConstraintOnTheSumAndOneOnTheTermsShareTheSite) {
  for (CSint *&t : v) t = cs_createCSint(0, 3);
  const int mark = solver::trail.count();
  s = cs_ScalProd(v, c, 3);
  EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{s, v[0], v[1], v[2]}));
  EXPECT_EQ(solver::trail.count(), mark + 4) << "the host's arrays are not handed to the trail";
  EXPECT_EQ(attachments(s), (Attached{{"cs_ScalProd", -1}}));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(attachments(v[i]), (Attached{{"cs_ScalProd", i}}));
  EXPECT_NE(constraintOf(s), constraintOf(v[0]));
  EXPECT_EQ(constraintOf(v[0]), constraintOf(v[2]));
  EXPECT_EQ(siteOf(s), siteOf(v[0]));
  EXPECT_EQ(siteOf(s)->references, 2);
  EXPECT_EQ(busySlots(s), "01234");
  EXPECT_EQ(busySlots(v[0]), "01234");
}

TEST_F(ScalProdTest, OneVariableAtTwoPositionsIsAttachedTwice) {
  CSint *x = cs_createCSint(0, 3);
  CSint *twice[] = {x, x};
  s = cs_ScalProd(twice, c, 2);
  EXPECT_EQ(attachments(x), (Attached{{"cs_ScalProd", 1}, {"cs_ScalProd", 0}}));
  EXPECT_EQ(bounds(s), Bounds2(-9, 6));
}

TEST_F(ScalProdTest, ANullTermOrArrayGivesNullAndPostsNothing) {
  CSint *x = cs_createCSint(0, 3);
  CSint *none = nullptr;
  CSint *array[] = {x, none};
  EXPECT_EQ(cs_ScalProd(array, c, 2), nullptr);
  EXPECT_EQ(cs_ScalProd(nullptr, c, 2), nullptr);
  EXPECT_EQ(cs_ScalProd(array, nullptr, 1), nullptr);
  EXPECT_EQ(cs_VScalProd(2, x, none, 1, 1), nullptr);
  EXPECT_EQ(cs_VScalProd(2, none, x, 1, 1), nullptr);
  EXPECT_EQ(cs_getNbConstraints(x), 0);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(ScalProdTest, NothingIsNarrowedAtPosting) {
  v[0] = fromValues({0, 5});
  s = cs_ScalProd(v, c, 1);
  EXPECT_EQ(values(v[0]), (std::vector{0, 5}));
  EXPECT_EQ(values(s), range(0, 10));
}

TEST_F(ScalProdTest, AZeroCoefficientMakesItsTermInert) {
  for (CSint *&t : v) t = cs_createCSint(0, 3);
  s = cs_ScalProd(v, c, 3);
  ASSERT_EQ(attachments(v[2]), (Attached{{"cs_ScalProd", 2}}));
  ASSERT_TRUE(cs_EQ(s, 0) && cs_GE(v[0], 1));
  EXPECT_EQ(bounds(v[2]), Bounds2(0, 3));
  ASSERT_TRUE(cs_EQ(v[2], 1));
  EXPECT_EQ(bounds(v[0]), Bounds2(3, 3));
  EXPECT_EQ(bounds(v[1]), Bounds2(2, 2));
}

TEST_F(ScalProdTest, TheVariadicFormPostsTheSameUnderItsOwnName) {
  CSint *x = cs_createCSint(0, 5);
  CSint *y = cs_createCSint(0, 4);
  const int mark = solver::trail.count();
  s = cs_VScalProd(2, x, y, 2, -3);
  EXPECT_EQ(bounds(s), Bounds2(-12, 10));
  EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{s, x, y}));
  EXPECT_EQ(attachments(s), (Attached{{"cs_VScalProd", -1}}));
  EXPECT_EQ(attachments(x), (Attached{{"cs_VScalProd", 0}}));
  EXPECT_EQ(attachments(y), (Attached{{"cs_VScalProd", 1}}));
  EXPECT_EQ(siteOf(s), siteOf(y));
  EXPECT_EQ(siteOf(s)->references, 2);
}

TEST_F(ScalProdTest, TheVariadicFormHandsBothCopiesToTheTrailBeforeTheAttachments) {
  CSint *x = cs_createCSint(0, 5);
  const int mark = solver::trail.count();
  cs_VScalProd(2, x, x, 2, -3);
  std::vector<TrailKind> kinds;
  int at = 0;
  solver::trail.forEach([&](const TrailRecord &record) {
    if (at++ >= mark) kinds.push_back(record.kind());
  });
  EXPECT_EQ(kinds, (std::vector{TrailKind::kBuffer, TrailKind::kBuffer, TrailKind::kAttached, TrailKind::kAttached,
                                TrailKind::kAttached}));
}

TEST_F(ScalProdTest, TheCopiesOutliveAnAcceptedChoicePoint) {
  CSint *x = cs_createCSint(0, 5);
  CSint *y = cs_createCSint(0, 4);
  cs_saveContext();
  s = cs_VScalProd(2, x, y, 2, -3);
  cs_acceptContext();
  ASSERT_TRUE(cs_GE(s, 8));
  EXPECT_EQ(bounds(x), Bounds2(4, 5));
}

TEST_F(ScalProdTest, TheCopiesGoWithARestoredChoicePoint) {
  CSint *x = cs_createCSint(0, 5);
  cs_saveContext();
  cs_VScalProd(2, x, x, 2, -3);
  cs_restoreContext();
  EXPECT_EQ(trailRecords(TrailKind::kBuffer), 0);
  EXPECT_EQ(x->constraints, nullptr);
}

// ----- 64-bit overflow

struct OverflowReport {
  int count = 0;
  CSint *variable = nullptr;
};
void noteOverflow(CSint *vint, void *extra) {
  auto *report = static_cast<OverflowReport *>(extra);
  ++report->count;
  report->variable = vint;
}

TEST_F(ScalProdTest, TotalsBeyond64BitsAreReportedAndPostNothing) {
  OverflowReport report{0, cs_createCSint(0, 1)};
  cs_setErrHandler(CS_ERR_OVERFLOW, noteOverflow, &report);
  CSint *x = cs_createCSint(INT_MIN, INT_MAX);
  CSint *terms[] = {x, x, x};
  int coefficients[] = {INT_MIN, INT_MIN, INT_MIN};
  const int mark = solver::trail.count();
  EXPECT_EQ(cs_ScalProd(terms, coefficients, 3), nullptr);
  EXPECT_EQ(report.count, 1);
  EXPECT_EQ(report.variable, nullptr);
  EXPECT_EQ(cs_getErr(), CS_ERR_OVERFLOW);
  EXPECT_EQ(CS_ERR_OVERFLOW, -2);
  EXPECT_EQ(solver::trail.count(), mark);
  EXPECT_EQ(cs_getNbConstraints(x), 0);
  EXPECT_EQ(memoryReports, 0);

  cs_initErr();
  EXPECT_EQ(cs_VScalProd(3, x, x, x, INT_MIN, INT_MIN, INT_MIN), nullptr);
  EXPECT_EQ(report.count, 2);
  EXPECT_EQ(cs_getErr(), CS_ERR_OVERFLOW);
  EXPECT_EQ(cs_getNbConstraints(x), 0);
}

TEST_F(ScalProdTest, TheDefaultOverflowHandlerDoesNothing) {
  CSint *x = cs_createCSint(INT_MIN, INT_MAX);
  EXPECT_EQ(cs_VScalProd(3, x, x, x, INT_MIN, INT_MIN, INT_MIN), nullptr);
  EXPECT_EQ(cs_getErr(), CS_ERR_OVERFLOW);
}

// ----- memory

TEST_F(ScalProdTest, EachFailedAllocationIsReportedOnceAndLeavesTheSolverUsable) {
  static int coefficients[] = {2, -3, 1};
  const auto make = [] { return threeOf(0, 9); };
  // Site, two constraints and an entry for the sum and for each term; the variadic form also its two arrays.
  expectAllocations(
      make, [](Posted &o) { return cs_ScalProd(o.x, coefficients, 3) != nullptr; }, 7);
  expectAllocations(
      make, [](Posted &o) { return cs_VScalProd(2, o.x[0], o.x[1], 2, -3) != nullptr; }, 8);
  EXPECT_EQ(failEachAllocation(make, [](Posted &o) { return cs_ScalProd(o.x, coefficients, 0) != nullptr; }), 0);
}

}  // namespace
