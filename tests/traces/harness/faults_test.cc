// SPDX-License-Identifier: MIT
// The harness finds what is wrong: relations that the model gets wrong, restores that do not happen, blocks that nobody
// frees, crashes and endless loops, each seeded on purpose; and it makes the traces that show it small.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "traces/child.h"
#include "traces/generator.h"
#include "traces/shrink.h"

namespace koru::traces {
namespace {

Shared &shared() {
  static Shared *const memory = makeShared();
  return *memory;
}

Failure failureOf(const Trace &trace, Fault fault) { return runInChild(trace, {false, fault}, shared()); }

Trace lines(const std::string &text) {
  std::string reason;
  Trace trace = parse(text, reason);
  EXPECT_EQ(reason, "");
  return trace;
}

// The first of the generated traces that a fault makes fail.
Trace firstToFail(Fault fault, Failure &failure) {
  for (std::uint64_t seed = 1; seed < 400; ++seed) {
    Trace trace = generate(seed);
    failure = failureOf(trace, fault);
    if (!failure.empty()) return trace;
  }
  return {};
}

// What is found, and in how many lines it can be shown.
void expectFound(Fault fault, const std::string &kind, std::size_t atMost) {
  Failure failure;
  const Trace trace = firstToFail(fault, failure);
  EXPECT_TRUE(failure.starts_with(kind)) << failure << "\n" << print(trace);
  const Trace small = shrink(
      trace, [&](const Trace &t) { return sameKind(failureOf(t, fault), failure); }, 400);
  EXPECT_LE(small.size(), atMost) << print(small);
  EXPECT_EQ(failureOf(small, Fault::kNone), "") << "the fault is the seeded one";
}

TEST(SeededFault, ARelationThatTheModelGetsWrongIsFound) {
  const Trace trace = lines("cs_init\nv0 = cs_createCSint 0 4\nv1 = cs_createCSint 0 4\ncs_Le v0 v1\nsolve\n");
  EXPECT_EQ(failureOf(trace, Fault::kNone), "");
  EXPECT_EQ(failureOf(trace, Fault::kRelation), "solutions: the search finds others than there are");
}

TEST(SeededFault, ARestoreThatDoesNotHappenIsFoundAndShrunk) { expectFound(Fault::kRestore, "restore: ", 7); }

TEST(SeededFault, ABlockThatIsNotFreedIsFoundAndShrunk) { expectFound(Fault::kLeak, "leak: ", 6); }

TEST(SeededFault, ACrashIsFoundAndShrunk) { expectFound(Fault::kCrash, "crash: ", 2); }

TEST(SeededFault, ACallbackOfAnotherContextIsFound) {
  const Trace trace = lines("cs_init\ncs_saveContext\ncs_backtrack null 3 s0\ncs_restoreContext\n");
  EXPECT_EQ(failureOf(trace, Fault::kNone), "");
  EXPECT_EQ(failureOf(trace, Fault::kCallback), "callback: undone out of order");
}

TEST(SeededFaultHeavy, ATraceThatDoesNotEndIsFound) {
  EXPECT_EQ(failureOf(lines("cs_init\ncs_NEQ v0 0\ncs_end\n"), Fault::kHang), "time: the trace does not end");
}

TEST(Shrinking, KeepsTheLinesThatMatterAndMakesNumbersSmall) {
  Trace trace = generate(7);
  const Trace needed = lines("v0 = cs_createCSint -9 90\ncs_AllNeq [v0 v0 v1] 3\n");
  trace.insert(trace.begin() + 2, needed[0]);
  trace.push_back(needed[1]);
  const Trace small = shrink(trace, [](const Trace &t) {
    const auto has = [&](const std::string &name, int least) {
      return std::ranges::any_of(
          t, [&](const Line &line) { return line.row->name == name && line.args[1].number >= least; });
    };
    return has("cs_createCSint", 40) && has("cs_AllNeq", 0);
  });
  EXPECT_EQ(print(small), "v0 = cs_createCSint 0 40\ncs_AllNeq [] 0\n");
}

TEST(Shrinking, LeavesATraceAloneThatOnlyFailsAsItIs) {
  const Trace trace = generate(3);
  const std::string text = print(trace);
  EXPECT_EQ(print(shrink(trace, [&](const Trace &t) { return print(t) == text; })), text);
}

// Traces that were of use once: found by campaigns and by the fuzzer.
TEST(Corpus, EveryTraceOfItRunsWithoutAFault) {
  int traces = 0;
  const auto folder = std::filesystem::path(__FILE__).parent_path().parent_path() / "corpus";
  for (const auto &entry : std::filesystem::directory_iterator(folder)) {
    std::ifstream file(entry.path());
    const Trace trace = lines(std::string(std::istreambuf_iterator<char>(file), {}));
    EXPECT_EQ(failureOf(trace, Fault::kNone), "") << entry.path();
    ++traces;
  }
  EXPECT_GT(traces, 5);
}

}  // namespace
}  // namespace koru::traces
