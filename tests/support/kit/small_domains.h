// SPDX-License-Identifier: MIT
// Small domains of every kind for the brute-force harness, and operations on sets of solutions.
#pragma once

#include <algorithm>
#include <random>
#include <vector>

#include "koru.h"
#include "support/kit/solver_test.h"

namespace koru::test::brute {

using Tuple = std::vector<int>;

// How a set of values comes to be a domain. The sets are the same, the representations are not.
enum class Making {
  kExact,   // an interval as an interval, any other set as a set of values
  kValues,  // always from values: a bit array even without holes
  kCarved,  // a wider interval from which everything else was removed before
};

inline const char *nameOf(Making making) {
  return making == Making::kExact ? "exactly" : making == Making::kValues ? "from values" : "by carving";
}

struct Domain {
  std::vector<int> values;
  Making making = Making::kExact;
};

inline CSint *carve(const std::vector<int> &wanted) {
  CSint *v = cs_createCSint(wanted.front() - 2, wanted.back() + 2);
  for (int value = wanted.front() + 1; value < wanted.back(); ++value)
    if (!std::ranges::binary_search(wanted, value)) cs_NEQ(v, value);
  cs_GE(v, wanted.front());
  cs_LE(v, wanted.back());
  return v;
}

inline CSint *create(const Domain &domain) {
  const std::vector<int> &wanted = domain.values;
  if (domain.making == Making::kCarved) return carve(wanted);
  const bool interval = wanted.back() - wanted.front() + 1 == static_cast<int>(wanted.size());
  if (interval && domain.making == Making::kExact) return cs_createCSint(wanted.front(), wanted.back());
  return fromValues(wanted);
}

// A subset of [low, low + 31), bit by bit, the way of making it taking turns.
inline Domain domainOf(int low, int mask) {
  Domain domain{{}, static_cast<Making>(mask % 3)};
  for (int i = 0; i < 31; ++i)
    if ((mask >> i & 1) != 0) domain.values.push_back(low + i);
  return domain;
}

// Every non-empty subset of [low, low + width).
inline std::vector<Domain> allDomains(int low, int width) {
  std::vector<Domain> domains;
  for (int mask = 1; mask < 1 << width; ++mask) domains.push_back(domainOf(low, mask));
  return domains;
}

// A subset of [low, low + width): an interval, a constant or a set with holes.
inline Domain randomDomain(std::mt19937 &random, int low, int width) {
  const auto all = static_cast<unsigned>((1 << width) - 1);
  const unsigned mask = static_cast<unsigned>(random()) % all + 1;
  const auto making = static_cast<Making>(random() % 3);
  Domain domain{{}, making};
  for (int i = 0; i < width; ++i)
    if ((mask >> i & 1U) != 0) domain.values.push_back(low + i);
  const unsigned shape = static_cast<unsigned>(random()) % 4;
  if (shape == 0) domain.values.resize(1);
  if (shape != 1) return domain;
  const int from = domain.values.front();
  const int to = domain.values.back();
  domain.values.clear();
  for (int value = from; value <= to; ++value) domain.values.push_back(value);
  return domain;
}

// Calls visit with every tuple that takes its i-th value from the i-th domain.
template <class Visit>
void forEachTuple(const std::vector<std::vector<int>> &domains, Visit visit) {
  Tuple tuple(domains.size());
  auto choose = [&](auto &&self, std::size_t i) -> void {
    if (i == domains.size()) return visit(tuple);
    for (const int value : domains[i]) {
      tuple[i] = value;
      self(self, i + 1);
    }
  };
  choose(choose, 0);
}

}  // namespace koru::test::brute
