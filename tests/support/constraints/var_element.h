// SPDX-License-Identifier: MIT
// value = vars[index] as the tests of both variable elements build it: from lists of values, narrowed by one step, and
// read back as a whole.
#pragma once

#include <climits>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "support/kit/probe.h"
#include "support/kit/refuser.h"

namespace koru::test::selection {

using Values = std::vector<int>;
using Post = CSint *(*)(CSint *, CSint **, int);
using Step = bool (*)(CSint *, int);

struct State {
  Values index;
  Values value;
  std::vector<Values> vars;
  bool operator==(const State &) const = default;
};

inline void PrintTo(const State &state, std::ostream *out) {
  *out << "index " << ::testing::PrintToString(state.index) << " value " << ::testing::PrintToString(state.value)
       << " vars " << ::testing::PrintToString(state.vars);
}

inline CSint *interval(const Values &wanted) {
  const bool full = distance(wanted.front(), wanted.back()) + 1 == wanted.size();
  return full ? cs_createCSint(wanted.front(), wanted.back()) : fromValues(wanted);
}

// Who a step narrows: the index, the value, or the variable at a position.
constexpr int kIndex = -2;
constexpr int kValue = -1;

class SelectionTest : public SolverTest {
 protected:
  void make(Post post, const Values &indexValues, const std::vector<Values> &domains) {
    index = interval(indexValues);
    vars.clear();
    for (const Values &domain : domains) vars.push_back(interval(domain));
    value = post(index, vars.data(), static_cast<int>(vars.size()));
    ASSERT_NE(value, nullptr);
  }

  CSint *variable(int who) {
    return who == kIndex ? index : who == kValue ? value : vars[static_cast<std::size_t>(who)];
  }

  State state() const {
    State now{values(index), values(value), {}};
    for (CSint *v : vars) now.vars.push_back(values(v));
    return now;
  }

  void checkRefused(Post post) {
    index = cs_createCSint(-1, 1);
    vars = {CSINT(1), nullptr};
    for (const int n : {0, -1, INT_MIN}) EXPECT_EQ(post(index, vars.data(), n), nullptr);
    EXPECT_EQ(post(index, vars.data(), 2), nullptr);
    EXPECT_EQ(post(index, nullptr, 2), nullptr);
    EXPECT_EQ(post(nullptr, vars.data(), 1), nullptr);
    EXPECT_EQ(values(index), range(-1, 1));
    EXPECT_EQ(post(cs_createCSint(1, 4), vars.data(), 1), nullptr);
    EXPECT_EQ(post(cs_createCSint(-4, -1), vars.data(), 1), nullptr);
    EXPECT_EQ(cs_getNbConstraints(vars[0]), 0);
    EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
  }

  void checkAttached(Post post, const std::string &name, const std::string &slots) {
    const int mark = solver::trail.count();
    make(post, {0, 2}, {{1, 5}, {3}, {4}});
    EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{index, value, vars[0], vars[2]}));
    EXPECT_EQ(attachments(index), (std::vector<std::pair<std::string, int>>{{name, -1}}));
    EXPECT_EQ(attachments(value), attachments(index));
    EXPECT_EQ(attachments(vars[0]), (std::vector<std::pair<std::string, int>>{{name, 0}}));
    EXPECT_EQ(attachments(vars[2]), (std::vector<std::pair<std::string, int>>{{name, 2}}));
    EXPECT_EQ(busySlots(index), "012345");
    EXPECT_EQ(busySlots(value), slots);
    EXPECT_EQ(busySlots(vars[0]), slots);
    const Constraint *onVars = vars[0]->constraints->constraint;
    EXPECT_EQ(onVars, vars[2]->constraints->constraint);
    EXPECT_EQ(onVars->site, index->constraints->constraint->site);
    EXPECT_EQ(onVars->site->references, 3);
  }

  // Positions outside the array were never part of the constraint; a restore past an accepted posting brings them back
  // to the index.
  void makeWithForeignPositions(Post post, const std::vector<Values> &domains) {
    index = cs_createCSint(-2, 9);
    for (const Values &domain : domains) vars.push_back(interval(domain));
    cs_saveContext();
    ASSERT_TRUE(cs_GE(index, 0) && cs_LT(index, static_cast<int>(vars.size())));
    cs_saveContext();
    value = post(index, vars.data(), static_cast<int>(vars.size()));
    ASSERT_NE(value, nullptr);
    cs_acceptContext();
    cs_restoreContext();
    ASSERT_EQ(values(index), range(-2, 9));
    for (const int foreign : {7, -1}) {
      cs_saveContext();
      EXPECT_FALSE(cs_EQ(index, foreign));
      cs_restoreContext();
    }
  }

  // The index is bound to 0, and value and variable range over 0..9. The handler for a lowered maximum is called while
  // both bounds of the value have moved and nobody has heard of it yet.
  void checkOneSidePerCall() {
    std::vector<Values> seen;
    std::function<bool(int)> body = [&](int) {
      EXPECT_TRUE(narrowMin(value, 2) && narrowMax(value, 7));
      Entry *entry = value->constraints;
      for (int call = 0; call < 3; ++call) {
        EXPECT_TRUE(entry->constraint->table->handlers[kNewMax](value, entry, 9, 7));
        seen.push_back(values(vars[0]));
      }
      return false;
    };
    CSint *trigger = cs_createCSint(0, 1);
    ASSERT_TRUE(postRefuser(trigger, body));
    EXPECT_FALSE(cs_EQ(trigger, 1));
    EXPECT_EQ(seen, (std::vector<Values>{range(2, 9), range(2, 7), range(2, 7)}));
  }

  CSint *index = nullptr;
  CSint *value = nullptr;
  std::vector<CSint *> vars;
};

struct Narrowing {
  int who;
  Step step;
  int to;
};

// The last of the steps is the one that is looked at: the others bring about the state before it.
struct Row {
  std::string name;
  std::vector<Narrowing> steps;
  State after;
};

inline void PrintTo(const Row &row, std::ostream *out) { *out << row.name; }

class RowTest : public SelectionTest, public ::testing::WithParamInterface<Row> {
 protected:
  void checkRow() {
    for (const Narrowing &n : GetParam().steps) ASSERT_TRUE(n.step(variable(n.who), n.to));
    EXPECT_EQ(state(), GetParam().after);
  }
};

inline std::string rowName(const ::testing::TestParamInfo<Row> &info) { return info.param.name; }

inline Values join(Values a, const Values &b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

}  // namespace koru::test::selection
