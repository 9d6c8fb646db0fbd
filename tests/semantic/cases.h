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

// A case for a row of the catalogue: sizes, ints and domains of every kind, as many as take a quarter of a second.
Case defaultCase(const catalogue::Row &row);

const Cases &allCases();

// Constants that a constraint keeps by reference and its relation reads.
template <class T>
std::shared_ptr<std::vector<T>> kept(std::vector<T> values) {
  return std::make_shared<std::vector<T>>(std::move(values));
}

}  // namespace koru::test::brute
