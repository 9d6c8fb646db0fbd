// SPDX-License-Identifier: MIT
#include "semantic/cases.h"

namespace koru::test::brute {

namespace {

bool isStated(const Cases &cases, const std::string &function) {
  return std::ranges::any_of(cases, [&](const Case &c) { return std::ranges::count(c.functions, function) > 0; });
}

// What no family has a case for.
void addDefaults(Cases &cases) {
  for (const catalogue::Row *row : catalogue::rowsWithModels())
    if (!isStated(cases, row->name)) cases.push_back(defaultCase(*row));
}

}  // namespace

const Cases &allCases() {
  static const Cases cases = [] {
    Cases all;
    for (const auto family :
         {relationCases, arithmeticCases, linearCases, reifiedCases, globalCases, elementCases, automatonCases,
          schedulingCases, hostCases, logicCases, linearRelationCases, tableCases, countingCases}) {
      const Cases more = family();
      all.insert(all.end(), more.begin(), more.end());
    }
    addDefaults(all);
    return all;
  }();
  return cases;
}

}  // namespace koru::test::brute
