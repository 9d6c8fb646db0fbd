// SPDX-License-Identifier: MIT
// The solutions that a model finds, beside those that going through all assignments finds.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <koru.hpp>
#include <set>
#include <vector>

namespace cpp_test {

using Values = std::vector<int>;
using Holds = std::function<bool(const Values &)>;
using IntVars = std::vector<koru::IntVar>;

// All values of lo..hi for n variables for which the statement holds.
inline std::set<Values> counted(std::size_t n, int lo, int hi, const Holds &holds) {
  std::set<Values> all;
  Values v(n, lo);
  for (;;) {
    if (holds(v)) all.insert(v);
    std::size_t i = 0;
    while (i < n && v[i] == hi) v[i++] = lo;
    if (i == n) return all;
    ++v[i];
  }
}

// What a model finds; each solution once.
inline std::set<Values> found(koru::Model &m, const IntVars &x) {
  std::set<Values> all;
  for (const koru::Solution &s : m.solutions({.vars = x})) {
    EXPECT_TRUE(all.insert(s[x]).second) << "twice";
  }
  return all;
}

// A constraint over n variables of lo..hi against its meaning.
inline void expectMeaning(std::size_t n, int lo, int hi, const Holds &holds,
                          const std::function<koru::Constraint(const IntVars &)> &constraint) {
  koru::Model m;
  const IntVars x = m.ints(n, lo, hi);
  m.post(constraint(x));
  EXPECT_EQ(found(m, x), counted(n, lo, hi, holds));
}

}  // namespace cpp_test
