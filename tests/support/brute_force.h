// SPDX-License-Identifier: MIT
// The brute-force harness: a constraint is given as a relation over values and as the call that posts it, and its
// propagation is compared with the enumeration of all solutions.
//
// What is checked, for given domains:
//   - posting loses no solution and fails only when there is none;
//   - no narrowing by a public relation, alone or in sequence, loses a solution or fails while one is left;
//   - a complete assignment is accepted exactly when it is a solution, whatever the order of assigning;
//   - restoring gives back every domain exactly.
#pragma once

#include <functional>
#include <iterator>
#include <numeric>
#include <set>
#include <span>
#include <sstream>
#include <string>

#include "support/brute_domains.h"

namespace koru::test::brute {

using Relation = std::function<bool(std::span<const int>)>;

struct Constraint {
  std::string name;
  std::function<bool(std::span<const int>)> solution;  // over the positions, and the result when there is one
  // Posts on the variables at the positions; a functional constraint puts the variable it returns into result.
  std::function<bool(CSint **x, CSint *&result)> post;
  std::function<int(std::span<const int>)> value;  // of the result; null for relations
  // Assignments that are no solution and yet accepted by design, see the tests that set it.
  Relation acceptedAnyway = [](std::span<const int>) { return false; };
};

inline Constraint relation(std::string name, Relation solution, std::function<bool(CSint **x)> post) {
  return {std::move(name), std::move(solution), [post](CSint **x, CSint *&) { return post(x); }, nullptr};
}

inline Constraint function(std::string name, std::function<int(std::span<const int>)> value,
                           std::function<CSint *(CSint **x)> post) {
  return {std::move(name), [value](std::span<const int> t) { return value(t.first(t.size() - 1)) == t.back(); },
          [post](CSint **x, CSint *&result) {
            result = post(x);
            return result != nullptr;
          },
          value};
}

// What stands at the positions, followed by the result when the tuple of the variables has one.
inline Tuple argumentsOf(const Tuple &tuple, const std::vector<int> &positions, bool withResult) {
  Tuple args;
  for (const int p : positions) args.push_back(tuple[static_cast<std::size_t>(p)]);
  if (withResult) args.push_back(tuple.back());
  return args;
}

// All solutions over the variables, the result being one of them, the last, when there is one.
inline std::vector<Tuple> solutionsOf(const Constraint &c, const std::vector<Domain> &variables,
                                      const std::vector<int> &positions) {
  std::vector<std::vector<int>> domains;
  for (const Domain &domain : variables) domains.push_back(domain.values);
  std::vector<Tuple> solutions;
  forEachTuple(domains, [&](const Tuple &tuple) {
    Tuple solution = tuple;
    if (c.value) solution.push_back(c.value(argumentsOf(tuple, positions, false)));
    if (c.solution(argumentsOf(solution, positions, c.value != nullptr))) solutions.push_back(solution);
  });
  return solutions;
}

// One of the relations that narrow by a constant.
struct Step {
  const char *name;
  bool (*apply)(CSint *, int);
  bool (*holds)(int, int);
};

inline constexpr Step kSteps[] = {
    {"EQ", cs_EQ, [](int x, int v) { return x == v; }}, {"NEQ", cs_NEQ, [](int x, int v) { return x != v; }},
    {"LE", cs_LE, [](int x, int v) { return x <= v; }}, {"GE", cs_GE, [](int x, int v) { return x >= v; }},
    {"LT", cs_LT, [](int x, int v) { return x < v; }},  {"GT", cs_GT, [](int x, int v) { return x > v; }},
};

struct Case {
  const Constraint &constraint;
  std::vector<Domain> domains;  // of the variables
  std::vector<int> positions;   // which variable stands at each position
  int exhaustiveDepth = 1;      // length of the narrowing sequences that are tried in full
  int randomSequences = 4;      // and number of longer random ones
  unsigned seed = 1;
};

// All orders of up to three variables, of more the two extreme ones.
inline std::vector<std::vector<std::size_t>> assigningOrders(std::size_t n) {
  std::vector<std::size_t> order(n);
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::vector<std::vector<std::size_t>> orders{order};
  if (n > 3) orders.emplace_back(order.rbegin(), order.rend());
  while (n <= 3 && std::ranges::next_permutation(order).found) orders.push_back(order);
  return orders;
}

class Run {
 public:
  explicit Run(const Case &test) : case_(test), random_(test.seed) {
    cs_init();
    for (const Domain &domain : case_.domains) variables_.push_back(create(domain));
    for (const int p : case_.positions) array_.push_back(variables_[static_cast<std::size_t>(p)]);
  }
  ~Run() { cs_end(); }
  Run(const Run &) = delete;
  Run &operator=(const Run &) = delete;

  void check() {
    solutions_ = solutionsOf(case_.constraint, case_.domains, case_.positions);
    const auto before = snapshot();
    cs_saveContext();
    CSint *result = nullptr;
    const bool posted = case_.constraint.post(array_.data(), result);
    if (result != nullptr) addResult(result);
    if (posted) {
      checkKept(solutions_, "posting");
      if (!::testing::Test::HasFailure()) checkNarrowings();
      if (!::testing::Test::HasFailure()) checkAssignments();
    } else {
      EXPECT_TRUE(solutions_.empty()) << "posting failed although there is a solution" << where();
    }
    cs_restoreContext();
    variables_.resize(case_.domains.size());
    EXPECT_EQ(before, snapshot()) << "restoring past the posting" << where();
  }

 private:
  using Snapshot = std::vector<std::vector<int>>;

  Tuple arguments(const Tuple &tuple) const {
    return argumentsOf(tuple, case_.positions, tuple.size() > case_.domains.size());
  }

  void addResult(CSint *result) { variables_.push_back(result); }

  Snapshot snapshot() const {
    Snapshot state;
    for (CSint *v : variables_) {
      state.push_back(values(v));
      state.back().push_back(cs_getNbElements(v));
    }
    return state;
  }

  void checkKept(const std::vector<Tuple> &alive, const std::string &after) const {
    for (const Tuple &solution : alive)
      for (std::size_t i = 0; i < variables_.size(); ++i)
        ASSERT_TRUE(cs_isIn(variables_[i], solution[i]))
            << after << " lost value " << solution[i] << " of variable " << i << where();
    for (CSint *v : variables_) ASSERT_EQ(std::ssize(values(v)), cs_getNbElements(v)) << after << where();
  }

  // Applies a step and says whether the sequence can go on; alive becomes the solutions that satisfy it.
  bool apply(const Step &step, std::size_t i, int v, std::vector<Tuple> &alive) {
    std::erase_if(alive, [&](const Tuple &t) { return !step.holds(t[i], v); });
    const bool consistent = step.apply(variables_[i], v);
    std::ostringstream text;
    text << step.name << "(variable " << i << ", " << v << ")";
    if (consistent) {
      checkKept(alive, text.str());
    } else {
      EXPECT_TRUE(alive.empty()) << text.str() << " failed although there is a solution" << where();
    }
    return consistent && !::testing::Test::HasFailure();
  }

  void checkNarrowings() {
    tryAllSteps(solutions_, case_.exhaustiveDepth);
    for (int i = 0; i < case_.randomSequences && !::testing::Test::HasFailure(); ++i) tryRandomSteps();
  }

  template <class Body>
  void inContext(Body body) {
    const Snapshot before = snapshot();
    cs_saveContext();
    body();
    cs_restoreContext();
    ASSERT_EQ(before, snapshot()) << "restoring" << where();
  }

  void tryAllSteps(const std::vector<Tuple> &alive, int depth) {
    for (std::size_t i = 0; depth > 0 && i < variables_.size(); ++i) {
      for (int v = cs_getMin(variables_[i]) - 1; v <= cs_getMax(variables_[i]) + 1; ++v) {
        for (const Step &step : kSteps) {
          if (::testing::Test::HasFailure()) return;
          inContext([&] {
            std::vector<Tuple> left = alive;
            if (apply(step, i, v, left)) tryAllSteps(left, depth - 1);
          });
        }
      }
    }
  }

  // Steps in nested contexts, and all of them taken back at once.
  void tryRandomSteps() {
    const Snapshot before = snapshot();
    const int label = cs_saveContext();
    std::vector<Tuple> alive = solutions_;
    for (int length = 0; length < 12 && !variables_.empty(); ++length) {
      const std::size_t i = random_() % variables_.size();
      const int low = cs_getMin(variables_[i]) - 1;
      const int v = low + static_cast<int>(random_() % static_cast<unsigned>(cs_getMax(variables_[i]) - low + 2));
      if (random_() % 3 == 0) cs_saveContext();
      if (!apply(kSteps[random_() % std::size(kSteps)], i, v, alive)) break;
    }
    cs_restoreContextUntil(label);
    ASSERT_EQ(before, snapshot()) << "restoring a sequence" << where();
  }

  void checkAssignments() {
    Snapshot domains;
    for (CSint *v : variables_) domains.push_back(values(v));
    const std::set<Tuple> wanted(solutions_.begin(), solutions_.end());
    const auto orders = assigningOrders(variables_.size());
    forEachTuple(domains, [&](const Tuple &tuple) {
      const bool expected = wanted.contains(tuple) || case_.constraint.acceptedAnyway(arguments(tuple));
      for (const auto &order : orders)
        if (!::testing::Test::HasFailure()) checkAssignment(tuple, order, expected);
    });
  }

  void checkAssignment(const Tuple &tuple, const std::vector<std::size_t> &order, bool expected) {
    inContext([&] {
      bool accepted = true;
      for (const std::size_t i : order) accepted = accepted && cs_EQ(variables_[i], tuple[i]);
      EXPECT_EQ(accepted, expected) << "assignment " << ::testing::PrintToString(tuple) << " in order "
                                    << ::testing::PrintToString(order) << where();
    });
  }

  std::string where() const {
    std::ostringstream text;
    text << "\n  constraint " << case_.constraint.name << " positions " << ::testing::PrintToString(case_.positions);
    for (const Domain &d : case_.domains)
      text << "\n  domain " << ::testing::PrintToString(d.values) << " made " << static_cast<int>(d.making);
    return text.str();
  }

  const Case &case_;
  std::mt19937 random_;
  std::vector<CSint *> variables_;  // the result last
  std::vector<CSint *> array_;      // by position; kept while the solver runs
  std::vector<Tuple> solutions_;
};

// False when the case, or anything before it in the test, has failed.
inline bool holds(const Case &test) {
  Run(test).check();
  return !::testing::Test::HasFailure();
}

inline std::vector<int> distinctPositions(int arity) {
  std::vector<int> positions;
  for (int i = 0; i < arity; ++i) positions.push_back(i);
  return positions;
}

// All pairs of domains within [low, low + width).
inline void checkAllPairs(const Constraint &c, int low, int width, int depth) {
  const std::vector<Domain> domains = allDomains(low, width);
  unsigned seed = 0;
  for (const Domain &a : domains)
    for (const Domain &b : domains)
      if (!holds({c, {a, b}, {0, 1}, depth, 3, ++seed})) return;
}

// Random domains at distinct positions.
inline void checkRandom(const Constraint &c, int arity, int low, int width, int cases) {
  std::mt19937 random(static_cast<unsigned>(arity * 1000 + width));
  for (int i = 0; i < cases; ++i) {
    std::vector<Domain> domains;
    for (int k = 0; k < arity; ++k) domains.push_back(randomDomain(random, low, width));
    if (!holds({c, domains, distinctPositions(arity), 1, 6, static_cast<unsigned>(i)})) return;
  }
}

// The same variable at several positions, every domain in turn for each variable.
inline void checkShared(const Constraint &c, const std::vector<int> &positions, int low, int width, int cases) {
  const int count = 1 + *std::ranges::max_element(positions);
  std::mt19937 random(static_cast<unsigned>(width));
  for (int i = 0; i < cases; ++i) {
    std::vector<Domain> domains;
    for (int k = 0; k < count; ++k) domains.push_back(randomDomain(random, low, width));
    if (!holds({c, domains, positions, 1, 6, static_cast<unsigned>(i)})) return;
  }
}

}  // namespace koru::test::brute
