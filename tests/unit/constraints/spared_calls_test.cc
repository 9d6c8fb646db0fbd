// SPDX-License-Identifier: MIT
// The calls that occurrence constraints, all-differents and sums with a constant are spared would have done nothing,
// and the short ways of the last do what the long ones do: the same random program, with a profiler for whom all
// handlers are called and without one, leaves the same domains and last-reported bounds after each step.
#include <climits>

#include "core/ports.h"
#include "core/trial.h"
#include "support/kit/batch.h"
#include "support/kit/instrumented.h"
#include "support/kit/random.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru;
using namespace koru::test;

constexpr int kLargest = 7;

// What a program has besides variables.
enum class Has { kCounts, kShifts, kBoth };

// Variables 0..7, some with holes; those shifted by constants; counts of values among some of them, a count being a
// variable of its own or one of those; and disequalities, so that events come several at a time and failures in the
// midst of them.
class Program {
 public:
  // Whether contexts are also accepted while others are open, which leaves quirks that are to stay the same.
  Program(int seed, Has has, bool accepts) : random_(static_cast<std::uint64_t>(seed)), has_(has), accepts_(accepts) {}

  std::vector<int> run() {
    makeVariables();
    if (has_ != Has::kCounts) shift();
    if (has_ != Has::kShifts) {
      for (int i = random_.between(1, 4); i > 0; --i) count();
    }
    for (int i = random_.below(3); i > 0; --i) differ();
    for (int i = random_.below(has_ == Has::kCounts ? 4 : 12); i > 0; --i) note(cs_Neq(any(), any()));
    for (int i = 0; i < 60; ++i) step();
    return std::move(trace_);
  }

 private:
  CSint *any() { return random_.pick(all_); }

  void makeVariables() {
    for (int i = random_.between(3, 6); i > 0; --i) all_.push_back(cs_createCSint(0, kLargest));
    for (int i = random_.below(6); i > 0; --i) note(cs_NEQ(any(), random_.between(1, kLargest - 1)));
  }

  void count() {
    std::vector<CSint *> &counted = counted_.emplace_back();
    for (int i = random_.between(2, 6); i > 0; --i) counted.push_back(any());
    CSint *count = any();
    if (random_.chance(70)) all_.push_back(count = cs_createCSint(0, static_cast<int>(counted.size())));
    const int value = random_.between(0, kLargest);
    note(cs_OccurConstraints(count, value, counted.data(), static_cast<int>(counted.size())));
  }

  void shift() {
    for (int i = random_.between(2, 8); i > 0; --i) {
      CSint *k = CSINT(random_.between(-9, 60));
      CSint *z = random_.chance(50) ? cs_Add(any(), k) : random_.chance(50) ? cs_Sub(any(), k) : cs_Sub(k, any());
      all_.push_back(z);
    }
    for (int i = random_.below(3); i > 0; --i) look();
  }

  void differ() {
    std::vector<CSint *> &different = counted_.emplace_back();
    for (int i = random_.between(2, 5); i > 0; --i) different.push_back(any());
    note(cs_AllNeq(different.data(), static_cast<int>(different.size())) != 0);
  }

  // Constraints that ask which bounds they were told last.
  void look() {
    CSint **several = counted_.emplace_back(std::vector{any(), any(), any()}).data();
    CSint *made = nullptr;
    switch (random_.below(4)) {
      case 0:
        made = cs_Abs(any());
        break;
      case 1:
        made = cs_Min(several, 3);
        break;
      case 2:
        made = cs_Index(several, 3, random_.between(0, kLargest));
        break;
      default:
        static int row[] = {3, 1, 4, 1, 5, 9, 2, 6};
        made = cs_Element(any(), row, 8);
    }
    if (made != nullptr) all_.push_back(made);
  }

  bool change() {
    CSint *v = any();
    const int value = random_.between(cs_getMin(v), cs_getMax(v));
    switch (random_.below(5)) {
      case 0:
        return cs_GE(v, value);
      case 1:
        return cs_LE(v, value);
      case 2:
        return cs_EQ(v, value);
      default:
        return cs_NEQ(v, value);
    }
  }

  bool changes() {
    bool consistent = true;
    for (int i = random_.between(2, 4); i > 0; --i) consistent = consistent && change();
    return consistent;
  }

  // As a search does, which undoes what was refused before anybody looks.
  bool tries() {
    cs_saveContext();
    const bool consistent = [&] {
      const Trial trial(false);
      return change();
    }();
    if (!consistent) cs_restoreContext();
    return consistent;
  }

  void close() {
    const int how = random_.below(10);
    if (how == 0) return cs_forgetSaveContext();
    if (how == 1 && accepts_) return cs_acceptContext();
    cs_restoreContext();
  }

  void step() {
    const int what = random_.below(100);
    if (what < 30) {
      note(change());
    } else if (what < 55) {
      note(tries());
    } else if (what < 65) {
      note(together([this] { return changes(); }));
    } else if (what < 80) {
      cs_saveContext();
    } else if (what < 98) {
      close();
    } else if (accepts_) {
      cs_acceptAll();
    }
    for (CSint *v : all_) {
      for (const int value : values(v)) trace_.push_back(value);
      trace_.insert(trace_.end(), {INT_MIN, v->reportedMin, v->reportedMax});
    }
  }

  void note(bool consistent) { trace_.push_back(consistent ? 100 : 101); }

  Random random_;
  Has has_;
  bool accepts_;
  std::vector<CSint *> all_;
  std::vector<std::vector<CSint *>> counted_;
  std::vector<int> trace_;
};

class SparedCallsTest : public ::testing::TestWithParam<std::tuple<Has, bool>> {
 protected:
  static std::vector<int> trace(int seed, bool profiling) {
    const auto [has, accepts] = GetParam();
    cs_init();
    solver::ports.profiling = profiling;
    Program program(seed, has, accepts);
    std::vector<int> result = program.run();
    cs_end();
    solver::ports.profiling = false;
    return result;
  }
};

TEST_P(SparedCallsTest, WouldHaveDoneNothing) {
  for (int seed = 0; seed < rounds(1500); ++seed) ASSERT_EQ(trace(seed, false), trace(seed, true)) << "seed " << seed;
}

INSTANTIATE_TEST_SUITE_P(, SparedCallsTest,
                         ::testing::Combine(::testing::Values(Has::kCounts, Has::kShifts, Has::kBoth),
                                            ::testing::Bool()));

}  // namespace
