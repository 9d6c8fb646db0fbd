// SPDX-License-Identifier: MIT
#include "solve/run_limits.h"

#include <gtest/gtest.h>

#include <vector>

#include "koru_extras.h"

namespace koru::test::solve {
namespace {

using koru::solve::kNoLimit;
using koru::solve::RunLimits;

std::vector<std::int64_t> first(int count, RunLimits limits) {
  std::vector<std::int64_t> result;
  for (int i = 0; i < count; ++i) result.push_back(limits.next());
  return result;
}

using Limits = std::vector<std::int64_t>;

TEST(RunLimitsTest, Luby) {
  EXPECT_EQ(first(15, {CS_RESTARTS_LUBY, 1, 0}), (Limits{1, 1, 2, 1, 1, 2, 4, 1, 1, 2, 1, 1, 2, 4, 8}));
  EXPECT_EQ(first(4, {CS_RESTARTS_LUBY, 100, 0}), (Limits{100, 100, 200, 100}));
  EXPECT_EQ(koru::solve::luby((std::int64_t{1} << 40) - 1), std::int64_t{1} << 39);
}

TEST(RunLimitsTest, Geometric) {
  EXPECT_EQ(first(4, {CS_RESTARTS_GEOMETRIC, 100, 50}), (Limits{100, 200, 350, 550}));
  EXPECT_EQ(first(3, {CS_RESTARTS_GEOMETRIC, 1, 1}), (Limits{1, 2, 3}));
  EXPECT_EQ(first(2000, {CS_RESTARTS_GEOMETRIC, 1000, 100}).back(), kNoLimit);
}

TEST(RunLimitsTest, ConstantAndNone) {
  EXPECT_EQ(first(2, {CS_RESTARTS_CONSTANT, 7, 50}), (Limits{7, 7}));
  EXPECT_EQ(first(2, {CS_RESTARTS_NONE, 7, 50}), (Limits{kNoLimit, kNoLimit}));
}

TEST(RunLimitsTest, ProductsStayWithinTheRange) {
  EXPECT_EQ(koru::solve::limitTimes(kNoLimit, 2), kNoLimit);
  EXPECT_EQ(koru::solve::limitTimes(3, 4), 12);
}

}  // namespace
}  // namespace koru::test::solve
