// SPDX-License-Identifier: MIT
// No-goods as values, a set with its variables, and what can be read of a set: through the public functions, and
// inside, where a check of all its lists is made whenever it is read.
#pragma once

#include <algorithm>
#include <functional>
#include <ostream>
#include <vector>

#include "nogood/no_good_set.h"
#include "support/kit/probe.h"
#include "support/twins/copies.h"

namespace koru::test::nogood {

// Element of a no-good: a decision about the variable at a position.
struct Literal {
  int index;
  int method;
  int value;
  bool operator==(const Literal &) const = default;
};
using Literals = std::vector<Literal>;

inline Literal eq(int index, int value) { return {index, 0, value}; }
inline Literal neq(int index, int value) { return {index, 1, value}; }
inline Literal le(int index, int value) { return {index, 2, value}; }
inline Literal lt(int index, int value) { return {index, 3, value}; }
inline Literal ge(int index, int value) { return {index, 4, value}; }
inline Literal gt(int index, int value) { return {index, 5, value}; }

inline std::ostream &operator<<(std::ostream &out, const Literal &l) {
  static const char *const kSigns[] = {"=", "!=", "<=", "<", ">=", ">"};
  return out << "x" << l.index << kSigns[l.method] << l.value;
}

inline bool holds(const Literal &l, int value) { return copies::satisfies(value, {l.method, l.value}); }

// A no-good forbids the assignments in which all its literals hold.
inline bool forbids(const Literals &literals, const std::vector<int> &assignment) {
  return std::ranges::all_of(literals,
                             [&](const Literal &l) { return holds(l, assignment[static_cast<std::size_t>(l.index)]); });
}

inline Literals literalsOf(CSnoGood *noGood) {
  Literals result;
  for (int i = 0; i < cs_getNbNoGoodElements(noGood); ++i) {
    CSvalueSelection decision{};
    int index = -2;
    cs_getNoGoodElementAt(&index, &decision, noGood, i);
    result.push_back({index, decision.method, decision.value});
  }
  return result;
}

inline void add(CSnoGoodSet *set, const Literals &literals) {
  std::vector<int> indexes;
  std::vector<CSvalueSelection> decisions;
  for (const Literal &l : literals) {
    indexes.push_back(l.index);
    decisions.push_back({l.method, l.value});
  }
  cs_addNoGood(set, indexes.data(), decisions.data(), static_cast<int>(literals.size()));
}

// As cs_addNoGood, without its demand that indexes are below the number of elements.
inline void addFreely(CSnoGoodSet *set, const Literals &literals) {
  std::vector<NoGoodElement> elements;
  for (const Literal &l : literals) elements.push_back({{l.method, l.value}, l.index});
  addNoGood(*set, elements.data(), static_cast<int>(elements.size()));
}

// Every list of the set: both directions, the count, each watch in the list of its element's variable and nowhere else.
inline void expectSound(const CSnoGoodSet *set) {
  int count = 0;
  const CSnoGood *newer = nullptr;
  for (const CSnoGood *noGood = set->newest; noGood != nullptr; newer = noGood, noGood = noGood->older) {
    ++count;
    EXPECT_EQ(noGood->newer, newer);
    EXPECT_EQ(noGood->watched[0] == noGood->watched[1], noGood->count == 1);
    for (const WatchNode &node : noGood->nodes) EXPECT_EQ(*node.link, &node);
  }
  EXPECT_EQ(set->oldest, newer);
  EXPECT_EQ(set->count, count);
  EXPECT_EQ(set->holds, 0);
  EXPECT_EQ(set->deleted, nullptr);
  int nodes = 0;
  for (int position = 0; position < set->size; ++position)
    for (const WatchNode *node = set->watchLists[position]; node != nullptr; node = node->next, ++nodes) {
      ASSERT_NE(node->noGood, nullptr);
      const auto which = static_cast<std::size_t>(node - node->noGood->nodes);
      EXPECT_EQ(node->noGood->elements()[node->noGood->watched[which]].index, position);
    }
  EXPECT_EQ(nodes, 2 * count);
}

// All no-goods, oldest first.
inline std::vector<Literals> contents(CSnoGoodSet *set) {
  static std::vector<Literals> seen;
  seen.clear();
  cs_filterNoGood(set, [](CSnoGoodSet *, CSnoGood *noGood, CSint **, int, void *) {
    seen.push_back(literalsOf(noGood));
    return true;
  });
  EXPECT_EQ(cs_getNbNoGoods(set), std::ssize(seen));
  expectSound(set);
  return seen;
}

inline CSnoGood *newest(CSnoGoodSet *set) { return set->newest; }

// Where the watches of a no-good stand, A and B.
inline std::vector<int> watches(const CSnoGood *noGood) { return {noGood->watched[0], noGood->watched[1]}; }

// Variables 0..9 and a set over them; callbacks go through std::functions.
class NoGoodTest : public SolverTest {
 protected:
  using Callback = std::function<bool(CSnoGood *)>;

  void SetUp() override {
    SolverTest::SetUp();
    for (CSint *&v : x) v = cs_createCSint(0, 9);
    set = cs_createNoGoodSet(x, kSize, callFilter, 0, callRelease, this);
    ASSERT_NE(set, nullptr);
  }
  void TearDown() override {
    release = nullptr;  // it may look at what belonged to the test
    SolverTest::TearDown();
  }

  static bool callFilter(CSnoGoodSet *, CSnoGood *noGood, CSint **, int, void *self) {
    const auto &test = *static_cast<NoGoodTest *>(self);
    return !test.filter || test.filter(noGood);
  }
  static bool callKeep(CSnoGoodSet *, CSnoGood *noGood, CSint **, int, void *self) {
    return static_cast<NoGoodTest *>(self)->keep(noGood);
  }
  static void callRelease(CSnoGoodSet *released, void *self) {
    const auto &test = *static_cast<NoGoodTest *>(self);
    if (test.release) test.release(released);
  }
  void filterBy(Callback callback) {
    keep = std::move(callback);
    cs_filterNoGood(set, callKeep);
  }

  static constexpr int kSize = 4;
  CSint *x[kSize] = {};
  CSnoGoodSet *set = nullptr;
  Callback filter;
  Callback keep;
  std::function<void(CSnoGoodSet *)> release;
};

}  // namespace koru::test::nogood
