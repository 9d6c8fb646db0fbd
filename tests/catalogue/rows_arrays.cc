// SPDX-License-Identifier: MIT
// Constraints over arrays: counting, minimum and maximum, elements, automata, tasks.
#include "catalogue/relations.h"
#include "catalogue/row.h"

namespace koru::catalogue {
namespace {

using enum Consistency;

// Words of 0, 1 and 2 that begin with two equal symbols: state 1 + a after a, 4 after the second.
const std::vector<Wide> kTwoEqualFirst{1, 2, 3, 4, -1, -1, -1, 4, -1, -1, -1, 4, 4, 4, 4};

Row extremum(const char *name, Door door, Value (*value)(T), int weight) {
  return {.name = name,
          .kinds = "an",
          .door = door,
          .meaning = {nullptr, value},
          .consistency = kNone,
          .example = {{1, 2, 3, 2}},
          .weight = weight};
}

const Row kRows[] = {
    {.name = "cs_Occur",
     .kinds = "vian",
     .door = door<cs_Occur>,
     .meaning = {counted},
     .consistency = kNone,
     .example = {{1, 7, 7, 7}, {}, {7}},
     .weight = 3,
     .saysNothing = true},
    {"cs_OccurConstraints", "vian", door<cs_OccurConstraints>, {counted}, kNone, {{1, 7, 7, 7}, {}, {7}}},
    {.name = "cs_Regular",
     .kinds = "anTiiikn",
     .door = door<cs_Regular>,
     .meaning = {accepted},
     .consistency = kDomain,
     .example = {{0, 1, 1}, {3, 1}, {5, 3, 0}, {kTwoEqualFirst, {4}}},
     .weight = 8},
    {.name = "cs_Cumulative",
     .kinds = "aaanv",
     .door = door<cs_Cumulative>,
     .meaning = {cumulative},
     .consistency = kNone,
     .example = {{2, 2, 2, 2, 2, 2, 1, 1, 1, 1}},
     .weight = 6,
     .mayRefuse = true},
    {.name = "cs_Disjunctive",
     .kinds = "aan",
     .door = door<cs_Disjunctive>,
     .meaning = {disjunctive},
     .consistency = kNone,
     .example = {{2, 2, 2, 2, 2, 2}},
     .weight = 5,
     .mayRefuse = true},

    {.name = "cs_Element",
     .kinds = "vkn",
     .door = door<cs_Element>,
     .meaning = {nullptr, element},
     .consistency = kDomain,
     .example = {{1, 5}, {}, {}, {{2, 3, 5}}},
     .fewest = 1,
     .results = {0, 4},
     .weight = 5},
    {.name = "cs_Index",
     .kinds = "ani",
     .door = door<cs_Index>,
     .meaning = {indexOfValue},
     .consistency = kDomain,
     .example = {{1, 2, 7, 1}, {}, {7}},
     .site = "cs_Cumulative",
     .fewest = 1,
     .results = {0, 3}},
    extremum("cs_Min", door<cs_Min>, least, 4),
    extremum("cs_VMin", spread<cs_VMin>, least, 2),
    extremum("cs_Max", door<cs_Max>, greatest, 4),
    extremum("cs_VMax", spread<cs_VMax>, greatest, 2),
    {.name = "cs_OccurDomain",
     .kinds = "ian",
     .door = door<cs_OccurDomain>,
     .meaning = {nullptr, occurrences},
     .consistency = kDomain,
     .example = {{7, 7, 7, 1}, {}, {7}},
     .ofResult = kBounds,
     .results = {0, 3}},
    {.name = "cs_VarElement",
     .kinds = "van",
     .door = door<cs_VarElement>,
     .meaning = {nullptr, variableElement},
     .consistency = kDomain,
     .example = {{1, 1, 2, 3, 4}},
     .fewest = 1,
     .weight = 5},
    {.name = "cs_VarElementRange",
     .kinds = "van",
     .door = door<cs_VarElementRange>,
     .meaning = {nullptr, variableElement},
     .consistency = kNone,
     .example = {{1, 1, 2, 3, 4}},
     .fewest = 1},
};

}  // namespace

std::span<const Row> arrayRows() { return kRows; }

}  // namespace koru::catalogue
