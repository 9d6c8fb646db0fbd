// SPDX-License-Identifier: MIT
// Constraints over arrays: counting, minimum and maximum, elements, automata, tasks.
#include "catalogue/relations.h"
#include "catalogue/row.h"

namespace koru::catalogue {
namespace {

using enum Consistency;

// Words of 0, 1 and 2 that begin with two equal symbols: state 1 + a after a, 4 after the second.
const std::vector<Wide> kTwoEqualFirst{1, 2, 3, 4, -1, -1, -1, 4, -1, -1, -1, 4, 4, 4, 4};

const Row kRows[] = {
    {.name = "cs_Occur",
     .kinds = "vian",
     .door = door<cs_Occur>,
     .meaning = counted,
     .consistency = kNone,
     .example = {{1, 5, 5, 5}, {}, {5}},
     .saysNothing = true},
    {"cs_OccurConstraints", "vian", door<cs_OccurConstraints>, counted, kNone, {{1, 5, 5, 5}, {}, {5}}},
    {"cs_Regular",
     "anTiiikn",
     door<cs_Regular>,
     accepted,
     kDomain,
     {{0, 1, 1}, {3, 1}, {5, 3, 0}, {kTwoEqualFirst, {4}}}},
    {.name = "cs_Cumulative",
     .kinds = "aaanv",
     .door = door<cs_Cumulative>,
     .meaning = cumulative,
     .consistency = kNone,
     .example = {{2, 2, 2, 2, 2, 2, 1, 1, 1, 1}},
     .mayRefuse = true},
    {.name = "cs_Disjunctive",
     .kinds = "aan",
     .door = door<cs_Disjunctive>,
     .meaning = disjunctive,
     .consistency = kNone,
     .example = {{2, 2, 2, 2, 2, 2}},
     .mayRefuse = true},

    {.name = "cs_Element",
     .kinds = "vkn",
     .door = door<cs_Element>,
     .meaning = element,
     .consistency = kDomain,
     .example = {{1, 5}, {}, {}, {{2, 3, 5}}},
     .fewest = 1,
     .results = {0, 4}},
    {.name = "cs_Index",
     .kinds = "ani",
     .door = door<cs_Index>,
     .meaning = indexOfValue,
     .consistency = kDomain,
     .example = {{1, 2, 5, 1}, {}, {5}},
     .site = "cs_Cumulative",
     .fewest = 1,
     .results = {0, 3},
     .mayAccept = true},
    {"cs_Min", "an", door<cs_Min>, least, kNone, {{1, 2, 3, 2}}},
    {.name = "cs_VMin",
     .kinds = "an",
     .door = spread<cs_VMin>,
     .meaning = least,
     .consistency = kNone,
     .example = {{1, 2, 3, 2}},
     .most = 4},
    {"cs_Max", "an", door<cs_Max>, greatest, kNone, {{1, 2, 3, 2}}},
    {.name = "cs_VMax",
     .kinds = "an",
     .door = spread<cs_VMax>,
     .meaning = greatest,
     .consistency = kNone,
     .example = {{1, 2, 3, 2}},
     .most = 4},
    {.name = "cs_OccurDomain",
     .kinds = "ian",
     .door = door<cs_OccurDomain>,
     .meaning = occurrences,
     .consistency = kDomain,
     .example = {{5, 5, 5, 1}, {}, {5}},
     .ofResult = kBounds,
     .results = {0, 3}},
    {.name = "cs_VarElement",
     .kinds = "van",
     .door = door<cs_VarElement>,
     .meaning = variableElement,
     .consistency = kDomain,
     .example = {{1, 1, 2, 3, 4}},
     .fewest = 1},
    {.name = "cs_VarElementRange",
     .kinds = "van",
     .door = door<cs_VarElementRange>,
     .meaning = variableElement,
     .consistency = kNone,
     .example = {{1, 1, 2, 3, 4}},
     .fewest = 1},
};

}  // namespace

std::span<const Row> arrayRows() { return kRows; }

}  // namespace koru::catalogue
