// SPDX-License-Identifier: MIT
// The record of hooks: what a new one holds, and that each setter stores its own field and can be chained.
#include <cstring>
#include "search/selector_engine.h"

#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;

using NotifyTest = SolverTest;

bool hookless(const CSsearchNotify &n) {
  return n.searchStart == nullptr && n.searchEnd == nullptr && n.beforeValueSelection == nullptr &&
         n.afterValueSelection == nullptr && n.enter == nullptr && n.leave == nullptr && n.found == nullptr;
}

TEST_F(NotifyTest, ANewRecordHasNoHooksAndTheCallersPointer) {
  int mine = 0;
  CSsearchNotify *notify = cs_createSearchNotify(&mine);
  ASSERT_NE(notify, nullptr);
  EXPECT_TRUE(hookless(*notify));
  EXPECT_EQ(notify->extra, &mine);
  cs_freeSearchNotify(notify);
  EXPECT_TRUE(hookless(noHooks()));
  EXPECT_EQ(noHooks().extra, nullptr);
}

void start(int, CSint **, int, void *) {}
void end(bool, int, int, CSint **, int, void *) {}
void before(int, int, const CSvalueSelection *, CSint **, int, void *) {}
void after(bool, int, int, const CSvalueSelection *, CSint **, int, void *) {}
void enter(int, int, CSint **, int, void *) {}
void leave(int, int, CSint **, int, void *) {}
bool found(int, CSint **, int, void *) { return true; }

CSsearchNotify *setAll(CSsearchNotify *n) {
  n = cs_searchNotifySetEnter(cs_searchNotifySetSearchEnd(cs_searchNotifySetSearchStart(n, start), end), enter);
  n = cs_searchNotifySetBeforeValueSelection(cs_searchNotifySetLeave(n, leave), before);
  return cs_searchNotifySetFound(cs_searchNotifySetAfterValueSelection(n, after), found);
}

TEST_F(NotifyTest, EachSetterStoresItsOwnHookAndReturnsTheRecord) {
  CSsearchNotify *notify = cs_createSearchNotify(nullptr);
  EXPECT_EQ(setAll(notify), notify);
  EXPECT_EQ(notify->searchStart, start);
  EXPECT_EQ(notify->searchEnd, end);
  EXPECT_EQ(notify->beforeValueSelection, before);
  EXPECT_EQ(notify->afterValueSelection, after);
  EXPECT_EQ(notify->enter, enter);
  EXPECT_EQ(notify->leave, leave);
  EXPECT_EQ(notify->found, found);
  EXPECT_EQ(notify->extra, nullptr);
  EXPECT_EQ(cs_searchNotifySetLeave(notify, nullptr), notify);
  EXPECT_EQ(notify->leave, nullptr);
  EXPECT_EQ(notify->enter, enter);
  cs_freeSearchNotify(notify);
}

// Hosts that know the layout write the fields themselves.
TEST_F(NotifyTest, TheFieldsFollowOneAnotherInTheirOrder) {
  CSsearchNotify *notify = setAll(cs_createSearchNotify(this));
  void *const fields[] = {reinterpret_cast<void *>(start),  reinterpret_cast<void *>(end),
                          reinterpret_cast<void *>(before), reinterpret_cast<void *>(after),
                          reinterpret_cast<void *>(enter),  reinterpret_cast<void *>(leave),
                          reinterpret_cast<void *>(found),  this};
  static_assert(sizeof fields == sizeof(CSsearchNotify));
  EXPECT_EQ(std::memcmp(notify, fields, sizeof fields), 0);
  cs_freeSearchNotify(notify);
}

TEST_F(NotifyTest, NullRecordsAreReturnedAndIgnored) {
  EXPECT_EQ(setAll(nullptr), nullptr);
  cs_freeSearchNotify(nullptr);
}

TEST_F(NotifyTest, ARecordThatCannotBeAllocatedIsReported) {
  {
    const FailingAllocation failing(0);
    EXPECT_EQ(cs_createSearchNotify(this), nullptr);
  }
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
}

}  // namespace
