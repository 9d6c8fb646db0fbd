// SPDX-License-Identifier: MIT
// Models of koru.hpp in the flavour for threads: each thread has its own, and one that is parked may change threads.
#include <gtest/gtest.h>

#include <koru.hpp>
#include <thread>
#include <vector>

namespace {

int solutionsOfQueens(int n) {
  koru::Model m;
  const auto q = m.ints(static_cast<std::size_t>(n), 0, n - 1);
  for (std::size_t i = 0; i < q.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      const auto d = static_cast<int>(i - j);
      m.post(q[i] != q[j], q[i] - q[j] != d, q[j] - q[i] != d);
    }
  }
  int count = 0;
  for (const koru::Solution &s : m.solutions({.vars = q})) count += s[q[0]] >= 0 ? 1 : 0;
  return count;
}

TEST(CppThreads, EachHasModelsOfItsOwn) {
  std::vector<int> counts(4);
  std::vector<std::thread> threads;
  for (int &count : counts) threads.emplace_back([&count] { count = solutionsOfQueens(6) + solutionsOfQueens(7); });
  for (std::thread &thread : threads) thread.join();
  EXPECT_EQ(counts, std::vector<int>(4, 44));
}

TEST(CppThreads, AParkedModelGoesOnInAnotherOne) {
  koru::Model m;
  const auto x = m.ints(2, 0, 5);
  m.post(x[0] + x[1] == 7);
  m.park();
  int count = 0;
  std::thread([&] {
    m.post(x[0] < x[1]);
    for (const koru::Solution &s : m.solutions({.vars = x})) count += s[x[1]];
    m.park();
  }).join();
  EXPECT_EQ(count, 9);  // 2 + 5, 3 + 4
  EXPECT_EQ(x[1].min(), 3);
}

}  // namespace
