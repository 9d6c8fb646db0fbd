// SPDX-License-Identifier: MIT
// The pool as release builds have it. Test builds replace it by plain allocations, so the unit is compiled here a
// second time, under another namespace and upon an allocator of this file that keeps count.
#undef KORU_CHECKED
#define KORU_CHECKED 0
#define koru koru_packed

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <set>
#include <vector>

#include "core/pool.cc"
#include "core/pool.h"

namespace koru {

namespace {

std::vector<std::size_t> asked;
int alive = 0;
bool refuse = false;

}  // namespace

void *allocate(std::size_t size) {
  asked.push_back(size);
  if (refuse) return nullptr;
  ++alive;
  return std::malloc(size);
}

std::size_t askedForLargePages = 0;
void askForLargePages(void *, std::size_t size) { askedForLargePages += size; }

void deallocateBlock(void *block) {
  if (block == nullptr) return;
  --alive;
  std::free(block);
}

}  // namespace koru

namespace {

using namespace koru;

class PoolPackedTest : public ::testing::Test {
 protected:
  Pool pool;

  void SetUp() override {
    asked.clear();
    refuse = false;
  }
  void TearDown() override {
    pool.destroy();
    EXPECT_EQ(alive, 0);
  }
};

TEST_F(PoolPackedTest, SmallRecordsShareAChunkAndLieSideBySide) {
  char *first = static_cast<char *>(pool.take(24));
  char *second = static_cast<char *>(pool.take(17));
  char *third = static_cast<char *>(pool.take(8));
  EXPECT_EQ(asked.size(), 1U);
  EXPECT_EQ(second, first + 24);
  EXPECT_EQ(third, second + 24);
}

TEST_F(PoolPackedTest, ARecordGivenBackIsTheNextOneOfItsSize) {
  void *record = pool.take(40);
  void *other = pool.take(40);
  pool.give(record, 40);
  pool.give(other, 40);
  EXPECT_EQ(pool.take(40), other);
  EXPECT_EQ(pool.take(33), record) << "sizes are rounded up to units of 8";
  EXPECT_NE(pool.take(40), record);
}

TEST_F(PoolPackedTest, RecordsOfAnotherSizeAreNotReused) {
  void *record = pool.take(40);
  pool.give(record, 40);
  EXPECT_NE(pool.take(48), record);
  EXPECT_NE(pool.take(32), record);
}

TEST_F(PoolPackedTest, EverySizeIsWritableAlignedAndApart) {
  std::vector<std::pair<unsigned char *, std::size_t>> records;
  for (int round = 0; round < 3; ++round) {
    for (std::size_t size = 1; size <= 520; ++size) {
      auto *record = static_cast<unsigned char *>(pool.take(size));
      ASSERT_EQ(reinterpret_cast<std::uintptr_t>(record) % 8, 0U);
      std::memset(record, static_cast<int>(records.size() % 251), size);
      records.emplace_back(record, size);
    }
  }
  EXPECT_GT(asked.size(), 1U) << "more than one chunk was needed";
  for (std::size_t i = 0; i < records.size(); ++i) {
    for (std::size_t byte = 0; byte < records[i].second; ++byte) ASSERT_EQ(records[i].first[byte], i % 251);
    pool.give(records[i].first, records[i].second);
  }
}

TEST_F(PoolPackedTest, RecordsAbove512BytesGoToTheAllocatorOneByOne) {
  void *largest = pool.take(512);
  EXPECT_EQ(asked.back(), std::size_t{4} * 1024);
  void *large = pool.take(513);
  EXPECT_EQ(asked.back(), 513U);
  const int before = alive;
  pool.give(large, 513);
  EXPECT_EQ(alive, before - 1);
  pool.give(largest, 512);
  EXPECT_EQ(alive, before - 1);
}

TEST_F(PoolPackedTest, ChunksGrowByHalfFrom4To64KiB) {
  std::size_t all = 0;
  while (asked.empty() || asked.back() < std::size_t{64} * 1024) {
    const std::size_t before = asked.size();
    ASSERT_NE(pool.take(8), nullptr);
    if (asked.size() == before) continue;
    EXPECT_EQ(asked.back(), std::clamp(all / 16 * 8, std::size_t{4} * 1024, std::size_t{64} * 1024));
    all += asked.back();
    EXPECT_EQ(pool.bytes(), all);
  }
  EXPECT_EQ(asked.size(), 10U);
}

TEST_F(PoolPackedTest, BeyondManyMiBTheyAreAnEighthOfAllInLargePages) {
  constexpr std::size_t kMiB = std::size_t{1} << 20;
  std::size_t large = 0;
  while (pool.bytes() < 32 * kMiB) ASSERT_NE(pool.take(512), nullptr);
  EXPECT_EQ(asked.back(), kMiB / 16);
  EXPECT_EQ(askedForLargePages, 0U);
  while (pool.bytes() < 100 * kMiB) {
    const std::size_t all = pool.bytes();
    ASSERT_NE(pool.take(512), nullptr);
    if (pool.bytes() == all) continue;
    EXPECT_EQ(asked.back(), std::min(all / 64 * 8, 8 * kMiB));
    EXPECT_EQ(pool.bytes(), all + asked.back());
    large += asked.back();
  }
  EXPECT_EQ(askedForLargePages, large);
}

TEST_F(PoolPackedTest, ARefusedChunkIsNullAndThePoolStaysUsable) {
  void *held = pool.take(500);
  refuse = true;
  std::set<void *> taken;
  void *record = nullptr;
  while ((record = pool.take(512)) != nullptr) EXPECT_TRUE(taken.insert(record).second);
  EXPECT_EQ(taken.size(), 7U) << "the chunk's 4 KiB less its head and the first record, in records of 512, less one";
  refuse = false;
  EXPECT_NE(pool.take(512), nullptr);
  pool.give(held, 500);
  EXPECT_EQ(pool.take(500), held);
}

TEST_F(PoolPackedTest, GivingBackNothingIsIgnored) {
  pool.give(nullptr, 8);
  pool.give(nullptr, 5000);
  EXPECT_NE(pool.take(8), nullptr);
  EXPECT_EQ(asked.size(), 1U);
}

TEST_F(PoolPackedTest, DestroyingFreesTheChunksAndForgetsTheFreeLists) {
  void *record = pool.take(40);
  pool.give(record, 40);
  EXPECT_EQ(pool.bytes(), 4U * 1024);
  pool.destroy();
  EXPECT_EQ(pool.bytes(), 0U);
  EXPECT_EQ(alive, 0);
  EXPECT_NE(pool.take(40), nullptr);
  EXPECT_EQ(asked.size(), 2U);
}

}  // namespace
