// SPDX-License-Identifier: MIT
// Counting and stepping through bit arrays, against a model that looks at one value at a time.
#include "core/domain_bits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <vector>

#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"

namespace {

using namespace koru;
using namespace koru::test;

// A bit array together with the set that it should hold.
struct Pair {
  DomainBits *bits;
  std::set<std::int64_t> present;

  Pair(int low, int high) : bits(DomainBits::create(low, high, DomainBits::Fill::kNone)) {}
  Pair(const Pair &) = delete;
  Pair &operator=(const Pair &) = delete;
  ~Pair() { DomainBits::destroy(bits); }

  void set(int value) {
    bits->set(value);
    present.insert(value);
  }
  // Bits past `high` mean nothing: set them all.
  void soilSpareBits() {
    const std::uint32_t width = distance(bits->low, bits->high) + 1;
    if (width % 64 != 0) bits->words()[width / 64] |= ~std::uint64_t{0} << (width % 64);
  }

  std::int64_t count(std::int64_t a, std::int64_t b) const {
    return std::count_if(present.begin(), present.end(), [&](std::int64_t v) { return v >= a && v <= b; });
  }
  int next(int x) const {
    const auto found = present.upper_bound(x);
    const bool inside = x >= bits->low && x < bits->high;
    return inside && found != present.end() ? static_cast<int>(*found) : wrapAdd(x, 1);
  }
  int previous(int x) const {
    const auto found = present.lower_bound(x);
    const bool inside = x > bits->low && x <= bits->high;
    return inside && found != present.begin() ? static_cast<int>(*std::prev(found)) : wrapSub(x, 1);
  }
};

class DomainBitsTest : public SolverTest {
 protected:
  static void expectLikeModel(const Pair &pair, const std::vector<int> &points) {
    for (const int a : points) {
      ASSERT_EQ(nextPresent(pair.bits, a), pair.next(a)) << "after " << a;
      ASSERT_EQ(previousPresent(pair.bits, a), pair.previous(a)) << "before " << a;
      if (pair.bits->covers(a)) {
        ASSERT_EQ(pair.bits->has(a), pair.present.count(a) == 1) << a;
      }
      for (const int b : points) ASSERT_EQ(countPresent(pair.bits, a, b), pair.count(a, b)) << "in " << a << ".." << b;
    }
  }
  static std::vector<int> around(int low, int high) {
    std::vector<int> points{kIntMin, kIntMax};
    for (std::int64_t v = std::int64_t{low} - 2; v <= std::int64_t{high} + 2; ++v)
      if (v >= kIntMin && v <= kIntMax) points.push_back(static_cast<int>(v));
    return points;
  }
};

TEST_F(DomainBitsTest, EverySubsetOfASmallRangeBehavesLikeTheModel) {
  for (const int low : {0, -3, 5, kIntMin, kIntMax - 5}) {
    for (unsigned mask = 0; mask < 64; ++mask) {
      Pair pair(low, low + 5);
      for (int i = 0; i < 6; ++i)
        if ((mask >> i & 1) != 0) pair.set(low + i);
      pair.soilSpareBits();
      expectLikeModel(pair, around(low, low + 5));
    }
  }
}

TEST_F(DomainBitsTest, RandomSubsetsOfWideRangesBehaveLikeTheModel) {
  std::mt19937 random(20240607);
  for (const int low : {0, 7, -1, -64, -100, kIntMin, kIntMin + 1, kIntMax - 299}) {
    for (const int width : {1, 2, 63, 64, 65, 127, 128, 129, 200, 300}) {
      for (const double density : {0.01, 0.5, 0.97}) {
        Pair pair(low, low + (width - 1));
        std::bernoulli_distribution take(density);
        for (int i = 0; i < width; ++i)
          if (take(random)) pair.set(low + i);
        pair.soilSpareBits();
        std::vector<int> points = around(low, low + (width - 1));
        std::shuffle(points.begin(), points.end(), random);
        points.resize(std::min<std::size_t>(points.size(), 40));
        expectLikeModel(pair, points);
      }
    }
  }
}

TEST_F(DomainBitsTest, AFullFillHoldsEveryValueOfTheRange) {
  DomainBits *bits = DomainBits::create(-70, 70, DomainBits::Fill::kAll);
  EXPECT_EQ(bits->low, -70);
  EXPECT_EQ(bits->high, 70);
  EXPECT_EQ(countPresent(bits, kIntMin, kIntMax), 141);
  EXPECT_EQ(countPresent(bits, -70, 70), 141);
  for (int value = -70; value < 70; ++value) ASSERT_EQ(nextPresent(bits, value), value + 1);
  EXPECT_TRUE(bits->has(-70) && bits->has(70));
  DomainBits::destroy(bits);
}

TEST_F(DomainBitsTest, ClearedValuesAreAbsentUntilSetAgain) {
  DomainBits *bits = DomainBits::create(-3, 3, DomainBits::Fill::kAll);
  bits->clear(-1);
  bits->clear(0);
  EXPECT_FALSE(bits->has(0));
  EXPECT_EQ(nextPresent(bits, -2), 1);
  EXPECT_EQ(previousPresent(bits, 1), -2);
  EXPECT_EQ(countPresent(bits, -3, 3), 5);
  bits->set(0);
  EXPECT_EQ(nextPresent(bits, -2), 0);
  DomainBits::destroy(bits);
}

TEST_F(DomainBitsTest, ValueVIsBitVMinusLowLeastSignificantFirst) {
  DomainBits *bits = DomainBits::create(10, 200, DomainBits::Fill::kNone);
  bits->set(10);
  bits->set(13);
  bits->set(10 + 64);
  EXPECT_EQ(bits->words()[0], 0b1001U);
  EXPECT_EQ(bits->words()[1], 1U);
  DomainBits::destroy(bits);
}

TEST_F(DomainBitsTest, WithoutBitsThereAreNoHoles) {
  EXPECT_EQ(countPresent(nullptr, 3, 7), 5);
  EXPECT_EQ(countPresent(nullptr, 3, 3), 1);
  EXPECT_EQ(countPresent(nullptr, 4, 3), 0);
  EXPECT_EQ(countPresent(nullptr, kIntMin, kIntMax), std::int64_t{1} << 32);
  EXPECT_EQ(nextPresent(nullptr, 4), 5);
  EXPECT_EQ(previousPresent(nullptr, 4), 3);
  EXPECT_EQ(nextPresent(nullptr, kIntMax), kIntMin);
  EXPECT_EQ(previousPresent(nullptr, kIntMin), kIntMax);
}

TEST_F(DomainBitsTest, ValuesOutsideTheRangeCountAsAbsent) {
  DomainBits *bits = DomainBits::create(5, 9, DomainBits::Fill::kAll);
  EXPECT_EQ(countPresent(bits, 0, 4), 0);
  EXPECT_EQ(countPresent(bits, 10, 99), 0);
  EXPECT_EQ(countPresent(bits, 0, 6), 2);
  EXPECT_EQ(countPresent(bits, 8, 99), 2);
  EXPECT_EQ(countPresent(bits, 8, 7), 0);
  EXPECT_EQ(countPresent(bits, kIntMax, kIntMin), 0);
  DomainBits::destroy(bits);
}

TEST_F(DomainBitsTest, WideScansSkipEmptyWords) {
  Pair pair(-100000, 100000);
  for (const int value : {-100000, -3, 99999}) pair.set(value);
  expectLikeModel(pair, {-100001, -100000, -99999, -4, -3, -2, 0, 99998, 99999, 100000, 100001});
}

TEST_F(DomainBitsTest, TheSizeOfAnArrayOverAllIntsIsComputedIn64Bits) {
  const AllocationRule none(refuseAll());
  EXPECT_EQ(DomainBits::create(kIntMin, kIntMax, DomainBits::Fill::kNone), nullptr);
  ASSERT_EQ(AllocationRule::count(), 1);
  EXPECT_EQ(AllocationRule::sizes()[0], sizeof(DomainBits) + (std::size_t{1} << 29));
  EXPECT_EQ(memoryReports, 1);
}

TEST_F(DomainBitsTest, DestroyingNothingIsIgnored) {
  DomainBits::destroy(nullptr);
  EXPECT_EQ(memoryReports, 0);
}

}  // namespace
