// SPDX-License-Identifier: MIT
// The memory campaign: each scenario with each of its allocations failing, once and for ever, and with the block stacks
// filled so that each of its pushes in turn is the one that needs a block.
//
// A point that fails says how to run it alone: with KORU_MEMORY_POINT='<scenario> <filling> <allocation>
// <once|for-ever>' set, nothing else is tried. With KORU_MEMORY_AT_LEAST=<number> the program fails when fewer points
// have been tried; "./dev memory" sets it.
#include <algorithm>
#include <cctype>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

#include "memory/point.h"
#include "support/kit/instrumented.h"

namespace koru::test {
namespace {

// How far a campaign goes.
struct Depth {
  int rooms;      // this many pushes onto each stack are made to fail
  int pairRooms;  // and these of the trail together with these of the events
  int allocations;
};

constexpr Depth kQuick = kSanitized ? Depth{2, 0, 20} : Depth{5, 0, 40};
constexpr Depth kLong{40, 3, 1000000};

const char *replayed() { return std::getenv("KORU_MEMORY_POINT"); }

// A crash says at which point.
char pointNow[256] = "";
void sayPoint(int signal) {
  if (write(STDERR_FILENO, pointNow, static_cast<unsigned>(std::strlen(pointNow))) < 0) return;
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

class Total : public ::testing::Environment {
 public:
  void SetUp() override {
    std::signal(SIGABRT, sayPoint);
    started_ = std::chrono::steady_clock::now();
  }
  void TearDown() override {
    if (scenarios > 0) {
      const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - started_;
      std::printf("memory: %ld points in %d scenarios, %.1f s\n", points, scenarios, seconds.count());
    }
    if (replayed() != nullptr) {
      EXPECT_GT(points, 0) << "there is no such point";
    }
    const char *least = std::getenv("KORU_MEMORY_AT_LEAST");
    if (least != nullptr) {
      EXPECT_GE(points, std::atol(least));
    }
  }

  static inline long points = 0;
  static inline int scenarios = 0;

 private:
  std::chrono::steady_clock::time_point started_;
};

const ::testing::Environment *const kTotal = ::testing::AddGlobalTestEnvironment(new Total);

class Campaign : public ::testing::TestWithParam<Scenario> {
 protected:
  void run(const Depth &depth) {
    depth_ = depth;
    expected_ = fill(Filling{}).outcome;
    for (std::size_t stack = 0; stack < kStacks && !HasFailure(); ++stack) fillAll(static_cast<Stack>(stack));
    for (int room = 0; room < depth.pairRooms * depth.pairRooms && !HasFailure(); ++room)
      fill(Filling{}.with(kTrail, room / depth.pairRooms).with(kEvents, room % depth.pairRooms));
    RecordProperty("points", points_);
    std::printf("memory: %5d points, %s\n", points_, GetParam().name.c_str());
    Total::points += points_;
    ++Total::scenarios;
  }

 private:
  struct Filled {
    Outcome outcome;
    bool grew;  // the stack needed a block
  };

  // As long as the scenario needs a block for its next push but `room`.
  void fillAll(Stack stack) {
    for (int room = 0; room < depth_.rooms * GetParam().rooms && !HasFailure(); ++room)
      if (!fill(Filling{}.with(stack, room), stack).grew) return;
  }

  Filled fill(const Filling &filling, Stack stack = kStacks) {
    const Scenario &scenario = GetParam();
    int allocations = 0;
    Filled filled{};
    {
      Trial trial(scenario, filling);
      const FailingAllocator none(INT_MAX, Failing::kOnce);
      filled.outcome = trial.run();
      filled.grew = stack != kStacks && trial.grew(stack);
      allocations = FailingAllocator::asked();
      EXPECT_EQ(trial.reports(), 0) << scenario.name << " " << filling.text();
    }
    const bool plain = filling.room == Filling{}.room;
    EXPECT_TRUE(plain || filled.outcome == expected_) << scenario.name << " " << filling.text();
    const int all = plain ? INT_MAX : depth_.allocations;
    // Of many allocations some, evenly spread.
    const int step = std::max(1, allocations / all);
    for (int k = 0; k < allocations && !HasFailure(); k += step)
      for (const Failing how : {Failing::kOnce, Failing::kForEver}) tryAt({filling, k, how}, filled.outcome);
    return filled;
  }

  void tryAt(const Point &point, const Outcome &expected) {
    const Scenario &scenario = GetParam();
    if (replayed() != nullptr && scenario.name + " " + point.text() != replayed()) return;
    std::snprintf(pointNow, sizeof(pointNow), "the point under way: %s\n", replayOf(scenario, point).c_str());
    EXPECT_EQ(tryPoint(scenario, point, expected), "");
    ++points_;
  }

  Depth depth_{};
  Outcome expected_;
  int points_ = 0;
};

TEST_P(Campaign, SurvivesTheFailureOfEachAllocation) { run(kQuick); }

using HeavyCampaign = Campaign;
TEST_P(HeavyCampaign, SurvivesTheFailureOfEachAllocationWithMoreFillings) { run(kLong); }

std::string testName(const ::testing::TestParamInfo<Scenario> &info) {
  std::string name = info.param.name;
  std::replace_if(
      name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
}

// All, or to replay a point the one that it is in.
std::vector<Scenario> scenariosAskedFor() {
  std::vector<Scenario> scenarios = allScenarios();
  if (replayed() != nullptr)
    std::erase_if(scenarios, [](const Scenario &s) { return !std::string(replayed()).starts_with(s.name + " "); });
  return scenarios;
}

INSTANTIATE_TEST_SUITE_P(Memory, Campaign, ::testing::ValuesIn(scenariosAskedFor()), testName);
INSTANTIATE_TEST_SUITE_P(Memory, HeavyCampaign, ::testing::ValuesIn(scenariosAskedFor()), testName);

}  // namespace

void PrintTo(const Scenario &scenario, std::ostream *out) { *out << scenario.name; }

}  // namespace koru::test
