// SPDX-License-Identifier: MIT
// The stand-in for 128-bit integers, against the built-in ones where there are any.
#include "core/int128.h"

#include <gtest/gtest.h>

#include "support/kit/random.h"

namespace koru::test {
namespace {

TEST(Int128Test, KeepsWhat64BitsDoNot) {
  const TwoWords most(INT64_MAX);
  const TwoWords square = most * most;
  EXPECT_GT(square, most);
  EXPECT_EQ(square / most, most);
  EXPECT_EQ((square + 5) % most, TwoWords(5));
  EXPECT_EQ(square - square, TwoWords(0));
  EXPECT_EQ(-square / most, -most);
  EXPECT_LT(-square, TwoWords(INT64_MIN));
  EXPECT_EQ(static_cast<std::int64_t>(square / most), INT64_MAX);
  EXPECT_EQ(static_cast<int>(TwoWords(-7)), -7);
}

TEST(Int128Test, DividesTowardsNought) {
  EXPECT_EQ(TwoWords(-7) / 2, TwoWords(-3));
  EXPECT_EQ(TwoWords(-7) % 2, TwoWords(-1));
  EXPECT_EQ(TwoWords(7) / -2, TwoWords(-3));
  EXPECT_EQ(TwoWords(7) % -2, TwoWords(1));
}

#ifdef __SIZEOF_INT128__

std::int64_t anyNumber(Random &random) {
  const auto bits = static_cast<std::int64_t>(random.next());
  return bits >> random.between(0, 63);
}

TwoWords from(Int128 value) {
  const TwoWords high = static_cast<std::int64_t>(value >> 64);
  const auto low = static_cast<std::uint64_t>(value);
  const TwoWords half(std::int64_t{1} << 32);
  return (high * half + static_cast<std::int64_t>(low >> 32)) * half + static_cast<std::int64_t>(low & 0xffffffff);
}

TEST(Int128Test, CountsLikeTheBuiltInOnes) {
  Random random(1);
  for (int i = 0; i < 20000; ++i) {
    const std::int64_t a = anyNumber(random), b = anyNumber(random), c = anyNumber(random);
    const Int128 wide = Int128{a} * b + c;
    const TwoWords mine = TwoWords(a) * b + c;
    ASSERT_EQ(mine, from(wide)) << a << " " << b << " " << c;
    EXPECT_EQ(mine - a, from(wide - a));
    EXPECT_EQ(mine < TwoWords(c), wide < c);
    EXPECT_EQ(mine <=> TwoWords(b) == 0, wide == b);
    if (c == 0) continue;
    EXPECT_EQ(mine / c, from(wide / c));
    EXPECT_EQ(mine % c, from(wide % c));
    const Int128 divisor = Int128{c} * b + 1;
    if (divisor != 0) {
      EXPECT_EQ(mine / from(divisor), from(wide / divisor));
    }
  }
}

#endif

}  // namespace
}  // namespace koru::test
