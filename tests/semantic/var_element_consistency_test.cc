// SPDX-License-Identifier: MIT
// The consistency of cs_VarElement and cs_VarElementRange at every node of searches over random instances.
#include <algorithm>

#include "support/brute_consistency.h"

namespace {

using namespace koru::test;
using namespace koru::test::brute;

using Post = CSint *(*)(CSint *, CSint **, int);

// The variables are the index, the array, and the result.
class Instance {
 public:
  Instance(Post post, unsigned seed) : random_(seed) {
    cs_init();
    const int n = 2 + static_cast<int>(random_() % 2);
    variables.push_back(create(randomDomain(random_, 0, n)));
    for (int i = 0; i < n; ++i) variables.push_back(create(randomDomain(random_, -2, 5)));
    array_.assign(variables.begin() + 1, variables.end());
    variables.push_back(post(variables[0], array_.data(), n));
  }
  ~Instance() { cs_end(); }
  Instance(const Instance &) = delete;
  Instance &operator=(const Instance &) = delete;

  std::vector<CSint *> variables;
  CSint *index() const { return variables.front(); }
  CSint *result() const { return variables.back(); }
  CSint *at(int i) const { return array_[static_cast<std::size_t>(i)]; }
  const std::vector<CSint *> &array() const { return array_; }

  static bool solution(std::span<const int> t) { return t.back() == t[static_cast<std::size_t>(t[0]) + 1]; }
  Unsupported unsupportedValues() const { return unsupported(variables, solution); }

 private:
  std::mt19937 random_;
  std::vector<CSint *> array_;
};

constexpr unsigned kInstances = 120;

// Narrowings without a restore.
TEST(VarElementConsistency, EveryValueHasASupportOnTheWayDown) {
  for (unsigned seed = 1; seed <= 10 * kInstances; ++seed) {
    const Instance instance(cs_VarElement, seed);
    std::mt19937 random(seed);
    for (bool consistent = true; consistent;) {
      ASSERT_EQ(instance.unsupportedValues(), Unsupported{}) << "seed " << seed;
      CSint *v = instance.variables[random() % instance.variables.size()];
      const std::vector<int> domain = values(v);
      const Split &split = kSplits[random() % std::size(kSplits)];
      consistent = domain.size() > 1 && split.left(v, domain[random() % domain.size()]);
    }
  }
}

// After restores a value of the result may be without one, as long as the index is free, if it had been cut off. The
// number of such cases is returned.
int checkVarElementNodes(unsigned first, unsigned last, int changes) {
  int exceptions = 0;
  for (unsigned seed = first; seed <= last && !::testing::Test::HasFailure(); ++seed) {
    const Instance instance(cs_VarElement, seed);
    const std::vector<int> all = values(instance.result());
    std::set<int> lost;
    Nodes(seed, changes).visit(instance.variables, [&] {
      for (const auto &[variable, value] : instance.unsupportedValues()) {
        ASSERT_EQ(variable, instance.variables.size() - 1) << "seed " << seed;
        ASSERT_TRUE(lost.contains(value) && cs_isFree(instance.index())) << "seed " << seed << " value " << value;
        ++exceptions;
      }
      for (const int value : all)
        if (!cs_isIn(instance.result(), value)) lost.insert(value);
    });
  }
  return exceptions;
}

TEST(VarElementConsistency, EveryValueThatWasNeverCutOffHasASupportAtEveryNode) {
  EXPECT_GT(checkVarElementNodes(1, kInstances, 1), 0) << "the case that the test allows for does not arise";
}

TEST(VarElementConsistency, NothingElseIsMissedWhenSeveralChangesAreHeardTogether) {
  checkVarElementNodes(kInstances + 1, 2 * kInstances, 2);
  checkVarElementNodes(2 * kInstances + 1, 3 * kInstances, 4);
}

bool meets(CSint *x, CSint *value) { return cs_getMin(x) <= cs_getMax(value) && cs_getMax(x) >= cs_getMin(value); }

void expectRangeConsistent(const Instance &instance) {
  CSint *value = instance.result();
  const std::vector<int> open = values(instance.index());
  const auto some = [&](auto reaches) {
    return std::ranges::any_of(open, [&](int i) { return reaches(instance.at(i)); });
  };
  EXPECT_TRUE(some([&](CSint *x) { return cs_getMin(x) <= cs_getMin(value); }));
  EXPECT_TRUE(some([&](CSint *x) { return cs_getMax(x) >= cs_getMax(value); }));
  for (const int i : open) EXPECT_TRUE(meets(instance.at(i), value)) << i;
  if (open.size() > 1) return;
  EXPECT_EQ(cs_getMin(value), cs_getMin(instance.at(open[0])));
  EXPECT_EQ(cs_getMax(value), cs_getMax(instance.at(open[0])));
}

void checkRangeNodes(unsigned first, unsigned last, int changes) {
  for (unsigned seed = first; seed <= last && !::testing::Test::HasFailure(); ++seed) {
    const Instance instance(cs_VarElementRange, seed);
    Nodes(seed, changes).visit(instance.variables, [&] {
      expectRangeConsistent(instance);
      ASSERT_FALSE(::testing::Test::HasFailure()) << "seed " << seed;
    });
  }
}

TEST(VarElementRangeConsistency, BoundsAndPositionsAreSupportedAtEveryNode) { checkRangeNodes(1, kInstances, 1); }

TEST(VarElementRangeConsistency, NothingIsMissedWhenSeveralChangesAreHeardTogether) {
  checkRangeNodes(kInstances + 1, 2 * kInstances, 2);
  checkRangeNodes(2 * kInstances + 1, 3 * kInstances, 4);
}

}  // namespace
