// SPDX-License-Identifier: MIT
#include "core/errors.h"

#include <cstdint>
#include <string>

#include "core/solver.h"
#include "support/kit/death.h"
#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"

namespace {

using namespace koru;
using namespace koru::test;

struct Told {
  CSint *variable;
  void *extra;
  int code;
  int calls;
};
Told told;

void tell(CSint *v, void *extra) { told = {v, extra, cs_getErr(), told.calls + 1}; }
void tellAlso(CSint *, void *) {}

class ErrorsTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    told = {};
  }
  int object = 0;
};

TEST_F(ErrorsTest, TheCodesAreTheFixedOnes) {
  EXPECT_EQ(CS_ERR_NONE, 0);
  EXPECT_EQ(CS_ERR_NOT_INSTANTIATED, -1);
  EXPECT_EQ(CS_ERR_OVERFLOW, -2);
  EXPECT_EQ(CS_ERR_MEMORY, -3);
}

TEST_F(ErrorsTest, SettingTheCodeReturnsItAndCallsNobody) {
  cs_setErrHandler(CS_ERR_NOT_INSTANTIATED, tell, nullptr);
  cs_setErrHandler(CS_ERR_OVERFLOW, tell, nullptr);
  cs_setErrHandler(CS_ERR_MEMORY, tell, nullptr);
  for (const int code : {-7, -1, -2, -3, 0, 12345}) {
    EXPECT_EQ(cs_setErr(code), code);
    EXPECT_EQ(cs_getErr(), code);
  }
  cs_initErr();
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
  EXPECT_EQ(told.calls, 0);
}

TEST_F(ErrorsTest, AReportSetsTheCodeBeforeItCallsTheHandlerWithItsExtra) {
  CSint *v = cs_createCSint(0, 9);
  EXPECT_EQ(cs_setErrHandler(CS_ERR_NOT_INSTANTIATED, tell, &object), &tell);
  reportNotInstantiated(v);
  EXPECT_EQ(told.variable, v);
  EXPECT_EQ(told.extra, &object);
  EXPECT_EQ(told.code, CS_ERR_NOT_INSTANTIATED);

  EXPECT_EQ(cs_setErrHandler(CS_ERR_OVERFLOW, tell, &told), &tell);
  reportOverflow();
  EXPECT_EQ(told.variable, nullptr);
  EXPECT_EQ(told.extra, &told);
  EXPECT_EQ(told.code, CS_ERR_OVERFLOW);

  EXPECT_EQ(cs_setErrHandler(CS_ERR_MEMORY, tell, this), &tell);
  reportMemoryExhausted();
  EXPECT_EQ(told.variable, nullptr);
  EXPECT_EQ(told.extra, this);
  EXPECT_EQ(told.code, CS_ERR_MEMORY);
  EXPECT_EQ(told.calls, 3);
}

TEST_F(ErrorsTest, ANullHandlerInstallsTheDefaultAndReturnsIt) {
  EXPECT_EQ(cs_setErrHandler(CS_ERR_NOT_INSTANTIATED, nullptr, &object), &printNotInstantiated);
  EXPECT_EQ(cs_setErrHandler(CS_ERR_OVERFLOW, nullptr, &object), &ignoreError);
  EXPECT_EQ(cs_setErrHandler(CS_ERR_MEMORY, nullptr, &object), &abortOnError);
  EXPECT_EQ(solver::errors.notInstantiated.extra, &object);
  EXPECT_EQ(solver::errors.overflow.extra, &object);
  EXPECT_EQ(solver::errors.memory.extra, &object);
}

TEST_F(ErrorsTest, ANullMemoryHandlerAborts) {
  cs_setErrHandler(CS_ERR_MEMORY, nullptr, &object);
  const AllocationRule none(refuseAll());
  EXPECT_EXIT(fromValues({1, 2}), kAborted, "^$") << "and prints nothing";
}

TEST_F(ErrorsTest, TheDefaultOverflowHandlerDoesNothingButTheCodeIsSet) {
  cs_setErrHandler(CS_ERR_OVERFLOW, nullptr, nullptr);
  testing::internal::CaptureStderr();
  reportOverflow();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(cs_getErr(), CS_ERR_OVERFLOW);
}

TEST_F(ErrorsTest, AnyOtherCodeChangesNothingAndIsReturned) {
  cs_setErrHandler(CS_ERR_OVERFLOW, tell, &object);
  for (const int code : {5, 0, 1, -4, kIntMax, kIntMin}) {
    EXPECT_EQ(reinterpret_cast<std::intptr_t>(cs_setErrHandler(code, tellAlso, this)), code);
  }
  EXPECT_EQ(solver::errors.overflow.call, &tell);
  EXPECT_EQ(solver::errors.overflow.extra, &object);
  EXPECT_EQ(solver::errors.notInstantiated.call, &printNotInstantiated);
}

TEST_F(ErrorsTest, TheDefaultHandlerPrintsTheVariableToTheStandardErrorStream) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(cs_getValue(cs_createNamedCSint(3, 7, "x")), 3);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "\nrcsInt not instantiated {3..7}");
  EXPECT_EQ(cs_getErr(), CS_ERR_NOT_INSTANTIATED);
}

TEST_F(ErrorsTest, TheDefaultHandlerPrintsNothingToTheStandardOutput) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  cs_getValue(fromValues({1, 5}));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "\nrcsInt not instantiated {1, 5}");
}

TEST_F(ErrorsTest, TheDefaultHandlerSetsTheCodeItself) {
  testing::internal::CaptureStderr();
  printNotInstantiated(cs_createCSint(0, 1), nullptr);
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(cs_getErr(), CS_ERR_NOT_INSTANTIATED);
}

TEST_F(ErrorsTest, InconsistencyNeverTouchesTheCode) {
  CSint *v = cs_createCSint(0, 9);
  EXPECT_FALSE(cs_EQ(v, 10));
  EXPECT_FALSE(cs_GE(v, 10));
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

}  // namespace
