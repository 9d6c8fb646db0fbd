// SPDX-License-Identifier: MIT
// Single handler calls: a slot of a reified comparison is run on a given state, inside a propagation that is dropped
// afterwards, so that nothing but this one call can change a domain.
#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "support/kit/probe.h"
#include "support/kit/refuser.h"

namespace koru::test::reif {

using Values = std::vector<int>;

inline const Values kFree{0, 1};
inline const Values kNone{};

struct State {
  Values x;
  Values y;  // kNone for the forms that compare with an int
  Values b;
  bool operator==(const State &) const = default;
};

inline std::ostream &operator<<(std::ostream &out, const State &state) {
  return out << "x " << ::testing::PrintToString(state.x) << " y " << ::testing::PrintToString(state.y) << " b "
             << ::testing::PrintToString(state.b);
}

// The slots `codes` of the constraint on variable `who`, called with `m` as the new bound, bound value or removed
// value.
struct SlotRow {
  const char *codes;
  char who;
  int m;
  State before;
  bool result;
  State after;
};

inline SlotRow gives(const char *codes, char who, int m, const State &before, const State &after) {
  return {codes, who, m, before, true, after};
}
inline SlotRow changesNothing(const char *codes, char who, int m, const State &before) {
  return {codes, who, m, before, true, before};
}
inline SlotRow fails(const char *codes, char who, int m, const State &before) {
  return {codes, who, m, before, false, before};
}

// The same rows for the form whose b says the opposite.
inline std::vector<SlotRow> inverted(std::vector<SlotRow> rows) {
  const auto invert = [](Values &b) {
    if (b.size() == 1) b.front() = 1 - b.front();
  };
  for (SlotRow &row : rows) {
    invert(row.before.b);
    invert(row.after.b);
  }
  return rows;
}

using Post = std::function<CSint *(CSint *x, CSint *y)>;

class SlotTest : public SolverTest {
 protected:
  void check(const Post &post, const std::vector<SlotRow> &rows) {
    for (const SlotRow &row : rows)
      for (const char *code = row.codes; *code != '\0'; ++code) checkCall(post, row, *code - '0');
  }

 private:
  struct Variables {
    CSint *x;
    CSint *y;
    CSint *b;
  };

  static void reduce(CSint *v, const Values &wanted) {
    for (const int value : values(v)) {
      if (!std::ranges::binary_search(wanted, value)) {
        ASSERT_TRUE(removeValue(v, value));
      }
    }
    ASSERT_EQ(values(v), wanted);
  }

  static State read(const Variables &v, const State &like) {
    return {values(v.x), like.y.empty() ? kNone : values(v.y), values(v.b)};
  }

  static bool call(CSint *v, int code, int m) {
    Entry *entry = v->constraints;
    return entry->constraint->table->handlers[code](v, entry, m, m);
  }

  static void checkInside(const Variables &v, const SlotRow &row, int code) {
    reduce(v.x, row.before.x);
    if (!row.before.y.empty()) reduce(v.y, row.before.y);
    reduce(v.b, row.before.b);
    const bool result = call(row.who == 'x' ? v.x : row.who == 'y' ? v.y : v.b, code, row.m);
    EXPECT_EQ(result, row.result) << where(row, code);
    EXPECT_EQ(read(v, row.before), row.after) << where(row, code);
  }

  static std::string where(const SlotRow &row, int code) {
    std::ostringstream text;
    text << "slot " << code << " on " << row.who << " with " << row.m << " at " << row.before;
    return text.str();
  }

  void checkCall(const Post &post, const SlotRow &row, int code) {
    Variables v{cs_createCSint(0, 20), cs_createCSint(0, 20), nullptr};
    v.b = post(v.x, v.y);
    ASSERT_NE(v.b, nullptr);
    ASSERT_TRUE(cs_isFree(v.b));
    bool ran = false;
    std::function<bool(int)> body = [&](int) {
      ran = true;
      checkInside(v, row, code);
      return false;
    };
    CSint *trigger = cs_createCSint(0, 1);
    ASSERT_TRUE(postRefuser(trigger, body));
    EXPECT_FALSE(cs_EQ(trigger, 1));
    EXPECT_TRUE(ran);
  }
};

}  // namespace koru::test::reif
