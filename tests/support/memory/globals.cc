// SPDX-License-Identifier: MIT
// Constraints over arrays, of which an example says too little.
#include <cstring>
#include <string>

#include "support/memory/scenario.h"

namespace koru::test {

namespace {

constexpr const char *kArrays[] = {"x", "xy", "xyz", "xyx", "thx", "tch", "hnc"};

int lengthOf(const char *letters) { return static_cast<int>(std::strlen(letters)); }

// One scenario for each array.
template <class Post>
void addForArrays(Scenarios &scenarios, const char *name, Post post) {
  for (const char *letters : kArrays) {
    scenarios.add(std::string(name) + "/" + letters,
                  [letters, post](Stage &s) { return post(s, s.array(letters), lengthOf(letters)); });
  }
}

// The sets lose a position from their middle.
void addOccurrences(Scenarios &scenarios) {
  scenarios.add("cs_OccurDomain/xtyz", [](Stage &s) { return cs_OccurDomain(5, s.array("xtyz"), 4) != nullptr; });
}

constexpr int kTable[] = {4, 7, 4, -2, 9, 0};

void addElements(Scenarios &scenarios) {
  for (const char letter : {'x', 'h', 'n', 't', 'c'}) {
    scenarios.add(std::string("cs_Element/long-") + letter,
                  [letter](Stage &s) { return cs_Element(s.at(letter), kTable, 6) != nullptr; });
  }
  for (const char index : {'x', 'h', 'b', 'c'}) {
    const auto name = [index](const char *function) { return std::string(function) + "-" + index; };
    addForArrays(scenarios, name("cs_VarElement/by").c_str(),
                 [index](Stage &s, CSint **array, int n) { return cs_VarElement(s.at(index), array, n) != nullptr; });
    addForArrays(scenarios, name("cs_VarElementRange/by").c_str(), [index](Stage &s, CSint **array, int n) {
      return cs_VarElementRange(s.at(index), array, n) != nullptr;
    });
  }
}

// State 1 is out of reach and symbol 1 leads nowhere, so layers and variables need bit arrays.
bool postRegular(Stage &, CSint **array, int n) {
  constexpr int table[] = {0, -1, 2, 2, 2, 2, 0, -1, 2};
  constexpr int finals[] = {0, 2};
  return cs_Regular(array, n, table, 3, 3, 0, finals, 2) == 1;
}

// Words over all digits with a sum that 3 divides: one layer each, nothing is narrowed.
bool postDivisible(Stage &, CSint **array, int n) {
  int table[30];
  for (int i = 0; i < 30; ++i) table[i] = (i / 10 + i % 10) % 3;
  constexpr int finals[] = {0};
  return cs_Regular(array, n, table, 3, 10, 0, finals, 1) == 1;
}

void addScheduling(Scenarios &scenarios) {
  struct Tasks {
    const char *starts;
    const char *durations;
    const char *uses;
    char capacity;
  };
  static constexpr Tasks kTasks[] = {{"xy", "tt", "tt", 'e'},    {"xyz", "ttt", "ttt", 't'}, {"xyz", "tbt", "btt", 'x'},
                                     {"xxx", "ttt", "bbb", 't'}, {"hcx", "tbh", "tbt", 'd'}, {"tht", "ttt", "ttt", 't'},
                                     {"xy", "zc", "tt", 'b'}};
  for (const Tasks &each : kTasks) {
    const int n = lengthOf(each.starts);
    const std::string tasks = std::string(each.starts) + "-" + each.durations;
    scenarios.add("cs_Disjunctive/" + tasks,
                  [&each, n](Stage &s) { return cs_Disjunctive(s.array(each.starts), s.array(each.durations), n); });
    scenarios.add("cs_Cumulative/" + tasks + "-" + each.uses + "-" + each.capacity, [&each, n](Stage &s) {
      return cs_Cumulative(s.array(each.starts), s.array(each.durations), s.array(each.uses), n, s.at(each.capacity));
    });
  }
}

}  // namespace

void addGlobals(Scenarios &scenarios) {
  addOccurrences(scenarios);
  addElements(scenarios);
  addForArrays(scenarios, "cs_Regular/narrow", postRegular);
  addForArrays(scenarios, "cs_Regular/divisible", postDivisible);
  addScheduling(scenarios);
}

}  // namespace koru::test
