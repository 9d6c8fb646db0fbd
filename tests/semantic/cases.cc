// SPDX-License-Identifier: MIT
#include "semantic/cases.h"

namespace koru::test::brute {

const Cases &allCases() {
  static const Cases cases = [] {
    Cases all;
    for (const auto family : {relationCases, arithmeticCases, linearCases, reifiedCases, globalCases, elementCases,
                              automatonCases, schedulingCases, hostCases}) {
      const Cases more = family();
      all.insert(all.end(), more.begin(), more.end());
    }
    return all;
  }();
  return cases;
}

}  // namespace koru::test::brute
