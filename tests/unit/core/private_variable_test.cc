// SPDX-License-Identifier: MIT
#include "core/private_variable.h"

#include <memory>
#include <utility>
#include <vector>

#include "core/narrow.h"
#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"
#include "unit/core/recorder.h"

namespace koru {
namespace {

class PrivateVariableTest : public test::SolverTest {};

TEST_F(PrivateVariableTest, IsAFreshIntervalThatTheHostDoesNotSee) {
  const PrivateVariables variables(2);
  variables.init(0, -3, 4);
  variables.init(1, 5, 5);
  EXPECT_EQ(test::values(variables[0]), (std::vector<int>{-3, -2, -1, 0, 1, 2, 3, 4}));
  EXPECT_EQ(variables[0]->initialMin, -3);
  EXPECT_EQ(variables[0]->initialMax, 4);
  EXPECT_EQ(variables[0]->reportedMin, -3);
  EXPECT_EQ(variables[0]->reportedMax, 4);
  EXPECT_EQ(variables[0]->count, 8);
  EXPECT_EQ(variables[0]->constraints, nullptr);
  EXPECT_EQ(cs_getName(variables[0]), nullptr);
  EXPECT_TRUE(cs_isInstantiated(variables[1]));
  EXPECT_EQ(solver::variables.count(), 0);
}

TEST_F(PrivateVariableTest, BeginsWithTheValuesWhoseBitsAreSet) {
  const std::vector<std::vector<int>> domains{{0, 1, 2, 199}, {64, 65, 66}, {63, 64, 150}, {0}, {199}, {5, 130}};
  for (const std::vector<int> &domain : domains) {
    std::uint64_t words[4] = {};
    for (const int value : domain) words[value / 64] |= std::uint64_t{1} << (value % 64);
    const PrivateVariables variables(1);
    ASSERT_TRUE(variables.init(0, 199, words));
    const CSint &v = *variables[0];
    EXPECT_EQ(test::values(variables[0]), domain);
    EXPECT_EQ(v.count, static_cast<int>(domain.size()));
    EXPECT_EQ(v.bits != nullptr, domain.back() - domain.front() + 1 != v.count) << "bits only where there are holes";
    EXPECT_EQ(v.initialMin, 0);
    EXPECT_EQ(v.initialMax, 199);
    EXPECT_EQ(v.reportedMin, 0);
    EXPECT_EQ(v.reportedMax, 199);
  }
}

TEST_F(PrivateVariableTest, WithoutMemoryForBitsThereAreNone) {
  const PrivateVariables variables(1);
  const std::uint64_t word = 5;
  const test::AllocationRule rule(test::refuseAll());
  EXPECT_FALSE(variables.init(0, 9, &word));
  EXPECT_EQ(memoryReports, 1);
}

TEST_F(PrivateVariableTest, StaysAtItsAddressWhenTheArrayIsMovedOrCopied) {
  PrivateVariables first(3);
  CSint *const address = first[1];
  PrivateVariables second = std::move(first);
  const PrivateVariables third = second;
  second = PrivateVariables();
  EXPECT_FALSE(second);
  EXPECT_EQ(third[1], address);
}

TEST_F(PrivateVariableTest, AnArrayOfNoneIsNoFailure) {
  EXPECT_TRUE(PrivateVariables(0));
  EXPECT_TRUE(PrivateVariables(-1));
  EXPECT_FALSE(PrivateVariables());
}

TEST_F(PrivateVariableTest, SetUpRemovalsStayWhenAContextIsRestored) {
  const PrivateVariables variables(1);
  variables.init(0, 0, 5);
  cs_saveContext();
  const int trailed = solver::trail.count();
  for (const int value : {0, 3, 5, 3, 9}) EXPECT_TRUE(removeValueNoTrail(variables[0], value));
  EXPECT_EQ(solver::trail.count(), trailed);
  cs_restoreContext();
  EXPECT_EQ(test::values(variables[0]), (std::vector<int>{1, 2, 4}));
  EXPECT_EQ(variables[0]->count, 3);
}

TEST_F(PrivateVariableTest, SetUpRemovalTellsOfExhaustedMemory) {
  const PrivateVariables variables(1);
  variables.init(0, 0, 5);
  const test::AllocationRule rule(test::refuseAll());
  EXPECT_TRUE(removeValueNoTrail(variables[0], 0));
  EXPECT_FALSE(removeValueNoTrail(variables[0], 3));
  EXPECT_EQ(memoryReports, 1);
}

TEST_F(PrivateVariableTest, TrailedChangesAreTakenBackByARestore) {
  const PrivateVariables variables(1);
  variables.init(0, 0, 5);
  cs_saveContext();
  EXPECT_TRUE(removeValue(variables[0], 3));
  EXPECT_TRUE(narrowMin(variables[0], 2));
  EXPECT_TRUE(bindValue(variables[0], 4));
  EXPECT_EQ(test::values(variables[0]), (std::vector<int>{4}));
  cs_restoreContext();
  EXPECT_EQ(test::values(variables[0]), (std::vector<int>{0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(variables[0]->count, 6);
}

TEST_F(PrivateVariableTest, WakesWhatIsAttachedToIt) {
  test::journal::Journal journal;
  const PrivateVariables variables(2);
  variables.init(1, 0, 5);
  ASSERT_TRUE(test::journal::watch(journal, 1, {variables[0], variables[1]}));
  ASSERT_TRUE(narrowMin(variables[1], 2));
  EXPECT_EQ(journal.calls, (std::vector<test::journal::Call>{{1, variables[1], kNewMin, 0, 2, 1}}));
}

TEST_F(PrivateVariableTest, LastOwnerReleasesWhatIsAttached) {
  test::journal::Journal journal;
  const auto life = std::make_shared<int>();
  PrivateVariables first(2);
  PrivateVariables second = first;
  ASSERT_TRUE(test::journal::watch(journal, 1, {first[0], first[1]}, {}, life));
  first = PrivateVariables();
  EXPECT_EQ(life.use_count(), 2);
  second = PrivateVariables();
  EXPECT_EQ(life.use_count(), 1);
}

TEST_F(PrivateVariableTest, ExhaustedMemoryIsReportedOnceAndShows) {
  const test::AllocationRule rule(test::refuseAll());
  EXPECT_FALSE(PrivateVariables(2));
  EXPECT_EQ(memoryReports, 1);
}

// A constraint whose record owns private variables, as their users have it: bits and block go with the last record,
// which the leak checker of the instrumented builds sees.
struct Owner {
  PrivateVariables variables;
};
bool ignore(Owner &, const Event &) { return true; }
constexpr auto kOwnerTable = handlers<Owner>({.newMin = on<ignore>});

// Each host heard by an owner of the same private variable, which `life` watches.
void postOwners(test::journal::Journal &journal, const std::vector<CSint *> &hosts, const std::shared_ptr<int> &life) {
  const PrivateVariables variables(1);
  variables.init(0, 0, 9);
  EXPECT_TRUE(removeValueNoTrail(variables[0], 4));
  Posting posting{"owner"};
  for (CSint *host : hosts) posting.add(kOwnerTable, Owner{variables}).attach(host);
  EXPECT_TRUE(test::journal::watch(journal, 1, {variables[0]}, {}, life));
}

TEST_F(PrivateVariableTest, GoesWhenItsConstraintsAreUndone) {
  test::journal::Journal journal;
  const auto life = std::make_shared<int>();
  CSint *const x = cs_createCSint(0, 9);
  cs_saveContext();
  postOwners(journal, {x, x}, life);
  EXPECT_EQ(life.use_count(), 2);
  cs_restoreContext();
  EXPECT_EQ(life.use_count(), 1);
}

TEST_F(PrivateVariableTest, GoesWithTheLastOfTheConstraintsThatHoldIt) {
  test::journal::Journal journal;
  const auto life = std::make_shared<int>();
  CSint *const x = cs_createCSint(0, 9);
  CSint *const y = cs_createCSint(0, 9);
  cs_saveContext();
  test::journal::watch(journal, 2, {x});
  cs_saveContext();
  postOwners(journal, {x, y}, life);
  cs_acceptContext();
  cs_restoreContext();
  EXPECT_EQ(x->constraints->constraint->table->heard, test::journal::kHearsAll.heard)
      << "the restore has taken the newest";
  EXPECT_EQ(life.use_count(), 2) << "the one on y was accepted and holds on";
  cs_end();
  EXPECT_EQ(life.use_count(), 1);
}

TEST_F(PrivateVariableTest, IsFreedAtTheEndWhicheverConstraintGoesFirst) {
  test::journal::Journal journal;
  const auto life = std::make_shared<int>();
  CSint *const x = cs_createCSint(0, 9);
  CSint *const y = cs_createCSint(0, 9);
  postOwners(journal, {x, y, x}, life);
  cs_saveContext();
  postOwners(journal, {y, x}, life);
  EXPECT_EQ(life.use_count(), 3);
  cs_end();
  EXPECT_EQ(life.use_count(), 1);
}

}  // namespace
}  // namespace koru
