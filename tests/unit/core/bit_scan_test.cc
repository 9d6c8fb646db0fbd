// SPDX-License-Identifier: MIT
#include "core/bit_scan.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using koru::forEachBit;

constexpr std::uint64_t kEnds = std::uint64_t{1} << 63 | 1;

TEST(BitScanTest, VisitsWhatIsSetInIncreasingOrder) {
  std::vector<int> met;
  EXPECT_TRUE(forEachBit(-5, kEnds | 0b1100, [&](int i) { met.push_back(i); }));
  EXPECT_EQ(met, (std::vector{-5, -3, -2, 58}));
  EXPECT_TRUE(forEachBit(7, 0, [&](int i) { met.push_back(i); }));
  EXPECT_EQ(met.size(), 4U);
}

TEST(BitScanTest, AVisitEndsTheWalk) {
  std::vector<int> met;
  const auto upTo = [&](int last) {
    return [&met, last](int i) {
      met.push_back(i);
      return i < last;
    };
  };
  EXPECT_FALSE(forEachBit(0, kEnds | 0b110, upTo(2)));
  EXPECT_EQ(met, (std::vector{0, 1, 2}));
  EXPECT_TRUE(forEachBit(0, kEnds, upTo(64)));
  EXPECT_EQ(met, (std::vector{0, 1, 2, 0, 63}));
}

TEST(BitScanTest, AVisitMayClearWhatItIsToldOf) {
  std::uint64_t word = 0b1011;
  int visits = 0;
  forEachBit(0, word, [&](int i) {
    word &= ~(std::uint64_t{1} << i);
    ++visits;
  });
  EXPECT_EQ(visits, 3);
  EXPECT_EQ(word, 0U);
}

}  // namespace
