// SPDX-License-Identifier: MIT
// The report, byte for byte.
#include <ctime>
#include <filesystem>
#include <fstream>

#include "profiler/profiler.h"
#include "support/kit/failing_allocations.h"
#include "support/kit/solver_test.h"
#include "support/kit/temporary_path.h"
#include "support/kit/written_text.h"
#include "support/profiler/place_text.h"
#include "support/profiler/report_reader.h"

namespace {

using namespace koru;
using namespace koru::test;

class ReportTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    profiler = cs_createProfiler(0);
  }
  void TearDown() override {
    std::filesystem::remove(path);
    SolverTest::TearDown();
  }
  // One row: 3 calls, 1 of which failed.
  void countSomething() {
    CSint *x = cs_createCSint(0, 9);
    cs_setProfilerLocator(
        nullptr, [](void *) { return "the place"; }, nullptr);
    ASSERT_TRUE(cs_Neq(x, CSINT(7)));
    cs_setProfilerLocator(nullptr, nullptr, nullptr);
    cs_enableProfiler(profiler);
    ASSERT_TRUE(cs_GE(x, 1) && cs_LE(x, 8));
    ASSERT_FALSE(cs_EQ(CSINT(7), 6));
    cs_disableProfiler(profiler);
    profiler->startTime = 1000;
    profiler->endTime = 1007;
  }

  CSprofiler *profiler = nullptr;
  const std::filesystem::path path = temporaryPath();
};

TEST_F(ReportTest, OneThatWasNeverEnabledHasNoTimesAndNoRows) {
  EXPECT_EQ(reportOf(profiler),
            "Koru Profiler: Constraint 1.0\n"
            "Koru Version: 3.8.0\n" +
                std::string(kPlatformLines) +
                "format: windows_pdb\n"
                "__DATA__\n");
}

TEST_F(ReportTest, TimesComeBeforeThePlatformAndRowsAfterTheData) {
  countSomething();
  EXPECT_EQ(reportOf(profiler),
            "Koru Profiler: Constraint 1.0\n"
            "Koru Version: 3.8.0\n"
            "start_time: 1000\n"
            "end_time: 1007\n" +
                std::string(kPlatformLines) +
                "format: windows_pdb\n"
                "__DATA__\n"
                "the place\tcs_Neq\t2\t0\n");
}

TEST_F(ReportTest, AnEnabledOneEndsNow) {
  countSomething();
  cs_enableProfiler(profiler);
  const std::time_t before = std::time(nullptr);
  const std::vector<std::string> lines = linesOf(reportOf(profiler));
  ASSERT_EQ(lines[3].substr(0, 10), "end_time: ");
  const long long end = std::stoll(lines[3].substr(10));
  EXPECT_GE(end, before);
  EXPECT_LE(end, std::time(nullptr));
  EXPECT_EQ(profiler->endTime, 1007);
}

TEST_F(ReportTest, SecondsBeyond32BitsAreWrittenInFull) {
  countSomething();
  profiler->startTime = 5000000000;
  EXPECT_EQ(linesOf(reportOf(profiler))[2], "start_time: 5000000000");
}

TEST_F(ReportTest, TheFileIsMadeOrEmptiedFirst) {
  countSomething();
  std::ofstream(path) << std::string(10000, 'x');
  cs_profilerWriteFile(profiler, path.string().c_str());
  std::ifstream in(path);
  const std::string written((std::istreambuf_iterator<char>(in)), {});
  EXPECT_EQ(written, reportOf(profiler));
}

TEST_F(ReportTest, AFileThatCannotBeOpenedIsNothing) {
  cs_profilerWriteFile(profiler, "/nowhere/at/all");
  cs_profilerWriteFile(profiler, nullptr);
  cs_profilerWriteFile(nullptr, path.string().c_str());
  cs_profilerWrite(profiler, nullptr);
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_EQ(reportOf(nullptr), "");
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(ReportTest, WithoutMemoryForTheRowsItSaysError) {
  countSomething();
  const std::string report = textOf([this](std::FILE *f) {
    const FailingAllocator failing(0, Failing::kOnce);
    cs_profilerWrite(profiler, f);
  });
  const std::vector<std::string> lines = linesOf(report);
  EXPECT_EQ(lines.back(), "error");
  EXPECT_EQ(lines[lines.size() - 2], "__DATA__");
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
}

}  // namespace
