// SPDX-License-Identifier: MIT
// What builds with KORU_LOGGING write: every kind of change and of event, and how variables are named.
#include "core/log.h"

#include <string>

#include "core/narrow.h"
#include "core/private_variable.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru;
using namespace koru::test;

class LogTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    x = cs_createNamedCSint(0, 9, "x");
    y = cs_createCSint(0, 9);
    z = cs_createNamedCSint(0, 9, "z");
  }
  // What `work` leads to on the standard error stream.
  template <class Work>
  static std::string logOf(Work work) {
    ::testing::internal::CaptureStderr();
    work();
    return ::testing::internal::GetCapturedStderr();
  }

  CSint *x = nullptr;
  CSint *y = nullptr;
  CSint *z = nullptr;
};

TEST_F(LogTest, AChangeIsFollowedFromVariableToVariable) {
  EXPECT_EQ(logOf([&] { EXPECT_TRUE(cs_Le(x, y) && cs_Lt(y, z)); }),
            "raise minimum of z {0..9} to 1\n"
            "lower maximum of #1 {0..9} to 8\n"
            "  cs_Le hears newMax 8 of #1 {0..8}\n"
            "lower maximum of x {0..9} to 8\n");
  EXPECT_EQ(logOf([&] { cs_GE(x, 3); }),
            "raise minimum of x {0..8} to 3\n"
            "  cs_Le hears newMin 3 of x {3..8}\n"
            "raise minimum of #1 {0..8} to 3\n"
            "  cs_Lt hears newMin 3 of #1 {3..8}\n"
            "raise minimum of z {1..9} to 4\n");
}

bool agree(CSint *, int, int, CSint **, int, void *) { return true; }
bool agreeToValue(int, int, CSint **, int, void *) { return true; }

TEST_F(LogTest, EventsHaveNames) {
  CSint *all[] = {x, y, z};
  cs_eventNewMin(all, 3, agree, nullptr);
  cs_eventNewMax(all, 3, agree, nullptr);
  cs_eventNeq(all, 3, agree, nullptr);
  EXPECT_TRUE(cs_eventKnown(all, 3, agreeToValue, nullptr));
  const auto heard = [](const char *event, const std::string &log) { return log.find(event) != std::string::npos; };
  EXPECT_PRED2(heard, "  cs_eventNewMin hears newMin 1 of x {1..9}\n", logOf([&] { cs_GE(x, 1); }));
  EXPECT_PRED2(heard, "  cs_eventNewMax hears newMax 8 of x {1..8}\n", logOf([&] { cs_LE(x, 8); }));
  // cs_eventNeq posts under this name.
  EXPECT_PRED2(heard, "  cs_eventNewMax hears removed 4 of x {1..3, 5..8}\n", logOf([&] { cs_NEQ(x, 4); }));
  EXPECT_PRED2(heard, "  cs_eventKnown hears bound 5 of x 5\n", logOf([&] { cs_EQ(x, 5); }));
  EXPECT_PRED2(heard, "  cs_eventKnown hears minBound 9 of #1 9\n", logOf([&] { cs_GE(y, 9); }));
  EXPECT_PRED2(heard, "  cs_eventKnown hears maxBound 0 of z 0\n", logOf([&] { cs_LE(z, 0); }));
}

TEST_F(LogTest, EachOperationIsWritten) {
  EXPECT_EQ(logOf([&] { EXPECT_TRUE(lowerMax(x, 8)); }), "lower maximum of x {0..9} to 8\n");
  EXPECT_EQ(logOf([&] { EXPECT_TRUE(removeInside(x, 4)); }), "narrow x {0..8} without 4\n");
  EXPECT_EQ(logOf([&] { EXPECT_TRUE(raiseMin(x, 2)); }), "raise minimum of x {0..3, 5..8} to 2\n");
  EXPECT_EQ(logOf([&] { EXPECT_TRUE(bindFree(x, 5)); }), "bind x {2, 3, 5..8} to 5\n");
}

TEST_F(LogTest, AVariableOfAConstraintIsPrivate) {
  const PrivateVariables variables(1);
  variables.init(0, 0, 9);
  EXPECT_EQ(logOf([&] { EXPECT_TRUE(raiseMin(variables[0], 1)); }), "raise minimum of private {0..9} to 1\n");
}

}  // namespace
