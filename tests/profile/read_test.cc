// SPDX-License-Identifier: MIT
// koru-profile reads what cs_profilerWrite writes, sums it up, and says where input is none of that.
#include <gtest/gtest.h>

#include <sstream>

#include "koru_extras.h"
#include "profile/profile.h"
#include "support/kit/written_text.h"

namespace {

using namespace koru::profile;
using koru::test::textOf;

constexpr char kHead[] =
    "Koru Profiler: Constraint 1.0\nKoru Version: 3.8.0\nstart_time: 1000\nend_time: 1007\nplatform: generic\n"
    "format: windows_pdb\n__DATA__\n";

struct Result {
  bool good;
  Profile profile;
  std::string error;
};

Result readText(const std::string &text) {
  Result result{};
  std::istringstream in(text);
  result.good = readProfile(in, result.profile, result.error);
  return result;
}

TEST(ReadProfile, TheHead) {
  const Result result = readText(kHead);
  ASSERT_TRUE(result.good) << result.error;
  EXPECT_EQ(result.profile.version, "3.8.0");
  EXPECT_EQ(result.profile.format, "windows_pdb");
  EXPECT_EQ(result.profile.startTime, 1000);
  EXPECT_EQ(result.profile.endTime, 1007);
  EXPECT_TRUE(result.profile.entries.empty());
}

TEST(ReadProfile, RowsOfOnePlaceAndFunctionAreSummedUpAndTheHottestComesFirst) {
  const Result result = readText(std::string(kHead) +
                                 "m.c\t12\t0x1\tmain\tcs_Neq\t3\t1\n"
                                 "m.c\t13\t0x2\tmain\tcs_Neq\t9\t0\n"
                                 "m.c\t12\t0x1\tmain\tcs_Neq\t4\t2\n"
                                 "m.c\t12\t0x1\tmain\tcs_Lt\t1\t0\n");
  ASSERT_TRUE(result.good) << result.error;
  ASSERT_EQ(result.profile.entries.size(), 3U);
  EXPECT_EQ(result.profile.calls, 17);
  EXPECT_EQ(result.profile.fails, 3);
  const Entry &first = result.profile.entries[0];
  EXPECT_EQ(first.line, 13);
  EXPECT_EQ(first.calls, 9);
  const Entry &second = result.profile.entries[1];
  EXPECT_EQ(second.function, "cs_Neq");
  EXPECT_EQ(second.place(), "m.c:12 main");
  EXPECT_EQ(second.postings, 2);
  EXPECT_EQ(second.calls, 7);
  EXPECT_EQ(second.fails, 3);
  EXPECT_DOUBLE_EQ(second.failRate(), 3.0 / 7);
  EXPECT_DOUBLE_EQ(result.profile.shareOf(second), 7.0 / 17);
}

TEST(ReadProfile, APlaceMayBeAnyText) {
  const Result result =
      readText(std::string(kHead) + "\tcs_Neq\t3\t1\nsome place\tcs_Lt\t2\t0\na\tb\tc\tcs_Le\t1\t0\n");
  ASSERT_TRUE(result.good) << result.error;
  EXPECT_EQ(result.profile.entries[0].place(), "");
  EXPECT_EQ(result.profile.entries[1].place(), "some place");
  EXPECT_EQ(result.profile.entries[2].place(), "a b c");
}

TEST(ReadProfile, AnUnknownPlaceIsSaidOnce) {
  const Result result = readText(std::string(kHead) + "(unknown)\t0\t0\t(unknown)\tcs_Neq\t3\t1\n");
  ASSERT_TRUE(result.good) << result.error;
  EXPECT_EQ(result.profile.entries[0].place(), "(unknown)");
}

TEST(ReadProfile, TheLibrarysOwnReport) {
  cs_init();
  CSprofiler *profiler = cs_createProfiler(0);
  cs_enableProfiler(profiler);
  CSint *x = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_Neq(x, cs_createCSint(0, 9)) && cs_GE(x, 3));
  const std::string text = textOf([profiler](std::FILE *f) { cs_profilerWrite(profiler, f); });
  cs_end();
  const Result result = readText(text);
  ASSERT_TRUE(result.good) << result.error;
  ASSERT_EQ(result.profile.entries.size(), 1U);
  EXPECT_EQ(result.profile.entries[0].function, "cs_Neq");
  EXPECT_EQ(result.profile.calls, 1);
}

constexpr char kDetailsHead[] = "Koru Profiler: Details 1.0\nKoru Version: 3.8.0\n__DATA__\n";

TEST(ReadProfile, DetailsAreSummedUpAndTheSlowestPlaceComesFirst) {
  const Result result = readText(std::string(kDetailsHead) +
                                 "m.c\t12\t0x1\tmain\tcs_Neq\t3\t1\t1\t4\t500\n"
                                 "m.c\t13\t0x2\tmain\tcs_Neq\t9\t0\t9\t0\t700\n"
                                 "m.c\t12\t0x1\tmain\tcs_Neq\t4\t2\t0\t2\t800\n");
  ASSERT_TRUE(result.good) << result.error;
  EXPECT_TRUE(result.profile.detailed);
  EXPECT_EQ(result.profile.nanoseconds, 2000);
  EXPECT_EQ(result.profile.idle, 10);
  EXPECT_EQ(result.profile.narrowings, 6);
  ASSERT_EQ(result.profile.entries.size(), 2U);
  const Entry &first = result.profile.entries[0];
  EXPECT_EQ(first.line, 12);
  EXPECT_EQ(first.nanoseconds, 1300);
  EXPECT_EQ(first.idle, 1);
  EXPECT_EQ(first.narrowings, 6);
  EXPECT_DOUBLE_EQ(first.idleRate(), 1.0 / 7);
  EXPECT_DOUBLE_EQ(result.profile.shareOf(first), 0.65);
}

TEST(ReadProfile, WithoutTimesThePlaceWithTheMostCallsComesFirst) {
  const Result result = readText(std::string(kDetailsHead) + "a\tcs_Neq\t3\t1\t1\t4\t0\nb\tcs_Lt\t9\t0\t9\t0\t0\n");
  ASSERT_TRUE(result.good) << result.error;
  EXPECT_EQ(result.profile.entries[0].file, "b");
  EXPECT_DOUBLE_EQ(result.profile.shareOf(result.profile.entries[0]), 0.75);
}

TEST(ReadProfile, SumsEndAtTheEndsOfTheirType) {
  const std::string most = "9223372036854775807", least = "-9223372036854775808";
  const std::string rows = "a\tf\t1\t0\t" + most + "\t" + least + "\t" + most + '\n';
  const Result result = readText(kDetailsHead + rows + rows);
  ASSERT_TRUE(result.good) << result.error;
  EXPECT_EQ(std::to_string(result.profile.idle), most);
  EXPECT_EQ(std::to_string(result.profile.narrowings), least);
  EXPECT_EQ(result.profile.shareOf(result.profile.entries[0]), 1);
  EXPECT_EQ(shareOf(-1, 5), 0);
  EXPECT_EQ(shareOf(5, -1), 0);
}

TEST(ReadProfile, ARowOfDetailsHasAllColumns) {
  EXPECT_EQ(readText(std::string(kDetailsHead) + "m.c\tcs_Neq\t3\t1\n").error, "4: no row of a report");
  for (const char *details : {"x\t0\t0", "0\tx\t0", "0\t0\tx"})
    EXPECT_EQ(readText(std::string(kDetailsHead) + "m.c\tcs_Neq\t3\t1\t" + details + "\n").error,
              "4: no row of a report");
}

TEST(ReadProfile, TheLibrarysOwnReportWithDetails) {
  cs_init();
  CSprofiler *profiler = cs_createProfiler(0);
  cs_setProfilerDetails(profiler, true);
  cs_enableProfiler(profiler);
  CSint *x = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_Neq(x, cs_createCSint(0, 9)) && cs_GE(x, 3));
  const std::string text = textOf([profiler](std::FILE *f) { cs_profilerWriteDetails(profiler, f); });
  cs_end();
  const Result result = readText(text);
  ASSERT_TRUE(result.good) << result.error;
  EXPECT_TRUE(result.profile.detailed);
  EXPECT_EQ(result.profile.idle, 1);
}

TEST(ReadProfile, SaysInWhichLineInputIsNoReport) {
  EXPECT_EQ(readText("").error, "1: not a whole report");
  EXPECT_EQ(readText("hello\n").error, "1: not a profiler report");
  EXPECT_EQ(readText("Koru Profiler: Constraint 1.0\nhello\n").error, "2: no line of a report's head");
  EXPECT_EQ(readText("Koru Profiler: Constraint 1.0\nstart_time: soon\n").error, "2: no line of a report's head");
  EXPECT_EQ(readText(std::string(kHead) + "x\tcs_Neq\t3\n").error, "8: no row of a report");
  EXPECT_EQ(readText(std::string(kHead) + "x\tcs_Neq\t3\tx\n").error, "8: no row of a report");
  EXPECT_EQ(readText(std::string(kHead) + "error\n").error, "8: the program had no memory for the rows");
  for (const char *text : {"", "hello\n"}) EXPECT_FALSE(readText(text).good);
}

}  // namespace
