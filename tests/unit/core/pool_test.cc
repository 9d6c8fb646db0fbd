// SPDX-License-Identifier: MIT
// The pool of test builds, which hands every record through to the allocator. The packing one is in
// pool_packed_test.cc.
#include "core/pool.h"

#include <cstdint>

#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"

namespace {

using namespace koru;
using namespace koru::test;

class PoolTest : public SolverTest {
 protected:
  Pool pool;
};

TEST_F(PoolTest, EveryRecordIsAnAllocationOfItsOwn) {
  const AllocationRule counted(allowAll());
  void *small = pool.take(24);
  void *large = pool.take(5000);
  EXPECT_EQ(AllocationRule::sizes(), (std::vector<std::size_t>{24, 5000}));
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(small) % 8, 0U);
  pool.give(small, 24);
  pool.give(large, 5000);
}

TEST_F(PoolTest, ARefusedRecordIsNullAndReportedOnce) {
  const AllocationRule none(refuseAll());
  EXPECT_EQ(pool.take(24), nullptr);
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(pool.take(5000), nullptr);
  EXPECT_EQ(memoryReports, 2);
}

TEST_F(PoolTest, TellsHowMuchItHolds) {
  EXPECT_EQ(pool.bytes(), 0U);
  void *small = pool.take(24);
  void *large = pool.take(5000);
  EXPECT_EQ(pool.bytes(), 5024U);
  pool.give(small, 24);
  EXPECT_EQ(pool.bytes(), 5000U);
  pool.give(large, 5000);
  EXPECT_EQ(pool.bytes(), 0U);
}

TEST_F(PoolTest, GivingBackNothingIsIgnored) {
  pool.give(nullptr, 24);
  pool.give(nullptr, 5000);
  pool.destroy();
  EXPECT_EQ(memoryReports, 0);
}

}  // namespace
