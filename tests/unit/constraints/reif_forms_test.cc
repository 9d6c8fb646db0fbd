// SPDX-License-Identifier: MIT
// What the six reified comparisons of two variables have in common: refusals, failing allocations and detaching.
#include "support/constraints/reified_forms.h"
#include "unit/constraints/reif_slots.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::reif;

class ReifFormsTest : public SolverTest, public ::testing::WithParamInterface<Form> {};

INSTANTIATE_TEST_SUITE_P(, ReifFormsTest, ::testing::Values(kEq, kNeq, kLt, kLe, kGt, kGe), formName<Form>);

TEST_P(ReifFormsTest, ANullVariableGivesNullAndPostsNothing) {
  CSint *x = cs_createCSint(0, 3);
  EXPECT_EQ(GetParam().post(x, nullptr), nullptr);
  EXPECT_EQ(GetParam().post(nullptr, x), nullptr);
  EXPECT_EQ(GetParam().post(nullptr, nullptr), nullptr);
  EXPECT_EQ(cs_getNbConstraints(x), 0);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

// The site, then a record and an entry for b, a record and two entries for x and y.
TEST_P(ReifFormsTest, EachFailingAllocationIsReportedOnceAndGivesNull) {
  expectFailuresReported(
      6,
      [] {
        return Operands{cs_createCSint(0, 9), cs_createCSint(0, 9)};
      },
      [](Operands o) { return GetParam().post(o.x, o.y); });
}

TEST_P(ReifFormsTest, RestoringDetachesBothConstraints) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(0, 9);
  cs_saveContext();
  CSint *b = GetParam().post(x, y);
  ASSERT_TRUE(cs_EQ(b, 1));
  cs_restoreContext();
  EXPECT_EQ(values(b), kFree);
  EXPECT_EQ(x->constraints, nullptr);
  EXPECT_EQ(y->constraints, nullptr);
  EXPECT_EQ(b->constraints, nullptr);
  ASSERT_TRUE(cs_EQ(b, 0));
  EXPECT_EQ(values(x), range(0, 9));
  EXPECT_EQ(values(y), range(0, 9));
}

}  // namespace
