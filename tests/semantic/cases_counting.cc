// SPDX-License-Identifier: MIT
// Constraints on how often values are taken, with lists of values that make sense.
#include <algorithm>
#include <random>

#include "semantic/cases.h"

namespace koru::test::brute {
namespace {

using catalogue::Form;

std::vector<Wide> drawValues(int m, std::mt19937 &random) {
  std::vector<Wide> values{-1, 0, 1, 2, 3};
  std::ranges::shuffle(values, random);
  values.resize(static_cast<std::size_t>(m));
  return values;
}

// Bounds in any case, and domains where those of the counts, the last ones, are intervals.
Constraint whereCountsAreIntervals(Constraint c, int counts) {
  c.strength = [counts](const Left &left, std::size_t) {
    for (std::size_t column = left.columns() - static_cast<std::size_t>(counts); column < left.columns(); ++column)
      if (!left.isInterval(column)) return Strength::kBounds;
    return Strength::kDomain;
  };
  return c;
}

// Values and counts over -1..3.
Case cardinality(const char *name, bool domain) {
  Case c{std::string(name).substr(3), {name}, {}, {{-1, 5}}, 24};
  c.fewPatternsFrom = 5;
  std::mt19937 random(5);
  for (const auto &[n, m] : {std::pair{0, 2}, {1, 0}, {1, 2}, {2, 2}, {2, 3}, {3, 1}, {3, 2}, {3, 3}, {4, 2}, {4, 1}})
    for (const Wide closed : {0, 1}) {
      const Form form(catalogue::rowOf(name), {n, m}, {closed}, {drawValues(m, random)});
      c.forms.push_back(domain ? whereCountsAreIntervals(constraintOf(form), m) : constraintOf(form));
    }
  return c;
}

// Over five values, of which hits leave gaps.
Case nValues() {
  Case c{"NValues", {"cs_NValues"}, {}, {{0, 5}}, 150};
  for (const int n : {0, 1, 2, 3, 4, 5}) c.forms.push_back(constraintOf(Form(catalogue::rowOf("cs_NValues"), {n})));
  c.fewPatternsFrom = 5;
  return c;
}

// What is bound to the last variable is promised, and what is true of a bin by itself: no item stays without a set that
// makes one of its loads.
Constraint promisingSums(Constraint c, const std::vector<Wide> &sizes) {
  c.supported = [sizes](const Left &left, std::size_t column, int j) {
    const std::size_t n = sizes.size();
    if (column >= n || j < 0) return true;
    for (unsigned set = 0; set < 1U << n; ++set) {
      Wide sum = 0;
      bool possible = (set >> column & 1) != 0;
      for (std::size_t i = 0; i < n; ++i) {
        const bool in = (set >> i & 1) != 0;
        possible = possible && (in ? left.has(i, j) : !left.isBound(i) || !left.has(i, j));
        sum += in ? sizes[i] : 0;
      }
      if (possible && left.has(n + static_cast<std::size_t>(j), static_cast<int>(sum))) return true;
    }
    return false;
  };
  return c;
}

Case binPacking() {
  Case c{"BinPacking", {"cs_BinPacking"}, {}, {{-1, 6}}, 24};
  c.fewPatternsFrom = 5;
  const std::vector<std::pair<std::vector<Wide>, int>> instances{
      {{}, 2},        {{1}, 0},       {{2}, 1},          {{0, 3}, 1},       {{1, 2}, 2},       {{2, 2}, 3},
      {{1, 1, 3}, 2}, {{2, 3, 0}, 2}, {{1, 2, 2, 3}, 2}, {{3, 1, 1, 2}, 1}, {{1, 1, 2, 2}, 3}, {{1, -1}, 2}};
  for (const auto &[sizes, m] : instances) {
    const Form form(catalogue::rowOf("cs_BinPacking"), {static_cast<int>(sizes.size()), m}, {}, {sizes});
    c.forms.push_back(promisingSums(constraintOf(form), sizes));
  }
  return c;
}

}  // namespace

Cases countingCases() {
  return {cardinality("cs_Cardinality", false), cardinality("cs_CardinalityDomain", true), nValues(), binPacking()};
}

}  // namespace koru::test::brute
