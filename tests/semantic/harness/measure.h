// SPDX-License-Identifier: MIT
// How much is left that has no support: what a constraint is found to remove, beside what it promises. Looked at when
// all variables are different and not all are bound.
#pragma once

#include <string>

#include "semantic/harness/constraint.h"

namespace koru::test::brute {

// Values without support, of so many.
struct Unsupported {
  long long values = 0;
  long long domain = 0;  // in the other columns' domains
  long long bounds = 0;  // of these, bounds that have none within the others' bounds
  long long known = 0;   // of these, those that are left though no other column is open

  Strength strength() const {
    if (domain == 0) return Strength::kDomain;
    if (bounds == 0) return Strength::kBounds;
    return known == 0 ? Strength::kKnown : Strength::kNone;
  }
};

struct Measure {
  Unsupported variables;     // after one change at a time
  Unsupported result;        // the same
  Unsupported afterSeveral;  // after several changes of which none had been heard, as other constraints make them

  void add(const Left &at, bool function, const Masks &inDomains, const Masks &inBounds) {
    for (std::size_t column = 0; column < at.columns(); ++column) {
      const Mask mask = at.mask(column);
      const Mask without = mask & ~inDomains[column];
      const Mask ends = Mask{1} << leastBit(mask) | Mask{1} << greatestBit(mask);
      Unsupported &found = at.branch.unheard ? afterSeveral : function && column == at.result() ? result : variables;
      found.values += std::popcount(mask);
      found.domain += std::popcount(without);
      found.bounds += std::popcount(mask & ends & ~inBounds[column]);
      if (at.unbound() < 2) found.known += std::popcount(without);
    }
  }
};

inline const char *nameOf(Strength strength) {
  constexpr const char *kNames[] = {"weaker", "forward checking", "bounds", "domain"};
  return kNames[static_cast<int>(strength)];
}

// 1 of 8 is "12.50 %".
inline std::string shareOf(long long part, long long whole) {
  if (part == 0) return "0";
  const long long hundredths = (part * 10000 + whole / 2) / whole;
  if (hundredths == 0) return "< 0.01 %";
  const std::string digits = std::to_string(1000 + hundredths % 100).substr(2);
  return std::to_string(hundredths / 100) + "." + digits + " %";
}

constexpr const char *kTableHead =
    "| case | variables | result | values without support | bounds | with all others bound | after several changes |\n"
    "|---|---|---|--:|--:|--:|--:|\n";

inline std::string rowOf(const std::string &name, const Measure &m) {
  const long long values = m.variables.values + m.result.values;
  const auto of = [](const std::string &text) { return " | " + text; };
  return "| `" + name + "`" + of(nameOf(m.variables.strength())) +
         of(m.result.values > 0 ? nameOf(m.result.strength()) : "") +
         of(shareOf(m.variables.domain + m.result.domain, values)) +
         of(shareOf(m.variables.bounds + m.result.bounds, values)) +
         of(shareOf(m.variables.known + m.result.known, values)) +
         of(shareOf(m.afterSeveral.domain, m.afterSeveral.values)) + " |";
}

}  // namespace koru::test::brute
