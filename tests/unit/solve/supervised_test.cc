// SPDX-License-Identifier: MIT
// A propagation that a search watches, because it has a limit on time, does and tells what any other one does.
#include <string>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"
#include "support/profiler/report_reader.h"

namespace koru::test::solve {
namespace {

struct Told {
  long long fails = 0;
  long long choicePoints = 0;
  long long solutions = 0;
  int conflicts = 0;
  std::vector<ProfileRow> rows;

  bool operator==(const Told &other) const {
    return fails == other.fails && choicePoints == other.choicePoints && solutions == other.solutions &&
           conflicts == other.conflicts && rows == other.rows;
  }
};

class SupervisedTest : public SolverTest {
 protected:
  static constexpr int kMarks = 6;

  enum class Profile { kNever, kFromTheStart, kFromAHandler };

  std::vector<CSint *> marks;
  std::vector<CSint *> distances;
  CSprofiler *profiler = nullptr;
  Told told;
  int heard = 0;

  // A ruler: bounds that overtake each other, values that go, and constraints that wait.
  bool post() {
    for (int i = 0; i < kMarks; ++i) marks.push_back(cs_createCSint(0, 20));
    bool posted = cs_EQ(marks[0], 0);
    for (std::size_t i = 0; i < kMarks; ++i)
      for (std::size_t j = i + 1; j < kMarks; ++j) {
        distances.push_back(cs_Sub(marks[j], marks[i]));
        posted = posted && cs_GE(distances.back(), 1) && cs_Lt(marks[i], marks[j]);
      }
    posted = posted && cs_AllNeq(distances.data(), static_cast<int>(distances.size())) &&
             cs_AllNeqBounds(distances.data(), static_cast<int>(distances.size())) &&
             cs_AllNeqDomain(marks.data(), kMarks) && cs_NEQ(marks[3], 9);
    cs_eventConflict(distances.data(), static_cast<int>(distances.size()), hearConflict, this);
    cs_eventKnown(marks.data(), kMarks, hearKnown, this);
    return posted;
  }

  static void hearConflict(CSint *, int, CSconflictInfo *, CSint **, int, void *extra) {
    ++static_cast<SupervisedTest *>(extra)->told.conflicts;
  }
  static bool hearKnown(int, int, CSint **, int, void *extra) {
    auto &self = *static_cast<SupervisedTest *>(extra);
    if (++self.heard == 20 && self.profiler != nullptr) cs_enableProfiler(self.profiler);
    return self.heard % 7 != 0;
  }

  Told search(Profile profile, long long milliseconds) {
    cs_setProfilerLocator(
        "mine", [](void *) { return "here"; }, nullptr);
    EXPECT_TRUE(post());
    heard = 0;
    profiler = profile == Profile::kNever ? nullptr : cs_createProfiler(0);
    if (profile == Profile::kFromTheStart) cs_enableProfiler(profiler);
    CSsearch *search = cs_createSearch(marks.data(), kMarks);
    CSsearchOptions options{};
    options.size = sizeof options;
    options.milliseconds = milliseconds;
    EXPECT_TRUE(cs_setSearchOptions(search, &options));
    while (cs_nextSolution(search) == CS_STATUS_SOLUTION) continue;
    EXPECT_EQ(cs_getSearchStatus(search), CS_STATUS_EXHAUSTED);
    CSsearchStats stats;
    cs_getSearchStats(search, &stats, sizeof stats);
    told.fails = stats.fails;
    told.choicePoints = stats.choicePoints;
    told.solutions = stats.solutions;
    if (profiler != nullptr) told.rows = rowsOf(profiler);
    return told;
  }

  void startAgain() {
    cs_end();
    cs_init();
    marks.clear();
    distances.clear();
    told = {};
  }

  void compare(Profile profile) {
    const Told without = search(profile, 0);
    startAgain();
    const Told with = search(profile, 1000000);
    EXPECT_TRUE(with == without) << with.fails << " and " << without.fails << " fails, " << with.conflicts << " and "
                                 << without.conflicts << " conflicts";
    EXPECT_GT(with.fails, 20);
    EXPECT_GT(with.conflicts, 5);
    EXPECT_EQ(with.rows.empty(), profile == Profile::kNever);
  }
};

TEST_F(SupervisedTest, WithoutAProfilerItDoesTheSame) { compare(Profile::kNever); }
TEST_F(SupervisedTest, ItIsProfiledAlike) { compare(Profile::kFromTheStart); }
TEST_F(SupervisedTest, AHandlerMayEnableAProfiler) { compare(Profile::kFromAHandler); }

}  // namespace
}  // namespace koru::test::solve
