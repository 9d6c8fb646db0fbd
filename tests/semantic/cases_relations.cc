// SPDX-License-Identifier: MIT
// Relations with an int and between variables, conditional equality and membership.
#include "semantic/cases.h"

namespace koru::test::brute {
namespace {

struct WithInt {
  const char *name;
  bool (*post)(CSint *, int);
  bool (*holds)(int, int);
};

struct WithVariable {
  const char *name;
  bool (*post)(CSint *, CSint *);
  bool (*holds)(int, int);
  Strength strength;
};

bool equal(int x, int y) { return x == y; }
bool different(int x, int y) { return x != y; }
bool atMost(int x, int y) { return x <= y; }
bool below(int x, int y) { return x < y; }
bool atLeast(int x, int y) { return x >= y; }
bool above(int x, int y) { return x > y; }

constexpr WithInt kWithInt[] = {{"EQ", cs_EQ, equal}, {"NEQ", cs_NEQ, different}, {"LE", cs_LE, atMost},
                                {"LT", cs_LT, below}, {"GE", cs_GE, atLeast},     {"GT", cs_GT, above}};
constexpr WithVariable kWithVariable[] = {
    {"Eq", cs_Eq, equal, Strength::kDomain},   {"Neq", cs_Neq, different, Strength::kKnown},
    {"Le", cs_Le, atMost, Strength::kBounds},  {"Lt", cs_Lt, below, Strength::kBounds},
    {"Ge", cs_Ge, atLeast, Strength::kBounds}, {"Gt", cs_Gt, above, Strength::kBounds}};

Case caseOf(const WithInt &op) {
  Case c{std::string(op.name) + "ofAnInt", {std::string("cs_") + op.name}, {}, {{-2, 5}}, 31};
  for (int v = -3; v <= 4; ++v)
    c.forms.push_back(
        with(relation(
                 c.functions[0] + " " + std::to_string(v), 1, [op, v](Values t) { return op.holds(t[0], v); },
                 [op, v](CSint **x) { return op.post(x[0], v); }),
             Strength::kDomain));
  return c;
}

Case caseOf(const WithVariable &op) {
  const std::string name = std::string("cs_") + op.name;
  const Constraint form = relation(
      name, 2, [op](Values t) { return op.holds(t[0], t[1]); }, [op](CSint **x) { return op.post(x[0], x[1]); });
  return {op.name, {name}, {with(form, op.strength)}, {{-2, 5}}, 1000, {1, 4, 4}, {}, Room{-5, 11}};
}

// x = a exactly when y = b. Acts when a variable is bound to its value and at no other binding. Woken for the same
// variable, only the rule from x to y runs: x = b passes although it demands x = a.
Constraint ifEq(int a, int b) {
  Constraint c = relation(
      "cs_IfEq " + std::to_string(a) + " " + std::to_string(b), 2,
      [a, b](Values t) { return (t[0] == a) == (t[1] == b); }, [a, b](CSint **x) { return cs_IfEq(x[0], x[1], a, b); });
  c.acceptedAnyway = [b](const Left &left) { return left.isShared() && left.min(0) == b; };
  c.supported = [a, b](const Left &left, std::size_t column, int value) {
    const std::size_t other = 1 - column;
    const bool decided = left.isBound(other) && left.has(other, column == 0 ? b : a);
    return !decided || value == (column == 0 ? a : b);
  };
  return c;
}

// Never both.
Constraint ifNeq(int a, int b) {
  return with(relation(
                  "cs_IfNeq " + std::to_string(a) + " " + std::to_string(b), 2,
                  [a, b](Values t) { return t[0] != a || t[1] != b; },
                  [a, b](CSint **x) { return cs_IfNeq(x[0], x[1], a, b); }),
              Strength::kKnown);
}

Case conditional(const char *name, Constraint (*form)(int, int)) {
  Case c{name, {std::string("cs_") + name}, {}, {{-1, 4}}, 60};
  for (int a = -1; a <= 3; ++a)
    for (int b = -2; b <= 2; ++b) c.forms.push_back(form(a, b));
  return c;
}

// The filters post nothing: what is left must be all.
using Filter = std::function<int(CSint *)>;

Constraint filter(const std::string &name, std::function<bool(int)> keeps, Filter apply) {
  return with(relation(
                  name, 1, [keeps](Values t) { return keeps(t[0]); },
                  [apply](CSint **x) { return apply(x[0]) == 1 && cs_getNbConstraints(x[0]) == 0; }),
              Strength::kDomain);
}

std::vector<std::vector<int>> arrays() {
  std::vector<std::vector<int>> result{{3, 1, 3}, {4, 4}, {2, -9, 0, 2}, {90}, {}};
  for (const Domain &d : allDomains(-1, 6)) result.push_back(d.values);
  return result;
}

Case membership(const char *name, int (*post)(CSint *, const int *, int), bool inside) {
  Case c{name, {std::string("cs_") + name}, {}, {{0, 5}}, 31};
  for (const std::vector<int> &array : arrays())
    c.forms.push_back(filter(
        c.functions[0] + " " + ::testing::PrintToString(array),
        [=](int v) { return (std::ranges::find(array, v) != array.end()) == inside; },
        [=](CSint *v) { return post(v, array.data(), static_cast<int>(array.size())); }));
  return c;
}

Case interval(const char *name, int (*post)(CSint *, int, int), bool inside) {
  Case c{name, {std::string("cs_") + name}, {}, {{0, 5}}, 31};
  for (int low = -1; low <= 6; ++low)
    for (int high = -1; high <= 6; ++high)
      c.forms.push_back(filter(
          c.functions[0] + " " + std::to_string(low) + " " + std::to_string(high),
          [=](int v) { return (low <= v && v <= high) == inside; }, [=](CSint *v) { return post(v, low, high); }));
  return c;
}

}  // namespace

Cases relationCases() {
  Cases cases;
  for (const WithInt &op : kWithInt) cases.push_back(caseOf(op));
  for (const WithVariable &op : kWithVariable) cases.push_back(caseOf(op));
  cases.push_back(conditional("IfEq", ifEq));
  cases.push_back(conditional("IfNeq", ifNeq));
  cases.push_back(membership("InArray", cs_InArray, true));
  cases.push_back(membership("NotInArray", cs_NotInArray, false));
  cases.push_back(interval("InInterval", cs_InInterval, true));
  cases.push_back(interval("NotInInterval", cs_NotInInterval, false));
  return cases;
}

}  // namespace koru::test::brute
