// SPDX-License-Identifier: MIT
// The fixture of nearly all tests: a running solver whose memory handler counts instead of aborting, and small readers
// of its state.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "koru.h"

namespace koru::test {

class SolverTest : public ::testing::Test {
 protected:
  void SetUp() override {
    cs_init();
    cs_setErrHandler(CS_ERR_MEMORY, countReport, &memoryReports);
  }
  void TearDown() override { cs_end(); }

  static void countReport(CSint *, void *extra) { ++*static_cast<int *>(extra); }

  int memoryReports = 0;
};

// The domain as its values, read through the public queries only.
inline std::vector<int> values(CSint *v) {
  std::vector<int> result;
  for (long long value = cs_getMin(v); value <= cs_getMax(v); value = cs_getNextValue(v, static_cast<int>(value))) {
    result.push_back(static_cast<int>(value));
    if (value == cs_getMax(v)) break;
  }
  return result;
}

inline CSint *fromValues(const std::vector<int> &domain) {
  return cs_createCSintFromDomain(domain.data(), static_cast<int>(domain.size()));
}

// A variable whose only value is 0 while its count says 3: an inner context was accepted and an outer one restored. No
// context may be open.
inline CSint *withCountTooHigh() {
  CSint *v = cs_createCSint(0, 2);
  cs_saveContext();
  EXPECT_TRUE(cs_NEQ(v, 1));
  cs_saveContext();
  EXPECT_TRUE(cs_EQ(v, 0));
  cs_acceptContext();
  cs_restoreContext();
  EXPECT_EQ(cs_getNbElements(v), 3);
  EXPECT_EQ(cs_getMax(v), 0);
  return v;
}

}  // namespace koru::test
