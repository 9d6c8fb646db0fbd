// SPDX-License-Identifier: MIT
// All-different, occurrence, minimum and maximum.
#include <climits>

#include "semantic/cases.h"

namespace koru::test::brute {
namespace {

// ----- all-different

bool allDifferent(Values t) {
  for (std::size_t i = 0; i < t.size(); ++i)
    if (std::ranges::count(t, t[i]) > 1) return false;
  return true;
}

// The value of a bound variable is in no other, and the span of all bounds offers a value for each.
bool eliminated(const Left &left, std::size_t column, int value) {
  for (std::size_t other = 0; other < left.columns(); ++other)
    if (!left.isSame(other, column) && left.isBound(other) && left.min(other) == value) return false;
  return true;
}

std::string tooNarrow(const Left &left) {
  int min = INT_MAX;
  int max = INT_MIN;
  for (std::size_t i = 0; i < left.columns(); ++i) {
    min = std::min(min, left.min(i));
    max = std::max(max, left.max(i));
  }
  const bool enough = left.columns() == 0 || Wide{max} - min + 1 >= static_cast<Wide>(left.columns());
  return enough ? "" : "the span offers too few values";
}

// A variable at two positions is told from the others by identity. It is refused at posting when bound, and later by
// the span alone: what is bound may be any values otherwise different that leave room for all.
Constraint allNeq(int n) {
  Constraint c =
      relation("cs_AllNeq " + std::to_string(n), n, allDifferent, [n](CSint **x) { return cs_AllNeq(x, n) == 1; });
  c.acceptedAnyway = [](const Left &left) { return left.isShared() && tooNarrow(left).empty(); };
  c.supported = eliminated;
  c.inside = tooNarrow;
  return c;
}

Case allNeqs() {
  Case c{"AllNeq", {"cs_AllNeq"}, {}, {{-1, 4}}, 150};
  for (int n = 0; n <= 5; ++n) c.forms.push_back(allNeq(n));
  return c;
}

// ----- occurrence

int countIn(Values t, int val) { return static_cast<int>(std::ranges::count(t, val)); }

// The count is the first position.
bool counted(Values t, int val) { return countIn(t.subspan(1), val) == t[0]; }

// Bounds of the count, and each value of the others. A count that is bound when it is posted imposes nothing before
// the first event; one of the variables may be the count itself.
Constraint occurConstraints(int n, int val) {
  Constraint c = relation(
      "cs_OccurConstraints of " + std::to_string(val), n + 1, [=](Values t) { return counted(t, val); },
      [=](CSint **x) { return cs_OccurConstraints(x[0], val, x + 1, n); });
  c.strength = [](const Left &left, std::size_t column) {
    if (left.posted().isBound(0) || !left.isInterval(0)) return Strength::kNone;
    return column == 0 ? Strength::kBounds : Strength::kDomain;
  };
  return c;
}

Case occurs(const char *name, Constraint (*form)(int, int), std::vector<Room> rooms) {
  Case c{name, {std::string("cs_") + name}, {}, std::move(rooms), 60};
  for (int n = 0; n <= 3; ++n)
    for (int val = -1; val <= 3; ++val) c.forms.push_back(form(n, val));
  return c;
}

Constraint occurDomain(int n, int val) {
  return with(function(
                  "cs_OccurDomain of " + std::to_string(val), n, [=](Values t) { return countIn(t, val); },
                  [=](CSint **x) { return cs_OccurDomain(val, x, n); }),
              Strength::kDomain, Strength::kBounds);
}

// cs_Occur says nothing of success: the count can be anything from the start, so that posting cannot fail.
Constraint occur(int n, int val) {
  return relation(
      "cs_Occur of " + std::to_string(val), n + 1, [=](Values t) { return counted(t, val); },
      [=](CSint **x) {
        CSint *count = cs_createCSint(0, n);
        return cs_Occur(count, val, x + 1, n) == 0 && cs_Eq(count, x[0]);
      });
}

// ----- minimum and maximum

Wide least(Values t) { return t.empty() ? INT_MAX : *std::ranges::min_element(t); }
Wide greatest(Values t) { return t.empty() ? INT_MIN : *std::ranges::max_element(t); }

// Which bound of a column counts: the minimum for the least, the maximum, negated, for the greatest.
struct Side {
  bool least;
  int near(const Left &left, std::size_t column) const { return least ? left.min(column) : -left.max(column); }
  int far(const Left &left, std::size_t column) const { return least ? left.max(column) : -left.min(column); }
};

// The near bound of the result is imposed on the array; its far bound follows the array, and imposes nothing.
std::string wrongBounds(Side side, const Left &left) {
  for (std::size_t i = 0; i < left.result(); ++i) {
    if (side.near(left, i) < side.near(left, left.result())) return "the near bound of the result is not imposed";
    if (side.far(left, i) < side.far(left, left.result())) return "the far bound of the result does not follow";
  }
  return "";
}

// Both bounds of the result are as they must be, while there have never been holes: its near bound stays behind when it
// was moved by someone else and a variable has then jumped further, or before that was heard.
Constraint extremum(const std::string &name, int n, Side side, Value value, MakeResult post) {
  Constraint c = function(name + " " + std::to_string(n), n, std::move(value), std::move(post));
  c.strength = [](const Left &left, std::size_t column) {
    bool holes = left.branch.removals || left.branch.unheard;
    for (std::size_t i = 0; i < left.columns(); ++i) holes = holes || !left.posted().isInterval(i);
    return column == left.result() && !holes && !left.isBound(column) ? Strength::kBounds : Strength::kNone;
  };
  c.inside = [side](const Left &left) { return wrongBounds(side, left); };
  return c;
}

Case extremes(const char *name, Side side, Value value, const std::function<CSint *(CSint **, int)> &post) {
  Case c{name, {std::string("cs_") + name}, {}, {{-2, 4}}, 120};
  for (int n = 1; n <= 4; ++n)
    c.forms.push_back(extremum(c.functions[0], n, side, value, [post, n](CSint **x) { return post(x, n); }));
  return c;
}

CSint *vMin(CSint **x, int n) {
  if (n < 3) return n == 1 ? cs_VMin(1, x[0]) : cs_VMin(2, x[0], x[1]);
  if (n == 3) return cs_VMin(3, x[0], x[1], x[2]);
  return cs_VMin(4, x[0], x[1], x[2], x[3]);
}
CSint *vMax(CSint **x, int n) {
  if (n < 3) return n == 1 ? cs_VMax(1, x[0]) : cs_VMax(2, x[0], x[1]);
  if (n == 3) return cs_VMax(3, x[0], x[1], x[2]);
  return cs_VMax(4, x[0], x[1], x[2], x[3]);
}

}  // namespace

Cases globalCases() {
  return {allNeqs(),
          occurs("Occur", occur, {{-1, 5}, {0, 3}}),
          occurs("OccurConstraints", occurConstraints, {{-1, 5}, {0, 4}}),
          occurs("OccurDomain", occurDomain, {{0, 4}}),
          extremes("Min", {true}, least, cs_Min),
          extremes("VMin", {true}, least, vMin),
          extremes("Max", {false}, greatest, cs_Max),
          extremes("VMax", {false}, greatest, vMax)};
}

}  // namespace koru::test::brute
