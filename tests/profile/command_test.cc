// SPDX-License-Identifier: MIT
// The command koru-profile: its arguments, its messages and its exit status. Each run that ends by exit is one of its
// own process.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "support/kit/temporary_path.h"

int koruProfileMain(int count, char **arguments);  // the command's main, under this name

namespace {

using koru::test::temporaryPath;
using testing::ExitedWithCode;

constexpr char kReport[] =
    "Koru Profiler: Constraint 1.0\nKoru Version: 3.8.0\n__DATA__\nm.c\t12\t0x1\tmain\tcs_Neq\t3\t1\n"
    "m.c\t13\t0x2\tmain\tcs_AllNeq\t9\t0\n";
constexpr char kHottest[] = "9   75.0 %  #########...      0      0.0 %       1  cs_AllNeq  m.c:13 main\n";

class CommandDeathTest : public testing::Test {
 protected:
  void SetUp() override { std::ofstream(report) << kReport; }
  void TearDown() override {
    std::filesystem::remove(report);
    std::filesystem::remove(page);
  }

  static int run(std::vector<std::string> words) {
    std::vector<char *> arguments;
    words.insert(words.begin(), "koru-profile");
    for (std::string &word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    return koruProfileMain(static_cast<int>(words.size()), arguments.data());
  }
  // What a run that goes well prints.
  static std::string outputOf(const std::vector<std::string> &words) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(run(words), 0);
    return testing::internal::GetCapturedStdout();
  }

  const std::string report = temporaryPath().string();
  const std::string page = temporaryPath().string();
};

bool has(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

TEST_F(CommandDeathTest, PrintsTheTableOfAReport) {
  EXPECT_PRED2(has, outputOf({report}), kHottest);
  EXPECT_PRED2(has, outputOf({report}), "12 calls, 1 fails at 2 places\n");
}

TEST_F(CommandDeathTest, PrintsFoldedStacks) {
  EXPECT_EQ(outputOf({"--folded", report}), "m.c;main;line_13;cs_AllNeq 9\nm.c;main;line_12;cs_Neq 3\n");
  std::ofstream(report) << "Koru Profiler: Constraint 1.0\nKoru Version: 3.8.0\n__DATA__\n"
                           "my model.mzn\t2\t0\tforall > a;b > != \tcs_Neq\t3\t1\n(unknown)\t0\t0\t\tcs_Eq\t1\t0\n";
  EXPECT_EQ(outputOf({"--folded", report}), "my_model.mzn;forall;a_b;!=_;line_2;cs_Neq 3\n(unknown);cs_Eq 1\n");
}

TEST_F(CommandDeathTest, ComparesTwoReports) {
  std::ofstream(page)
      << "Koru Profiler: Constraint 1.0\nKoru Version: 3.8.0\n__DATA__\nm.c\t12\t0x1\tmain\tcs_Neq\t3\t2\n"
         "m.c\t14\t0x2\tmain\tcs_Lt\t2\t0\n";
  const std::string added = "           0 ->           2             0 ->           0  cs_Lt  m.c:14 main\n";
  const std::string all = "          12 ->           5             1 ->           2  in all\n";
  const std::string head = "                      calls                        fails  posted by, at\n";
  const std::string gone = "           9 ->           0             0 ->           0  cs_AllNeq  m.c:13 main\n";
  const std::string same = "           3 ->           3             1 ->           2  cs_Neq  m.c:12 main\n";
  EXPECT_EQ(outputOf({"--diff", report, page}), head + gone + added + same + all);
  EXPECT_EQ(outputOf({"--top", "1", "--diff", report, page}), head + gone + "and 2 more\n" + all);
  EXPECT_EXIT(run({"--diff", report}), ExitedWithCode(2), "--diff needs two reports after it");
  EXPECT_EXIT(run({"--diff", report, page, page}), ExitedWithCode(2), "more than two reports");
}

constexpr char kDetails[] =
    "Koru Profiler: Details 1.0\nKoru Version: 3.8.0\n__DATA__\nm.c\t12\t0x1\tmain\tcs_Neq\t3\t1\t0\t2\t5000000\n";

TEST_F(CommandDeathTest, ComparesDetailsOfTwoReportsThatHaveThem) {
  std::ofstream(report) << kDetails << "m.c\t13\t0x2\tmain\tcs_Lt\t900\t0\t0\t0\t1000000\n";
  std::ofstream(page) << kDetails << "m.c\t13\t0x2\tmain\tcs_Lt\t7\t0\t0\t0\t1000000\n"
                      << "m.c\t12\t0x1\tmain\tcs_Neq\t2\t0\t2\t1\t2000000\n";
  const auto pair = [](const std::string &before, const std::string &after) {
    return std::string(12 - before.size(), ' ') + before + " ->" + std::string(12 - after.size(), ' ') + after + "  ";
  };
  const auto title = [](const std::string &text) { return std::string(27 - text.size(), ' ') + text + "  "; };
  EXPECT_EQ(outputOf({"--diff", report, page}),
            title("ms") + title("calls") + title("in vain") + title("narrowings") + title("fails") + "posted by, at\n" +
                pair("5.0", "7.0") + pair("3", "5") + pair("0", "2") + pair("2", "3") + pair("1", "1") +
                "cs_Neq  m.c:12 main\n" + pair("1.0", "1.0") + pair("900", "7") + pair("0", "0") + pair("0", "0") +
                pair("0", "0") + "cs_Lt  m.c:13 main\n" + pair("6.0", "8.0") + pair("903", "12") + pair("0", "2") +
                pair("2", "3") + pair("1", "1") + "in all\n");
  std::ofstream(page) << kReport;
  EXPECT_FALSE(has(outputOf({"--diff", report, page}), "in vain")) << "only one has them";
}

TEST_F(CommandDeathTest, FoldsByTimeWhereItIsKnown) {
  EXPECT_EXIT(run({"--folded", "--time", report}), ExitedWithCode(2), "^koru-profile: .*: has no times");
  EXPECT_EXIT(run({"--time", report}), ExitedWithCode(2), "^koru-profile: --time is for --folded");
  std::ofstream(report) << kDetails;
  EXPECT_EQ(outputOf({"--folded", report}), "m.c;main;line_12;cs_Neq 3\n");
  EXPECT_EQ(outputOf({"--folded", "--time", report}), "m.c;main;line_12;cs_Neq 5000000\n");
}

TEST_F(CommandDeathTest, ReadsTheStandardInput) {
  const auto read = [this](const std::vector<std::string> &words) {
    if (std::freopen(report.c_str(), "r", stdin) == nullptr) std::exit(1);
    const std::string output = outputOf(words);
    std::fputs(output.c_str(), stderr);
    std::exit(0);
  };
  EXPECT_EXIT(read({}), ExitedWithCode(0), "12 calls, 1 fails at 2 places");
  EXPECT_EXIT(read({"-"}), ExitedWithCode(0), "12 calls, 1 fails at 2 places");
}

TEST_F(CommandDeathTest, ShowsTheTopOnly) {
  EXPECT_PRED2(has, outputOf({"--top", "1", report}), kHottest);
  EXPECT_PRED2(has, outputOf({"--top", "1", report}), "and 1 more\n");
}

TEST_F(CommandDeathTest, WritesThePageInsteadOfTheTable) {
  EXPECT_EQ(outputOf({"--html", page, report}), "");
  std::stringstream text;
  text << std::ifstream(page).rdbuf();
  EXPECT_PRED2(has, text.str(), "cs_AllNeq");
  EXPECT_EXIT(run({"--html", std::filesystem::temp_directory_path().string(), report}), ExitedWithCode(2),
              "^koru-profile: .*: cannot be written");
}

TEST_F(CommandDeathTest, PrintsJson) {
  EXPECT_PRED2(has, outputOf({"--json", report}), "\"places\": [\n{\"calls\": 9, \"fails\": 0, \"posted\": 1, ");
}

TEST_F(CommandDeathTest, RefusesArgumentsThatItDoesNotKnow) {
  EXPECT_EXIT(run({"--fast"}), ExitedWithCode(2), "^koru-profile: unknown option --fast");
  EXPECT_EXIT(run({"a", "b"}), ExitedWithCode(2), "^koru-profile: more than one report");
  EXPECT_EXIT(run({"--html"}), ExitedWithCode(2), "^koru-profile: --html needs an argument");
  for (const char *top : {"0", "-1", "x", "1x", ""})
    EXPECT_EXIT(run({"--top", top}), ExitedWithCode(2), "^koru-profile: .* ?is no number above 0") << top;
}

TEST_F(CommandDeathTest, SaysWhatIsWrongWithAReport) {
  EXPECT_EXIT(run({page}), ExitedWithCode(2), "^koru-profile: .*: cannot be opened");
  std::ofstream(report) << "hello\n";
  EXPECT_EXIT(run({report}), ExitedWithCode(2), "^koru-profile: .*:1: not a profiler report");
}

TEST_F(CommandDeathTest, ExplainsItself) {
  const auto help = [] {
    testing::internal::CaptureStdout();
    std::atexit([] { std::fputs(testing::internal::GetCapturedStdout().c_str(), stderr); });
    run({"--help"});
  };
  EXPECT_EXIT(help(), ExitedWithCode(0), "usage: koru-profile ");
}

#ifndef _WIN32
TEST_F(CommandDeathTest, SaysWhenTheOutputCannotBeWritten) {
  const auto writeToFullDevice = [this] {
    if (std::freopen("/dev/full", "w", stdout) == nullptr) std::exit(1);
    run({report});
  };
  EXPECT_EXIT(writeToFullDevice(), ExitedWithCode(2), "^koru-profile: cannot write the output");
}
#endif

}  // namespace
