// SPDX-License-Identifier: MIT
// cs_explainFailure: what it answers of all kinds of models, at limits, and what it leaves of the solver that runs.
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/solver.h"
#include "koru_extras.h"
#include "support/kit/failing_allocations.h"
#include "support/kit/solver_test.h"
#include "support/kit/temporary_path.h"
#include "support/kit/written_text.h"

namespace koru::test {
namespace {

using Model = std::function<int()>;

int runModel(void *model) { return (*static_cast<Model *>(model))(); }

struct Freed {
  void operator()(const CSexplanation *e) const { cs_freeExplanation(e); }
};
using Explained = std::unique_ptr<const CSexplanation, Freed>;

CSexplainOptions defaults() {
  CSexplainOptions options = {};
  options.size = sizeof options;
  return options;
}

Explained explain(Model model, const CSexplainOptions &options = defaults()) {
  return Explained(cs_explainFailure(runModel, &model, &options));
}

Explained whatHasToGo(const Model &model) {
  CSexplainOptions options = defaults();
  options.nearest = true;
  return explain(model, options);
}

std::string numbersOf(const CSexplanation &e) {
  std::string text;
  for (int i = 0; i < e.size; ++i)
    text += std::string(i > 0 ? " " : "") + e.reasons[i].function + "." + std::to_string(e.reasons[i].number);
  return text;
}

// Five in order, the fourth at most 5, the second at least 4: x1 < x2 < x3 does not fit.
int fiveInOrder() {
  CSint *x[6];
  for (CSint *&v : x) v = cs_createCSint(0, 9);
  bool ok = true;
  for (int i = 0; i < 5; ++i) ok = ok && cs_Lt(x[i], x[i + 1]);
  ok = ok && cs_LE(x[3], 5);
  ok = ok && cs_NEQ(x[0], 1);
  ok = ok && cs_Neq(x[0], x[5]);
  ok = ok && cs_GE(x[1], 4);
  ok = ok && cs_NEQ(x[5], 7);
  return ok ? 1 : 0;
}

// Refused by a search only.
int pigeons() {
  CSint *x[4];
  for (CSint *&v : x) v = cs_createCSint(0, 2);
  bool ok = true;
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < i; ++j) ok = ok && cs_Neq(x[i], x[j]);
  ok = ok && cs_NEQ(cs_createCSint(0, 1), 0);
  return ok && cs_search(x, 4, cs_findFreeVar) ? 1 : 0;
}

int feasible() { return cs_EQ(cs_createCSint(0, 1), 1) ? 1 : 0; }

using ExplainTest = SolverTest;

TEST_F(ExplainTest, NamesThePostingsByTheirPlaceAndHowManythTheyAreThere) {
  const Explained e = explain(fiveInOrder);
  EXPECT_EQ(e->status, CS_EXPLAINED_MINIMAL);
  EXPECT_EQ(numbersOf(*e), "cs_Lt.2 cs_Lt.3 cs_LE.1 cs_GE.1");
  EXPECT_EQ(e->places, 3);
  EXPECT_EQ(e->allPostings, 9) << "what comes after the refusal does not count";
  EXPECT_EQ(e->allPlaces, 5);
  EXPECT_EQ(e->reasons[0].numberOf, 5);
  EXPECT_EQ(e->reasons[3].position, 9);
  EXPECT_FALSE(e->nearest);
}

TEST_F(ExplainTest, NamesWhatHasToGo) {
  const Explained e = whatHasToGo(fiveInOrder);
  EXPECT_EQ(e->status, CS_EXPLAINED_MINIMAL);
  EXPECT_EQ(numbersOf(*e), "cs_Lt.2");
  EXPECT_EQ(e->allPostings, 10) << "what comes after the refusal may have to go as well";
  EXPECT_TRUE(e->nearest);
}

TEST_F(ExplainTest, FollowsTheSearchOfAModel) {
  const Explained e = explain(pigeons);
  EXPECT_EQ(e->status, CS_EXPLAINED_MINIMAL);
  EXPECT_EQ(numbersOf(*e), "cs_Neq.1 cs_Neq.2 cs_Neq.3 cs_Neq.4 cs_Neq.5 cs_Neq.6");
  EXPECT_EQ(numbersOf(*whatHasToGo(pigeons)), "cs_Neq.1");
}

TEST_F(ExplainTest, CountsARefusalThatWasNotLookedAt) {
  const Explained e = explain([] {
    CSint *x = cs_createCSint(0, 9);
    static_cast<void>(cs_GE(x, 5));
    static_cast<void>(cs_LE(x, 4));
    static_cast<void>(cs_NEQ(x, 5));
    return 1;
  });
  EXPECT_EQ(numbersOf(*e), "cs_GE.1 cs_LE.1");
  EXPECT_EQ(e->allPostings, 2);
}

TEST_F(ExplainTest, TellsOfAModelThatHasASolution) {
  for (const Explained &e : {explain(feasible), whatHasToGo(feasible)}) {
    EXPECT_EQ(e->status, CS_EXPLAINED_SOLUTION);
    EXPECT_EQ(e->size, 0);
    EXPECT_EQ(e->checks, 1);
  }
}

TEST_F(ExplainTest, TellsWhenLeavingOutHelpsNothing) {
  const Model hopeless = [] { return cs_Neq(CSINT(1), CSINT(2)) && cs_Add(nullptr, nullptr) != nullptr ? 1 : 0; };
  for (const Explained &e : {explain(hopeless), whatHasToGo(hopeless)}) {
    EXPECT_EQ(e->status, CS_EXPLAINED_NEVER);
    EXPECT_EQ(e->size, 0);
  }
  EXPECT_EQ(explain([] { return 0; })->status, CS_EXPLAINED_NEVER) << "without any posting";
}

TEST_F(ExplainTest, LeavesOutNothingInsideContexts) {
  const Explained e = explain([] {
    CSint *x = cs_createCSint(0, 9);
    static_cast<void>(cs_GE(x, 5));
    cs_saveContext();
    static_cast<void>(cs_LE(x, 4));
    return 1;
  });
  EXPECT_EQ(numbersOf(*e), "cs_GE.1");
  EXPECT_EQ(e->allPostings, 1);
}

// ----- models that do not know

TEST_F(ExplainTest, DoesNotTakeASearchAtItsLimitForAProof) {
  const Model limited = [] {
    CSint *x[4];
    for (CSint *&v : x) v = cs_createCSint(0, 2);
    for (int i = 0; i < 4; ++i)
      for (int j = 0; j < i; ++j)
        if (!cs_Neq(x[i], x[j])) return 0;
    return cs_searchFail(x, 4, cs_findFreeVar, 3) ? 1 : 0;
  };
  EXPECT_EQ(explain(limited)->status, CS_EXPLAINED_UNKNOWN);
  const Explained e = whatHasToGo(limited);
  EXPECT_EQ(e->status, CS_EXPLAINED_UNKNOWN);
  EXPECT_EQ(e->checks, 1);
}

TEST_F(ExplainTest, KeepsWhatItDoesNotKnowOf) {
  int run = 0;
  const Explained e = explain([&run] {
    CSint *x = cs_createCSint(0, 9);
    const bool ok = cs_GE(x, 5) && cs_LE(x, 4);
    return ++run == 1 ? static_cast<int>(ok) : CS_MODEL_UNKNOWN;
  });
  EXPECT_EQ(e->status, CS_EXPLAINED_PARTLY) << "nothing could be left out";
  EXPECT_EQ(e->size, 2);
}

TEST_F(ExplainTest, StopsWhenAModelSaysSo) {
  int run = 0;
  const Explained e = explain([&run] {
    CSint *x = cs_createCSint(0, 9);
    const bool ok = cs_GE(x, 5) && cs_NEQ(x, 7) && cs_LE(x, 4);
    return ++run < 3 ? static_cast<int>(ok) : CS_MODEL_STOP;
  });
  EXPECT_EQ(e->status, CS_EXPLAINED_PARTLY);
  EXPECT_EQ(e->checks, 3);
  EXPECT_EQ(explain([] { return CS_MODEL_STOP; })->status, CS_EXPLAINED_UNKNOWN);
}

TEST_F(ExplainTest, TellsOfAModelThatSaysDifferentThings) {
  int run = 0;
  const Explained e = explain([&run] {
    CSint *x = cs_createCSint(0, 9);
    const bool ok = cs_GE(x, 5) && cs_LE(x, 7);
    return ok && ++run > 1 ? 1 : 0;
  });
  EXPECT_EQ(e->status, CS_EXPLAINED_UNSTABLE);
  EXPECT_EQ(e->size, 2) << "what is known of the first run";
}

// Without the first posting there is a solution, with none of both there is not: the search for a set misses that.
TEST_F(ExplainTest, TriesEachPostingOfTheResultAlone) {
  const Explained e = explain([] {
    CSint *x = cs_createCSint(0, 1);
    CSint *y = cs_createCSint(0, 1);
    if (!cs_EQ(x, 1) || !cs_EQ(y, 1)) return 0;
    return cs_isFree(x) && cs_isInstantiated(y) ? 1 : 0;
  });
  EXPECT_EQ(e->status, CS_EXPLAINED_NEVER);
}

TEST_F(ExplainTest, NeedNotKnowEveryPostingBeforehand) {
  const Model unfolding = [] {
    CSint *x = cs_createCSint(0, 9);
    bool ok = cs_GE(x, 5);
    ok = ok && cs_LE(x, 4);
    if (ok) ok = cs_EQ(x, 3);  // not made while the others are
    return ok ? 1 : 0;
  };
  EXPECT_EQ(numbersOf(*explain(unfolding)), "cs_GE.1 cs_LE.1");
  EXPECT_EQ(numbersOf(*whatHasToGo(unfolding)), "cs_GE.1");
}

// ----- limits

TEST_F(ExplainTest, EndsAtALimitOfRuns) {
  CSexplainOptions options = defaults();
  options.maxChecks = 1;
  const Explained all = explain(fiveInOrder, options);
  EXPECT_EQ(all->status, CS_EXPLAINED_PARTLY);
  EXPECT_EQ(all->size, 9) << "what the first run has shown";
  options.nearest = true;
  EXPECT_EQ(explain(fiveInOrder, options)->status, CS_EXPLAINED_UNKNOWN);
  options.maxChecks = 2;
  const Explained e = explain(fiveInOrder, options);
  EXPECT_EQ(e->status, CS_EXPLAINED_PARTLY);
  EXPECT_EQ(e->size, 10) << "without all there is a solution";
}

TEST_F(ExplainTest, EndsAtALimitOfTime) {
  CSexplainOptions options = defaults();
  options.milliseconds = 1;
  const auto slow = [] {
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(2);
    while (std::chrono::steady_clock::now() < until) continue;
    return fiveInOrder();
  };
  const Explained e = explain(slow, options);
  EXPECT_EQ(e->status, CS_EXPLAINED_PARTLY);
  EXPECT_EQ(e->checks, 1);
  options.milliseconds = 1000000;
  EXPECT_EQ(explain(fiveInOrder, options)->status, CS_EXPLAINED_MINIMAL);
}

TEST_F(ExplainTest, TellsThePlacesEarly) {
  std::string seen;
  CSexplainOptions options = defaults();
  options.extra = &seen;
  options.placesKnown = [](const CSexplanation *e, void *extra) {
    EXPECT_EQ(e->status, CS_EXPLAINED_PARTLY);
    *static_cast<std::string *>(extra) += numbersOf(*e) + ";";
  };
  const Explained e = explain(fiveInOrder, options);
  EXPECT_EQ(seen, "cs_Lt.1 cs_Lt.2 cs_Lt.3 cs_Lt.4 cs_Lt.5 cs_LE.1 cs_GE.1;");
  EXPECT_EQ(numbersOf(*e), "cs_Lt.2 cs_Lt.3 cs_LE.1 cs_GE.1");
}

// ----- refused

TEST_F(ExplainTest, RefusesWhatItDoesNotTake) {
  EXPECT_EQ(cs_explainFailure(nullptr, nullptr, nullptr), nullptr);
  Model model = feasible;
  for (const auto spoil : {+[](CSexplainOptions &o) { o.size = 1; }, +[](CSexplainOptions &o) { o.maxChecks = -1; },
                           +[](CSexplainOptions &o) { o.milliseconds = -1; }}) {
    CSexplainOptions options = defaults();
    spoil(options);
    EXPECT_EQ(cs_explainFailure(runModel, &model, &options), nullptr);
  }
  const Explained inside = explain([&] { return cs_explainFailure(runModel, &model, nullptr) == nullptr ? 1 : 0; });
  EXPECT_EQ(inside->status, CS_EXPLAINED_SOLUTION);
  cs_freeExplanation(nullptr);
  cs_writeExplanation(nullptr, stdout);
  cs_writeExplanation(explain(feasible).get(), nullptr);
}

int explanations = 0;

void explainInside() {
  Model model = feasible;
  const Explained e(cs_explainFailure(runModel, &model, nullptr));
  if (e != nullptr) ++explanations;
}

TEST_F(ExplainTest, IsRefusedInCallbacks) {
  explanations = 0;
  const auto run = [](CSint **, int, void *) {
    explainInside();
    return true;
  };
  const auto locate = [](void *) {
    explainInside();
    return "somewhere";
  };
  CSint *x = cs_createCSint(0, 9);
  EXPECT_TRUE(cs_eventRun(&x, 1, run, nullptr));
  cs_setProfilerLocator("text", locate, nullptr);
  EXPECT_TRUE(cs_Le(x, cs_createCSint(0, 9)));
  EXPECT_EQ(explanations, 0);
  explainInside();
  EXPECT_EQ(explanations, 1);
}

// ----- solvers

TEST_F(ExplainTest, LeavesTheRunningSolverAsItWas) {
  CSint *x = cs_createCSint(0, 9);
  EXPECT_TRUE(cs_GE(x, 3));
  const int label = cs_saveContext();
  EXPECT_TRUE(cs_LE(x, 5));
  cs_setErr(7);
  explain(fiveInOrder);
  EXPECT_EQ(cs_getErr(), 7);
  EXPECT_EQ(values(x), (std::vector<int>{3, 4, 5}));
  cs_restoreContextUntil(label);
  EXPECT_EQ(cs_getNbElements(x), 7);
  EXPECT_EQ(cs_getNbRefused(), 0);
}

TEST_F(ExplainTest, NeedsNoSolver) {
  cs_end();
  cs_setErr(7);
  EXPECT_EQ(explain(fiveInOrder)->size, 4);
  EXPECT_EQ(cs_getErr(), 7);
  EXPECT_FALSE(solver::initialised);
}

TEST_F(ExplainTest, TakesAWholeProgramForAModel) {
  const Explained e = explain([] {
    cs_init();
    const int result = fiveInOrder();
    cs_end();
    return result;
  });
  EXPECT_EQ(numbersOf(*e), "cs_Lt.2 cs_Lt.3 cs_LE.1 cs_GE.1");
}

TEST_F(ExplainTest, InstallsTheErrorHandlersOfTheCall) {
  int reports = 0;
  const auto count = [](CSint *, void *counter) { ++*static_cast<int *>(counter); };
  cs_setErrHandler(CS_ERR_NOT_INSTANTIATED, count, &reports);
  explain([] { return cs_getValue(cs_createCSint(0, 1)); });
  EXPECT_GT(reports, 0);
}

// ----- memory

TEST_F(ExplainTest, SurvivesTheFailureOfAnyAllocation) {
  const auto locate = [](void *) { return "line"; };
  const Model model = [&] {
    cs_setProfilerLocator("text", locate, nullptr);
    return fiveInOrder();
  };
  for (const Failing how : {Failing::kOnce, Failing::kForEver}) {
    for (const bool nearest : {false, true}) {
      CSexplainOptions options = defaults();
      options.nearest = nearest;
      options.placesKnown = [](const CSexplanation *, void *) {};
      for (int k = 0;; ++k) {
        const long blocks = blocksAlive;
        Explained e;
        {
          const FailingAllocator failing(k, how);
          e = explain(model, options);
        }
        const bool failed = FailingAllocator::failures() > 0;
        if (e != nullptr && e->status != CS_EXPLAINED_MEMORY) {
          EXPECT_EQ(e->status, CS_EXPLAINED_MINIMAL) << k;
          EXPECT_EQ(e->size, nearest ? 1 : 4) << k;
        }
        EXPECT_TRUE(failed || (e != nullptr && e->status == CS_EXPLAINED_MINIMAL)) << k;
        e.reset();
        EXPECT_EQ(solver::initialised, true);
        EXPECT_LE(blocksAlive - blocks, 1) << k << ": the record of the parked solver may stay";
        if (!failed) break;
      }
    }
  }
  expectSolverUsable();
}

// ----- the text

std::string textFor(const CSexplanation &e) {
  return textOf([&](std::FILE *f) { cs_writeExplanation(&e, f); });
}

TEST_F(ExplainTest, IsWrittenWithTheLinesOfTheSource) {
  const std::string source = std::string(__FILE__) + "\t2\t0\tmodel";
  const Explained e = explain([&] {
    cs_setProfilerLocator(
        "text", [](void *text) { return static_cast<const std::string *>(text)->c_str(); },
        const_cast<std::string *>(&source));
    return fiveInOrder();
  });
  const std::string line = std::string(__FILE__) + ":2  ";
  const std::string text =
      "    // cs_explainFailure: what it answers of all kinds of models, at limits, and what it "
      "leaves of the solver that runs.\n";
  EXPECT_EQ(textFor(*e), "no solution, because of 4 postings at 3 places (of 9 at 5); " + std::to_string(e->checks) +
                             " checks\n" + line + "cs_Lt  no. 2 of 5" + text + line + "cs_Lt  no. 3 of 5" + text +
                             line + "cs_LE" + text + line + "cs_GE" + text);
  EXPECT_STREQ(e->reasons[0].caller, "model");
}

// A line that is blank, one behind a line longer than what is read at a time, and one behind the end of the file.
TEST_F(ExplainTest, IsWrittenWithoutLinesThatSayNothing) {
  const std::filesystem::path source = temporaryPath();
  std::ofstream(source) << "  \n" << std::string(500, 'x') << "\n  third\n";
  std::string place;
  const auto at = [&](int line) { place = source.string() + "\t" + std::to_string(line) + "\t0\tmain"; };
  const Explained e = explain([&] {
    cs_setProfilerLocator(
        "text", [](void *text) { return static_cast<const std::string *>(text)->c_str(); }, &place);
    CSint *x = cs_createCSint(0, 9);
    CSint *y = cs_createCSint(0, 9);
    at(1);
    if (!cs_GE(x, 5)) return 0;
    at(3);
    if (!cs_Lt(x, y)) return 0;
    at(9);
    return cs_LE(y, 5) ? 1 : 0;
  });
  const std::string text = textFor(*e);
  const std::string file = source.string();
  EXPECT_NE(text.find("\n" + file + ":1  cs_GE\n" + file + ":3  cs_Lt    third\n" + file + ":9  cs_LE\n"),
            std::string::npos)
      << text;
  std::filesystem::remove(source);
}

TEST_F(ExplainTest, IsWrittenWithThePlacesThatThereAre) {
  const char *place = nullptr;
  const Explained e = explain([&] {
    place = "constraint 7";
    cs_setProfilerLocator(
        "text", [](void *text) { return *static_cast<const char **>(text); }, &place);
    CSint *x = cs_createCSint(0, 9);
    if (!cs_GE(x, 5)) return 0;
    place = "no such file\t3\t0\tmain";
    return cs_LE(x, 4) ? 1 : 0;
  });
  EXPECT_EQ(textFor(*e), "no solution, because of 2 postings at 2 places (of 2 at 2); " + std::to_string(e->checks) +
                             " checks\nconstraint 7  cs_GE\nno such file:3  cs_LE\n");
}

TEST_F(ExplainTest, IsWrittenForEachStatus) {
  CSreason reason{"cs_GE", "main.c", 0, "", 1, 1, 1};
  const auto text = [&](CSexplained status, bool nearest, int size) {
    const CSexplanation e{status, nearest, size, &reason, size, 8, 4, 1};
    return textFor(e);
  };
  const std::string set = " 1 posting at 1 place (of 8 at 4)";
  const std::string line = "main.c  cs_GE\n";
  EXPECT_EQ(text(CS_EXPLAINED_MINIMAL, true, 1), "a solution without" + set + "; 1 check\n" + line);
  EXPECT_EQ(text(CS_EXPLAINED_PARTLY, false, 1), "no solution, because of" + set + ", perhaps fewer; 1 check\n" + line);
  EXPECT_EQ(text(CS_EXPLAINED_UNSTABLE, false, 1),
            "no solution, but not each time, because of" + set + ", perhaps fewer; 1 check\n" + line);
  EXPECT_EQ(text(CS_EXPLAINED_UNSTABLE, true, 1),
            "a solution, but not each time, without" + set + ", perhaps fewer; 1 check\n" + line);
  EXPECT_EQ(text(CS_EXPLAINED_MEMORY, false, 1), "memory exhausted:" + set + ", perhaps fewer; 1 check\n" + line);
  EXPECT_EQ(text(CS_EXPLAINED_MEMORY, false, 0), "memory exhausted; 1 check\n");
  EXPECT_EQ(text(CS_EXPLAINED_SOLUTION, false, 0), "there is a solution; 1 check\n");
  EXPECT_EQ(text(CS_EXPLAINED_UNKNOWN, false, 0), "not known whether there is a solution; 1 check\n");
  EXPECT_EQ(text(CS_EXPLAINED_NEVER, false, 0), "no solution, whatever is left out; 1 check\n");
}

// Places beyond the first buffers.
TEST_F(ExplainTest, KnowsManyPlacesAndPostings) {
  std::string place;
  const Explained e = explain([&] {
    cs_setProfilerLocator(
        "text", [](void *text) { return static_cast<const std::string *>(text)->c_str(); }, &place);
    CSint *x = cs_createCSint(0, 5000);
    for (int i = 0; i < 3000; ++i) {
      place = "line " + std::to_string(i % 1500);
      if (!cs_NEQ(x, i == 2900 ? 5000 : i)) return 0;
    }
    place = "the other";
    return cs_GE(x, 5000) ? 1 : 0;
  });
  EXPECT_EQ(e->status, CS_EXPLAINED_MINIMAL);
  EXPECT_EQ(e->allPostings, 3001);
  EXPECT_EQ(e->allPlaces, 1501);
  ASSERT_EQ(e->size, 2);
  EXPECT_STREQ(e->reasons[0].file, "line 1400");
  EXPECT_EQ(e->reasons[0].number, 2);
  EXPECT_EQ(e->reasons[0].position, 2901);
  EXPECT_STREQ(e->reasons[1].file, "the other");
  EXPECT_LE(e->checks, 60);
}

}  // namespace
}  // namespace koru::test
