// SPDX-License-Identifier: MIT
// Search objects node by node against a second search on the model, which copies all domains at each node and knows
// neither a trail nor a path: the same solutions in the same order, after as many choice points and fails, and the same
// domains wherever a variable is to be chosen.
#include <algorithm>
#include <optional>
#include <string>

#include "koru_extras.h"
#include "semantic/search_model.h"
#include "support/kit/instrumented.h"
#include "support/kit/solver_test.h"

namespace koru::test::search {
namespace {

using Domain = Model::Domain;

// Positions begin..end-1 of the labelled variables.
struct Phase {
  int end;
  int order;
  int value;
};

// What is searched, and how, for both.
struct Plan {
  CSsearchOptions options{};
  std::vector<Phase> phases;
  int cost = -1;  // the variable to be optimised, or none
  bool minimize = true;

  bool byValues(const Phase &p) const {
    return options.branching == CS_BRANCH_VALUES && !options.guided && p.value <= CS_VALUE_MAX;
  }
};

// A node: the domains of all variables, where a variable is chosen and at solutions.
std::string textOf(const std::vector<Domain> &domains) {
  std::string text;
  for (const Domain &d : domains) text += ::testing::PrintToString(std::vector<int>(d.begin(), d.end()));
  return text;
}

struct Log {
  std::vector<std::string> nodes;
  std::vector<std::vector<int>> solutions;  // with choice points and fails so far
};

// ----- the choices, as the header words them

bool isBetter(int order, const Domain &a, const Domain &b) {
  const auto regret = [](const Domain &d) { return *std::next(d.begin()) - *d.begin(); };
  switch (order) {
    case CS_ORDER_SMALLEST:
      return a.size() < b.size();
    case CS_ORDER_LARGEST:
      return a.size() > b.size();
    case CS_ORDER_SMALLEST_MIN:
      return *a.begin() < *b.begin();
    case CS_ORDER_LARGEST_MAX:
      return *a.rbegin() > *b.rbegin();
    case CS_ORDER_REGRET:
      return regret(a) > regret(b);
    default:
      return false;
  }
}

CSvalueSelection firstDecision(int value, const Domain &d) {
  const int low = *d.begin();
  const int high = *d.rbegin();
  const int middle = low + (high - low) / 2;
  switch (value) {
    case CS_VALUE_MAX:
      return {CS_METHOD_EQ, high};
    case CS_VALUE_MIDDLE: {
      const auto closer = [=](int a, int b) { return std::abs(a - middle) < std::abs(b - middle); };
      return {CS_METHOD_EQ, *std::ranges::min_element(d, closer)};
    }
    case CS_VALUE_MEDIAN:
      return {CS_METHOD_EQ, *std::next(d.begin(), static_cast<int>(d.size() - 1) / 2)};
    case CS_VALUE_LOW_HALF:
      return {CS_METHOD_LE, middle};
    case CS_VALUE_HIGH_HALF:
      return {CS_METHOD_GT, middle};
    default:
      return {CS_METHOD_EQ, low};
  }
}

CSvalueSelection opposite(const CSvalueSelection &d) {
  const int method = d.method == CS_METHOD_EQ ? CS_METHOD_NEQ : d.method == CS_METHOD_LE ? CS_METHOD_GT : CS_METHOD_LE;
  return {method, d.value};
}

// ----- the twin

class Twin {
 public:
  Twin(Model &model, const Plan &plan) : model_(model), plan_(plan) {
    for (int i = 0; i < model.size(); ++i) labelled_.push_back(model.variableAt(i));
    if (plan.cost >= 0) labelled_.push_back(plan.cost);
    wishes_.resize(labelled_.size());
  }

  void label() {
    const int i = choose();
    if (i < 0) return report();
    const Phase &phase = phaseOf(i);
    if (plan_.byValues(phase)) return labelByValues(i, phase.value == CS_VALUE_MIN);
    const auto wish = wishes_[static_cast<std::size_t>(i)];
    const bool follows = plan_.options.guided && wish && domain(i).contains(*wish);
    const CSvalueSelection d = follows ? CSvalueSelection{CS_METHOD_EQ, *wish} : firstDecision(phase.value, domain(i));
    tryInContext(i, d);
    if (post(i, opposite(d))) label();
  }

  Log log;
  int choicePoints = 0;
  int fails = 0;

 private:
  const Domain &domain(int i) const { return model_.variable(labelled_[static_cast<std::size_t>(i)]); }
  bool isFree(int i) const { return domain(i).size() > 1; }
  const Phase &phaseOf(int i) const {
    return *std::ranges::find_if(plan_.phases, [=](const Phase &p) { return i < p.end; });
  }

  void note() {
    std::vector<Domain> all;
    for (int v = 0; v < model_.variables(); ++v) all.push_back(model_.variable(v));
    log.nodes.push_back(textOf(all));
  }

  int choose() {
    if (plan_.options.lastConflict && conflict_ >= 0 && isFree(conflict_)) return conflict_;
    const int all = static_cast<int>(labelled_.size());
    int best = 0;
    while (best < all && !isFree(best)) ++best;
    if (best == all) return -1;
    const Phase &phase = phaseOf(best);
    if (phase.order == CS_ORDER_HOST) note();
    for (int i = best + 1; i < phase.end; ++i)
      if (isFree(i) && isBetter(phase.order, domain(i), domain(best))) best = i;
    return best;
  }

  void report() {
    note();
    std::vector<int> &solution = log.solutions.emplace_back();
    for (std::size_t i = 0; i < labelled_.size(); ++i) {
      wishes_[i] = *domain(static_cast<int>(i)).begin();
      solution.push_back(*wishes_[i]);
    }
    if (plan_.cost >= 0) best_ = solution.back();
    solution.insert(solution.end(), {choicePoints, fails});
  }

  bool postBound() {
    if (!best_) return true;
    return model_.post(plan_.cost, {plan_.minimize ? CS_METHOD_LT : CS_METHOD_GT, *best_});
  }
  bool post(int i, const CSvalueSelection &d) {
    const bool accepted = postBound() && model_.post(labelled_[static_cast<std::size_t>(i)], d);
    if (!accepted) ++fails;
    return accepted;
  }
  void tryInContext(int i, const CSvalueSelection &d) {
    model_.save();
    ++choicePoints;
    if (post(i, d)) {
      label();
    } else {
      conflict_ = i;
    }
    model_.restore();
  }
  void labelByValues(int i, bool upwards) {
    std::vector<int> values(domain(i).begin(), domain(i).end());
    if (!upwards) std::ranges::reverse(values);
    for (const int value : values) tryInContext(i, {CS_METHOD_EQ, value});
  }

  Model &model_;
  const Plan &plan_;
  std::vector<int> labelled_;
  std::vector<std::optional<int>> wishes_;
  std::optional<int> best_;
  int conflict_ = -1;
};

// ----- the library

class SearchObjectModelTest : public SolverTest {
 protected:
  static Plan planFor(const Problem &problem, Random &random) {
    Plan plan;
    const int size = static_cast<int>(problem.order.size());
    const auto orderOrHost = [&] { return random.chance(30) ? +CS_ORDER_HOST : random.between(0, CS_ORDER_REGRET); };
    plan.phases.push_back({random.chance(50) ? size : random.below(size), orderOrHost(),
                           random.between(CS_VALUE_MIN, CS_VALUE_HIGH_HALF)});
    if (plan.phases[0].end < size)
      plan.phases.push_back({size, orderOrHost(), random.between(CS_VALUE_MIN, CS_VALUE_HIGH_HALF)});
    CSsearchOptions &o = plan.options;
    o.size = sizeof o;
    o.order = plan.phases[0].order;
    o.value = plan.phases[0].value;
    o.branching = random.below(2);
    o.lastConflict = random.chance(30);
    o.guided = random.chance(30);
    if (random.chance(50)) {
      plan.cost = random.below(static_cast<int>(problem.domains.size()));
      plan.minimize = random.chance(50);
      plan.phases.push_back({size + 1, CS_ORDER_INPUT, plan.minimize ? CS_VALUE_MIN : CS_VALUE_MAX});
    }
    return plan;
  }

  struct Recorder {
    const Posted &real;
    Log log;
    void note() {
      std::vector<Domain> all;
      for (CSint *v : real.variables) {
        const std::vector<int> d = values(v);
        all.emplace_back(d.begin(), d.end());
      }
      log.nodes.push_back(textOf(all));
    }
  };

  // Nothing that can be labelled: the first is.
  static int choose(CSint **, int, void *extra) {
    static_cast<Recorder *>(extra)->note();
    return -1;
  }

  static CSsearch *begin(const Posted &real, const Plan &plan, CSsearchOptions options) {
    CSint **x = real.array.data();
    const int first = plan.phases[0].end;
    if (plan.cost >= 0) (plan.minimize ? options.minimize : options.maximize) = real.at(plan.cost);
    CSsearch *s = cs_createSearch(x, first);
    EXPECT_TRUE(cs_setSearchOptions(s, &options));
    if (first < real.size()) {
      EXPECT_TRUE(cs_addSearchPhase(s, x + first, real.size() - first, plan.phases[1].order, plan.phases[1].value));
    }
    return s;
  }

  static void compare(const Posted &real, const Plan &plan, const Twin &twin) {
    Recorder recorder{real, {}};
    CSsearchOptions options = plan.options;
    options.chooseVariable = choose;
    options.extra = &recorder;
    CSsearch *s = begin(real, plan, options);
    CSsearchStats stats{};
    const auto counted = [&] {
      EXPECT_TRUE(cs_getSearchStats(s, &stats, sizeof stats));
      return std::vector{static_cast<int>(stats.choicePoints), static_cast<int>(stats.fails)};
    };
    while (cs_nextSolution(s) == CS_STATUS_SOLUTION) {
      recorder.note();
      std::vector<int> &solution = recorder.log.solutions.emplace_back();
      for (CSint *v : real.array) solution.push_back(cs_getValue(v));
      if (plan.cost >= 0) solution.push_back(cs_getValue(real.at(plan.cost)));
      const std::vector<int> counts = counted();
      solution.insert(solution.end(), counts.begin(), counts.end());
    }
    EXPECT_EQ(recorder.log.nodes, twin.log.nodes);
    EXPECT_EQ(recorder.log.solutions, twin.log.solutions);
    EXPECT_EQ(counted(), (std::vector{twin.choicePoints, twin.fails}));
    EXPECT_TRUE(cs_freeSearch(s));
  }
};

TEST_F(SearchObjectModelTest, AgreesWithASearchThatCopies) {
  std::size_t nodes = 0, solutions = 0;
  for (unsigned seed = 0; seed < rounds(4000U) && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    const Problem problem = randomProblem(random);
    TearDown();
    SetUp();
    const Posted real(problem);
    Model model(problem);
    ASSERT_EQ(real.consistent, model.consistent);
    if (!real.consistent) continue;
    const Plan plan = planFor(problem, random);
    Twin twin(model, plan);
    twin.label();
    compare(real, plan, twin);
    nodes += twin.log.nodes.size();
    solutions += twin.log.solutions.size();
  }
  EXPECT_GT(nodes, rounds(20000U));
  EXPECT_GT(solutions, rounds(10000U));
}

}  // namespace
}  // namespace koru::test::search
