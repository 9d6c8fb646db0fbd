// SPDX-License-Identifier: MIT
#include "minizinc/shared_bound.h"

#include <sys/wait.h>

#include "minizinc/model.h"
#include "minizinc/run.h"
#include "minizinc/tests/support.h"

namespace koru::fzn {
namespace {

// The ends of an objective that ranged over low..high; empty when there is nothing better.
std::string endsOf(const SharedBound &bound, int low, int high) {
  cs_init();
  CSint *objective = cs_createCSint(low, high);
  const bool possible = bound.impose(objective);
  const std::string ends = std::to_string(cs_getMin(objective)) + " " + std::to_string(cs_getMax(objective));
  cs_end();
  return possible ? ends : "";
}

TEST(FznSharedBound, KeepsTheLeastOrTheGreatest) {
  SharedBound least(true), greatest(false);
  EXPECT_EQ(endsOf(least, 1, 9), "1 9");
  EXPECT_EQ(endsOf(greatest, 1, 9), "1 9");
  for (const int found : {6, 4, 5}) {
    least.tell(found);
    greatest.tell(found);
  }
  EXPECT_EQ(endsOf(least, 1, 9), "1 3");
  EXPECT_EQ(endsOf(greatest, 1, 9), "7 9");
  EXPECT_EQ(endsOf(least, 4, 9), "");
  EXPECT_EQ(endsOf(greatest, 1, 6), "");
}

TEST(FznSharedBound, TakesTheEndsOfTheInts) {
  SharedBound least(true), greatest(false);
  least.tell(INT_MAX);
  greatest.tell(INT_MIN);
  EXPECT_EQ(endsOf(least, 5, INT_MAX), "5 2147483646");
  EXPECT_EQ(endsOf(greatest, INT_MIN, 5), "-2147483647 5");
  least.tell(INT_MIN);
  greatest.tell(INT_MAX);
  EXPECT_EQ(endsOf(least, INT_MIN, 5), "");
  EXPECT_EQ(endsOf(greatest, 5, INT_MAX), "");
}

TEST(FznSharedBound, IsSeenByOtherProcesses) {
  SharedBound *bound = SharedBound::create(true);
  ASSERT_NE(bound, nullptr);
  const pid_t child = fork();
  if (child == 0) {
    bound->tell(3);
    _exit(0);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(endsOf(*bound, 1, 9), "1 2");
}

const char *const kFourLevels =
    "var 0..3: x :: output_var;\nvar 0..3: y;\nconstraint int_le(y,x);\n"
    "solve :: int_search([x,y],input_order,indomain_max,complete) minimize x;\n";

// As a solution of another process in the midst of a search.
bool tellOfOne(int value, int, CSint **, int, void *bound) {
  if (value == 3) static_cast<SharedBound *>(bound)->tell(1);
  return true;
}

// What a search writes that shares a bound, which at x = 3 may become 1.
std::string searched(SharedBound &bound, bool free, bool tellsAtThree = false) {
  Syntax syntax;
  Mistake mistake;
  syntax.text = kFourLevels;
  EXPECT_TRUE(parse(syntax, mistake));
  Options options;
  options.bound = &bound;
  options.free = free;
  options.all = true;
  testing::internal::CaptureStdout();
  cs_init();
  {
    Report report(options);
    Model model(syntax, mistake);
    const bool posted = model.post();
    CSint *x = model.variables.get(model.variables.operand(syntax.solve.objective));
    EXPECT_TRUE(!tellsAtThree || cs_eventKnown(&x, 1, tellOfOne, &bound));
    EXPECT_TRUE(run(syntax, model, posted, options, {}, report));
  }
  cs_end();
  return testing::internal::GetCapturedStdout();
}

TEST(FznSharedBound, LeavesTheSearchBetterSolutionsOnly) {
  SharedBound none(true), two(true), best(true);
  two.tell(2);
  best.tell(0);
  EXPECT_EQ(searched(none, false),
            "x = 3;\n----------\nx = 2;\n----------\nx = 1;\n----------\nx = 0;\n----------\n==========\n");
  EXPECT_EQ(searched(two, false), "x = 1;\n----------\nx = 0;\n----------\n==========\n");
  EXPECT_EQ(searched(two, true), "=====UNSATISFIABLE=====\n");  // the search before has told of 0
  EXPECT_EQ(searched(best, false), "=====UNSATISFIABLE=====\n");
}

TEST(FznSharedBound, CountsFromTheMomentThatItIsTold) {
  SharedBound bound(true);
  EXPECT_EQ(searched(bound, false, true), "x = 0;\n----------\n==========\n");
}

}  // namespace
}  // namespace koru::fzn
