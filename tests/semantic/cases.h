// SPDX-License-Identifier: MIT
// All constraints of the library as cases of the brute-force harness, family by family.
#pragma once

#include "semantic/harness/case.h"

namespace koru::test::brute {

using Cases = std::vector<Case>;

Cases relationCases();
Cases arithmeticCases();
Cases linearCases();
Cases reifiedCases();
Cases logicCases();
Cases linearRelationCases();
Cases globalCases();
Cases elementCases();
Cases automatonCases();
Cases schedulingCases();
Cases hostCases();
Cases tableCases();
Cases countingCases();

// A case for a row of the catalogue: sizes, ints and domains of every kind, as many as take a quarter of a second.
Case defaultCase(const catalogue::Row &row);

const Cases &allCases();

using Lists = std::vector<std::vector<Wide>>;

// What the row of a function says of a call with arrays of these sizes, these ints and lists.
inline Constraint stated(const std::string &function, std::vector<int> sizes = {}, std::vector<Wide> k = {},
                         Lists lists = {}) {
  return constraintOf({catalogue::rowOf(function), std::move(sizes), std::move(k), std::move(lists)});
}

}  // namespace koru::test::brute
