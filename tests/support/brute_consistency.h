// SPDX-License-Identifier: MIT
// The level of consistency, node by node: the values that enumeration finds without a support in the domains as they
// stand, and a search that visits its nodes by every kind of narrowing.
#pragma once

#include <set>
#include <utility>
#include <vector>

#include "support/batch.h"
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

// Visits the nodes of a binary search tree; variables, values and ways to split are drawn at random. With more than one
// change per branch all are made before the first event is heard, so that some events are stale by then.
class Nodes {
 public:
  explicit Nodes(unsigned seed, int changes = 1) : random_(seed), changes_(changes) {}

  template <class Check>
  void visit(const std::vector<CSint *> &variables, Check check) {
    check();
    std::vector<CSint *> open;
    for (CSint *v : variables)
      if (cs_isFree(v)) open.push_back(v);
    if (open.empty() || ::testing::Test::HasFailure()) return;
    const Change change = draw(open);
    for (const auto &branch : {change.split.left, change.split.right}) {
      cs_saveContext();
      if (narrow(open, change, branch)) visit(variables, check);
      cs_restoreContext();
    }
  }

 private:
  struct Change {
    CSint *variable;
    int value;
    Split split;
  };

  Change draw(const std::vector<CSint *> &open) {
    CSint *v = open[random_() % open.size()];
    const std::vector<int> domain = values(v);
    return {v, domain[random_() % domain.size()], kSplits[random_() % std::size(kSplits)]};
  }

  bool narrow(const std::vector<CSint *> &open, const Change &first, bool (*branch)(CSint *, int)) {
    if (changes_ == 1) return branch(first.variable, first.value);
    return together([&] {
      bool consistent = branch(first.variable, first.value);
      for (int i = 1; consistent && i < changes_; ++i) {
        const Change next = draw(open);
        consistent = next.split.right(next.variable, next.value);
      }
      return consistent;
    });
  }

  std::mt19937 random_;
  int changes_;
};

}  // namespace koru::test::brute
