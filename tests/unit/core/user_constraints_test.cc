// SPDX-License-Identifier: MIT
// User-defined constraints: which events call back with what, at registration and later, and under which site.
#include <climits>
#include <functional>

#include "support/kit/new_variables.h"

namespace {

using namespace koru;
using namespace koru::test;

// What a callback was told: the variable's position, the value or old bound, and, for conflicts, the kind.
struct Told {
  int index;
  int value;
  int kind = -1;
  bool operator==(const Told &) const = default;
};

void PrintTo(const Told &told, std::ostream *out) {
  *out << "[" << told.index << "] " << told.value << " kind " << told.kind;
}

using ToldList = std::vector<Told>;

struct Script {
  ToldList told;
  std::function<bool()> reaction = [] { return true; };
  CSint **array = nullptr;
  int size = 0;
  Site *site = nullptr;  // the current one while the callback ran

  bool tell(CSint **tellArray, int tellSize, const Told &what) {
    told.push_back(what);
    array = tellArray;
    size = tellSize;
    site = solver::userSite;
    return reaction();
  }
};

Script &scriptOf(void *extra) { return *static_cast<Script *>(extra); }

bool allKnown(CSint **array, int size, void *extra) { return scriptOf(extra).tell(array, size, {-1, 0}); }

bool known(int value, int index, CSint **array, int size, void *extra) {
  return scriptOf(extra).tell(array, size, {index, value});
}

bool moved(CSint *vint, int index, int old, CSint **array, int size, void *extra) {
  EXPECT_EQ(vint, array[index]);
  return scriptOf(extra).tell(array, size, {index, old});
}

void conflicted(CSint *vint, int index, CSconflictInfo *info, CSint **array, int size, void *extra) {
  EXPECT_EQ(vint, array[index]);
  scriptOf(extra).tell(array, size, {index, info->value, info->kind});
}

class UserConstraintsTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    for (CSint *&v : x) v = cs_createCSint(0, 9);
  }
  void expectRegistered(const char *name) {
    for (int i = 0; i < 3; ++i) {
      ASSERT_NE(x[i]->constraints, nullptr);
      EXPECT_EQ(x[i]->constraints->index, i);
      EXPECT_STREQ(siteOf(x[i])->name(), name);
      EXPECT_EQ(constraintOf(x[i]), constraintOf(x[0]));
    }
  }
  void expectNothingPosted() {
    for (const CSint *v : x) EXPECT_EQ(v->constraints, nullptr);
  }

  CSint *x[3] = {};
  Script script;
};

// ----- all known

TEST_F(UserConstraintsTest, AllKnownRunsOnceWhenTheLastVariableIsBound) {
  EXPECT_TRUE(cs_eventAllKnown(x, 3, allKnown, &script));
  expectRegistered("cs_eventAllKnown");
  ASSERT_TRUE(cs_EQ(x[1], 4) && cs_EQ(x[0], 0));
  EXPECT_TRUE(script.told.empty());
  ASSERT_TRUE(cs_GE(x[2], 9));
  EXPECT_EQ(script.told, (ToldList{{-1, 0}}));
  EXPECT_EQ(script.array, x);
  EXPECT_EQ(script.size, 3);
}

TEST_F(UserConstraintsTest, AllKnownOfBoundVariablesRunsAtOnceAndAttachesNothing) {
  for (CSint *v : x) ASSERT_TRUE(cs_EQ(v, 3));
  EXPECT_TRUE(cs_eventAllKnown(x, 3, allKnown, &script));
  EXPECT_EQ(script.told.size(), 1U);
  EXPECT_NE(script.site, nullptr);
  EXPECT_EQ(solver::userSite, nullptr);
  expectNothingPosted();
  script.reaction = [] { return false; };
  EXPECT_FALSE(cs_eventAllKnown(x, 3, allKnown, &script));
  EXPECT_EQ(script.told.size(), 2U);
}

TEST_F(UserConstraintsTest, AllKnownOfNothingRunsAtOnce) {
  EXPECT_TRUE(cs_eventAllKnown(x, 0, allKnown, &script));
  EXPECT_TRUE(cs_eventAllKnown(nullptr, -1, allKnown, &script));
  EXPECT_EQ(script.told.size(), 2U);
}

TEST_F(UserConstraintsTest, AllKnownThatAnswersFalseFailsThePropagation) {
  ASSERT_TRUE(cs_eventAllKnown(x, 3, allKnown, &script));
  script.reaction = [] { return false; };
  ASSERT_TRUE(cs_EQ(x[0], 1) && cs_EQ(x[1], 1));
  EXPECT_FALSE(cs_EQ(x[2], 1));
}

// The variable that is watched moves on, and is not put back by a restore: any free one will do.
TEST_F(UserConstraintsTest, AllKnownStillRunsAfterARestore) {
  ASSERT_TRUE(cs_eventAllKnown(x, 3, allKnown, &script));
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(x[0], 1) && cs_EQ(x[1], 1));
  cs_restoreContext();
  ASSERT_TRUE(cs_EQ(x[2], 1) && cs_EQ(x[1], 1));
  EXPECT_TRUE(script.told.empty());
  ASSERT_TRUE(cs_EQ(x[0], 1));
  EXPECT_EQ(script.told.size(), 1U);
}

// ----- known

TEST_F(UserConstraintsTest, KnownRunsForEachVariableThatIsBound) {
  EXPECT_TRUE(cs_eventKnown(x, 3, known, &script));
  expectRegistered("cs_eventKnown");
  ASSERT_TRUE(cs_GE(x[0], 9) && cs_LE(x[2], 0) && cs_NEQ(x[1], 5) && cs_EQ(x[1], 4));
  EXPECT_EQ(script.told, (ToldList{{0, 9}, {2, 0}, {1, 4}}));
}

TEST_F(UserConstraintsTest, KnownRunsAtRegistrationInIndexOrderForThoseBoundAlready) {
  ASSERT_TRUE(cs_EQ(x[2], 7) && cs_EQ(x[0], 3));
  EXPECT_TRUE(cs_eventKnown(x, 3, known, &script));
  EXPECT_EQ(script.told, (ToldList{{0, 3}, {2, 7}}));
  EXPECT_EQ(script.site, siteOf(x[0]));
}

TEST_F(UserConstraintsTest, KnownStopsAtTheFirstFalseAtRegistration) {
  ASSERT_TRUE(cs_EQ(x[2], 7) && cs_EQ(x[0], 3));
  script.reaction = [] { return false; };
  EXPECT_FALSE(cs_eventKnown(x, 3, known, &script));
  EXPECT_EQ(script.told, (ToldList{{0, 3}}));
}

TEST_F(UserConstraintsTest, KnownThatBindsAtRegistrationHearsOfThatAtOnceAndInItsTurn) {
  ASSERT_TRUE(cs_EQ(x[0], 3));
  script.reaction = [this] { return cs_EQ(x[2], 8); };
  EXPECT_TRUE(cs_eventKnown(x, 3, known, &script));
  EXPECT_EQ(script.told, (ToldList{{0, 3}, {2, 8}, {2, 8}}));
}

// ----- moved bounds and removed values

TEST_F(UserConstraintsTest, NewMinHearsTheMinimumAsCallbacksSawItLast) {
  cs_eventNewMin(x, 3, moved, &script);
  expectRegistered("cs_eventNewMin");
  ASSERT_TRUE(cs_GE(x[1], 2) && cs_NEQ(x[1], 2) && cs_GE(x[1], 9));
  EXPECT_EQ(script.told, (ToldList{{1, 0}, {1, 2}, {1, 3}}));
  ASSERT_TRUE(cs_LE(x[0], 5) && cs_NEQ(x[0], 3) && cs_EQ(x[0], 2) && cs_LE(x[2], 0));
  EXPECT_EQ(script.told.size(), 3U) << "maxima, removed values and a binding inside the bounds are not heard";
}

TEST_F(UserConstraintsTest, NewMinHearsOfTwoChangesOfOneCallbackOnce) {
  cs_eventNewMin(x + 1, 1, moved, &script);
  Script raising;
  raising.reaction = [this] { return cs_GE(x[1], 2) && cs_GE(x[1], 4); };
  cs_eventNewMax(x, 1, moved, &raising);
  ASSERT_TRUE(cs_LE(x[0], 5));
  EXPECT_EQ(script.told, (ToldList{{0, 0}})) << "the first change was superseded by then";
}

TEST_F(UserConstraintsTest, NewMaxHearsTheMaximumAsCallbacksSawItLast) {
  cs_eventNewMax(x, 3, moved, &script);
  expectRegistered("cs_eventNewMax");
  ASSERT_TRUE(cs_LE(x[1], 7) && cs_NEQ(x[1], 7) && cs_LE(x[1], 0));
  EXPECT_EQ(script.told, (ToldList{{1, 9}, {1, 7}, {1, 6}}));
  ASSERT_TRUE(cs_GE(x[0], 5) && cs_NEQ(x[0], 7) && cs_EQ(x[0], 6) && cs_GE(x[2], 9));
  EXPECT_EQ(script.told.size(), 3U);
}

TEST_F(UserConstraintsTest, NeqHearsOfInnerValuesUnderTheNameOfNewMax) {
  cs_eventNeq(x, 3, moved, &script);
  expectRegistered("cs_eventNewMax");
  ASSERT_TRUE(cs_NEQ(x[2], 4) && cs_NEQ(x[2], 0) && cs_NEQ(x[2], 9) && cs_NEQ(x[2], 4) && cs_EQ(x[2], 6));
  EXPECT_EQ(script.told, (ToldList{{2, 4}}));
}

TEST_F(UserConstraintsTest, AFalseAnswerFailsThePropagation) {
  script.reaction = [] { return false; };
  cs_eventNewMin(x, 1, moved, &script);
  cs_eventNewMax(x + 1, 1, moved, &script);
  cs_eventNeq(x + 2, 1, moved, &script);
  EXPECT_FALSE(cs_GE(x[0], 1));
  EXPECT_FALSE(cs_LE(x[1], 1));
  EXPECT_FALSE(cs_NEQ(x[2], 1));
  EXPECT_EQ(script.told.size(), 3U);
}

// ----- conflicts

bool refuse(int, int, CSint **, int, void *) { return false; }
bool refuseMove(CSint *, int, int, CSint **, int, void *) { return false; }

class ConflictTest : public UserConstraintsTest {
 protected:
  void SetUp() override {
    UserConstraintsTest::SetUp();
    cs_eventKnown(x, 3, refuse, nullptr);
    cs_eventNewMin(x, 3, refuseMove, nullptr);
    cs_eventNewMax(x, 3, refuseMove, nullptr);
    cs_eventNeq(x, 3, refuseMove, nullptr);
    cs_eventConflict(x, 3, conflicted, &script);
  }
};

TEST_F(ConflictTest, SaysWhatWasBeingDone) {
  expectRegistered("cs_eventConflict");
  cs_saveContext();
  EXPECT_FALSE(cs_GE(x[0], 4));
  cs_restoreAndSaveContext();
  EXPECT_FALSE(cs_LE(x[1], 5));
  cs_restoreAndSaveContext();
  EXPECT_FALSE(cs_GE(x[2], 9));
  cs_restoreAndSaveContext();
  EXPECT_FALSE(cs_LE(x[2], 0));
  cs_restoreAndSaveContext();
  EXPECT_FALSE(cs_EQ(x[2], 6));
  cs_restoreAndSaveContext();
  EXPECT_FALSE(cs_NEQ(x[1], 3));
  EXPECT_EQ(script.told, (ToldList{{0, 4, CS_CONFLICT_NEW_MIN},
                                   {1, 5, CS_CONFLICT_NEW_MAX},
                                   {2, 9, CS_CONFLICT_KNOWN},
                                   {2, 0, CS_CONFLICT_KNOWN},
                                   {2, 6, CS_CONFLICT_KNOWN},
                                   {1, 3, CS_CONFLICT_REMOVED}}));
}

TEST_F(ConflictTest, RunsUnderItsOwnSiteAndHasNoSayInTheOutcome) {
  script.reaction = [] { return true; };
  EXPECT_FALSE(cs_GE(x[0], 4));
  EXPECT_EQ(script.site, siteOf(x[0]));
  EXPECT_EQ(solver::userSite, nullptr);
}

TEST_F(ConflictTest, ASuccessfulPropagationIsNoConflict) {
  CSint *y = cs_createCSint(0, 9);
  CSint *array[] = {y};
  Script quiet;
  cs_eventConflict(array, 1, conflicted, &quiet);
  EXPECT_TRUE(cs_GE(y, 4));
  EXPECT_FALSE(cs_GE(x[0], 4));
  EXPECT_TRUE(quiet.told.empty());
}

// ----- refusals

TEST_F(UserConstraintsTest, AnEmptyArrayRegistersNothing) {
  for (const int size : {0, -1, INT_MIN}) {
    EXPECT_TRUE(cs_eventKnown(x, size, known, &script));
    cs_eventNewMin(x, size, moved, &script);
    cs_eventNewMax(x, size, moved, &script);
    cs_eventNeq(x, size, moved, &script);
    cs_eventConflict(x, size, conflicted, &script);
  }
  expectNothingPosted();
}

const char *countPlace(void *count) {
  ++*static_cast<int *>(count);
  return "place";
}

TEST_F(UserConstraintsTest, EveryRegistrationMakesItsSiteAlsoForNoVariable) {
  int asked = 0;
  cs_setProfilerLocator("own", countPlace, &asked);
  EXPECT_TRUE(cs_eventAllKnown(x, 0, allKnown, &script));
  EXPECT_TRUE(cs_eventKnown(x, 0, known, &script));
  EXPECT_EQ(asked, 2);
  cs_eventNewMin(x, 0, moved, &script);
  cs_eventNewMax(x, 0, moved, &script);
  cs_eventNeq(x, 0, moved, &script);
  cs_eventConflict(x, 0, conflicted, &script);
  EXPECT_EQ(asked, 6);
  expectNothingPosted();
}

TEST_F(UserConstraintsTest, NoVariablesAreKnownWithoutASolverToo) {
  cs_end();
  EXPECT_TRUE(cs_eventKnown(x, 0, known, &script));
  EXPECT_FALSE(cs_eventAllKnown(x, 0, allKnown, &script)) << "its callback would run without a solver";
  EXPECT_TRUE(script.told.empty());
}

TEST_F(UserConstraintsTest, NullCallbacksArraysAndVariablesAreRefused) {
  CSint *holed[] = {x[0], nullptr, x[1]};
  for (CSint **array : {static_cast<CSint **>(nullptr), holed}) {
    EXPECT_FALSE(cs_eventAllKnown(array, 3, allKnown, &script));
    EXPECT_FALSE(cs_eventKnown(array, 3, known, &script));
    cs_eventNewMin(array, 3, moved, &script);
    cs_eventNewMax(array, 3, moved, &script);
    cs_eventNeq(array, 3, moved, &script);
    cs_eventConflict(array, 3, conflicted, &script);
  }
  EXPECT_FALSE(cs_eventAllKnown(x, 3, nullptr, nullptr));
  EXPECT_FALSE(cs_eventKnown(x, 3, nullptr, nullptr));
  cs_eventNewMin(x, 3, nullptr, nullptr);
  cs_eventNewMax(x, 3, nullptr, nullptr);
  cs_eventNeq(x, 3, nullptr, nullptr);
  cs_eventConflict(x, 3, nullptr, nullptr);
  expectNothingPosted();
  EXPECT_TRUE(script.told.empty());
}

// A site, a constraint and an entry for each variable.
TEST_F(UserConstraintsTest, EachFailedAllocationIsReportedOnceAndLeavesTheSolverUsable) {
  const auto make = [] { return threeOf(0, 9); };
  expectAllocations(
      make, [this](Posted &o) { return cs_eventAllKnown(o.x, 3, allKnown, &script); }, 5);
  expectAllocations(
      make, [this](Posted &o) { return cs_eventKnown(o.x, 3, known, &script); }, 5);
  const auto attached = [](const Posted &o) { return o.x[2]->constraints != nullptr; };
  const auto viaVoid = [&](auto post) {
    expectAllocations(
        make,
        [&](Posted &o) {
          post(o.x);
          return attached(o);
        },
        5);
  };
  viaVoid([this](CSint **array) { cs_eventNewMin(array, 3, moved, &script); });
  viaVoid([this](CSint **array) { cs_eventNewMax(array, 3, moved, &script); });
  viaVoid([this](CSint **array) { cs_eventNeq(array, 3, moved, &script); });
  viaVoid([this](CSint **array) { cs_eventConflict(array, 3, conflicted, &script); });
}

// ----- nesting and lifetime

TEST_F(UserConstraintsTest, CallbacksNestAndEachHasItsOwnCurrentSite) {
  Script inner;
  ASSERT_TRUE(cs_eventKnown(x + 1, 1, known, &inner));
  Site *afterInner = nullptr;
  script.reaction = [&] {
    cs_saveContext();
    const bool consistent = cs_EQ(x[1], 5);
    afterInner = solver::userSite;
    cs_acceptContext();
    return consistent;
  };
  cs_eventNewMin(x, 1, moved, &script);
  ASSERT_TRUE(cs_GE(x[0], 3));
  EXPECT_EQ(inner.told, (ToldList{{0, 5}}));
  EXPECT_EQ(inner.site, siteOf(x[1]));
  EXPECT_EQ(script.site, siteOf(x[0]));
  EXPECT_EQ(afterInner, script.site);
  EXPECT_EQ(solver::userSite, nullptr);
}

TEST_F(UserConstraintsTest, ChangesOfACallbackArePropagatedWhenItHasReturned) {
  ASSERT_TRUE(cs_Lt(x[1], x[2]));
  int minDuring = -1;
  script.reaction = [&] {
    const bool consistent = cs_GE(x[1], 5);
    minDuring = cs_getMin(x[2]);
    return consistent;
  };
  cs_eventNewMin(x, 1, moved, &script);
  ASSERT_TRUE(cs_GE(x[0], 3));
  EXPECT_EQ(minDuring, 1);
  EXPECT_EQ(cs_getMin(x[2]), 6);
}

TEST_F(UserConstraintsTest, ARestoredChoicePointTakesItsRegistrationsAway) {
  cs_saveContext();
  cs_eventNewMin(x, 3, moved, &script);
  cs_restoreContext();
  expectNothingPosted();
  ASSERT_TRUE(cs_GE(x[0], 3));
  EXPECT_TRUE(script.told.empty());
}

TEST_F(UserConstraintsTest, AVariableThatStandsTwiceIsHeardForEachPosition) {
  CSint *twice[] = {x[0], x[0]};
  ASSERT_TRUE(cs_eventKnown(twice, 2, known, &script));
  ASSERT_TRUE(cs_EQ(x[0], 4));
  EXPECT_EQ(script.told, (ToldList{{1, 4}, {0, 4}})) << "the newest attachment first";
}

}  // namespace
