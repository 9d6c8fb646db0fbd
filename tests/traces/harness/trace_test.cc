// SPDX-License-Identifier: MIT
// The text of traces, the table of calls, and the generator.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "catalogue/headers.h"
#include "traces/generator.h"
#include "traces/machine.h"
#include "traces/table.h"

namespace koru::traces {
namespace {

std::string reasonOf(const std::string &text) {
  std::string reason;
  parse(text, reason);
  return reason;
}

TEST(TraceText, PrintsAsItWasWritten) {
  const std::string text =
      "cs_init\n"
      "v0 = cs_createCSint -2147483648 2147483647\n"
      "v1 = cs_createNamedCSint 0 4 \"a name\"\n"
      "s3 = script 2 -1\n"
      "s3: v2 = cs_Add v0 null\n"
      "cs_eventKnown [v0 null v1] 3 s3\n"
      "cs_eventKnown null 0 null\n"
      "v3 = cs_ScalProd [v0 v1] {-2 3} 2\n"
      "cs_setName v0 null\n";
  std::string reason;
  EXPECT_EQ(print(parse(text, reason)), text);
  EXPECT_EQ(reason, "");
}

TEST(TraceText, LeavesOutCommentsAndEmptyLines) {
  std::string reason;
  EXPECT_EQ(print(parse("# all of it\n\n  cs_end   # the end\n", reason)), "cs_end\n");
  EXPECT_EQ(reason, "");
}

TEST(TraceText, NamesTheFirstLineThatIsNone) {
  EXPECT_EQ(reasonOf("cs_init\ncs_Dance v0\n"), "line 2: unknown call: cs_Dance");
  EXPECT_EQ(reasonOf("cs_EQ v0\n"), "line 1: argument 2 of cs_EQ");
  EXPECT_EQ(reasonOf("cs_EQ q0 3\n"), "line 1: argument 1 of cs_EQ");
  EXPECT_EQ(reasonOf("cs_EQ v0 2147483648\n"), "line 1: argument 2 of cs_EQ");
  EXPECT_EQ(reasonOf("cs_EQ v256 0\n"), "line 1: argument 1 of cs_EQ");
  EXPECT_EQ(reasonOf("cs_EQ v0 3 4\n"), "line 1: more than the arguments of cs_EQ");
  EXPECT_EQ(reasonOf("v0 = cs_EQ v0 3\n"), "line 1: result of cs_EQ");
  EXPECT_EQ(reasonOf("s9: cs_init\n"), "line 1: script");
  EXPECT_EQ(reasonOf("cs_AllNeq [v0 3\n"), "line 1: argument 1 of cs_AllNeq");
}

TEST(TraceText, KeepsTheLinesAroundAWrongOne) {
  std::string reason;
  EXPECT_EQ(print(parse("cs_init\nnonsense\ncs_end\n", reason)), "cs_init\ncs_end\n");
}

TEST(TraceTable, HasARowForEachExportOfKoruAndEachFurtherConstraint) {
  std::set<std::string> named;
  for (const Row *row : rows()) {
    if (!isExport(*row)) continue;
    EXPECT_TRUE(named.insert(row->name).second) << row->name << " twice";
  }
  const auto root = std::filesystem::path(__FILE__).parent_path().parent_path().parent_path().parent_path();
  std::ifstream list(root / "cmake" / "exports.txt");
  std::set<std::string> exported = catalogue::statingFunctions("koru_extras.h");
  exported.insert("cs_nextSolution");  // a search object from its making to its end
  exported.insert({"cs_detachSolver", "cs_attachSolver"});
  exported.insert({"cs_beginPosting", "cs_endPosting", "cs_eventRun"});
  for (std::string name; list >> name;) exported.insert(name);
  EXPECT_EQ(named, exported);
}

TEST(TraceTable, HasRoomForItsFigures) { EXPECT_LE(rows().size(), Tally::kRows); }

TEST(TraceGenerator, MakesTheSameTraceOfTheSameSeed) {
  for (std::uint64_t seed = 1; seed < 50; ++seed) {
    EXPECT_EQ(print(generate(seed)), print(generate(seed)));
    EXPECT_NE(print(generate(seed)), print(generate(seed + 50)));
  }
}

TEST(TraceGenerator, WritesWhatTheParserReads) {
  for (std::uint64_t seed = 1; seed < 300; ++seed) {
    const std::string text = print(generate(seed, seed % 2 == 0 ? Mix::kAll : Mix::kRestoring));
    std::string reason;
    ASSERT_EQ(print(parse(text, reason)), text);
    ASSERT_EQ(reason, "");
  }
}

}  // namespace
}  // namespace koru::traces
