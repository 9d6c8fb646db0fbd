// SPDX-License-Identifier: MIT
// Relations with an int and between variables, conditions, membership, all-different.
#include <climits>

#include "catalogue/relations.h"
#include "catalogue/row.h"

namespace koru::catalogue {
namespace {

using enum Consistency;

// At the ends of the int range these say nothing, by design.
bool belowIntOrEnd(T t) { return belowInt(t) || t.k[0] == INT_MIN; }
bool aboveIntOrEnd(T t) { return aboveInt(t) || t.k[0] == INT_MAX; }

bool bothOrNone(T t) { return (t.x[0] == t.k[0]) == (t.x[1] == t.k[1]); }
bool notBoth(T t) { return t.x[0] != t.k[0] || t.x[1] != t.k[1]; }

// Narrows once and is done.
Row narrowing(const char *name, const char *kinds, Door door, Meaning meaning, Example example) {
  Row row{name, kinds, door, meaning, kDomain, std::move(example)};
  row.postsNothing = true;
  return row;
}

const Row kRows[] = {
    narrowing("cs_EQ", "vi", door<cs_EQ>, equalsInt, {{4}, {}, {5}}),
    narrowing("cs_NEQ", "vi", door<cs_NEQ>, differsFromInt, {{5}, {}, {5}}),
    narrowing("cs_LE", "vi", door<cs_LE>, atMostInt, {{6}, {}, {5}}),
    narrowing("cs_LT", "vi", door<cs_LT>, belowIntOrEnd, {{5}, {}, {5}}),
    narrowing("cs_GE", "vi", door<cs_GE>, atLeastInt, {{4}, {}, {5}}),
    narrowing("cs_GT", "vi", door<cs_GT>, aboveIntOrEnd, {{5}, {}, {5}}),
    {"cs_Eq", "vv", door<cs_Eq>, equal, kDomain, {{1, 2}}},
    {"cs_Neq", "vv", door<cs_Neq>, different, kKnown, {{2, 2}}},
    {"cs_Le", "vv", door<cs_Le>, atMost, kBounds, {{2, 1}}},
    {"cs_Lt", "vv", door<cs_Lt>, below, kBounds, {{2, 1}}},
    {"cs_Ge", "vv", door<cs_Ge>, atLeast, kBounds, {{1, 2}}},
    {"cs_Gt", "vv", door<cs_Gt>, above, kBounds, {{1, 2}}},
    {"cs_IfEq", "vvii", door<cs_IfEq>, bothOrNone, kNone, {{3, 5}, {}, {3, 4}}},
    {"cs_IfNeq", "vvii", door<cs_IfNeq>, notBoth, kKnown, {{3, 4}, {}, {3, 4}}},
    {"cs_AllNeq", "an", door<cs_AllNeq>, allDifferent, kKnown, {{1, 2, 2}}},
    narrowing("cs_InArray", "vkn", door<cs_InArray>, among, {{4}, {}, {}, {{2, 3, 5}}}),
    narrowing("cs_NotInArray", "vkn", door<cs_NotInArray>, notAmong, {{3}, {}, {}, {{2, 3, 5}}}),
    narrowing("cs_InInterval", "vii", door<cs_InInterval>, within, {{8}, {}, {1, 7}}),
    narrowing("cs_NotInInterval", "vii", door<cs_NotInInterval>, notWithin, {{5}, {}, {4, 6}}),
};

}  // namespace

std::span<const Row> relationRows() { return kRows; }

}  // namespace koru::catalogue
