// SPDX-License-Identifier: MIT
// Clauses, and comparisons and membership tied to a truth value.
#include <climits>

#include "semantic/cases.h"

namespace koru::test::brute {
namespace {

// How a statement is tied to a truth value, the first variable.
constexpr const char *kTies[] = {"Iff", "If"};

// ----- comparisons

Case comparison(const std::string &name) {
  return {name, {"cs_" + name}, {stated("cs_" + name)}, {{-1, 3}, {-2, 4}}, 120, {}, {}, Room{-5, 11}};
}

Case constComparison(const std::string &name) {
  Case c{name + "ofAnInt", {"cs_" + name}, {}, {{-1, 3}, {-1, 4}}, 60, {2, 3, 3}};
  for (int v = -2; v <= 3; ++v) c.forms.push_back(stated(c.functions[0], {}, {v}));
  return c;
}

// ----- membership

Case array(const std::string &name) {
  Case c{name, {"cs_" + name}, {}, {{-1, 3}, {-2, 6}}, 120, {2, 3, 3}};
  for (const std::vector<Wide> &values :
       Lists{{}, {1}, {2, -1, 2}, {0, 1, 2}, {-2, 0, 3}, {3, 2, 1, 0, -1, -2, -3}, {9, -9}})
    c.forms.push_back(stated(c.functions[0], {static_cast<int>(values.size())}, {}, {values}));
  return c;
}

Case interval(const std::string &name) {
  Case c{name, {"cs_" + name}, {}, {{-1, 3}, {-2, 6}}, 90, {2, 3, 3}};
  for (const std::vector<Wide> &ends :
       Lists{{1, 1}, {-1, 1}, {0, 9}, {-9, 0}, {2, 1}, {-9, 9}, {INT_MIN, 0}, {1, INT_MAX}, {INT_MAX, INT_MIN}})
    c.forms.push_back(stated(c.functions[0], {}, ends));
  return c;
}

// ----- clauses

// How many variables are to be true and how many false.
const std::vector<int> kShapes[] = {{0, 0}, {1, 0}, {0, 1}, {2, 0}, {1, 1}, {0, 2},
                                    {3, 0}, {2, 1}, {1, 2}, {0, 4}, {3, 2}};

// A few values beyond 0..1: none of them is anything but true or false.
Case clause(const std::string &name) {
  Case c{name, {"cs_" + name}, {}, {{0, 2}}, 40, {1, 3, 3}, {}, Room{-1, 4}};
  for (const std::vector<int> &shape : kShapes) c.forms.push_back(stated(c.functions[0], shape));
  return c;
}

}  // namespace

Cases logicCases() {
  Cases cases;
  for (const char *name : {"Clause", "ClauseIff", "ClauseIf", "ReifClause"}) cases.push_back(clause(name));
  for (const std::string tie : kTies) {
    for (const char *name : {"Eq", "Neq", "Le", "Lt", "Ge", "Gt"}) cases.push_back(comparison(name + tie));
    for (const char *name : {"EQ", "NEQ", "LE", "LT", "GE", "GT"}) cases.push_back(constComparison(name + tie));
    for (const char *name : {"InArray", "NotInArray"}) cases.push_back(array(name + tie));
    for (const char *name : {"InInterval", "NotInInterval"}) cases.push_back(interval(name + tie));
  }
  return cases;
}

}  // namespace koru::test::brute
