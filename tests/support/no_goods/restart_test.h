// SPDX-License-Identifier: MIT
// The fixture of the restart tests: variables with ascending selectors, fail limits from a list, and hooks that go
// through std::functions.
#pragma once

#include <functional>
#include <vector>

#include "support/kit/refuser.h"
#include "support/no_goods/no_goods.h"

namespace koru::test::nogood {

struct RunEnd {
  bool result;
  int fails;
  int limit;
  bool operator==(const RunEnd &) const = default;
};

inline void PrintTo(const RunEnd &end, std::ostream *out) {
  *out << "{" << end.result << ", " << end.fails << " of " << end.limit << "}";
}

// The first variable of the array that is not bound.
inline int firstFree(CSint **array, int size) {
  for (int i = 0; i < size; ++i)
    if (cs_isFree(array[i])) return i;
  return -1;
}

class RestartTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    notify = cs_createSearchNotify(this);
    cs_searchNotifySetSearchStart(notify, noteStart);
    cs_searchNotifySetSearchEnd(notify, noteEnd);
    cs_searchNotifySetFound(notify, callFound);
  }
  void TearDown() override {
    cs_freeSearchNotify(notify);
    SolverTest::TearDown();
  }

  // Variables 0..sizes[i] - 1, and a set over them.
  void make(const std::vector<int> &sizes) {
    for (const int size : sizes) x.push_back(cs_createCSint(0, size - 1));
    selectors.assign(x.size(), cs_getValueSelector(CS_SELECT_ASCENDING));
    set = cs_createNoGoodSet(x.data(), count(), callFilter, 0, nullptr, this);
    ASSERT_NE(set, nullptr);
  }
  void refuse(int i, std::function<bool(int)> accept) {
    accepts = std::move(accept);
    ASSERT_TRUE(postRefuser(x[static_cast<std::size_t>(i)], accepts));
  }
  // The limits of the runs; the last one is repeated, one higher each time.
  bool search(std::vector<int> wanted, int total = 0) { return searchWith(set, std::move(wanted), total); }
  bool searchWith(CSnoGoodSet *learning, std::vector<int> wanted, int total = 0) {
    limits = std::move(wanted);
    asked = 0;
    return cs_searchValueSelectorRestartNG(x.data(), selectors.data(), count(), select, nextLimit, this, total,
                                           learning, notify);
  }

  int count() const { return static_cast<int>(x.size()); }

  std::vector<CSint *> x;
  std::vector<CSvalueSelector *> selectors;
  CSfindFreeVarIndex select = firstFree;
  CSnoGoodSet *set = nullptr;
  CSsearchNotify *notify = nullptr;
  std::vector<int> limits;
  int asked = 0;
  std::function<bool(int)> accepts;
  std::function<void(int)> onLimit;  // with the number of the run, counted from 1
  std::function<bool(int)> onFound;  // with the depth
  std::function<bool(CSnoGood *)> onInsert;
  std::function<void()> onStart;
  std::function<void()> onEnd;
  std::vector<int> starts;
  std::vector<RunEnd> ends;

 private:
  static int nextLimit(void *self) {
    auto &test = *static_cast<RestartTest *>(self);
    ++test.asked;
    if (test.onLimit) test.onLimit(test.asked);
    const int beyond = test.asked - static_cast<int>(test.limits.size());
    return beyond <= 0 ? test.limits[static_cast<std::size_t>(test.asked - 1)] : test.limits.back() + beyond;
  }
  static void noteStart(int limit, CSint **, int, void *self) {
    auto &test = *static_cast<RestartTest *>(self);
    test.starts.push_back(limit);
    if (test.onStart) test.onStart();
  }
  static void noteEnd(bool result, int fails, int limit, CSint **, int, void *self) {
    auto &test = *static_cast<RestartTest *>(self);
    test.ends.push_back({result, fails, limit});
    if (test.onEnd) test.onEnd();
  }
  static bool callFilter(CSnoGoodSet *, CSnoGood *noGood, CSint **, int, void *self) {
    const auto &test = *static_cast<RestartTest *>(self);
    return !test.onInsert || test.onInsert(noGood);
  }
  static bool callFound(int depth, CSint **, int, void *self) {
    const auto &test = *static_cast<RestartTest *>(self);
    return !test.onFound || test.onFound(depth);
  }
};

}  // namespace koru::test::nogood
