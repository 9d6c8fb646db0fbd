// SPDX-License-Identifier: MIT
// All-different, occurrence, minimum and maximum.
#include <climits>

#include "semantic/cases.h"

namespace koru::test::brute {
namespace {

// ----- all-different

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
  Constraint c = with(stated("cs_AllNeq", {n}), Strength::kNone);
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

// The count is the first position. Bounds of the count, and each value of the others. A count that is bound when it is
// posted imposes nothing before the first event; one of the variables may be the count itself.
Constraint occurConstraints(int n, int val) {
  Constraint c = stated("cs_OccurConstraints", {n}, {val});
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

Constraint occurDomain(int n, int val) { return stated("cs_OccurDomain", {n}, {val}); }

// cs_Occur says nothing of success: the count can be anything from the start, so that posting cannot fail.
Constraint occur(int n, int val) {
  const catalogue::Form form(catalogue::rowOf("cs_Occur"), {n}, {val});
  Constraint c = constraintOf(form);
  c.post = [=](CSint **x, CSint *&) {
    std::vector<catalogue::Actual> actuals = form.actuals(x);
    CSint *const count = actuals[0].variable = cs_createCSint(0, n);
    return form.row().door.call(actuals.data()).number == 0 && cs_Eq(count, x[0]);
  };
  return c;
}

// ----- minimum and maximum

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
Constraint extremum(const std::string &name, int n, Side side) {
  Constraint c = stated(name, {n});
  c.strength = [](const Left &left, std::size_t column) {
    bool holes = left.branch.removals || left.branch.unheard;
    for (std::size_t i = 0; i < left.columns(); ++i) holes = holes || !left.posted().isInterval(i);
    return column == left.result() && !holes && !left.isBound(column) ? Strength::kBounds : Strength::kNone;
  };
  c.inside = [side](const Left &left) { return wrongBounds(side, left); };
  return c;
}

Case extremes(const char *name, Side side) {
  Case c{name, {std::string("cs_") + name}, {}, {{-2, 4}}, 120};
  for (int n = 1; n <= 4; ++n) c.forms.push_back(extremum(c.functions[0], n, side));
  return c;
}

}  // namespace

Cases globalCases() {
  return {allNeqs(),
          occurs("Occur", occur, {{-1, 5}, {0, 3}}),
          occurs("OccurConstraints", occurConstraints, {{-1, 5}, {0, 4}}),
          occurs("OccurDomain", occurDomain, {{0, 4}}),
          extremes("Min", {true}),
          extremes("VMin", {true}),
          extremes("Max", {false}),
          extremes("VMax", {false})};
}

}  // namespace koru::test::brute
