// SPDX-License-Identifier: MIT
// cs_Cumulative and cs_Disjunctive beside the twin that computes every quantity where it is used.
#include "support/twins/cumulative_pair.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::scheduling;

// Relations that make a narrowing reach other variables at once.
void relateSome(TwinPair &pair, int relations) {
  static constexpr bool (*kRelations[])(CSint *, CSint *) = {cs_Le, cs_Lt, cs_Neq, cs_Ge};
  for (int i = 0; i < relations; ++i) {
    const int x = pair.number(0, pair.count() - 1);
    const int y = pair.number(0, pair.count() - 1);
    if (x != y && !pair.relate(x, y, kRelations[pair.number(0, 3)])) return;
  }
}

void run(TwinPair &pair, int capacity, int steps) {
  cs_saveContext();
  if (pair.post(capacity)) pair.randomSteps(steps);
  pair.restoreAll();
}

// Varying durations and uses, a task in `fixed` has neither.
void addSmallTasks(TwinPair &pair, int n, int fixed) {
  for (int i = 0; i < n; ++i) {
    const int width = pair.number(0, 9) < fixed ? 1 : 4;
    const int start = pair.add(pair.interval(-3, 12, 9));
    const int duration = pair.add(pair.interval(0, 4, width));
    pair.addTask(start, duration, pair.add(pair.interval(0, 3, width)));
  }
}

void small(TwinPair &pair) {
  addSmallTasks(pair, pair.number(1, 6), pair.number(0, 9));
  const int capacity = pair.add(pair.interval(1, 7, 4));
  relateSome(pair, pair.number(0, 3));
  run(pair, capacity, 8);
}

void manyTasks(TwinPair &pair) {
  for (int n = pair.number(8, 14); n > 0; --n) {
    const int start = pair.add(pair.interval(0, 40, 30));
    const int duration = pair.add(pair.interval(0, 6, pair.number(1, 2)));
    pair.addTask(start, duration, pair.add(pair.interval(1, 3, pair.number(1, 2))));
  }
  run(pair, pair.add(pair.interval(4, 9, 3)), 10);
}

// Every position may be filled by a variable that stands elsewhere too, negative values included.
void sharedRoles(TwinPair &pair) {
  const auto variable = [&](Interval fresh) {
    return pair.count() > 0 && pair.number(0, 3) == 0 ? pair.number(0, pair.count() - 1) : pair.add(fresh);
  };
  for (int n = pair.number(1, 5); n > 0; --n) {
    const int start = variable(pair.interval(0, 8, 7));
    const int duration = variable(pair.interval(pair.number(-9, 9) == -9 ? -2 : 0, 5, 4));
    pair.addTask(start, duration, variable(pair.interval(pair.number(-9, 9) == -9 ? -3 : 0, 4, 4)));
  }
  const int capacity = variable(pair.interval(2, 12, 8));
  relateSome(pair, pair.number(0, 2));
  run(pair, capacity, 8);
}

// Windows with so little energy left that they bound uses. These are tied to starts and durations, by a relation or by
// being the same variable, so that what was noted of the tasks changes while a window is checked.
void tightUses(TwinPair &pair) {
  const int limit = pair.number(3, 6);
  std::vector<int> starts;
  std::vector<int> uses;
  for (int n = pair.number(3, 6); n > 0; --n) {
    starts.push_back(pair.add({pair.number(0, 1), pair.number(2, 4)}));
    const bool again = uses.size() > 1 && pair.number(0, 3) == 0;
    const int other = pair.number(0, 1) == 0 ? starts.back() : starts[starts.size() / 2];
    uses.push_back(again ? other : pair.add({pair.number(1, 2), limit}));
    const int duration = pair.number(0, 5) == 0 ? uses.front() : pair.add(pair.interval(2, 3, 2));
    pair.addTask(starts.back(), duration, uses.back());
  }
  const int capacity = pair.number(0, 5) == 0 ? uses.front() : pair.add(exactly(limit));
  for (int i = pair.number(0, 3); i > 0; --i) {
    const int use = uses[static_cast<std::size_t>(pair.number(0, 2))];
    if (!pair.relate(use, starts[static_cast<std::size_t>(pair.number(0, 2))], cs_Ge)) return;
  }
  run(pair, capacity, 8);
}

int extreme(TwinPair &pair) {
  static constexpr int kPoints[] = {INT_MIN, INT_MIN + 1, -65537, -1, 0, 1, 2, 3, 46341, INT_MAX - 1, INT_MAX};
  const int i = pair.number(0, 15);
  return i < static_cast<int>(std::size(kPoints)) ? kPoints[i] : pair.number(INT_MIN, INT_MAX);
}

Interval extremeInterval(TwinPair &pair, int low) {
  const int a = std::max(low, extreme(pair));
  const int b = pair.number(0, 1) == 0 ? satAdd(a, pair.number(0, 5)) : std::max(low, extreme(pair));
  return {std::min(a, b), std::max(a, b)};
}

// Low: the least duration and use. Capacities are mostly large, or every instance would fail at once.
void limits(TwinPair &pair) {
  const int low = pair.number(0, 3) == 0 ? INT_MIN : pair.number(0, 1);
  for (int n = pair.number(1, 4); n > 0; --n) {
    const int start = pair.add(extremeInterval(pair, INT_MIN));
    const int duration = pair.add(pair.number(0, 1) == 0 ? pair.interval(0, 9, 3) : extremeInterval(pair, low));
    pair.addTask(start, duration,
                 pair.add(pair.number(0, 1) == 0 ? pair.interval(0, 3, 3) : extremeInterval(pair, low)));
  }
  const int capacity =
      pair.add(pair.number(0, 1) == 0 ? Interval{0, pair.number(3, INT_MAX)} : extremeInterval(pair, 0));
  run(pair, capacity, 8);
}

// Horizons and capacities at which products and quotients leave 32 bits.
void largeEnergies(TwinPair &pair) {
  for (int n = pair.number(1, 5); n > 0; --n) {
    const int start = pair.add(pair.interval(0, 200000, 150000));
    const int duration = pair.add(pair.interval(20000, 90000, pair.number(1, 50000)));
    pair.addTask(start, duration, pair.add(pair.interval(10000, 60000, pair.number(1, 30000))));
  }
  run(pair, pair.add(pair.interval(30000, 150000, 60000)), 8);
}

void disjunctive(TwinPair &pair) {
  for (int n = pair.number(1, 7); n > 0; --n) {
    const int start = pair.add(pair.interval(0, 14, 10));
    pair.addTask(start, pair.add(pair.interval(0, 4, pair.number(1, 3))), start);
  }
  relateSome(pair, pair.number(0, 2));
  cs_saveContext();
  if (pair.postDisjunctive()) pair.randomSteps(8);
  pair.restoreAll();
}

struct Kind {
  const char *name;
  void (*run)(TwinPair &pair);
  unsigned quick;
  unsigned heavy;
};

void PrintTo(const Kind &kind, std::ostream *out) { *out << kind.name; }

class CumulativeTwin : public ::testing::TestWithParam<Kind> {
 protected:
  // Of the steps that were made, so many must have left something to go on with.
  void forSeeds(unsigned from, unsigned count) {
    TwinPair::stepsDone = 0;
    for (unsigned seed = from; seed < from + count && !HasFailure(); ++seed) {
      TwinPair pair(seed);
      GetParam().run(pair);
    }
    EXPECT_GT(TwinPair::stepsDone, static_cast<int>(count));
  }
};

TEST_P(CumulativeTwin, MovesLikeTheLibrary) { forSeeds(1, GetParam().quick); }
TEST_P(CumulativeTwin, MovesLikeTheLibraryHeavy) { forSeeds(100000, GetParam().heavy); }

INSTANTIATE_TEST_SUITE_P(
    , CumulativeTwin,
    ::testing::Values(Kind{"SmallProblems", small, 1000, 40000}, Kind{"ManyTasks", manyTasks, 200, 4000},
                      Kind{"SharedRoles", sharedRoles, 1000, 40000}, Kind{"TightUses", tightUses, 2000, 40000},
                      Kind{"Limits", limits, 1000, 30000}, Kind{"LargeEnergies", largeEnergies, 600, 20000},
                      Kind{"Disjunctive", disjunctive, 1000, 30000}),
    [](const auto &row) { return std::string(row.param.name); });

}  // namespace
