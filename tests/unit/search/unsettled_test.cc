// SPDX-License-Identifier: MIT
#include "search/unsettled.h"

#include <random>
#include <vector>

#include "core/solver.h"
#include "support/kit/solver_test.h"

namespace koru {
namespace {

// An array of truth values, settled and put back with contexts, and the number of looks at one.
class UnsettledTest : public test::SolverTest {
 protected:
  static constexpr int kRoom = 16;

  void make(int size, int most) {
    settled.assign(static_cast<std::size_t>(size), false);
    words.resize(static_cast<std::size_t>(BranchSetOn::wordsFor(most)));
    taken.resize(static_cast<std::size_t>(most));
    set = Unsettled(size, most, words.data(), taken.data());
    looks = 0;
  }

  // What is visited, at most so many.
  std::vector<int> visit(int most) {
    std::vector<int> visited;
    set.forEachUnsettled(
        [this](int i) {
          ++looks;
          return settled[static_cast<std::size_t>(i)];
        },
        [&](int i) {
          visited.push_back(i);
          return static_cast<int>(visited.size()) < most;
        });
    return visited;
  }
  std::vector<int> expected(int most) const {
    std::vector<int> all;
    for (int i = 0; i < static_cast<int>(settled.size()) && static_cast<int>(all.size()) < most; ++i)
      if (!settled[static_cast<std::size_t>(i)]) all.push_back(i);
    return all;
  }
  // The first that is left.
  int first() {
    const std::vector<int> visited = visit(1);
    return visited.empty() ? -1 : visited[0];
  }
  void settle(int i) { settled[static_cast<std::size_t>(i)] = true; }

  Unsettled set;
  std::vector<bool> settled;
  std::vector<std::uint64_t> words;
  std::vector<BranchSetOn::Taken> taken;
  long long looks = 0;
};

TEST_F(UnsettledTest, VisitsAllAtFirstWhateverTheRoom) {
  for (const int size : {1, 2, 15, 16, 17, 31, 32, 33, 63, 64, 65, 1000}) {
    make(size, kRoom);
    EXPECT_EQ(visit(size + 1), expected(size)) << size;
    EXPECT_EQ(looks, size);
  }
}

TEST_F(UnsettledTest, VisitsWhatIsLeftAtEveryStepOfARandomWalk) {
  std::mt19937 random(1);
  const auto below = [&random](std::size_t n) { return static_cast<int>(random() % n); };
  for (const int size : {1, 7, 16, 40, 100, 257}) {
    cs_restoreAll();
    make(size, kRoom);
    std::vector<std::vector<bool>> before;
    for (int step = 0; step < 3000; ++step) {
      const int choice = below(10);
      if (choice < 3) {
        cs_saveContext();
        before.push_back(settled);
      } else if (choice < 5 && !before.empty()) {
        const int left = below(before.size());
        cs_restoreContextUntil(left + 1);
        settled = before[static_cast<std::size_t>(left)];
        before.resize(static_cast<std::size_t>(left));
      } else {
        for (int i = below(4); i > 0; --i)
          settle(below(2) == 0 ? below(settled.size()) : std::min(step % 50, size - 1));
      }
      const int most = 1 + below(settled.size());
      ASSERT_EQ(visit(most), expected(most)) << "size " << size << ", step " << step;
    }
  }
}

TEST_F(UnsettledTest, WhatACallbackOfAnUndoPassesByIsBackAtOnce) {
  static auto *test = this;
  for (const int size : {3, 40}) {
    make(size, kRoom);
    cs_saveContext();
    cs_saveContext();
    cs_backtrack(nullptr, 0, [](CSint *, int) {
      test->settled.assign(test->settled.size(), true);
      EXPECT_EQ(test->first(), -1);
      test->settled.assign(test->settled.size(), false);
    });
    cs_restoreContext();
    EXPECT_EQ(visit(size), expected(size));
  }
}

// The way of a search that always picks the first: its work is linear in the length of the array, though a block of it
// has 16384 positions.
TEST_F(UnsettledTest, AWayDownLooksAtEachPositionTwice) {
  constexpr int kSize = 200000;
  solver::checked.period = solver::checked.untilNext = kSize;
  make(kSize, kRoom);
  for (int i = 0; i < kSize; ++i) {
    ASSERT_EQ(first(), i);
    cs_saveContext();
    settle(i);
  }
  EXPECT_EQ(first(), -1);
  EXPECT_EQ(looks, 2 * kSize);
  solver::checked.period = solver::checked.untilNext = 1;
}

// 1600 positions in blocks of 128, the smallest power of two that will do, of which all but two are settled.
TEST_F(UnsettledTest, WholeBlocksArePassedByAndAStepBackLooksAtOneMore) {
  make(1600, kRoom);
  settled.assign(settled.size(), true);
  settled[120] = settled[1000] = false;
  EXPECT_EQ(visit(3), (std::vector{120, 1000}));
  looks = 0;
  EXPECT_EQ(visit(3), (std::vector{120, 1000}));
  EXPECT_EQ(looks, 8 + 128);
  cs_saveContext();
  settle(120);
  EXPECT_EQ(first(), 1000);
  cs_restoreContext();
  settled[120] = false;
  looks = 0;
  EXPECT_EQ(first(), 120);
  EXPECT_EQ(looks, 121);
}

TEST_F(UnsettledTest, PositionsMayBeGivenOneByOne) {
  BranchSet positions(5000);
  settled.assign(5000, false);
  set = Unsettled(5000, positions);
  for (int i = 0; i < 4999; ++i) settle(i);
  EXPECT_EQ(first(), 4999);
  looks = 0;
  EXPECT_EQ(first(), 4999);
  EXPECT_EQ(looks, 1);
}

}  // namespace
}  // namespace koru
