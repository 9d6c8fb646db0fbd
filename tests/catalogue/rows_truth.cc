// SPDX-License-Identifier: MIT
// Clauses, linear relations, and comparisons and membership tied to a truth value that the host has.
#include <algorithm>

#include "catalogue/relations.h"
#include "catalogue/row.h"
#include "core/int128.h"
#include "koru_extras.h"

namespace koru::catalogue {
namespace {

using enum Consistency;

bool isTrue(int value) { return value >= 1; }

// The first variable is true exactly when, or only when, the rest holds.
Terms rest(T t) {
  Terms result = t;
  result.x = t.x.subspan(1);
  return result;
}
template <bool (*Holds)(T)>
bool iff(T t) {
  return isTrue(t.x[0]) == Holds(rest(t));
}
template <bool (*Holds)(T)>
bool onlyIf(T t) {
  return !isTrue(t.x[0]) || Holds(rest(t));
}

bool someLiteral(T t) { return std::ranges::any_of(t.arrays[0], isTrue) || !std::ranges::all_of(t.arrays[1], isTrue); }
Value someLiteralAsInt(T t) { return someLiteral(t) ? 1 : 0; }

bool linear(T t) {
  using Exact = Int128;
  Exact sum = 0;
  for (std::size_t i = 0; i < t.arrays[0].size(); ++i) sum += Exact{t.lists[0][i]} * t.arrays[0][i];
  const Exact constant = t.k[1];
  const bool holds[] = {sum == constant, sum != constant, sum <= constant,
                        sum<constant, sum >= constant, sum> constant};
  return holds[t.k[0]];
}
Value linearAsInt(T t) { return linear(t) ? 1 : 0; }

const Row kRows[] = {
    {"cs_Clause", "anan", door<cs_Clause>, someLiteral, kDomain, {{0, 0, 1}, {2, 1}}},
    {"cs_ClauseIff", "vanan", door<cs_ClauseIff>, iff<someLiteral>, kDomain, {{1, 0, 0, 1}, {2, 1}}},
    {"cs_ClauseIf", "vanan", door<cs_ClauseIf>, onlyIf<someLiteral>, kDomain, {{1, 0, 0, 1}, {2, 1}}},
    {"cs_ReifClause", "anan", door<cs_ReifClause>, someLiteralAsInt, kDomain, {{0, 0, 1, 1}, {2, 1}}},

    {"cs_EqIff", "vvv", door<cs_EqIff>, iff<equal>, kDomain, {{1, 1, 2}}},
    {"cs_NeqIff", "vvv", door<cs_NeqIff>, iff<different>, kDomain, {{1, 2, 2}}},
    {"cs_LeIff", "vvv", door<cs_LeIff>, iff<atMost>, kDomain, {{1, 2, 1}}},
    {"cs_LtIff", "vvv", door<cs_LtIff>, iff<below>, kDomain, {{1, 2, 1}}},
    {"cs_GeIff", "vvv", door<cs_GeIff>, iff<atLeast>, kDomain, {{1, 1, 2}}},
    {"cs_GtIff", "vvv", door<cs_GtIff>, iff<above>, kDomain, {{1, 1, 2}}},
    {"cs_EqIf", "vvv", door<cs_EqIf>, onlyIf<equal>, kDomain, {{1, 1, 2}}},
    {"cs_NeqIf", "vvv", door<cs_NeqIf>, onlyIf<different>, kDomain, {{1, 2, 2}}},
    {"cs_LeIf", "vvv", door<cs_LeIf>, onlyIf<atMost>, kDomain, {{1, 2, 1}}},
    {"cs_LtIf", "vvv", door<cs_LtIf>, onlyIf<below>, kDomain, {{1, 2, 1}}},
    {"cs_GeIf", "vvv", door<cs_GeIf>, onlyIf<atLeast>, kDomain, {{1, 1, 2}}},
    {"cs_GtIf", "vvv", door<cs_GtIf>, onlyIf<above>, kDomain, {{1, 1, 2}}},

    {"cs_EQIff", "vvi", door<cs_EQIff>, iff<equalsInt>, kDomain, {{1, 4}, {}, {5}}},
    {"cs_NEQIff", "vvi", door<cs_NEQIff>, iff<differsFromInt>, kDomain, {{1, 5}, {}, {5}}},
    {"cs_LEIff", "vvi", door<cs_LEIff>, iff<atMostInt>, kDomain, {{1, 6}, {}, {5}}},
    {"cs_LTIff", "vvi", door<cs_LTIff>, iff<belowInt>, kDomain, {{1, 5}, {}, {5}}},
    {"cs_GEIff", "vvi", door<cs_GEIff>, iff<atLeastInt>, kDomain, {{1, 4}, {}, {5}}},
    {"cs_GTIff", "vvi", door<cs_GTIff>, iff<aboveInt>, kDomain, {{1, 5}, {}, {5}}},
    {"cs_EQIf", "vvi", door<cs_EQIf>, onlyIf<equalsInt>, kDomain, {{1, 4}, {}, {5}}},
    {"cs_NEQIf", "vvi", door<cs_NEQIf>, onlyIf<differsFromInt>, kDomain, {{1, 5}, {}, {5}}},
    {"cs_LEIf", "vvi", door<cs_LEIf>, onlyIf<atMostInt>, kDomain, {{1, 6}, {}, {5}}},
    {"cs_LTIf", "vvi", door<cs_LTIf>, onlyIf<belowInt>, kDomain, {{1, 5}, {}, {5}}},
    {"cs_GEIf", "vvi", door<cs_GEIf>, onlyIf<atLeastInt>, kDomain, {{1, 4}, {}, {5}}},
    {"cs_GTIf", "vvi", door<cs_GTIf>, onlyIf<aboveInt>, kDomain, {{1, 5}, {}, {5}}},

    {"cs_InArrayIff", "vvkn", door<cs_InArrayIff>, iff<among>, kDomain, {{1, 4}, {}, {}, {{2, 3, 5}}}},
    {"cs_NotInArrayIff", "vvkn", door<cs_NotInArrayIff>, iff<notAmong>, kDomain, {{1, 3}, {}, {}, {{2, 3, 5}}}},
    {"cs_InArrayIf", "vvkn", door<cs_InArrayIf>, onlyIf<among>, kDomain, {{1, 4}, {}, {}, {{2, 3, 5}}}},
    {"cs_NotInArrayIf", "vvkn", door<cs_NotInArrayIf>, onlyIf<notAmong>, kDomain, {{1, 3}, {}, {}, {{2, 3, 5}}}},
    {"cs_InIntervalIff", "vvii", door<cs_InIntervalIff>, iff<within>, kDomain, {{1, 8}, {}, {1, 7}}},
    {"cs_NotInIntervalIff", "vvii", door<cs_NotInIntervalIff>, iff<notWithin>, kDomain, {{1, 5}, {}, {4, 6}}},
    {"cs_InIntervalIf", "vvii", door<cs_InIntervalIf>, onlyIf<within>, kDomain, {{1, 8}, {}, {1, 7}}},
    {"cs_NotInIntervalIf", "vvii", door<cs_NotInIntervalIf>, onlyIf<notWithin>, kDomain, {{1, 5}, {}, {4, 6}}},

    // What is promised differs from method to method.
    {"cs_Linear", "aLncl", door<cs_Linear>, linear, kKnown, {{2, 2, 2}, {}, {CS_METHOD_LE, 5}, {{1, 1, 1}}}},
    {"cs_LinearIff",
     "vaLncl",
     door<cs_LinearIff>,
     iff<linear>,
     kNone,
     {{1, 2, 2, 2}, {}, {CS_METHOD_EQ, 5}, {{1, 1, 1}}}},
    {"cs_LinearIf",
     "vaLncl",
     door<cs_LinearIf>,
     onlyIf<linear>,
     kNone,
     {{1, 2, 2, 2}, {}, {CS_METHOD_LE, 5}, {{1, 1, 1}}}},
    {"cs_ReifLinear",
     "aLncl",
     door<cs_ReifLinear>,
     linearAsInt,
     kNone,
     {{2, 2, 2, 1}, {}, {CS_METHOD_NEQ, 6}, {{1, 1, 1}}}},
};

}  // namespace

std::span<const Row> truthRows() { return kRows; }

}  // namespace koru::catalogue
