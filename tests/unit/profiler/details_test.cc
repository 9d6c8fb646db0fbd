// SPDX-License-Identifier: MIT
// What profilers count in detail: runs without effect, narrowings, time.
#include <chrono>
#include <filesystem>
#include <fstream>

#include "core/narrow.h"
#include "core/solver.h"
#include "koru_extras.h"
#include "profiler/profiler.h"
#include "support/kit/failing_allocations.h"
#include "support/kit/solver_test.h"
#include "support/kit/temporary_path.h"
#include "support/profiler/report_reader.h"

namespace {

using namespace koru;
using namespace koru::test;

std::string detailsOf(CSprofiler *profiler) {
  return textOf([profiler](std::FILE *f) { cs_profilerWriteDetails(profiler, f); });
}

struct Row {
  std::string name;
  int calls, fails;
  long long idle, narrowings;

  bool operator==(const Row &) const = default;
};

void PrintTo(const Row &row, std::ostream *out) {
  *out << row.name << ' ' << row.calls << ' ' << row.fails << ' ' << row.idle << ' ' << row.narrowings;
}

class DetailsTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    x = cs_createCSint(0, 9);
    y = cs_createCSint(0, 9);
    profiler = cs_createProfiler(0);
    cs_setProfilerDetails(profiler, true);
  }

  // In the order of names; nanoseconds of all in `time`.
  std::vector<Row> rows() {
    std::vector<Row> rows;
    time = 0;
    const std::string text = detailsOf(profiler);
    std::istringstream in(text.substr(text.find("__DATA__\n") + 9));
    for (std::string line; std::getline(in, line);) {
      std::vector<std::string> fields(1);
      for (const char c : line) c == '\t' ? fields.emplace_back() : fields.back() += c;
      const std::size_t n = fields.size();
      rows.push_back({fields[n - 6], std::stoi(fields[n - 5]), std::stoi(fields[n - 4]), std::stoll(fields[n - 3]),
                      std::stoll(fields[n - 2])});
      time += std::stoll(fields[n - 1]);
    }
    std::ranges::sort(rows, {}, [](const Row &row) { return std::pair(row.name, row.calls); });
    return rows;
  }
  using Rows = std::vector<Row>;

  CSint *x = nullptr;
  CSint *y = nullptr;
  CSprofiler *profiler = nullptr;
  long long time = 0;
};

TEST_F(DetailsTest, TellNarrowingsAndRunsWithoutEffect) {
  ASSERT_TRUE(cs_Lt(x, y));
  cs_enableProfiler(profiler);
  ASSERT_TRUE(cs_GE(x, 3));
  EXPECT_EQ(rows(), (Rows{{"cs_Lt", 2, 0, 1, 1}})) << "y >= 4; then nothing is left for x";
  cs_saveContext();
  ASSERT_TRUE(cs_LE(y, 6));
  EXPECT_EQ(rows(), (Rows{{"cs_Lt", 4, 0, 2, 2}}));
  cs_restoreContext();
  EXPECT_FALSE(cs_EQ(y, 4) && cs_NEQ(x, 3));
  EXPECT_EQ(rows(), (Rows{{"cs_Lt", 6, 0, 3, 3}}));
}

TEST_F(DetailsTest, DoNotTakeAFailureForARunInVain) {
  struct Handler {
    static bool refuse(CSint *, int, int, CSint **, int, void *) { return false; }
  };
  cs_eventNewMin(&x, 1, Handler::refuse, nullptr);
  cs_enableProfiler(profiler);
  for (int i = 1; i <= 3; ++i) {  // the first one is timed
    cs_saveContext();
    EXPECT_FALSE(cs_GE(x, 3));
    cs_restoreContext();
    EXPECT_EQ(rows(), (Rows{{"cs_eventNewMin", i, i, 0, 0}}));
  }
}

TEST_F(DetailsTest, HaveAReportOfTheirOwn) {
  ASSERT_TRUE(cs_Lt(x, y));
  cs_setProfilerLocator(
      nullptr, [](void *) { return "the place"; }, nullptr);
  ASSERT_TRUE(cs_Lt(cs_createCSint(0, 9), x));
  cs_enableProfiler(profiler);
  const std::string text = detailsOf(profiler);
  EXPECT_EQ(text.substr(0, text.find('\n')), "Koru Profiler: Details 1.0");
  std::string plain = reportOf(profiler);
  EXPECT_EQ(text.substr(text.find('\n')), plain.substr(plain.find('\n')));
  ASSERT_TRUE(cs_GE(x, 3));
  plain = reportOf(profiler);
  EXPECT_NE(plain.find("\nthe place\tcs_Lt\t1\t0\n"), std::string::npos) << plain;
  EXPECT_NE(detailsOf(profiler).find("\nthe place\tcs_Lt\t1\t0\t1\t0\t"), std::string::npos) << detailsOf(profiler);
}

TEST_F(DetailsTest, AreCountedWhileTheyAreOnAndStay) {
  ASSERT_TRUE(cs_Lt(x, y));
  cs_enableProfiler(profiler);
  cs_setProfilerDetails(profiler, false);
  ASSERT_TRUE(cs_GE(x, 1));
  EXPECT_FALSE(solver::ports.metered);
  EXPECT_EQ(rows(), (Rows{{"cs_Lt", 2, 0, 0, 0}}));
  cs_setProfilerDetails(profiler, true);
  ASSERT_TRUE(cs_GE(x, 2));
  cs_setProfilerDetails(profiler, false);
  ASSERT_TRUE(cs_GE(x, 3));
  EXPECT_EQ(rows(), (Rows{{"cs_Lt", 6, 0, 1, 1}}));
  cs_disableProfiler(profiler);
  cs_setProfilerDetails(profiler, true);
  EXPECT_FALSE(solver::ports.metered);
}

TEST_F(DetailsTest, OfOneProfilerAreNotThoseOfAnother) {
  ASSERT_TRUE(cs_Lt(x, y));
  CSprofiler *other = cs_createProfiler(0);
  cs_enableProfiler(other);
  cs_enableProfiler(profiler);
  ASSERT_TRUE(cs_GE(x, 3));
  EXPECT_EQ(rows(), (Rows{{"cs_Lt", 2, 0, 1, 1}}));
  std::swap(profiler, other);
  EXPECT_EQ(rows(), (Rows{{"cs_Lt", 2, 0, 0, 0}}));
  EXPECT_EQ(time, 0);
}

// ----- what callbacks do

bool thinOut(CSint *, int, int, CSint **, int, void *extra) {
  auto *other = static_cast<CSint *>(extra);
  for (int value = 1; value < cs_getMax(other); ++value)
    if (!cs_NEQ(other, value)) return false;
  return true;
}

TEST_F(DetailsTest, OfACallbackIncludeTheRelationsInIt) {
  cs_eventNewMin(&x, 1, thinOut, y);
  cs_enableProfiler(profiler);
  ASSERT_TRUE(cs_GE(x, 3));
  const Rows found = rows();
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0], (Row{"cs_NEQ", 8, 0, 0, 8}));
  EXPECT_EQ(found[1], (Row{"cs_eventNewMin", 1, 0, 0, 8}));
  ASSERT_TRUE(cs_GE(x, 4));
  EXPECT_EQ(rows()[0], (Row{"cs_NEQ", 16, 0, 8, 8}));
}

// From every place in a block of the trail, over the ends of others, with notes among the records.
TEST_F(DetailsTest, CountNarrowingsAcrossBlocksOfTheTrail) {
  static bool noting = false;
  struct Handler {
    static bool thinAndNote(CSint *v, int i, int old, CSint **array, int n, void *extra) {
      if (noting) cs_backtrack(v, 1, nullptr);
      if (!thinOut(v, i, old, array, n, extra)) return false;
      if (noting) cs_backtrack(v, 2, nullptr);
      return true;
    }
  };
  constexpr int kTimes = 300;
  constexpr int kValues = 2051;  // each time two blocks and some
  CSint *many = cs_createCSint(0, kValues + 1);
  cs_eventNewMin(&x, 1, Handler::thinAndNote, many);
  for (int i = 0; i < kTimes; ++i) {
    CSprofiler *each = profiler = cs_createProfiler(0);
    cs_setProfilerDetails(each, true);
    cs_enableProfiler(each);
    noting = i % 2 == 1;
    cs_saveContext();
    // Ends of blocks, and the places around them.
    if (i % 3 == 0)
      while (solver::trail.count() % 1024 != i / 3 % 3 - 1 + (i / 3 % 3 == 0 ? 1024 : 0)) cs_backtrack(y, 0, nullptr);
    else
      for (int k = 0; k < i; ++k) cs_backtrack(y, 0, nullptr);
    cs_saveContext();
    ASSERT_TRUE(cs_GE(x, 3));
    const Rows found = rows();
    ASSERT_EQ(found.back().name, "cs_eventNewMin");
    EXPECT_EQ(found.back().narrowings, kValues) << i;
    EXPECT_EQ(found.back().idle, 0) << i;
    cs_restoreContext();
    cs_restoreContext();
    cs_disableProfiler(each);
  }
}

TEST_F(DetailsTest, KnowOfNothingThatACallbackTakesBack) {
  struct Handler {
    static bool tryAndUndo(CSint *, int, int, CSint **, int, void *extra) {
      cs_saveContext();
      const bool tried = cs_LE(static_cast<CSint *>(extra), 5);
      cs_restoreContext();
      return tried;
    }
  };
  cs_eventNewMin(&x, 1, Handler::tryAndUndo, y);
  cs_enableProfiler(profiler);
  ASSERT_TRUE(cs_GE(x, 3));
  EXPECT_EQ(rows(), (Rows{{"cs_LE", 1, 0, 0, 1}, {"cs_eventNewMin", 1, 0, 1, 0}}));
}

// The narrowing of the call that failed is told after the listener's own.
TEST_F(DetailsTest, OfAFailureSurviveTheListenersToIt) {
  struct Handler {
    static bool narrowAndRefuse(CSint *, int, int, CSint **, int, void *extra) {
      static_cast<void>(removeValue(static_cast<CSint *>(extra), 4));
      return false;
    }
    static void listen(CSint *, int, CSconflictInfo *, CSint **, int, void *extra) {
      EXPECT_TRUE(cs_LE(static_cast<CSint *>(extra), 6));
    }
  };
  CSint *z = cs_createCSint(0, 9);
  cs_eventConflict(&x, 1, Handler::listen, z);
  cs_eventNewMin(&x, 1, Handler::narrowAndRefuse, y);
  cs_enableProfiler(profiler);
  cs_saveContext();
  EXPECT_FALSE(cs_GE(x, 3));
  const Rows found = rows();
  EXPECT_EQ(found.back(), (Row{"cs_eventNewMin", 1, 1, 0, 1}));
  cs_restoreContext();
}

TEST_F(DetailsTest, BeginWithTheNextCallAfterTheOneThatAskedForThem) {
  struct Handler {
    static bool ask(CSint *, int, int, CSint **, int, void *extra) {
      cs_setProfilerDetails(static_cast<CSprofiler *>(extra), true);
      cs_enableProfiler(static_cast<CSprofiler *>(extra));
      return true;
    }
  };
  cs_setProfilerDetails(profiler, false);
  cs_eventNewMin(&x, 1, Handler::ask, profiler);
  ASSERT_TRUE(cs_GE(x, 3));
  EXPECT_EQ(rows(), (Rows{{"cs_eventNewMin", 1, 0, 0, 0}}));
  ASSERT_TRUE(cs_GE(x, 4));
  EXPECT_EQ(rows(), (Rows{{"cs_eventNewMin", 2, 0, 1, 0}}));
}

// ----- time

long long nanosecondsSince(std::chrono::steady_clock::time_point begin) {
  return std::chrono::nanoseconds(std::chrono::steady_clock::now() - begin).count();
}

bool workForAWhile(CSint *, int, int, CSint **, int, void *) {
  const auto begin = std::chrono::steady_clock::now();
  while (nanosecondsSince(begin) < 1'000'000) continue;
  return true;
}

// Calls as long as these are timed each.
TEST_F(DetailsTest, TellTheTimeOfLongHandlers) {
  CSint *many = cs_createCSint(0, 100);
  cs_eventNewMin(&many, 1, workForAWhile, nullptr);
  const auto begin = std::chrono::steady_clock::now();
  cs_enableProfiler(profiler);
  for (int i = 1; i <= 20; ++i) ASSERT_TRUE(cs_GE(many, i));
  EXPECT_EQ(rows(), (Rows{{"cs_eventNewMin", 20, 0, 20, 0}}));
  EXPECT_GE(time, 19'500'000);
  EXPECT_LE(time, nanosecondsSince(begin) * 21 / 20);
}

TEST_F(DetailsTest, TellTheTimeOfEveryRun) {
  struct Run {
    static bool work(CSint **, int, void *) {
      const auto begin = std::chrono::steady_clock::now();
      while (nanosecondsSince(begin) < 10'000) continue;
      return true;
    }
  };
  CSint *many = cs_createCSint(0, 1000);
  ASSERT_TRUE(cs_eventRun(&many, 1, Run::work, nullptr));
  const auto begin = std::chrono::steady_clock::now();
  cs_enableProfiler(profiler);
  for (int i = 1; i <= 200; ++i) ASSERT_TRUE(cs_GE(many, i));
  static_cast<void>(rows());
  EXPECT_GE(time, 1'950'000);
  EXPECT_LE(time, nanosecondsSince(begin) * 21 / 20);
}

bool accept(CSint *, int, int, CSint **, int, void *) { return true; }

// No more can be said of the time: a call that the machine interrupts while it is timed stands for others.
TEST_F(DetailsTest, SampleTheTimeOfShortHandlers) {
  CSint *many = cs_createCSint(0, 200'000);
  cs_eventNewMin(&many, 1, accept, nullptr);
  cs_enableProfiler(profiler);
  for (int i = 1; i <= 200'000; ++i) ASSERT_TRUE(cs_GE(many, i));
  EXPECT_EQ(rows(), (Rows{{"cs_eventNewMin", 200'000, 0, 200'000, 0}}));
  EXPECT_GT(time, 0);
}

// ----- bad arguments, exhausted memory

TEST_F(DetailsTest, TakeNoNullAndNoDeletedProfiler) {
  cs_setProfilerDetails(nullptr, true);
  cs_profilerWriteDetails(nullptr, stdout);
  cs_profilerWriteDetails(profiler, nullptr);
  cs_profilerWriteDetailsFile(nullptr, "x");
  cs_profilerWriteDetailsFile(profiler, nullptr);
  cs_setProfilerDetails(profiler, false);
  cs_deleteProfiler(profiler);
  cs_setProfilerDetails(profiler, true);
  EXPECT_FALSE(profiler->observer.reads);
  CSprofiler *plain = cs_createProfiler(0);
  cs_enableProfiler(plain);
  ASSERT_TRUE(cs_Lt(x, y) && cs_GE(x, 3));
  EXPECT_NE(detailsOf(plain).find("\t0\t0\t0\n"), std::string::npos) << "without details they are 0";
}

TEST_F(DetailsTest, GoToAFile) {
  const std::filesystem::path path = temporaryPath();
  cs_enableProfiler(profiler);
  ASSERT_TRUE(cs_Lt(x, y));
  cs_profilerWriteDetailsFile(profiler, path.string().c_str());
  std::string first;
  std::getline(std::ifstream(path), first);
  std::filesystem::remove(path);
  EXPECT_EQ(first, "Koru Profiler: Details 1.0");
}

TEST_F(DetailsTest, AreNotWrittenWithoutMemory) {
  ASSERT_TRUE(cs_Lt(x, y));
  cs_enableProfiler(profiler);
  {
    const FailingAllocator failing(0, Failing::kOnce);
    EXPECT_TRUE(cs_GE(x, 1));
  }
  ASSERT_TRUE(cs_GE(x, 2));
  EXPECT_FALSE(rows().empty());
  const FailingAllocator failing(0, Failing::kOnce);
  EXPECT_TRUE(detailsOf(profiler).ends_with("__DATA__\nerror\n"));
}

TEST_F(DetailsTest, OfAProfilerWithoutCountsAreNone) {
  CSprofiler *incomplete = nullptr;
  {
    const FailingAllocator failing(1, Failing::kOnce);
    incomplete = cs_createProfiler(0);
  }
  cs_setProfilerDetails(incomplete, true);
  cs_enableProfiler(incomplete);
  ASSERT_TRUE(cs_Lt(x, y) && cs_GE(x, 1));
  EXPECT_TRUE(detailsOf(incomplete).ends_with("__DATA__\n"));
}

}  // namespace
