// SPDX-License-Identifier: MIT
// Relations with an int at either end of a domain, and conditions that hold already, or not, or impose a value.
#include <string>

#include "support/memory/scenario.h"

namespace koru::test {

namespace {

struct IntRelation {
  const char *name;
  bool (*relation)(CSint *, int);
};

constexpr IntRelation kIntRelations[] = {{"cs_EQ", cs_EQ}, {"cs_NEQ", cs_NEQ}, {"cs_LE", cs_LE},
                                         {"cs_LT", cs_LT}, {"cs_GE", cs_GE},   {"cs_GT", cs_GT}};

void addIntRelations(Scenarios &scenarios) {
  for (const IntRelation &each : kIntRelations) {
    for (const char letter : {'x', 'h', 'c', 't'}) {
      for (const int v : {0, 9}) {
        const auto run = [each, letter, v](Stage &s) { return each.relation(s.at(letter), v); };
        // Nobody watches x and h: without an undo record, or a bit array, nothing is narrowed.
        const auto whole = [letter](Stage &s) { return letter == 'c' || s.isWhole(letter); };
        scenarios.add(std::string(each.name) + "/" + letter + std::to_string(v), run, whole);
      }
    }
  }
}

struct Condition {
  const char *pair;
  int a;
  int b;
};

constexpr Condition kConditions[] = {{"tx", 3, 5}, {"xt", 5, 3}, {"tx", 2, 5},
                                     {"xx", 1, 1}, {"hc", 5, 5}, {"tc", 3, 5}};

void addConditional(Scenarios &scenarios) {
  for (const Condition &each : kConditions) {
    const auto name = [&each](const char *function) {
      return std::string(function) + "/" + each.pair + std::to_string(each.a) + std::to_string(each.b);
    };
    const auto posted = [each](bool (*post)(CSint *, CSint *, int, int)) {
      return [each, post](Stage &s) { return post(s.at(each.pair[0]), s.at(each.pair[1]), each.a, each.b); };
    };
    scenarios.add(name("cs_IfEq"), posted(cs_IfEq));
    scenarios.add(name("cs_IfNeq"), posted(cs_IfNeq));
  }
}

}  // namespace

void addRelations(Scenarios &scenarios) {
  addIntRelations(scenarios);
  addConditional(scenarios);
}

}  // namespace koru::test
