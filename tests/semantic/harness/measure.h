// SPDX-License-Identifier: MIT
// How much is left that has no support: what a constraint is found to remove, beside what it promises. Looked at when
// all variables are different and not all are bound.
#pragma once

#include <iomanip>
#include <ostream>

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

inline void printHead(std::ostream &out) {
  out << "| case | variables | result | values | without support: domain | bounds | forward checking | "
         "after several changes: values | without support |\n|---|---|---|--:|--:|--:|--:|--:|--:|\n";
}

inline void printRow(std::ostream &out, const std::string &name, const Measure &m) {
  out << "| `" << name << "` | " << nameOf(m.variables.strength()) << " | "
      << (m.result.values > 0 ? nameOf(m.result.strength()) : "") << " | " << m.variables.values + m.result.values
      << " | " << m.variables.domain + m.result.domain << " | " << m.variables.bounds + m.result.bounds << " | "
      << m.variables.known + m.result.known << " | " << m.afterSeveral.values << " | " << m.afterSeveral.domain
      << " |\n";
}

}  // namespace koru::test::brute
