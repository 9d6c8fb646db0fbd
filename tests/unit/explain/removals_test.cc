// SPDX-License-Identifier: MIT
// cs_recordRemovals, cs_whyRemoved: who has taken a value away, what is forgotten with what is undone, and that the
// changes are the same as without a record.
#include <memory>
#include <string>
#include <vector>

#include "core/solver.h"
#include "explain/journal.h"
#include "koru_extras.h"
#include "support/kit/failing_allocations.h"
#include "support/kit/random.h"
#include "support/kit/solver_test.h"
#include "support/kit/written_text.h"

namespace koru::test {
namespace {

struct Freed {
  void operator()(const CSremovals *r) const { cs_freeRemovals(r); }
};
using Removals = std::unique_ptr<const CSremovals, Freed>;

Removals why(CSint *v, int value) { return Removals(cs_whyRemoved(v, value)); }

// "x != 3 cs_Neq" and so on, from the first step to the last.
std::string chainOf(CSint *v, int value) {
  static constexpr const char *kMethods[] = {"=", "!=", "<=", "<", ">=", ">"};
  const Removals removals = why(v, value);
  if (removals == nullptr) return "null";
  std::string text;
  for (int i = 0; i < removals->size; ++i) {
    const CSremoval &step = removals->steps[i];
    const char *name = cs_getName(step.variable);
    text += std::string(i > 0 ? "; " : "") + (name != nullptr ? name : "?") + " " +
            kMethods[step.change.method - CS_METHOD_EQ] + " " + std::to_string(step.change.value) + " " +
            (step.bySearch ? "search" : step.function);
  }
  return text;
}

std::string writtenFor(CSint *v, int value) {
  const Removals removals = why(v, value);
  return textOf([&](std::FILE *f) { cs_writeRemovals(removals.get(), f); });
}

class RemovalsTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    ASSERT_TRUE(cs_recordRemovals(true));
    x = named("x");
    y = named("y");
    z = named("z");
  }
  static CSint *named(const char *name) {
    CSint *v = cs_createCSint(0, 9);
    cs_setName(v, name);
    return v;
  }

  CSint *x = nullptr;
  CSint *y = nullptr;
  CSint *z = nullptr;
};

TEST_F(RemovalsTest, NamesEachKindOfChange) {
  EXPECT_TRUE(cs_GE(x, 2) && cs_LE(x, 8) && cs_NEQ(x, 5) && cs_EQ(y, 4) && cs_EQ(z, 0));
  EXPECT_EQ(chainOf(x, 0), "x >= 2 cs_GE");
  EXPECT_EQ(chainOf(x, 9), "x <= 8 cs_LE");
  EXPECT_EQ(chainOf(x, 5), "x != 5 cs_NEQ");
  EXPECT_EQ(chainOf(y, 3), "y = 4 cs_EQ");
  EXPECT_EQ(chainOf(y, 5), "y = 4 cs_EQ");
  EXPECT_EQ(chainOf(z, 5), "z = 0 cs_EQ");
}

TEST_F(RemovalsTest, NamesTheChangeThatCameFirst) {
  EXPECT_TRUE(cs_NEQ(x, 5) && cs_GE(x, 4) && cs_GE(x, 7) && cs_LE(x, 8) && cs_LE(x, 7));
  EXPECT_EQ(chainOf(x, 5), "x != 5 cs_NEQ");
  EXPECT_EQ(chainOf(x, 3), "x >= 4 cs_GE");
  EXPECT_EQ(chainOf(x, 6), "x >= 7 cs_GE");
  EXPECT_EQ(chainOf(x, 9), "x <= 8 cs_LE");
  EXPECT_EQ(chainOf(x, 8), "x = 7 cs_LE");
}

TEST_F(RemovalsTest, HasNoStepsForAValueThatIsThereOrNeverWas) {
  EXPECT_EQ(chainOf(x, 3), "");
  EXPECT_EQ(chainOf(x, -1), "");
  EXPECT_EQ(chainOf(x, 10), "");
  EXPECT_TRUE(cs_GE(x, 3));
  EXPECT_EQ(chainOf(x, 10), "");
  EXPECT_EQ(chainOf(x, -1), "");
}

TEST_F(RemovalsTest, FollowsWakingsBackToAPosting) {
  EXPECT_TRUE(cs_Lt(y, x) && cs_Lt(z, y) && cs_Neq(x, z));
  EXPECT_EQ(chainOf(x, 1), "x >= 2 cs_Lt; y >= 1 cs_Lt");
  EXPECT_TRUE(cs_GE(z, 3));
  EXPECT_EQ(chainOf(x, 4), "x >= 5 cs_Lt; y >= 4 cs_Lt; z >= 3 cs_GE");
  EXPECT_TRUE(cs_EQ(z, 7));
  EXPECT_EQ(chainOf(x, 8), "x = 9 cs_Lt; y = 8 cs_Lt; z = 7 cs_EQ");
  EXPECT_EQ(chainOf(x, 4), "x >= 5 cs_Lt; y >= 4 cs_Lt; z >= 3 cs_GE");
}

TEST_F(RemovalsTest, FollowsRemovalsFromInside) {
  EXPECT_TRUE(cs_Eq(x, y) && cs_Eq(y, z));
  EXPECT_TRUE(cs_NEQ(z, 4));
  EXPECT_EQ(chainOf(x, 4), "x != 4 cs_Eq; y != 4 cs_Eq; z != 4 cs_NEQ");
  EXPECT_TRUE(cs_LE(z, 7));
  EXPECT_EQ(chainOf(x, 8), "x <= 7 cs_Eq; y <= 7 cs_Eq; z <= 7 cs_LE");
  EXPECT_TRUE(cs_EQ(z, 6));
  EXPECT_EQ(chainOf(x, 2), "x >= 6 cs_Eq; y >= 6 cs_Eq; z = 6 cs_EQ");
  EXPECT_EQ(chainOf(x, 8), "x <= 7 cs_Eq; y <= 7 cs_Eq; z <= 7 cs_LE");
}

TEST_F(RemovalsTest, NamesTheRunOfAConstraintThatWaits) {
  CSint *v[] = {x, y, z};
  ASSERT_TRUE(cs_AllNeqDomain(v, 3));
  EXPECT_TRUE(cs_LE(x, 1));
  EXPECT_TRUE(cs_LE(y, 1));
  EXPECT_EQ(chainOf(z, 1), "z >= 2 cs_AllNeqDomain; y <= 1 cs_LE");
}

TEST_F(RemovalsTest, TellsAPostingThatMakesAVariableFromTheOneBefore) {
  EXPECT_TRUE(cs_EQ(y, 3));
  const int values[] = {4, 5, 6};
  CSint *element = cs_Element(x, values, 3);
  ASSERT_NE(element, nullptr);
  EXPECT_EQ(chainOf(x, 5), "x <= 2 cs_Element");
}

TEST_F(RemovalsTest, ForgetsWhatIsUndone) {
  EXPECT_TRUE(cs_Lt(y, x) && cs_GE(z, 1));
  cs_saveContext();
  EXPECT_TRUE(cs_GE(y, 4) && cs_NEQ(z, 5));
  cs_saveContext();
  EXPECT_TRUE(cs_NEQ(x, 8));
  EXPECT_EQ(chainOf(x, 8), "x != 8 cs_NEQ");
  cs_restoreContext();
  EXPECT_EQ(chainOf(x, 8), "");
  EXPECT_EQ(chainOf(x, 4), "x >= 5 cs_Lt; y >= 4 cs_GE");
  EXPECT_EQ(chainOf(z, 5), "z != 5 cs_NEQ");
  cs_restoreContext();
  EXPECT_EQ(chainOf(x, 4), "");
  EXPECT_EQ(chainOf(z, 5), "");
  EXPECT_EQ(chainOf(z, 0), "z >= 1 cs_GE");
  EXPECT_TRUE(cs_LT(z, 5) && cs_EQ(x, 2));
  EXPECT_EQ(chainOf(z, 5), "z <= 4 cs_LT");
  EXPECT_EQ(chainOf(y, 4), "y <= 1 cs_Lt; x = 2 cs_EQ");
}

TEST_F(RemovalsTest, KeepsWhatIsAcceptedOrForgottenOnly) {
  cs_saveContext();
  EXPECT_TRUE(cs_GE(x, 3));
  cs_acceptContext();
  EXPECT_TRUE(cs_GE(x, 5));
  cs_saveContext();
  EXPECT_TRUE(cs_GE(y, 3));
  cs_forgetSaveContext();
  EXPECT_TRUE(cs_LE(y, 6));
  EXPECT_EQ(chainOf(x, 2), "x >= 3 cs_GE");
  EXPECT_EQ(chainOf(x, 4), "x >= 5 cs_GE");
  EXPECT_EQ(chainOf(y, 2), "y >= 3 cs_GE");
  EXPECT_EQ(chainOf(y, 7), "y <= 6 cs_LE");
}

TEST_F(RemovalsTest, SaysWhatASearchHasDone) {
  EXPECT_TRUE(cs_Neq(x, y));
  const CSstep path[] = {{0, {CS_METHOD_EQ, 3}}};
  ASSERT_EQ(cs_goToNode(path, 1), 1);
  EXPECT_EQ(chainOf(x, 4), "x = 3 search");
  EXPECT_EQ(chainOf(y, 3), "y != 3 cs_Neq; x = 3 search");
  EXPECT_EQ(writtenFor(x, 4), "x = 3  a search\n");
  cs_restoreContext();
  CSint *both[] = {x, y};
  ASSERT_TRUE(cs_search(both, 2, cs_findFreeVar));
  EXPECT_EQ(chainOf(y, 0), "y >= 1 cs_Neq; x = 0 search");
  cs_restoreAll();
  EXPECT_EQ(chainOf(y, 0), "");
}

TEST_F(RemovalsTest, SaysWhatACallbackHasDone) {
  struct Halving {
    static bool known(int, int index, CSint **array, int, void *) { return cs_EQ(array[1 - index], 7); }
  };
  CSint *both[] = {x, y};
  ASSERT_TRUE(cs_eventKnown(both, 2, Halving::known, nullptr));
  EXPECT_TRUE(cs_EQ(x, 7));
  EXPECT_EQ(chainOf(y, 3), "y = 7 cs_eventKnown; x = 7 cs_EQ");
}

// Several changes of one variable, before anybody has heard of the first.
TEST_F(RemovalsTest, TellEventsApart) {
  struct Narrowing {
    static bool known(int, int, CSint **array, int, void *) {
      return cs_GE(array[1], 2) && cs_LE(array[1], 7) && cs_NEQ(array[1], 3) && cs_NEQ(array[1], 5);
    }
  };
  CSint *both[] = {x, y};
  ASSERT_TRUE(cs_eventKnown(both, 1, Narrowing::known, nullptr));
  EXPECT_TRUE(cs_Eq(y, z) && cs_EQ(x, 0));
  const std::string callback = " cs_eventKnown; x = 0 cs_EQ";
  EXPECT_EQ(chainOf(z, 1), "z >= 2 cs_Eq; y >= 2" + callback);
  EXPECT_EQ(chainOf(z, 8), "z <= 7 cs_Eq; y <= 7" + callback);
  EXPECT_EQ(chainOf(z, 3), "z != 3 cs_Eq; y != 3" + callback);
  EXPECT_EQ(chainOf(z, 5), "z != 5 cs_Eq; y != 5" + callback);
}

TEST_F(RemovalsTest, HearsContextsInsideCallbacks) {
  struct Trying {
    static bool known(int, int, CSint **array, int, void *) {
      cs_saveContext();
      const bool ok = cs_EQ(array[1], 1);
      cs_restoreContext();
      return ok && cs_LE(array[1], 6);
    }
  };
  CSint *three[] = {x, y, z};
  EXPECT_TRUE(cs_Lt(z, y));
  ASSERT_TRUE(cs_eventKnown(three, 1, Trying::known, nullptr));
  EXPECT_TRUE(cs_EQ(x, 0));
  EXPECT_EQ(chainOf(y, 8), "y <= 6 cs_eventKnown; x = 0 cs_EQ");
  EXPECT_EQ(chainOf(z, 7), "z <= 5 cs_Lt; y <= 6 cs_eventKnown; x = 0 cs_EQ");
}

TEST_F(RemovalsTest, WritesThePlaces) {
  cs_setProfilerLocator(
      "text", [](void *) { return "no/such.c\t12\t0\tmain"; }, nullptr);
  EXPECT_TRUE(cs_GE(x, 2));
  EXPECT_EQ(writtenFor(x, 1), "x >= 2  cs_GE  no/such.c:12\n");
  const Removals removals = why(x, 1);
  EXPECT_STREQ(removals->steps[0].file, "no/such.c");
  EXPECT_EQ(removals->steps[0].line, 12);
  EXPECT_STREQ(removals->steps[0].caller, "main");
  CSint *v = cs_createCSint(0, 5);
  EXPECT_TRUE(cs_NEQ(v, 2) && cs_LE(v, 4) && cs_EQ(v, 1));
  EXPECT_EQ(writtenFor(v, 2), "variable 3 != 2  cs_NEQ  no/such.c:12\n");
  EXPECT_EQ(writtenFor(v, 5), "variable 3 <= 4  cs_LE  no/such.c:12\n");
  EXPECT_EQ(writtenFor(v, 0), "variable 3 = 1  cs_EQ  no/such.c:12\n");
  cs_writeRemovals(removals.get(), nullptr);
  cs_writeRemovals(nullptr, stdout);
  cs_freeRemovals(nullptr);
}

TEST_F(RemovalsTest, FindsPlacesByTheAddress) {
  EXPECT_TRUE(cs_GE(x, 2));
  const Removals removals = why(x, 1);
  ASSERT_EQ(removals->size, 1);
  EXPECT_NE(removals->steps[0].file[0], '\0');
}

TEST_F(RemovalsTest, IsNullWithoutARecord) {
  EXPECT_EQ(chainOf(nullptr, 1), "null");
  EXPECT_TRUE(cs_recordRemovals(true));
  EXPECT_TRUE(cs_GE(x, 2));
  EXPECT_EQ(chainOf(x, 1), "x >= 2 cs_GE");
  cs_saveContext();
  EXPECT_TRUE(cs_GE(x, 3));
  EXPECT_TRUE(cs_recordRemovals(false));
  EXPECT_TRUE(cs_recordRemovals(false));
  EXPECT_EQ(chainOf(x, 1), "null");
  EXPECT_TRUE(cs_recordRemovals(true));
  EXPECT_EQ(chainOf(x, 1), "");
  EXPECT_TRUE(cs_GE(x, 4));
  EXPECT_EQ(chainOf(x, 3), "x >= 4 cs_GE");
  cs_restoreContext();
  EXPECT_TRUE(cs_GE(x, 5));
  EXPECT_EQ(chainOf(x, 4), "x >= 5 cs_GE");
}

TEST_F(RemovalsTest, BearNotesOfARecordThatHasEnded) {
  cs_saveContext();
  EXPECT_TRUE(cs_GE(x, 2));
  EXPECT_EQ(chainOf(x, 1), "x >= 2 cs_GE");
  EXPECT_TRUE(cs_recordRemovals(false));
  cs_restoreContext();
  EXPECT_TRUE(cs_recordRemovals(true));
  cs_saveContext();
  EXPECT_TRUE(cs_GE(x, 2));
  EXPECT_EQ(chainOf(x, 1), "x >= 2 cs_GE");
  EXPECT_TRUE(cs_recordRemovals(false) && cs_recordRemovals(true));
  cs_saveContext();
  EXPECT_TRUE(cs_GE(y, 3));
  cs_acceptContext();
  cs_restoreContext();
  EXPECT_TRUE(cs_GE(x, 4));
  EXPECT_EQ(chainOf(x, 3), "x >= 4 cs_GE");
  EXPECT_EQ(chainOf(x, 1), "x >= 4 cs_GE");
}

TEST_F(RemovalsTest, GoTogetherWithAProfiler) {
  CSprofiler *profiler = cs_createProfiler(0);
  cs_enableProfiler(profiler);
  EXPECT_TRUE(cs_Lt(x, y) && cs_GE(x, 3));
  EXPECT_EQ(chainOf(y, 3), "y >= 4 cs_Lt; x >= 3 cs_GE");
  cs_disableProfiler(profiler);
}

TEST_F(RemovalsTest, AreWrittenOfAnyVariable) {
  CSint *parked = cs_createCSint(0, 1);
  CSsolver *first = cs_detachSolver();
  cs_init();
  const CSremoval steps[] = {{parked, {CS_METHOD_EQ, 1}, false, "", "", 0, ""}};
  const CSremovals removals = {1, steps};
  EXPECT_EQ(textOf([&](std::FILE *f) { cs_writeRemovals(&removals, f); }), "a variable = 1  not known by whom\n");
  cs_end();
  ASSERT_TRUE(cs_attachSolver(first));
}

TEST_F(RemovalsTest, SaysWhatACallbackHasDoneInASearch) {
  struct Copying {
    static bool known(int value, int, CSint **array, int, void *) { return cs_NEQ(array[1], value); }
  };
  CSint *both[] = {x, y};
  ASSERT_TRUE(cs_eventKnown(both, 1, Copying::known, nullptr));
  const CSstep path[] = {{0, {CS_METHOD_EQ, 3}}};
  ASSERT_EQ(cs_goToNode(path, 1), 1);
  EXPECT_EQ(chainOf(y, 3), "y != 3 cs_eventKnown; x = 3 search");
}

TEST(RemovalsWithoutSolver, AreNotRecorded) {
  EXPECT_FALSE(cs_recordRemovals(true));
  EXPECT_EQ(cs_whyRemoved(nullptr, 0), nullptr);
}

TEST_F(RemovalsTest, AreNotTurnedOnOrOffWithinACallback) {
  struct Turning {
    static bool known(int, int, CSint **, int, void *) { return !cs_recordRemovals(false) && !cs_recordRemovals(true); }
  };
  ASSERT_TRUE(cs_eventKnown(&x, 1, Turning::known, nullptr));
  EXPECT_TRUE(cs_EQ(x, 1));
  cs_setProfilerLocator(
      "text",
      [](void *) {
        EXPECT_FALSE(cs_recordRemovals(false));
        return "a\t1\t0\tb";
      },
      nullptr);
  EXPECT_TRUE(cs_EQ(y, 1));
}

TEST_F(RemovalsTest, GoWithTheirSolver) {
  EXPECT_TRUE(cs_GE(x, 2));
  CSsolver *first = cs_detachSolver();
  cs_init();
  CSint *other = cs_createCSint(0, 9);
  EXPECT_TRUE(cs_GE(other, 2));
  EXPECT_EQ(chainOf(other, 1), "null");
  cs_end();
  ASSERT_TRUE(cs_attachSolver(first));
  EXPECT_TRUE(cs_LE(x, 7));
  EXPECT_EQ(chainOf(x, 1), "x >= 2 cs_GE");
  EXPECT_EQ(chainOf(x, 8), "x <= 7 cs_LE");
}

// Every value that is gone from a variable of the model has a chain; each chain ends with a posting or a decision; and
// the domains are those of the same model without a record.
class RandomRemovals : public SolverTest, public ::testing::WithParamInterface<int> {
 protected:
  // Relations at random, some inside contexts, which end somehow; a part of the domains, as text, after each step.
  std::string run(bool check) {
    Random random(static_cast<unsigned long long>(GetParam()) + 1);
    std::vector<CSint *> v;
    for (int i = 0; i < 8; ++i) v.push_back(cs_createCSint(0, 7));
    std::string text;
    int open = 0;
    for (int step = 0; step < 60; ++step) {
      post(random, v, open);
      for (CSint *each : v) text += domain(each, check) + " ";
    }
    return text;
  }

 private:
  static void post(Random &random, const std::vector<CSint *> &v, int &open) {
    CSint *a = random.pick(v);
    CSint *b = random.pick(v);
    const int value = random.between(0, 7);
    switch (random.between(0, 9)) {
      case 0:
        if (cs_saveContext() > 0) ++open;
        return;
      case 1:
      case 2:
        if (open == 0) return;
        --open;
        return cs_restoreContext();
      case 3:
        return attempt([&] { return cs_NEQ(a, value); });
      case 4:
        return attempt([&] { return cs_Le(a, b); });
      case 5:
        return attempt([&] { return cs_Neq(a, b); });
      case 6:
        return attempt([&] { return cs_NEQ(cs_Add(a, b), value); });
      case 7:
        return attempt([&] { return cs_GE(a, value / 2); });
      case 8:
        return attempt([&] { return cs_Eq(a, b); });
      default:
        return attempt([&] { return cs_LE(a, 4 + value / 2); });
    }
  }

  // What is refused is undone.
  template <class Post>
  static void attempt(const Post &posted) {
    cs_saveContext();
    posted() ? cs_forgetSaveContext() : cs_restoreContext();
  }

  static std::string domain(CSint *v, bool check) {
    std::string text;
    for (int value = 0; value < 8; ++value) {
      const bool there = contains(v, value);
      text += there ? '1' : '0';
      if (check) expectChain(v, value, there);
    }
    return text;
  }

  static void expectChain(CSint *v, int value, bool there) {
    const Removals removals = why(v, value);
    ASSERT_NE(removals, nullptr);
    ASSERT_EQ(removals->size == 0, there);
    if (there) return;
    EXPECT_EQ(removals->steps[0].variable, v);
    EXPECT_TRUE(excludes(removals->steps[0].change, value));
    for (int i = 0; i < removals->size; ++i) EXPECT_STRNE(removals->steps[i].function, "");
  }

  static bool excludes(const CSvalueSelection &change, int value) {
    switch (change.method) {
      case CS_METHOD_EQ:
        return value != change.value;
      case CS_METHOD_NEQ:
        return value == change.value;
      case CS_METHOD_LE:
        return value > change.value;
      default:
        return value < change.value;
    }
  }
};

TEST_P(RandomRemovals, ExplainEveryValueAndChangeNothing) {
  const std::string without = run(false);
  cs_end();
  cs_init();
  ASSERT_TRUE(cs_recordRemovals(true));
  EXPECT_EQ(run(true), without);
}

INSTANTIATE_TEST_SUITE_P(Models, RandomRemovals, ::testing::Range(0, 40));

TEST_F(RemovalsTest, OutOfMemoryLeavesASolverThatWorks) {
  cs_end();
  for (const Failing how : {Failing::kOnce, Failing::kForEver}) {
    for (int k = 0; k == 0 || FailingAllocator::failures() > 0; ++k) {
      cs_init();
      cs_setErrHandler(CS_ERR_MEMORY, countReport, &memoryReports);
      {
        const FailingAllocator failing(k, how);
        const bool on = cs_recordRemovals(true);
        CSint *a = cs_createCSint(0, 9);
        CSint *b = cs_createCSint(0, 9);
        const bool posted = a != nullptr && b != nullptr && cs_Lt(a, b) && cs_EQ(a, 3);
        const Removals removals = why(b, 2);
        if (FailingAllocator::failures() == 0) {
          EXPECT_TRUE(on && posted && removals != nullptr && removals->size == 2);
        }
      }
      cs_recordRemovals(false);
      expectSolverUsable();
      cs_end();
    }
  }
  cs_init();
}

TEST_F(RemovalsTest, EndWhenMemoryIsExhausted) {
  {
    const FailingAllocator failing(0, Failing::kForEver);
    for (int i = 0; i < 200; ++i) cs_saveContext(), cs_GE(x, 1), cs_restoreContext(), cs_NEQ(named("w"), 4);
  }
  EXPECT_EQ(chainOf(x, 4), "null");
  EXPECT_TRUE(cs_recordRemovals(false) && cs_recordRemovals(true));
  EXPECT_TRUE(cs_NEQ(x, 4));
  EXPECT_EQ(chainOf(x, 4), "x != 4 cs_NEQ");
}

}  // namespace
}  // namespace koru::test
