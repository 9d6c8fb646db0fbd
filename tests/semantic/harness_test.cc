// SPDX-License-Identifier: MIT
// The harness finds what it is meant to find: constraints that are wrong on purpose, in one way each.
#include <gmock/gmock.h>

#include "core/post.h"
#include "core/solver.h"
#include "semantic/cases.h"

namespace koru::test::brute {
namespace {

using ::testing::HasSubstr;

std::string findingOf(Case test, Constraint c, long long only = 0) {
  test.forms = {std::move(c)};
  Sweep sweep(test, {}, only);
  sweep.run();
  return sweep.finding;
}

std::string findingOf(Constraint c, long long only = 0) {
  return findingOf({"Broken", {}, {}, {{-1, 4}}, 300}, std::move(c), only);
}

Constraint pair(Relation solution, std::function<bool(CSint **)> post, Strength strength = Strength::kNone) {
  return with(relation("broken", 2, std::move(solution), std::move(post)), strength);
}

bool atMost(Values t) { return t[0] <= t[1]; }
bool below(Values t) { return t[0] < t[1]; }
bool different(Values t) { return t[0] != t[1]; }
bool equal(Values t) { return t[0] == t[1]; }

TEST(SemanticHarness, FindsNothingInASoundConstraint) {
  EXPECT_EQ(findingOf(pair(
                atMost, [](CSint **x) { return cs_Le(x[0], x[1]); }, Strength::kBounds)),
            "");
}

// ----- relations that are not the constraint's

TEST(SemanticHarness, FindsAnAssignmentThatIsNoSolution) {
  const Constraint c = pair(below, [](CSint **x) { return cs_Le(x[0], x[1]); });
  EXPECT_THAT(findingOf(c), HasSubstr("what is bound is no solution"));
}

TEST(SemanticHarness, FindsALostSolution) {
  Case test{"Broken", {}, {}, {{-1, 4}}, 300};
  test.patterns = {{0, 1}};
  const Constraint c = pair(atMost, [](CSint **x) { return cs_Lt(x[0], x[1]); });
  EXPECT_THAT(findingOf(test, c), HasSubstr("posting failed although there is a solution"));
  test.rooms = {{0, 1}, {0, 3}};
  EXPECT_THAT(findingOf(test, c), HasSubstr("posting failed although there is a solution"));
}

TEST(SemanticHarness, FindsAWrongResult) {
  const auto post = [](CSint **x) { return cs_Add(x[0], x[1]); };
  const auto sumOf = [&](Wide more) {
    return function(
        "broken", 2, [more](Values t) { return Wide{t[0]} + t[1] + more * (t[0] == 2 ? 1 : 0); }, post);
  };
  EXPECT_EQ(findingOf(sumOf(0)), "");
  EXPECT_NE(findingOf(sumOf(1)), "");
}

bool allDifferent(Values t) { return t[0] != t[1] && t[0] != t[2] && t[1] != t[2]; }

TEST(SemanticHarness, FindsWhatIsWrongOnlyForASharedVariable) {
  const Constraint c = relation("broken", 3, allDifferent, [](CSint **x) { return cs_AllNeq(x, 3) == 1; });
  Case test{"Broken", {}, {}, {{-1, 4}}, 100};
  test.patterns = {{0, 1, 2}};
  EXPECT_EQ(findingOf(test, c), "");
  test.patterns = {{0, 1, 2}, {0, 1, 0}};
  EXPECT_THAT(findingOf(test, c), HasSubstr("on { 0, 1, 0 }"));
}

// ----- too much and too little

TEST(SemanticHarness, FindsAPostingThatRemovesTooMuch) {
  const Constraint c =
      pair(atMost, [](CSint **x) { return cs_Le(x[0], x[1]) && (cs_getNbElements(x[0]) < 3 || cs_NEQ(x[0], 0)); });
  EXPECT_THAT(findingOf(c), HasSubstr("a value of a solution is gone"));
}

bool removesOneTooMany(int value, int index, CSint **x, int, void *) {
  return cs_NEQ(x[1 - index], value) && (cs_getNbElements(x[1 - index]) < 3 || cs_NEQ(x[1 - index], value + 1));
}

TEST(SemanticHarness, FindsANarrowingThatRemovesTooMuch) {
  const Constraint c = pair(different, [](CSint **x) { return cs_eventKnown(x, 2, removesOneTooMany, nullptr); });
  EXPECT_THAT(findingOf(c), HasSubstr("a value of a solution is gone"));
}

bool refusesTwoTwos(CSint **x, int, void *) { return cs_getValue(x[0]) != 2 || cs_getValue(x[1]) != 2; }

TEST(SemanticHarness, FindsASolutionThatIsRefused) {
  Case test{"Broken", {}, {}, {{-1, 4}}, 300};
  test.patterns = {{0, 1}};
  const Constraint c = pair([](Values) { return true; },
                            [](CSint **x) {
                              return cs_isInstantiated(x[0]) || cs_isInstantiated(x[1]) ||
                                     cs_eventAllKnown(x, 2, refusesTwoTwos, nullptr);
                            });
  EXPECT_THAT(findingOf(test, c), HasSubstr("refused although a solution is left"));
}

bool differ(CSint **x, int, void *) { return cs_getValue(x[0]) != cs_getValue(x[1]); }

TEST(SemanticHarness, FindsAClaimThatIsTooStrong) {
  const auto check = [](CSint **x) { return cs_eventAllKnown(x, 2, differ, nullptr); };
  EXPECT_EQ(findingOf(pair(different, check, Strength::kNone)), "");
  EXPECT_THAT(findingOf(pair(different, check, Strength::kKnown)), HasSubstr("has no support"));
  EXPECT_THAT(findingOf(pair(different, check, Strength::kBounds)), HasSubstr("has no support"));
  const auto order = [](CSint **x) { return cs_Le(x[0], x[1]) && cs_Ge(x[0], x[1]); };
  EXPECT_EQ(findingOf(pair(equal, order, Strength::kKnown)), "");
  EXPECT_EQ(findingOf(pair(equal, order, Strength::kBounds)), "");
  EXPECT_THAT(findingOf(pair(equal, order, Strength::kDomain)), HasSubstr("has no support"));
}

TEST(SemanticHarness, FindsABrokenPromiseOfAnotherKind) {
  Constraint c = pair(different, [](CSint **x) { return cs_Neq(x[0], x[1]); });
  c.supported = [](const Left &left, std::size_t column, int value) { return column == 0 || left.has(0, value); };
  EXPECT_THAT(findingOf(c), HasSubstr("has no support in column 1"));
  c.supported = nullptr;
  c.inside = [](const Left &left) { return left.unbound() == 1 ? "one is left" : ""; };
  EXPECT_THAT(findingOf(c), HasSubstr("one is left"));
}

// ----- state

// Notes only once that x[0] is bound, and takes its value from x[1] then: after a restore it does nothing.
struct Once {
  CSint *other;
  bool done = false;
};
bool removeOnce(Once &c, const Event &e) {
  if (c.done) return true;
  c.done = true;
  return narrowMax(c.other, e.var->min);
}
constexpr auto kOnceTable =
    handlers<Once>({.minBound = on<removeOnce>, .maxBound = on<removeOnce>, .bound = on<removeOnce>});

TEST(SemanticHarness, FindsStateThatIsNotRestored) {
  const Constraint c = pair([](Values t) { return t[0] >= t[1]; },
                            [](CSint **x) {
                              if (cs_isInstantiated(x[0])) return cs_LE(x[1], cs_getValue(x[0]));
                              koru::Posting posting{"once"};
                              posting.add(kOnceTable, Once{x[1]}).attach(x[0]);
                              return static_cast<bool>(posting);
                            });
  EXPECT_THAT(findingOf(c), HasSubstr("what is bound is no solution"));
}

// Changes the domain of x[1] behind the trail's back when the minimum of x[0] is raised.
struct Untrailed {
  CSint *other;
  bool (*change)(CSint *first, CSint *other);
};
bool changeUntrailed(Untrailed &c, const Event &e) { return c.change(e.var, c.other); }
constexpr auto kUntrailedTable = handlers<Untrailed>({.newMin = on<changeUntrailed>, .minBound = on<changeUntrailed>});

// Both variables range over 0..2.
std::string findingWith(bool (*change)(CSint *, CSint *), Relation solution) {
  Constraint c = pair(std::move(solution), [change](CSint **x) {
    koru::Posting posting{"untrailed"};
    posting.add(kUntrailedTable, Untrailed{x[1], change}).attach(x[0]);
    return static_cast<bool>(posting);
  });
  c.fits = [](const std::vector<std::vector<int>> &domains) {
    return domains[0].size() == 3 && domains[1].size() == 3;
  };
  Case test{"Broken", {}, {}, {{0, 3}}, 100};
  test.patterns = {{0, 1}};
  // The library's own checks would end the program.
  solver::checked.period = solver::checked.untilNext = 1000000;
  std::string finding = findingOf(test, std::move(c));
  solver::checked.period = solver::checked.untilNext = 1;
  return finding;
}

bool anything(Values) { return true; }
bool sumIsSmall(Values t) { return t[0] + t[1] <= 2 || t[0] == 0; }

TEST(SemanticHarness, FindsADomainThatIsNotRestored) {
  const auto lower = [](CSint *first, CSint *other) {
    while (other->max > other->min && first->min + other->max > 2) --other->max, --other->count;
    return first->min + other->max <= 2;
  };
  EXPECT_THAT(findingWith(lower, sumIsSmall), HasSubstr("restoring does not give the domains"));
}

TEST(SemanticHarness, FindsAWrongCount) {
  const auto miscount = [](CSint *, CSint *other) { return other->count < 2 || --other->count > 0; };
  EXPECT_THAT(findingWith(miscount, anything), HasSubstr("the count is wrong"));
}

TEST(SemanticHarness, FindsADomainThatGrows) {
  const auto grow = [](CSint *, CSint *other) {
    if (other->max < other->initialMax) ++other->max, ++other->count;
    return true;
  };
  EXPECT_THAT(findingWith(grow, anything), HasSubstr("(variable v1)"));
}

// ----- what a finding says, and what is counted

TEST(SemanticHarness, NamesEverythingThatIsNeededToSeeAFindingAgain) {
  Case test{"Broken", {}, {}, {{0, 2}}, 100};
  test.patterns = {{0, 1}};
  const std::string finding =
      findingOf(test, pair(
                          different, [](CSint **x) { return cs_Neq(x[0], x[1]); }, Strength::kDomain));
  EXPECT_EQ(finding, "");
  const std::string wrong = findingOf(test, pair(below, [](CSint **x) { return cs_Neq(x[0], x[1]); }));
  EXPECT_THAT(wrong, HasSubstr("posting "));
  EXPECT_THAT(wrong, HasSubstr("broken on { 0, 1 }"));
  EXPECT_THAT(wrong, HasSubstr("v0 in { "));
  EXPECT_THAT(wrong, HasSubstr("posted"));
  EXPECT_THAT(wrong, HasSubstr("left { "));
}

TEST(SemanticHarness, RunsASinglePostingAgain) {
  const Constraint c = pair(atMost, [](CSint **x) { return cs_Lt(x[0], x[1]); });
  const std::string finding = findingOf(c);
  ASSERT_EQ(finding.rfind("posting ", 0), 0U);
  EXPECT_EQ(findingOf(c, std::stoll(finding.substr(8))), finding);
  EXPECT_EQ(findingOf(c, 1000000), "");
}

// For each of {0}, {1} and {0, 1}: the posting, six relations with each value from one below to one above, and one
// labelling per value.
TEST(SemanticHarness, CountsPostingsAndNarrowings) {
  Case test{"Counted", {}, {relation("anything", 1, anything, [](CSint **) { return true; })}, {{0, 2}}, 100};
  test.effort = {1, 0, 0};
  Sweep sweep(test);
  sweep.run();
  EXPECT_EQ(sweep.finding, "");
  EXPECT_EQ(sweep.postings, 3);
  EXPECT_EQ(sweep.states, (1 + 18 + 1) * 2 + 1 + 24 + 2);
}

// ----- handler calls

Calls callsOfPosting(std::function<bool(CSint **)> post) {
  Case test{"Heard", {}, {pair(equal, std::move(post))}, {{-1, 4}}, 300};
  Sweep sweep(test);
  sweep.run();
  EXPECT_EQ(sweep.finding, "");
  return sweep.calls;
}

TEST(SemanticHarness, DigestsTheCallsOfAPosting) {
  const Calls calls = callsOfPosting([](CSint **x) { return cs_Eq(x[0], x[1]); });
  EXPECT_GT(calls.count, 1000);
  EXPECT_EQ(callsOfPosting([](CSint **x) { return cs_Eq(x[0], x[1]); }), calls);
}

// Whoever hears first, the domains come to the same.
TEST(SemanticHarness, TellsTheOrderOfCallsApart) {
  const auto first = callsOfPosting([](CSint **x) { return cs_Eq(x[0], x[1]) && cs_Le(x[0], x[1]); });
  const auto second = callsOfPosting([](CSint **x) { return cs_Le(x[0], x[1]) && cs_Eq(x[0], x[1]); });
  EXPECT_NE(first, second);
}

// ----- exceptions: each that a case makes is one that arises

class SemanticExceptions : public ::testing::TestWithParam<Case> {
 protected:
  // A change to every form after which something must be found.
  template <class Change>
  static void expectNeeded(Change change) {
    Case test = GetParam();
    bool some = false;
    for (Constraint &form : test.forms) some = change(form) || some;
    if (!some) return;
    Sweep sweep(test);
    sweep.run();
    EXPECT_NE(sweep.finding, "");
  }
};

TEST_P(SemanticExceptions, AreNeeded) {
  expectNeeded([](Constraint &c) { return std::exchange(c.excused, nullptr) != nullptr; });
  expectNeeded([](Constraint &c) { return std::exchange(c.acceptedAnyway, nullptr) != nullptr; });
  expectNeeded([](Constraint &c) { return !std::exchange(c.alsoTogether, true); });
  expectNeeded([](Constraint &c) { return !std::exchange(c.alsoShared, true); });
}

Cases casesWithExceptions() {
  Cases result;
  for (const Case &c : allCases()) {
    const bool some = std::ranges::any_of(c.forms, [](const Constraint &form) {
      return form.excused || form.acceptedAnyway || !form.alsoTogether || !form.alsoShared;
    });
    if (some) result.push_back(c);
  }
  return result;
}

INSTANTIATE_TEST_SUITE_P(, SemanticExceptions, ::testing::ValuesIn(casesWithExceptions()),
                         [](const auto &row) { return row.param.name; });

}  // namespace
}  // namespace koru::test::brute
