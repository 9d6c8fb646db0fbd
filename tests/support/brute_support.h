// SPDX-License-Identifier: MIT
// Checks a constraint's consistency level at every node of whole searches: each remaining value, or each bound, must
// belong to a solution within the domains as they stand.
//
// The searches label with the constant relations alone, so what is found lacking is the constraint's own. A node must
// be refused only when no solution is left, and a leaf must be a solution.
#pragma once

#include "support/brute_force.h"

namespace koru::test::brute {

// What the constraint promises for a variable.
enum class Support {
  kValues,   // each value is part of a solution
  kBounds,   // minimum and maximum are
  kNothing,  // only that no solution is lost
};

// How a node is divided: the chosen variable's values one by one; its lower and upper half; one value and all others.
enum class Branching { kByValue, kByHalves, kByRemoval };
inline constexpr Branching kBranchings[] = {Branching::kByValue, Branching::kByHalves, Branching::kByRemoval};

struct SupportCase {
  const Constraint &constraint;
  std::vector<Domain> domains;
  std::vector<int> positions;
  Support ofVariables = Support::kValues;
  Support ofResult = Support::kValues;
  Branching branching = Branching::kByValue;
  unsigned seed = 1;
};

class SupportSearch {
 public:
  explicit SupportSearch(const SupportCase &test) : case_(test), random_(test.seed) {
    cs_init();
    for (const Domain &domain : case_.domains) variables_.push_back(create(domain));
    for (const int p : case_.positions) array_.push_back(variables_[static_cast<std::size_t>(p)]);
  }
  ~SupportSearch() { cs_end(); }
  SupportSearch(const SupportSearch &) = delete;
  SupportSearch &operator=(const SupportSearch &) = delete;

  // Returns the number of nodes whose domains were checked.
  int run() {
    const std::vector<Tuple> solutions = solutionsOf(case_.constraint, case_.domains, case_.positions);
    CSint *result = nullptr;
    const bool posted = case_.constraint.post(array_.data(), result);
    if (result != nullptr) variables_.push_back(result);
    if (posted) {
      visit(solutions);
    } else {
      EXPECT_TRUE(solutions.empty()) << "posting failed although there is a solution" << where();
    }
    return nodes_;
  }

 private:
  using Apply = bool (*)(CSint *, int);
  struct Alternative {
    Apply apply;
    int value;
  };

  void visit(const std::vector<Tuple> &above) {
    ++nodes_;
    std::vector<Tuple> alive;
    for (const Tuple &solution : above)
      if (holds(solution)) alive.push_back(solution);
    for (std::size_t i = 0; i < variables_.size(); ++i) expectSupported(i, alive);
    const std::vector<std::size_t> open = unbound();
    EXPECT_FALSE(open.empty() && alive.empty()) << "a leaf is a solution" << where();
    if (open.empty() || ::testing::Test::HasFailure()) return;
    const std::size_t chosen = open[random_() % open.size()];
    for (const Alternative &alternative : alternatives(variables_[chosen])) tryAlternative(chosen, alternative, alive);
  }

  void tryAlternative(std::size_t i, const Alternative &alternative, const std::vector<Tuple> &alive) {
    if (::testing::Test::HasFailure()) return;
    cs_saveContext();
    if (alternative.apply(variables_[i], alternative.value)) {
      visit(alive);
    } else {
      for (const Tuple &t : alive) EXPECT_FALSE(satisfies(alternative, t[i])) << "a solution was refused" << where();
    }
    cs_restoreContext();
  }

  static bool satisfies(const Alternative &alternative, int value) {
    for (const Step &step : kSteps)
      if (step.apply == alternative.apply) return step.holds(value, alternative.value);
    return false;
  }

  bool holds(const Tuple &solution) const {
    for (std::size_t i = 0; i < solution.size(); ++i)
      if (!cs_isIn(variables_[i], solution[i])) return false;
    return true;
  }

  Support promised(std::size_t i) const { return i < case_.domains.size() ? case_.ofVariables : case_.ofResult; }

  void expectSupported(std::size_t i, const std::vector<Tuple> &alive) const {
    const Support support = promised(i);
    std::vector<int> wanted = values(variables_[i]);
    if (support == Support::kBounds) wanted = {wanted.front(), wanted.back()};
    if (support == Support::kNothing) wanted.clear();
    for (const int value : wanted) {
      const bool found = std::ranges::any_of(alive, [&](const Tuple &t) { return t[i] == value; });
      EXPECT_TRUE(found) << "value " << value << " of variable " << i << " has no support" << where();
    }
  }

  std::vector<std::size_t> unbound() const {
    std::vector<std::size_t> open;
    for (std::size_t i = 0; i < variables_.size(); ++i)
      if (cs_isFree(variables_[i])) open.push_back(i);
    return open;
  }

  std::vector<Alternative> alternatives(CSint *v) {
    const std::vector<int> all = values(v);
    const int one = all[random_() % all.size()];
    const int middle = all[(all.size() - 1) / 2];
    if (case_.branching == Branching::kByRemoval) return {{cs_NEQ, one}, {cs_EQ, one}};
    if (case_.branching == Branching::kByHalves) return {{cs_LE, middle}, {cs_GT, middle}};
    std::vector<Alternative> each;
    for (const int value : all) each.push_back({cs_EQ, value});
    return each;
  }

  std::string where() const {
    std::ostringstream text;
    text << "\n  constraint " << case_.constraint.name << " node " << nodes_ << " seed " << case_.seed << " branching "
         << static_cast<int>(case_.branching);
    for (CSint *v : variables_) text << "\n  domain " << ::testing::PrintToString(values(v));
    return text.str();
  }

  const SupportCase &case_;
  std::mt19937 random_;
  std::vector<CSint *> variables_;  // the result last
  std::vector<CSint *> array_;      // by position; kept while the solver runs
  int nodes_ = 0;
};

// A search in each way of branching; the number of nodes checked.
inline int checkSupported(const Constraint &c, const std::vector<Domain> &domains, const std::vector<int> &positions,
                          unsigned seed, Support ofVariables = Support::kValues, Support ofResult = Support::kValues) {
  int nodes = 0;
  for (const Branching branching : kBranchings) {
    const SupportCase test{c, domains, positions, ofVariables, ofResult, branching, seed};
    if (!::testing::Test::HasFailure()) nodes += SupportSearch(test).run();
  }
  return nodes;
}

// Random domains within [low, low + width) for as many variables as `positions` names.
inline int checkSupportedRandom(const Constraint &c, const std::vector<int> &positions, int low, int width, int cases,
                                Support ofVariables = Support::kValues, Support ofResult = Support::kValues) {
  const int count = 1 + *std::ranges::max_element(positions);
  std::mt19937 random(static_cast<unsigned>(width * 100 + count));
  int nodes = 0;
  for (int i = 0; i < cases; ++i) {
    std::vector<Domain> domains;
    for (int k = 0; k < count; ++k) domains.push_back(randomDomain(random, low, width));
    nodes += checkSupported(c, domains, positions, static_cast<unsigned>(i), ofVariables, ofResult);
  }
  return nodes;
}

}  // namespace koru::test::brute
