// SPDX-License-Identifier: MIT
#include "core/shared_record.h"

#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;

class SharedRecordTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    ended = 0;
  }

  // Counts the ends of values, not of what they were moved from.
  struct Owner {
    int value;
    bool moved = false;
    explicit Owner(int v) : value(v) {}
    Owner(Owner &&other) noexcept : value(other.value) { other.moved = true; }
    ~Owner() { ended += moved ? 0 : 1; }
  };

  static inline int ended = 0;
};

TEST_F(SharedRecordTest, TheLastOwnerEndsTheRecordOnce) {
  SharedRecord<Owner> second;
  {
    const SharedRecord<Owner> first(Owner{7});
    ASSERT_TRUE(first);
    second = first;
    EXPECT_EQ(&*first, &*second);
  }
  EXPECT_EQ(ended, 0);
  EXPECT_EQ(second->value, 7);
  second = SharedRecord<Owner>{};
  EXPECT_EQ(ended, 1);
}

TEST_F(SharedRecordTest, MovingHandsTheShareOver) {
  SharedRecord<Owner> first(Owner{7});
  {
    const SharedRecord<Owner> second(std::move(first));
    EXPECT_EQ(second->value, 7);
  }
  EXPECT_EQ(ended, 1);
}

TEST_F(SharedRecordTest, WithoutMemoryItIsEmptyAndTheRecordEnds) {
  {
    const FailingAllocation failing(0);
    const SharedRecord<Owner> record(Owner{7});
    EXPECT_FALSE(record);
  }
  EXPECT_EQ(ended, 1);
  EXPECT_EQ(memoryReports, 1);
}

}  // namespace
