// SPDX-License-Identifier: MIT
#include "core/ports.h"

#include <deque>

#include "core/solver.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru;
using namespace koru::test;

struct Log {
  std::vector<int> told;
  int released = 0;
};

class PortsTest : public SolverTest {
 protected:
  Ports ports;
  Log first;
  Log second;
  Log third;

  std::deque<Observer> observers;

  Observer *observer(Log *log, bool enabled) {
    return &observers.emplace_back(Observer{
        [](void *argument, bool, CSint *, int code, Site *) { static_cast<Log *>(argument)->told.push_back(code); },
        [](void *argument) { ++static_cast<Log *>(argument)->released; }, log, enabled, nullptr});
  }
  void TearDown() override {
    ports.releaseObservers();
    SolverTest::TearDown();
  }
};

TEST_F(PortsTest, ProfilingMeansThatSomeObserverIsEnabled) {
  EXPECT_FALSE(ports.profiling);
  Observer *one = observer(&first, false);
  ports.add(one);
  EXPECT_FALSE(ports.profiling);
  Observer *two = observer(&second, true);
  ports.add(two);
  EXPECT_TRUE(ports.profiling);
  one->enabled = true;
  two->enabled = false;
  ports.refreshProfiling();
  EXPECT_TRUE(ports.profiling);
  one->enabled = false;
  ports.refreshProfiling();
  EXPECT_FALSE(ports.profiling);
}

TEST_F(PortsTest, EnabledObserversAreToldAndOthersNot) {
  ports.add(observer(&first, true));
  ports.add(observer(&second, false));
  ports.notify(true, nullptr, 3, nullptr);
  EXPECT_EQ(first.told, (std::vector<int>{3}));
  EXPECT_TRUE(second.told.empty());
}

TEST_F(PortsTest, ReleasingCallsEveryObserverOnceAndEndsProfiling) {
  ports.add(observer(&first, true));
  ports.add(observer(&second, false));
  ports.releaseObservers();
  EXPECT_EQ(first.released, 1);
  EXPECT_EQ(second.released, 1);
  EXPECT_FALSE(ports.profiling);
  ports.notify(true, nullptr, 3, nullptr);
  EXPECT_TRUE(first.told.empty());
}

TEST_F(PortsTest, ARemovedObserverIsNeitherToldNorReleasedNorCountsAsProfiling) {
  Observer *one = observer(&first, true);
  Observer *two = observer(&second, true);
  ports.add(one);
  ports.add(two);
  ports.remove(one);
  ports.remove(one);
  ports.notify(true, nullptr, 3, nullptr);
  EXPECT_TRUE(first.told.empty());
  EXPECT_EQ(second.told, (std::vector<int>{3}));
  EXPECT_TRUE(ports.profiling);
  ports.remove(two);
  EXPECT_FALSE(ports.profiling);
  ports.releaseObservers();
  EXPECT_EQ(first.released + second.released, 0);
}

TEST_F(PortsTest, AnObserverMayDoWithoutARelease) {
  Observer *made = observer(&first, true);
  made->release = nullptr;
  ports.add(made);
  ports.releaseObservers();
  EXPECT_EQ(first.released, 0);
  EXPECT_FALSE(ports.profiling);
}

TEST_F(PortsTest, ThePlaceIsUnknownWithoutALocatorAndALocatorsNullIsAnEmptyText) {
  EXPECT_EQ(ports.locatorText(), nullptr);
  ports.locator.text = [](void *) -> const char * { return nullptr; };
  EXPECT_STREQ(ports.locatorText(), "");
  static char text[] = "place";
  ports.locator = {[](void *argument) -> const char * { return static_cast<char *>(argument); }, nullptr, text};
  EXPECT_STREQ(ports.locatorText(), "place");
}

TEST_F(PortsTest, ResettingTheLocatorClearsItBeforeItsOwnResetRuns) {
  static int resets;
  resets = 0;
  ports.resetLocator();
  ports.locator = {[](void *) -> const char * { return "place"; }, [] { ++resets; }, nullptr};
  ports.resetLocator();
  EXPECT_EQ(resets, 1);
  EXPECT_EQ(ports.locatorText(), nullptr);
  ports.resetLocator();
  EXPECT_EQ(resets, 1);
}

TEST_F(PortsTest, TellsThoseThatWatchWhatTheyWantToBeTold) {
  static const Watch kAll{[](void *log, const Waking &w) { static_cast<Log *>(log)->told.push_back(w.code); },
                          [](void *log) { static_cast<Log *>(log)->told.push_back(-1); },
                          [](void *log, const Poster &) { static_cast<Log *>(log)->told.push_back(-2); },
                          [](void *log) { static_cast<Log *>(log)->told.push_back(-3); }};
  static const Watch kFew{kAll.begins, kAll.ends, nullptr, nullptr};
  Observer *all = observer(&first, true);
  Observer *few = observer(&second, true);
  Observer *disabled = observer(&third, false);
  all->watch = disabled->watch = &kAll;
  few->watch = &kFew;
  for (Observer *each : {all, few, disabled, observer(&third, true)}) ports.add(each);
  EXPECT_TRUE(ports.watched);
  ports.tellBegin({nullptr, 4, 0, nullptr});
  EXPECT_EQ(ports.textFor("cs_Le"), nullptr);
  ports.tellMarks();
  ports.tellEnd();
  EXPECT_EQ(first.told, (std::vector<int>{4, -2, -3, -1}));
  EXPECT_EQ(second.told, (std::vector<int>{4, -1}));
  EXPECT_TRUE(third.told.empty());
  all->enabled = few->enabled = false;
  ports.refreshProfiling();
  EXPECT_FALSE(ports.watched);
}

}  // namespace
