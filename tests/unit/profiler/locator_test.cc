// SPDX-License-Identifier: MIT
// The host's locator: when it is asked, what becomes of its text and of its format.
#include "profiler/locator.h"

#include "core/solver.h"
#include "support/kit/failing_allocations.h"
#include "support/kit/solver_test.h"
#include "support/profiler/report_reader.h"

namespace {

using namespace koru;
using namespace koru::test;

struct Place {
  std::string text;
  int asked = 0;
};

const char *tellPlace(void *arg) {
  auto *place = static_cast<Place *>(arg);
  ++place->asked;
  return place->text.c_str();
}

const char *tellNothing(void *) { return nullptr; }

class LocatorTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    x = cs_createCSint(0, 9);
    y = cs_createCSint(0, 9);
  }
  static std::string formatLine() {
    for (const std::string &line : linesOf(reportOf(cs_createProfiler(0))))
      if (line.rfind("format: ", 0) == 0) return line.substr(8);
    return "no line";
  }
  static const char *textOf(const CSint *v) { return v->constraints->constraint->site->text(); }

  CSint *x = nullptr;
  CSint *y = nullptr;
  Place place{"main.c:12"};
};

TEST_F(LocatorTest, IsAskedOncePerPostingAndItsTextIsCopied) {
  cs_setProfilerLocator("mine", tellPlace, &place);
  ASSERT_TRUE(cs_Lt(x, y));
  EXPECT_EQ(place.asked, 1);
  place.text = "elsewhere";
  EXPECT_STREQ(textOf(x), "main.c:12");
  ASSERT_TRUE(cs_GE(x, 3));
  EXPECT_EQ(place.asked, 1) << "not when the constraint runs";
}

TEST_F(LocatorTest, NullIsAnEmptyText) {
  cs_setProfilerLocator("mine", tellNothing, nullptr);
  ASSERT_TRUE(cs_Lt(x, y));
  EXPECT_STREQ(textOf(x), "");
}

TEST_F(LocatorTest, AReportNamesAPrivateCopyOfTheFormat) {
  char format[] = "file_line";
  cs_setProfilerLocator(format, tellPlace, &place);
  format[0] = 'X';
  EXPECT_EQ(formatLine(), "file_line");
  cs_setProfilerLocator("another", tellPlace, &place);
  EXPECT_EQ(formatLine(), "another");
  cs_setProfilerLocator(nullptr, tellPlace, &place);
  EXPECT_EQ(formatLine(), "windows_pdb");
}

TEST_F(LocatorTest, RowsShowTheText) {
  cs_setProfilerLocator("mine", tellPlace, &place);
  CSprofiler *profiler = cs_createProfiler(0);
  cs_enableProfiler(profiler);
  ASSERT_TRUE(cs_Neq(x, y) && cs_GE(x, 3));
  EXPECT_EQ(rowsOf(profiler), (std::vector<ProfileRow>{{"main.c:12", "cs_Neq", 1, 0}}));
}

TEST_F(LocatorTest, NullPutsTheDefaultBack) {
  cs_setProfilerLocator("mine", tellPlace, &place);
  cs_setProfilerLocator("ignored", nullptr, &place);
  ASSERT_TRUE(cs_Lt(x, y));
  EXPECT_EQ(place.asked, 0);
  EXPECT_STRNE(textOf(x), "main.c:12");
  EXPECT_EQ(formatLine(), "windows_pdb");
  cs_setProfilerLocator(nullptr, nullptr, nullptr);
  EXPECT_EQ(formatLine(), "windows_pdb");
}

TEST_F(LocatorTest, TheEndPutsTheDefaultBack) {
  cs_setProfilerLocator("mine", tellPlace, &place);
  cs_end();
  EXPECT_EQ(locatorFormat(), nullptr);
  cs_init();
  ASSERT_TRUE(cs_Lt(cs_createCSint(0, 9), cs_createCSint(0, 9)));
  EXPECT_EQ(place.asked, 0);
}

TEST_F(LocatorTest, WithoutMemoryForTheFormatNothingChanges) {
  cs_setProfilerLocator("mine", tellPlace, &place);
  {
    const FailingAllocator failing(0, Failing::kOnce);
    cs_setProfilerLocator("another", tellNothing, nullptr);
  }
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
  EXPECT_EQ(formatLine(), "mine");
  ASSERT_TRUE(cs_Lt(x, y));
  EXPECT_EQ(place.asked, 1);
}

TEST_F(LocatorTest, WithoutASolverNothingIsInstalled) {
  cs_end();
  cs_setProfilerLocator("mine", tellPlace, &place);
  EXPECT_EQ(locatorFormat(), nullptr);
}

}  // namespace
