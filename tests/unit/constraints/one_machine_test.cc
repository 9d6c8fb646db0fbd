// SPDX-License-Identifier: MIT
// OneMachine beside a twin that goes through all sets of tasks for the rules as they were published.
#include "constraints/scheduling/one_machine.h"

#include <algorithm>
#include <array>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace koru::scheduling {

static void PrintTo(const Task &t, std::ostream *out) {
  *out << "[" << t.earliest << ", " << t.latest << ") " << t.length << " presence " << static_cast<int>(t.presence);
}

namespace {

using Tasks = std::vector<Task>;

struct Set {
  Time earliest = INT64_MAX;
  Time latest = INT64_MIN;
  Time length = 0;
  Time leastEnd = INT64_MAX;       // of the earliest ends
  Time greatestStart = INT64_MIN;  // of the latest starts

  Time completion() const { return earliest + length; }
  void add(const Task &t) {
    earliest = std::min(earliest, t.earliest);
    latest = std::max(latest, t.latest);
    length += t.length;
    leastEnd = std::min(leastEnd, t.earliestEnd());
    greatestStart = std::max(greatestStart, t.latestStart());
  }
};

bool isIn(unsigned set, std::size_t i) { return (set >> i & 1) != 0; }

// All sets of tasks that are in; 0 is the empty one.
std::vector<Set> setsOf(const Tasks &tasks) {
  std::vector<Set> sets(std::size_t{1} << tasks.size());
  for (unsigned set = 1; set < sets.size(); ++set)
    for (std::size_t i = 0; i < tasks.size(); ++i)
      if (isIn(set, i)) sets[set].add(tasks[i]);
  return sets;
}

bool allIn(const Tasks &tasks, unsigned set) {
  for (std::size_t i = 0; i < tasks.size(); ++i)
    if (isIn(set, i) && !tasks[i].isIn()) return false;
  return true;
}

// The rules that raise earliest starts; of the others one is told by the mirror image.
struct Found {
  Time earliest;
  Time latest;
};

bool mustPrecede(const Tasks &tasks, unsigned set, const Task &task) {
  for (std::size_t j = 0; j < tasks.size(); ++j)
    if (isIn(set, j) && task.earliestEnd() <= tasks[j].latestStart()) return false;
  return true;
}

void ruleOut(const Tasks &tasks, const std::vector<Set> &sets, unsigned set, const Task &task, Found &found) {
  const Set &omega = sets[set];
  Set with = omega;
  with.add(task);
  if (with.completion() > with.latest) found.earliest = found.latest;  // overload: no place
  if (mustPrecede(tasks, set, task)) found.earliest = std::max(found.earliest, omega.completion());
  if (omega.completion() > task.latestStart()) found.latest = std::min(found.latest, omega.greatestStart);
  if (with.completion() <= omega.latest) return;
  for (unsigned part = set; part != 0; part = (part - 1) & set)
    found.earliest = std::max(found.earliest, sets[part].completion());
}

Tasks mirrored(Tasks tasks) {
  for (Task &t : tasks) t.earliest = -std::exchange(t.latest, -t.earliest);
  return tasks;
}

Found findFor(const Tasks &tasks, std::size_t i) {
  Found found{tasks[i].earliest, tasks[i].latest};
  const std::vector<Set> sets = setsOf(tasks);
  for (unsigned set = 1; set < sets.size(); ++set)
    if (!isIn(set, i) && allIn(tasks, set)) ruleOut(tasks, sets, set, tasks[i], found);
  return found;
}

// One round of all rules for all tasks. False when one that is in has no place.
bool round(Tasks &tasks) {
  const Tasks before = tasks;
  const Tasks mirror = mirrored(tasks);
  for (std::size_t i = 0; i < tasks.size(); ++i) {
    if (tasks[i].isOut()) continue;
    const Found found = findFor(before, i);
    const Found fromEnd = findFor(mirror, i);
    tasks[i].earliest = std::max(found.earliest, -fromEnd.latest);
    tasks[i].latest = std::min(found.latest, -fromEnd.earliest);
    if (tasks[i].earliestEnd() <= tasks[i].latest) continue;
    if (tasks[i].isIn()) return false;
    tasks[i].presence = Presence::kOut;
  }
  return true;
}

bool same(const Task &a, const Task &b) {
  return a.presence == b.presence && (a.isOut() || (a.earliest == b.earliest && a.latest == b.latest));
}

bool filterNaively(Tasks &tasks) {
  for (;;) {
    const Tasks before = tasks;
    if (!round(tasks)) return false;
    if (std::ranges::equal(before, tasks, same)) return true;
  }
}

class OneMachineTwin : public ::testing::Test {
 protected:
  int number(int low, int high) { return std::uniform_int_distribution(low, high)(random_); }

  Tasks draw(int most) {
    const int n = number(1, most);
    const int horizon = number(4, 30);
    const bool optional = number(0, 2) == 0;
    Tasks tasks;
    for (int i = 0; i < n; ++i) {
      const int length = number(1, std::max(1, horizon / n + number(0, 2)));
      const int from = number(0, std::max(0, horizon - length));
      const int to = number(from + length, std::max(from + length, horizon));
      const Presence presence = optional ? static_cast<Presence>(number(0, 2)) : Presence::kIn;
      tasks.push_back({from, to, length, presence});
    }
    return tasks;
  }

  void compare(int instances, int most) {
    int failed = 0;
    int narrowed = 0;
    for (int k = 0; k < instances && !HasFailure(); ++k) {
      const Tasks given = draw(most);
      Tasks expected = given;
      OneMachine machine(static_cast<int>(given.size()));
      std::ranges::copy(given, &machine[0]);
      const bool consistent = filterNaively(expected);
      ASSERT_EQ(machine.filter(), consistent) << ::testing::PrintToString(given);
      failed += consistent ? 0 : 1;
      if (!consistent) continue;
      const Tasks seen(&machine[0], &machine[0] + given.size());
      EXPECT_TRUE(std::ranges::equal(expected, seen, same))
          << ::testing::PrintToString(given) << "\n expected " << ::testing::PrintToString(expected) << "\n seen "
          << ::testing::PrintToString(seen);
      narrowed += std::ranges::equal(expected, given, same) ? 0 : 1;
    }
    EXPECT_GT(failed, instances / 20);
    EXPECT_GT(narrowed, instances / 20);
  }

 private:
  std::mt19937 random_{1};
};

// Edge finding in one direction of time makes an overload that edge finding in the other one meets.
TEST_F(OneMachineTwin, AnOverloadThatARuleHasMadeIsSeenByTheNext) {
  Tasks given;
  for (const auto &[earliest, latest, length] : std::vector<std::array<Time, 3>>{{18, 22, 1},
                                                                                 {9, 23, 4},
                                                                                 {10, 13, 3},
                                                                                 {13, 20, 1},
                                                                                 {4, 15, 3},
                                                                                 {10, 23, 2},
                                                                                 {0, 6, 4},
                                                                                 {0, 11, 1},
                                                                                 {4, 18, 3}})
    given.push_back({earliest, latest, length, Presence::kIn});
  OneMachine machine(static_cast<int>(given.size()));
  std::ranges::copy(given, &machine[0]);
  EXPECT_FALSE(machine.filter());
  EXPECT_FALSE(filterNaively(given));
}

TEST_F(OneMachineTwin, FindsWhatThePublishedRulesFind) {
  compare(2000, 6);
  compare(2000, 9);
}
TEST_F(OneMachineTwin, FindsWhatThePublishedRulesFindHeavy) {
  compare(100000, 6);
  compare(100000, 9);
}

}  // namespace
}  // namespace koru::scheduling
