// SPDX-License-Identifier: MIT
// cs_NoOverlap beyond what enumeration reaches.
#include <climits>
#include <utility>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru::test;

class NoOverlapTest : public SolverTest {
 protected:
  static std::vector<int> bounds(CSint *v) { return {cs_getMin(v), cs_getMax(v)}; }
  std::size_t add(CSint *left, CSint *width, CSint *bottom, CSint *height) {
    x.push_back(left);
    widths.push_back(width);
    y.push_back(bottom);
    heights.push_back(height);
    return x.size() - 1;
  }
  // Anywhere within a box.
  std::size_t add(int width, int height, int right, int top) {
    return add(cs_createCSint(0, right - width), CSINT(width), cs_createCSint(0, top - height), CSINT(height));
  }
  bool post() { return cs_NoOverlap(x.data(), widths.data(), y.data(), heights.data(), static_cast<int>(x.size())); }

  std::vector<CSint *> x;
  std::vector<CSint *> widths;
  std::vector<CSint *> y;
  std::vector<CSint *> heights;
};

TEST_F(NoOverlapTest, TheOnlyWayLeftIsTaken) {
  const std::size_t a = add(4, 3, 10, 4);
  const std::size_t b = add(3, 3, 8, 4);
  ASSERT_TRUE(post());
  EXPECT_EQ(bounds(x[a]), (std::vector<int>{0, 6}));
  EXPECT_TRUE(cs_LE(x[a], 2));
  EXPECT_EQ(bounds(x[b]), (std::vector<int>{4, 5})) << "not above, not below, not to the left";
  EXPECT_EQ(bounds(x[a]), (std::vector<int>{0, 1}));
}

TEST_F(NoOverlapTest, NoWayIsLeft) {
  add(4, 3, 6, 4);
  add(3, 3, 6, 4);
  EXPECT_FALSE(post());
}

// Two of three need the height, wherever they are: the third one is seen only along the axis.
TEST_F(NoOverlapTest, AnAxisIsShared) {
  for (int i = 0; i < 3; ++i) add(3, 2, 5, 5);
  EXPECT_FALSE(post());
}

TEST_F(NoOverlapTest, SizesEndAtTheNextOne) {
  CSint *width = cs_createCSint(0, 50);
  CSint *height = cs_createCSint(1, 50);
  add(cs_createCSint(2, 3), width, CSINT(0), CSINT(2));
  const std::size_t b = add(cs_createCSint(8, 9), CSINT(4), CSINT(1), height);
  add(CSINT(9), CSINT(1), CSINT(20), CSINT(1));
  ASSERT_TRUE(post());
  EXPECT_EQ(bounds(width), (std::vector<int>{0, 7}));
  EXPECT_EQ(bounds(height), (std::vector<int>{1, 19}));
  EXPECT_TRUE(cs_EQ(x[b], 8));
  EXPECT_EQ(bounds(width), (std::vector<int>{0, 6}));
}

TEST_F(NoOverlapTest, WhatHasNoAreaIsInNobodysWay) {
  add(CSINT(2), CSINT(0), CSINT(2), CSINT(3));
  add(CSINT(1), CSINT(4), CSINT(1), CSINT(4));
  add(CSINT(3), CSINT(3), CSINT(2), CSINT(0));
  EXPECT_TRUE(post());
}

TEST_F(NoOverlapTest, PlacesWithHolesAreFollowed) {
  const std::size_t a = add(fromValues({0, 1, 9}), CSINT(2), CSINT(0), CSINT(1));
  add(CSINT(1), CSINT(1), CSINT(0), CSINT(1));
  ASSERT_TRUE(post());
  EXPECT_EQ(values(x[a]), (std::vector<int>{9}));
}

TEST_F(NoOverlapTest, TheWholeRangeOfInts) {
  for (int i = 0; i < 3; ++i)
    add(cs_createCSint(INT_MIN, INT_MAX), CSINT(INT_MAX), cs_createCSint(INT_MIN, INT_MAX), CSINT(INT_MAX));
  ASSERT_TRUE(post());
  EXPECT_TRUE(cs_EQ(x[0], 0) && cs_EQ(y[0], 0) && cs_EQ(y[1], 1));
  EXPECT_TRUE(cs_GE(x[1], -5));
  EXPECT_EQ(bounds(x[1]), (std::vector<int>{INT_MAX, INT_MAX}));
}

// Squares of 1 to 4 fit into 5 x 7.
TEST_F(NoOverlapTest, SquaresInABox) {
  for (const int size : {4, 3, 2, 1}) add(size, size, 5, 7);
  ASSERT_TRUE(post());
  static int solutions;
  solutions = 0;
  std::vector<CSint *> all = x;
  all.insert(all.end(), y.begin(), y.end());
  cs_findAll(all.data(), 8, cs_findFreeVar, [](CSint **, int) { ++solutions; });
  int expected = 0;
  const auto apart = [](int xa, int ya, int a, int xb, int yb, int b) {
    return xa + a <= xb || xb + b <= xa || ya + a <= yb || yb + b <= ya;
  };
  for (int p = 0; p < 2 * 4; ++p)
    for (int q = 0; q < 3 * 5; ++q)
      for (int r = 0; r < 4 * 6; ++r)
        for (int s = 0; s < 5 * 7; ++s) {
          const int at[4][2] = {{p % 2, p / 2}, {q % 3, q / 3}, {r % 4, r / 4}, {s % 5, s / 5}};
          bool isFine = true;
          for (int i = 0; i < 4; ++i)
            for (int j = 0; j < i; ++j) isFine = isFine && apart(at[i][0], at[i][1], 4 - i, at[j][0], at[j][1], 4 - j);
          expected += isFine ? 1 : 0;
        }
  EXPECT_GT(expected, 0);
  EXPECT_EQ(solutions, expected);
}

// The loads along x stay as they were, and the room across shrinks: six rows for three of two, then five.
TEST_F(NoOverlapTest, LessRoomAcross) {
  for (int i = 0; i < 3; ++i) add(3, 2, 5, 6);
  ASSERT_TRUE(post());
  for (int i = 0; i < 2; ++i) {
    cs_saveContext();
    EXPECT_TRUE(cs_LE(y[0], 3) && cs_LE(y[1], 3));
    EXPECT_FALSE(cs_LE(y[2], 3)) << "the second time as well";
    cs_restoreContext();
  }
  EXPECT_EQ(bounds(y[2]), (std::vector<int>{0, 4}));
}

// What was narrowed and undone is narrowed again.
TEST_F(NoOverlapTest, TheSameAgainAfterARestore) {
  const std::size_t a = add(4, 3, 9, 5);
  const std::size_t b = add(4, 3, 9, 5);
  const std::size_t c = add(1, 5, 9, 5);
  ASSERT_TRUE(post());
  for (int i = 0; i < 3; ++i) {
    cs_saveContext();
    EXPECT_TRUE(cs_LE(x[a], 3));
    EXPECT_EQ(bounds(x[b]), (std::vector<int>{4, 5}));
    EXPECT_TRUE(cs_EQ(x[c], 0));
    EXPECT_EQ(bounds(x[a]), (std::vector<int>{1, 1}));
    EXPECT_EQ(bounds(x[b]), (std::vector<int>{5, 5}));
    cs_restoreContext();
  }
}

TEST_F(NoOverlapTest, BadInputIsRefused) {
  CSint *array[] = {cs_createCSint(0, 5), cs_createCSint(0, 5)};
  CSint *holed[] = {array[0], nullptr};
  EXPECT_FALSE(cs_NoOverlap(nullptr, array, array, array, 2));
  EXPECT_FALSE(cs_NoOverlap(array, nullptr, array, array, 2));
  EXPECT_FALSE(cs_NoOverlap(array, array, nullptr, array, 2));
  EXPECT_FALSE(cs_NoOverlap(array, array, array, holed, 2));
  EXPECT_FALSE(cs_NoOverlap(array, array, array, array, -1));
  EXPECT_TRUE(cs_NoOverlap(nullptr, nullptr, nullptr, nullptr, 0));
  CSint *negative = cs_createCSint(-5, -1);
  EXPECT_FALSE(cs_NoOverlap(array, &negative, array, array, 1));
  EXPECT_FALSE(cs_NoOverlap(array, array, array, &negative, 1));
}

// One variable is the place of both: it would have to lie 8 before itself.
TEST_F(NoOverlapTest, OneVariableForTwoPlaces) {
  CSint *place = cs_createCSint(0, 10);
  add(place, CSINT(8), CSINT(0), CSINT(1));
  add(place, CSINT(20), CSINT(0), CSINT(1));
  EXPECT_FALSE(post());
}

// They need not meet in any column, and must meet in a row, which is too short.
TEST_F(NoOverlapTest, TheOtherAxisIsShared) {
  for (int i = 0; i < 3; ++i) add(3, 2, 7, 3);
  EXPECT_FALSE(post());
}

// The first one is pressed between the last two, and has then no room for the second on either side.
TEST_F(NoOverlapTest, ARoomThatOthersMakeTooSmall) {
  CSint *const zero = CSINT(0);
  CSint *const one = CSINT(1);
  add(cs_createCSint(0, 10), CSINT(4), zero, one);
  add(cs_createCSint(2, 5), CSINT(4), zero, one);
  add(CSINT(0), CSINT(3), zero, one);
  add(CSINT(9), CSINT(3), zero, one);
  EXPECT_FALSE(post());
  std::swap(x, y);
  std::swap(widths, heights);
  x.assign(4, zero);
  widths.assign(4, one);
  y = {cs_createCSint(0, 10), cs_createCSint(2, 5), CSINT(0), CSINT(9)};
  EXPECT_FALSE(post());
}

}  // namespace
