// SPDX-License-Identifier: MIT
// The level of consistency, node by node: the values that enumeration finds without a support in the domains as they
// stand, and a search that visits its nodes by every kind of narrowing.
#pragma once

#include <set>
#include <utility>
#include <vector>

#include "support/brute_force.h"

namespace koru::test::brute {

// The variables by their place in the list, with the value.
using Unsupported = std::set<std::pair<std::size_t, int>>;

// The values that stand in no solution made of the values left.
inline Unsupported unsupported(const std::vector<CSint *> &variables, const Relation &solution) {
  std::vector<std::vector<int>> domains;
  Unsupported found;
  for (std::size_t i = 0; i < variables.size(); ++i) {
    domains.push_back(values(variables[i]));
    for (const int value : domains[i]) found.emplace(i, value);
  }
  forEachTuple(domains, [&](const Tuple &tuple) {
    if (!found.empty() && solution(tuple))
      for (std::size_t i = 0; i < tuple.size(); ++i) found.erase({i, tuple[i]});
  });
  return found;
}

// One way to split a domain in two: what the left branch posts and what the right one.
struct Split {
  bool (*left)(CSint *, int);
  bool (*right)(CSint *, int);
};
inline constexpr Split kSplits[] = {{cs_EQ, cs_NEQ}, {cs_LE, cs_GT}, {cs_NEQ, cs_EQ}, {cs_GE, cs_LT}};

// Visits the nodes of a binary search tree over all solutions; variables, values and ways to split are drawn at random.
class Nodes {
 public:
  explicit Nodes(unsigned seed) : random_(seed) {}

  template <class Check>
  void visit(const std::vector<CSint *> &variables, Check check) {
    check();
    std::vector<CSint *> open;
    for (CSint *v : variables)
      if (cs_isFree(v)) open.push_back(v);
    if (open.empty() || ::testing::Test::HasFailure()) return;
    CSint *v = open[random_() % open.size()];
    const Split &split = kSplits[random_() % std::size(kSplits)];
    const std::vector<int> domain = values(v);
    const int value = domain[random_() % domain.size()];
    for (const auto &branch : {split.left, split.right}) {
      cs_saveContext();
      if (branch(v, value)) visit(variables, check);
      cs_restoreContext();
    }
  }

 private:
  std::mt19937 random_;
};

}  // namespace koru::test::brute
