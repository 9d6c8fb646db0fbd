// SPDX-License-Identifier: MIT
// Relations with an int and between variables, conditional equality and membership.
#include "semantic/cases.h"

namespace koru::test::brute {
namespace {

Case ofAnInt(const std::string &name) {
  Case c{name + "ofAnInt", {"cs_" + name}, {}, {{-2, 5}}, 31};
  for (int v = -3; v <= 4; ++v) c.forms.push_back(stated(c.functions[0], {}, {v}));
  return c;
}

Case ofVariables(const std::string &name) {
  return {name, {"cs_" + name}, {stated("cs_" + name)}, {{-2, 5}}, 1000, {1, 4, 4}, {}, Room{-5, 11}};
}

// x = a exactly when y = b. Acts when a variable is bound to its value and at no other binding. Woken for the same
// variable, only the rule from x to y runs: x = b passes although it demands x = a.
Constraint ifEq(int a, int b) {
  Constraint c = stated("cs_IfEq", {}, {a, b});
  c.acceptedAnyway = [b](const Left &left) { return left.isShared() && left.min(0) == b; };
  c.supported = [a, b](const Left &left, std::size_t column, int value) {
    const std::size_t other = 1 - column;
    const bool decided = left.isBound(other) && left.has(other, column == 0 ? b : a);
    return !decided || value == (column == 0 ? a : b);
  };
  return c;
}

// Never both.
Constraint ifNeq(int a, int b) { return stated("cs_IfNeq", {}, {a, b}); }

Case conditional(const char *name, Constraint (*form)(int, int)) {
  Case c{name, {std::string("cs_") + name}, {}, {{-1, 4}}, 60};
  for (int a = -1; a <= 3; ++a)
    for (int b = -2; b <= 2; ++b) c.forms.push_back(form(a, b));
  return c;
}

Lists arrays() {
  Lists result{{3, 1, 3}, {4, 4}, {2, -9, 0, 2}, {90}, {}};
  for (const Domain &d : allDomains(-1, 6)) result.emplace_back(d.values.begin(), d.values.end());
  return result;
}

Case membership(const std::string &name) {
  Case c{name, {"cs_" + name}, {}, {{0, 5}}, 31};
  for (const std::vector<Wide> &array : arrays())
    c.forms.push_back(stated(c.functions[0], {static_cast<int>(array.size())}, {}, {array}));
  return c;
}

Case interval(const std::string &name) {
  Case c{name, {"cs_" + name}, {}, {{0, 5}}, 31};
  for (int low = -1; low <= 6; ++low)
    for (int high = -1; high <= 6; ++high) c.forms.push_back(stated(c.functions[0], {}, {low, high}));
  return c;
}

}  // namespace

Cases relationCases() {
  Cases cases;
  for (const char *name : {"EQ", "NEQ", "LE", "LT", "GE", "GT"}) cases.push_back(ofAnInt(name));
  for (const char *name : {"Eq", "Neq", "Le", "Lt", "Ge", "Gt"}) cases.push_back(ofVariables(name));
  cases.push_back(conditional("IfEq", ifEq));
  cases.push_back(conditional("IfNeq", ifNeq));
  for (const char *name : {"InArray", "NotInArray"}) cases.push_back(membership(name));
  for (const char *name : {"InInterval", "NotInInterval"}) cases.push_back(interval(name));
  return cases;
}

}  // namespace koru::test::brute
