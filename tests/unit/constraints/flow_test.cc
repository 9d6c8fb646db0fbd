// SPDX-License-Identifier: MIT
#include "constraints/counting/flow.h"

#include <algorithm>
#include <random>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

using counting::Flow;

struct Problem {
  std::vector<std::vector<int>> options;  // by variable
  std::vector<int> least;                 // by class
  std::vector<int> most;

  int n() const { return static_cast<int>(options.size()); }
  int classes() const { return static_cast<int>(least.size()); }
  void load(const Flow &flow) const {
    for (int i = 0; i < n(); ++i) {
      std::fill_n(flow.options(i), wordsFor(classes() + 1), 0);
      for (const int j : options[static_cast<std::size_t>(i)]) WordSet(flow.options(i)).set(j);
    }
    for (int j = 0; j < classes(); ++j)
      flow.demand(j, least[static_cast<std::size_t>(j)], most[static_cast<std::size_t>(j)]);
  }
};

// What flows there are, by enumeration.
struct Enumerated {
  bool any = false;
  std::vector<int> fewest;
  std::vector<int> mostTaken;
  std::vector<std::vector<bool>> possible;

  explicit Enumerated(const Problem &p)
      : fewest(p.least.size(), p.n() + 1),
        mostTaken(p.least.size(), -1),
        possible(p.options.size(), std::vector<bool>(p.least.size())) {
    std::vector<int> chosen;
    std::vector<int> taken(p.least.size());
    choose(p, chosen, taken);
  }

 private:
  void choose(const Problem &p, std::vector<int> &chosen, std::vector<int> &taken) {
    if (chosen.size() == p.options.size()) return note(p, chosen, taken);
    for (const int j : p.options[chosen.size()]) {
      chosen.push_back(j);
      ++taken[static_cast<std::size_t>(j)];
      choose(p, chosen, taken);
      --taken[static_cast<std::size_t>(j)];
      chosen.pop_back();
    }
  }
  void note(const Problem &p, const std::vector<int> &chosen, const std::vector<int> &taken) {
    for (std::size_t j = 0; j < taken.size(); ++j)
      if (taken[j] < p.least[j] || taken[j] > p.most[j]) return;
    any = true;
    for (std::size_t j = 0; j < taken.size(); ++j) {
      fewest[j] = std::min(fewest[j], taken[j]);
      mostTaken[j] = std::max(mostTaken[j], taken[j]);
    }
    for (std::size_t i = 0; i < chosen.size(); ++i) possible[i][static_cast<std::size_t>(chosen[i])] = true;
  }
};

class FlowTest : public SolverTest {
 protected:
  static std::vector<int> possible(const Flow &flow, const Problem &p, int i) {
    std::vector<std::uint64_t> words(flow.possible(i), flow.possible(i) + wordsFor(p.classes() + 1));
    std::vector<int> result;
    for (const int j : p.options[static_cast<std::size_t>(i)])
      if (WordSet(words.data()).has(j)) result.push_back(j);
    return result;
  }
  static void expectEnumeration(Flow &flow, const Problem &p) {
    p.load(flow);
    const Enumerated expected(p);
    ASSERT_EQ(flow.establish(), expected.any);
    if (!expected.any) return;
    for (int j = 0; j < p.classes(); ++j) {
      ASSERT_EQ(flow.mostOf(j), expected.mostTaken[static_cast<std::size_t>(j)]);
      ASSERT_EQ(flow.leastOf(j), expected.fewest[static_cast<std::size_t>(j)]);
    }
    flow.separate();
    for (int i = 0; i < p.n(); ++i) {
      std::vector<int> options;
      for (const int j : p.options[static_cast<std::size_t>(i)])
        if (expected.possible[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)]) options.push_back(j);
      ASSERT_EQ(possible(flow, p, i), options) << "variable " << i;
    }
  }
};

// Three nurses, of whom two can only work by day, and who is there by night must be two: none.
TEST_F(FlowTest, AClassThatTooFewCanTakeHasNoFlow) {
  Problem p{{{0}, {0}, {0, 1}}, {0, 2}, {3, 3}};
  Flow flow(3, 2);
  ASSERT_TRUE(static_cast<bool>(flow));
  expectEnumeration(flow, p);
  p.least = {0, 1};
  expectEnumeration(flow, p);
  EXPECT_EQ(possible(flow, p, 2), std::vector<int>{1}) << "the third one must take the night";
}

// A class that is full passes one of its variables on.
TEST_F(FlowTest, APathGoesOverSeveralClasses) {
  const Problem p{{{0}, {0, 1}, {1, 2}, {2, 3}}, {1, 1, 1, 1}, {1, 1, 1, 1}};
  Flow flow(4, 4);
  expectEnumeration(flow, p);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(possible(flow, p, i), std::vector<int>{i});
}

TEST_F(FlowTest, NobodyTakesNothing) {
  Flow flow(0, 2);
  expectEnumeration(flow, {{}, {0, 0}, {0, 1}});
  expectEnumeration(flow, {{}, {1, 0}, {1, 1}});
}

// One flow after the other in the same object, as in a search that moves up and down.
TEST_F(FlowTest, AgreesWithEnumeration) {
  std::mt19937 random(53);
  const auto below = [&random](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  for (int round = 0; round < 60; ++round) {
    Problem p;
    const int n = 1 + below(6);
    const int classes = 1 + below(5);
    Flow flow(n, classes);
    for (int step = 0; step < 20; ++step) {
      p = {};
      for (int i = 0; i < n; ++i) {
        p.options.emplace_back();
        for (int j = 0; j < classes; ++j)
          if (below(3) > 0) p.options.back().push_back(j);
      }
      for (int j = 0; j < classes; ++j) {
        p.least.push_back(below(3));
        p.most.push_back(p.least.back() + below(3));
      }
      expectEnumeration(flow, p);
    }
  }
}

}  // namespace
}  // namespace koru::test
