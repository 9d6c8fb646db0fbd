// SPDX-License-Identifier: MIT
// Leaks and double frees show under the memory checkers that these tests are built with.
#include "core/alloc.h"

#include <cstdint>
#include <cstring>

#include "core/solver.h"
#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"

namespace {

using namespace koru;
using namespace koru::test;

class AllocTest : public SolverTest {
 protected:
  static int owners(const Shared<int> &buffer) { return (reinterpret_cast<SharedBlock *>(buffer.get()) - 1)->owners; }
};

TEST_F(AllocTest, ASizeOfZeroIsNoFailure) {
  void *block = allocate(0);
  EXPECT_NE(block, nullptr);
  EXPECT_EQ(memoryReports, 0);
  deallocate(block);
}

TEST_F(AllocTest, LargePagesAreAskedForWithoutAChangeOfWhatIsThere) {
  for (const std::size_t size : {std::size_t{10}, std::size_t{5000}, std::size_t{9} << 20}) {
    auto *block = static_cast<unsigned char *>(allocate(size));
    std::memset(block, 7, size);
    askForLargePages(block, size);
    for (std::size_t i = 0; i < size; i += 100) ASSERT_EQ(block[i], 7);
    std::memset(block, 8, size);
    deallocate(block);
  }
}

TEST_F(AllocTest, FreeingNothingIsIgnored) {
  deallocate(nullptr);
  EXPECT_EQ(memoryReports, 0);
}

TEST_F(AllocTest, ScratchAsksForMemoryOnlyBeyondItsOwn) {
  {
    const AllocationRule none(refuseAll());
    Scratch<int, 4> few(4);
    ASSERT_TRUE(few);
    for (int i = 0; i < 4; ++i) few.get()[i] = i;
    EXPECT_EQ(few.get()[3], 3);
    EXPECT_TRUE((Scratch<int, 4>(0)));
    EXPECT_EQ(memoryReports, 0);
    Scratch<int, 4> many(5);
    EXPECT_FALSE(many);
    EXPECT_EQ(many.get(), nullptr);
    EXPECT_EQ(memoryReports, 1);
  }
  const AllocationRule counted(allowAll());
  Scratch<int, 4> many(5);
  ASSERT_TRUE(many);
  for (int i = 0; i < 5; ++i) many.get()[i] = i;
  EXPECT_EQ(many.get()[4], 4);
  EXPECT_EQ(AllocationRule::count(), 1);
}

TEST_F(AllocTest, BlocksAreCountedFromTheirAllocationUntilTheyAreFreed) {
  const long before = blocksAlive;
  void *block = allocate(10);
  EXPECT_EQ(blocksAlive, before + 1);
  deallocate(block);
  deallocate(nullptr);
  EXPECT_EQ(blocksAlive, before);
  const AllocationRule none(refuseAll());
  static_cast<void>(allocate(10));
  EXPECT_EQ(blocksAlive, before) << "a refused one is none";
}

TEST_F(AllocTest, ARefusedAllocationIsReportedOnceAndShowsAsNull) {
  const AllocationRule none(refuseAll());
  EXPECT_EQ(allocate(10), nullptr);
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
  EXPECT_EQ(allocateArray(0, 10, 10), nullptr);
  EXPECT_EQ(memoryReports, 2);
}

TEST_F(AllocTest, TheHookSeesEverySizeAndAllowsByDefault) {
  const AllocationRule counted(allowAll());
  deallocate(allocate(10));
  deallocate(allocateArray(8, 3, 4));
  EXPECT_EQ(AllocationRule::sizes(), (std::vector<std::size_t>{10, 20}));
}

TEST_F(AllocTest, ASizeThatDoesNotFitIsExhaustedMemoryAndNeverAsked) {
  const AllocationRule counted(allowAll());
  EXPECT_EQ(allocateArray(0, SIZE_MAX / 2, 4), nullptr);
  EXPECT_EQ(allocateArray(16, SIZE_MAX, 1), nullptr);
  EXPECT_EQ(allocateArray(SIZE_MAX, 1, 1), nullptr);
  EXPECT_EQ(memoryReports, 3);
  EXPECT_EQ(AllocationRule::count(), 0);
}

TEST_F(AllocTest, ABufferOwnsItsArrayAlone) {
  Buffer<int> buffer(3);
  ASSERT_TRUE(buffer);
  for (int i = 0; i < 3; ++i) buffer[i] = i * i;
  EXPECT_EQ(buffer.get()[2], 4);
  int *array = buffer.get();
  Buffer<int> moved(std::move(buffer));
  EXPECT_EQ(moved.get(), array);
  EXPECT_EQ(buffer.get(), nullptr);  // NOLINT: the moved-from state is what is tested
  Buffer<int> assigned;
  EXPECT_FALSE(assigned);
  assigned = std::move(moved);
  EXPECT_EQ(assigned.get(), array);
  EXPECT_FALSE(moved);
}

TEST_F(AllocTest, ABufferOfANegativeCountIsExhaustedMemory) {
  const Buffer<int> buffer(-1);
  EXPECT_FALSE(buffer);
  EXPECT_EQ(memoryReports, 1);
}

TEST_F(AllocTest, ARefusedBufferIsFalse) {
  const AllocationRule none(refuseAll());
  const Buffer<int> buffer(3);
  const Shared<int> shared(3);
  EXPECT_FALSE(buffer);
  EXPECT_FALSE(shared);
  EXPECT_EQ(shared.get(), nullptr);
  EXPECT_EQ(memoryReports, 2);
}

TEST_F(AllocTest, ASharedArrayLivesUntilItsLastOwnerGoes) {
  SharedBlock *share = nullptr;
  int *array = nullptr;
  {
    const Shared<int> first(4);
    ASSERT_TRUE(first);
    array = first.get();
    array[3] = 17;
    EXPECT_EQ(owners(first), 1);
    const Shared<int> second(first);
    EXPECT_EQ(second.get(), array);
    EXPECT_EQ(owners(first), 2);
    share = first.share();
    EXPECT_EQ(owners(first), 3);
  }
  EXPECT_EQ(share->owners, 1);
  EXPECT_EQ(array[3], 17);
  dropShare(share);
}

TEST_F(AllocTest, AssigningASharedArrayDropsTheOldOne) {
  Shared<int> first(1);
  const Shared<int> second(1);
  const Shared<int> old(first);
  first = second;
  EXPECT_EQ(owners(old), 1);
  EXPECT_EQ(owners(second), 2);
  first = Shared<int>();
  EXPECT_EQ(owners(second), 1);
  EXPECT_FALSE(first);
}

TEST_F(AllocTest, ASharedArrayOfNoElementsIsNotNull) {
  const Shared<int> none(0);
  EXPECT_TRUE(none);
  EXPECT_NE(none.get(), nullptr);
  const Shared<int> negative(-5);
  EXPECT_TRUE(negative);
  EXPECT_EQ(memoryReports, 0);
}

TEST_F(AllocTest, CopyingAnEmptySharedArrayIsHarmless) {
  const Shared<int> empty;
  const Shared<int> copy(empty);  // NOLINT: the copy is what is tested
  EXPECT_EQ(copy.get(), nullptr);
  dropShare(nullptr);
}

TEST_F(AllocTest, SharedElementsAreAlignedForAnyType) {
  const Shared<std::max_align_t> buffer(2);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.get()) % alignof(std::max_align_t), 0U);
}

}  // namespace
