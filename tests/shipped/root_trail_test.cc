// SPDX-License-Identifier: MIT
// The undo trail as users have it: while no context is open its blocks are filled again and again, which may show in
// nothing but memory. The library that other tests use writes each record down.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "koru_extras.h"
#include "support/kit/written_text.h"

namespace {

using koru::test::textOf;

constexpr int kBlock = 1024;

int heapSize() {
  const std::string text = textOf(cs_fprintStats);
  return std::atoi(text.substr(text.rfind('=') + 1).c_str());
}

// What the trail is said to be: a stack of records that takes a block more when it first grows beyond a multiple of
// their size.
struct Ledger {
  static constexpr int kBuffer = -1;

  int minimum = 0;
  std::vector<int> records;  // old minimums
  std::vector<std::size_t> open;
  std::size_t most = 0;

  void note(int record) {
    records.push_back(record);
    most = std::max(most, records.size());
  }
  int capacity() const { return std::max(1, (static_cast<int>(most) + kBlock - 1) / kBlock) * kBlock; }
  // Drops what the newest context has noted.
  void close(bool undo) {
    for (; records.size() > open.back(); records.pop_back())
      if (undo && records.back() != kBuffer) minimum = records.back();
  }
};

class RootTrailTest : public testing::Test {
 protected:
  void SetUp() override { cs_init(); }
  void TearDown() override { cs_end(); }

  void raise(CSint *v, Ledger &ledger, int times) {
    for (int i = 0; i < times; ++i) {
      ledger.note(ledger.minimum);
      ASSERT_TRUE(cs_GE(v, ++ledger.minimum));
    }
  }

  enum Turn : unsigned { kSave, kRestore, kAccept, kForget };

  static void turn(Ledger &ledger, unsigned how) {
    if (how == kSave && ledger.open.size() < 4) {
      ledger.open.push_back(ledger.records.size());
      ASSERT_EQ(cs_saveContext(), static_cast<int>(ledger.open.size()));
    } else if (!ledger.open.empty()) {
      if (how == kRestore) cs_restoreContext();
      if (how == kAccept) cs_acceptContext();
      if (how == kForget || how == kSave) cs_forgetSaveContext();
      if (how == kRestore || how == kAccept) ledger.close(how == kRestore);
      ledger.open.pop_back();
    }
  }
};

TEST_F(RootTrailTest, CountsAndUndoesAsIfAllWereWritten) {
  constexpr int kBursts[] = {1, 2, 700, 1023, 1024, 1025, 3000};
  for (unsigned seed = 0; seed < 200; ++seed) {
    std::mt19937 random(seed);
    cs_end();
    cs_init();
    Ledger ledger;
    CSint *v = cs_createCSint(0, 10000000);
    for (int step = 0; step < 60; ++step) {
      if (random() % 3 == 0) {
        ASSERT_NO_FATAL_FAILURE(raise(v, ledger, kBursts[random() % std::size(kBursts)]));
      } else if (random() % 8 == 0) {
        ASSERT_NE(cs_createCSintArray(1, 0, 1), nullptr);  // notes a buffer
        ledger.note(Ledger::kBuffer);
      } else {
        ASSERT_NO_FATAL_FAILURE(turn(ledger, random() % 4));
      }
      ASSERT_EQ(cs_getMin(v), ledger.minimum) << seed;
      ASSERT_EQ(heapSize(), ledger.capacity()) << seed;
    }
    while (!ledger.open.empty()) {
      ASSERT_NO_FATAL_FAILURE(turn(ledger, kRestore));
      ASSERT_EQ(cs_getMin(v), ledger.minimum) << seed;
    }
  }
}

TEST_F(RootTrailTest, ConstraintsPostedWithoutAContextStayWhenOneIsRestored) {
  std::vector<CSint *> x(5000);
  for (CSint *&v : x) v = cs_createCSint(0, 3);
  for (std::size_t i = 1; i < x.size(); ++i) ASSERT_TRUE(cs_Le(x[i - 1], x[i]));
  EXPECT_EQ(heapSize(), 10 * kBlock) << "two attachments each";
  for (int round = 0; round < 3; ++round) {
    cs_saveContext();
    ASSERT_TRUE(cs_GE(x[0], 2));
    EXPECT_EQ(cs_getMin(x.back()), 2);
    cs_restoreContext();
    EXPECT_EQ(cs_getMin(x.back()), 0);
  }
  EXPECT_EQ(cs_getNbConstraints(x[1]), 2);
}

// A meter remembers where the trail ended.
TEST_F(RootTrailTest, NarrowingsAreCountedOverMoreThanABlock) {
  struct Handler {
    static bool raiseOften(CSint *, int, int, CSint **, int, void *extra) {
      for (int i = 1; i <= 2 * kBlock; ++i)
        if (!cs_GE(static_cast<CSint *>(extra), i)) return false;
      return true;
    }
  };
  CSint *x[] = {cs_createCSint(0, 9)};
  cs_eventNewMin(x, 1, Handler::raiseOften, cs_createCSint(0, 1000000));
  CSprofiler *profiler = cs_createProfiler(0);
  cs_setProfilerDetails(profiler, true);
  cs_enableProfiler(profiler);
  ASSERT_TRUE(cs_GE(x[0], 1));
  const std::string text = textOf([=](std::FILE *f) { cs_profilerWriteDetails(profiler, f); });
  EXPECT_NE(text.find("cs_eventNewMin\t1\t0\t0\t2048\t"), std::string::npos) << text;
}

}  // namespace
