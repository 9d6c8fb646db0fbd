// SPDX-License-Identifier: MIT
// A second solver for the tests of the searches, which shares nothing with the library: domains are sets, a context is
// a copy of all of them, and a change is propagated by walking all constraints until nothing moves.
#pragma once

#include <array>
#include <set>
#include <vector>

#include "koru.h"
#include "support/kit/random.h"
#include "support/twins/copies.h"

namespace koru::test::search {

// Variables, the pairs that must differ, and the combinations {x, y, a, b} that must not be: both are told of by bound
// variables only, so every order of propagation ends in the same domains.
struct Problem {
  std::vector<std::vector<int>> domains;
  std::vector<std::array<int, 2>> different;
  std::vector<std::array<int, 4>> never;
  std::vector<int> order;  // the searched array: some variables, some of them twice
};

inline Problem randomProblem(Random &random) {
  Problem p;
  const int size = random.between(2, 5);
  for (int i = 0; i < size; ++i) {
    std::set<int> values;
    for (int n = random.between(1, 4); n > 0; --n) values.insert(random.between(-2, 4));
    p.domains.emplace_back(values.begin(), values.end());
    p.order.push_back(i);
  }
  const auto two = [&] { return std::array{random.below(size), random.below(size)}; };
  for (int n = random.below(5); n > 0; --n)
    if (const auto [x, y] = two(); x != y) p.different.push_back({x, y});
  for (int n = random.below(7); n > 0; --n)
    if (const auto [x, y] = two(); x != y) p.never.push_back({x, y, random.between(-2, 4), random.between(-2, 4)});
  if (random.chance(30)) p.order.insert(p.order.begin() + random.below(size), random.below(size));
  return p;
}

// The problem in the library.
struct Posted {
  std::vector<CSint *> variables;
  mutable std::vector<CSint *> array;  // the searches take it without const
  bool consistent = true;

  explicit Posted(const Problem &p) {
    for (const auto &domain : p.domains)
      variables.push_back(cs_createCSintFromDomain(domain.data(), static_cast<int>(domain.size())));
    for (const auto &[x, y] : p.different) consistent = consistent && cs_Neq(at(x), at(y));
    for (const auto &[x, y, a, b] : p.never) consistent = consistent && cs_IfNeq(at(x), at(y), a, b);
    for (const int i : p.order) array.push_back(at(i));
  }
  CSint *at(int i) const { return variables[static_cast<std::size_t>(i)]; }
  int size() const { return static_cast<int>(array.size()); }
};

// The problem in the model.
class Model : public copies::CopiesOf<copies::Domain> {
 public:
  using Domain = copies::Domain;

  explicit Model(const Problem &p) : problem(p) {
    for (const auto &domain : p.domains) {
      const Domain values(domain.begin(), domain.end());
      create(values, values);
    }
    consistent = propagate();
  }

  const Problem problem;
  bool consistent;

  int size() const { return static_cast<int>(problem.order.size()); }
  const Domain &element(int i) const { return variable(variableAt(i)); }
  int variableAt(int i) const { return problem.order[static_cast<std::size_t>(i)]; }

  // Keeps the values of a variable that satisfy a comparison; false when propagation refuses that.
  bool post(int v, const CSvalueSelection &r) { return copies::keep(variable(v), r) && propagate(); }

 private:
  bool isBoundTo(int v, int value) const { return variable(v).size() == 1 && variable(v).count(value) == 1; }

  // These are true when they took a value away.
  bool erase(int v, int value) { return variable(v).erase(value) == 1; }
  bool differ(int x, int y) { return variable(x).size() == 1 && erase(y, *variable(x).begin()); }

  bool propagateOnce() {
    bool changed = false;
    for (const auto &[x, y] : problem.different) {
      changed = differ(x, y) || changed;
      changed = differ(y, x) || changed;
    }
    for (const auto &[x, y, a, b] : problem.never) {
      changed = (isBoundTo(x, a) && erase(y, b)) || changed;
      changed = (isBoundTo(y, b) && erase(x, a)) || changed;
    }
    return changed;
  }

  bool propagate() {
    bool changed = true;
    while (changed) changed = propagateOnce();
    for (int v = 0; v < variables(); ++v)
      if (variable(v).empty()) return false;
    return true;
  }
};

}  // namespace koru::test::search
