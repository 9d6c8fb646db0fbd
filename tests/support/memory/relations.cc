// SPDX-License-Identifier: MIT
// Relations and membership: narrowings of variables that nobody and somebody watches, and constraints on two variables
// that are free, bound, the same, with holes and without.
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

int sizeOf(char letter) { return letter == 'x' ? 10 : letter == 'h' ? 3 : 1; }

void addIntRelations(Scenarios &scenarios) {
  for (const IntRelation &each : kIntRelations) {
    for (const char letter : {'x', 'h', 'c', 't'}) {
      for (const int v : {0, 5, 9}) {
        const auto run = [each, letter, v](Stage &s) { return each.relation(s.at(letter), v); };
        // Nobody watches x and h: without an undo record, or a bit array, nothing is narrowed.
        const bool watched = letter == 'c';
        const auto whole = [letter, watched](Stage &s) {
          return watched || cs_getNbElements(s.at(letter)) == sizeOf(letter);
        };
        scenarios.add(std::string(each.name) + "/" + letter + std::to_string(v), run, whole);
      }
    }
  }
}

struct PairRelation {
  const char *name;
  bool (*post)(CSint *, CSint *);
};

constexpr PairRelation kPairRelations[] = {{"cs_Eq", cs_Eq}, {"cs_Neq", cs_Neq}, {"cs_Le", cs_Le},
                                           {"cs_Lt", cs_Lt}, {"cs_Ge", cs_Ge},   {"cs_Gt", cs_Gt}};

void addPairRelations(Scenarios &scenarios) {
  for (const PairRelation &each : kPairRelations) {
    for (const std::string pair : {"xy", "xh", "hx", "tx", "xt", "hn", "xx", "cd", "tc"}) {
      const auto run = [each, pair](Stage &s) { return each.post(s.at(pair[0]), s.at(pair[1])); };
      scenarios.add(std::string(each.name) + "/" + pair, run);
    }
  }
}

constexpr int kApart[] = {0, 5, 9};

void addMembership(Scenarios &scenarios) {
  for (const char letter : {'x', 'h', 'c', 't'}) {
    const auto name = [letter](const char *function) { return std::string(function) + "/" + letter; };
    scenarios.add(name("cs_InArray"), [letter](Stage &s) { return cs_InArray(s.at(letter), kApart, 3) == 1; });
    scenarios.add(name("cs_NotInArray"), [letter](Stage &s) { return cs_NotInArray(s.at(letter), kApart, 3) == 1; });
    scenarios.add(name("cs_InInterval"), [letter](Stage &s) { return cs_InInterval(s.at(letter), 1, 7) == 1; });
    scenarios.add(name("cs_NotInInterval"), [letter](Stage &s) { return cs_NotInInterval(s.at(letter), 4, 6) == 1; });
  }
}

struct Condition {
  const char *pair;
  int a;
  int b;
};

constexpr Condition kConditions[] = {{"xy", 1, 2}, {"tx", 3, 5}, {"xt", 5, 3}, {"tx", 2, 5},
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
  addPairRelations(scenarios);
  addMembership(scenarios);
  addConditional(scenarios);
}

}  // namespace koru::test
