// SPDX-License-Identifier: MIT
// Sequences, permutations, counting and elements whose results are handed over.
#include <algorithm>
#include <cstdlib>
#include <set>

#include "catalogue/relations.h"
#include "catalogue/row.h"
#include "koru_extras.h"

namespace koru::catalogue {
namespace {

using enum Consistency;

bool increasing(T t) { return std::ranges::is_sorted(t.x); }
bool strictlyIncreasing(T t) { return std::ranges::adjacent_find(t.x, std::ranges::greater_equal{}) == t.x.end(); }

bool pointsAt(std::span<const int> from, std::span<const int> to) {
  for (std::size_t i = 0; i < from.size(); ++i) {
    const int j = from[i];
    if (j < 0 || static_cast<std::size_t>(j) >= to.size()) return false;
    if (to[static_cast<std::size_t>(j)] != static_cast<int>(i)) return false;
  }
  return true;
}
bool inverse(T t) { return pointsAt(t.arrays[0], t.arrays[1]) && pointsAt(t.arrays[1], t.arrays[0]); }

bool precedes(T t) {
  for (const int value : t.x) {
    if (value == t.k[1]) return false;
    if (value == t.k[0]) return true;
  }
  return true;
}

bool countOf(T t) {
  const std::size_t n = t.x.size() - 2;
  return std::ranges::count(t.x.first(n), t.x[n]) == t.x[n + 1];
}

bool at(std::span<const int> array, int position, int value) {
  return position >= 0 && static_cast<std::size_t>(position) < array.size() &&
         array[static_cast<std::size_t>(position)] == value;
}
bool elementOf(T t) { return element(t) == t.x[1]; }
bool varElementOf(T t) { return at(t.arrays[0], t.x.front(), t.x.back()); }
bool positionOf(T t) { return at(t.arrays[0], t.x.back(), static_cast<int>(t.k[0])); }

// Nodes that are their own successors are left out, where that is allowed.
template <bool partial>
bool circuit(T t) {
  const auto n = static_cast<Wide>(t.x.size());
  Wide out = 0;
  int start = 0;
  for (int i = 0; i < n; ++i) {
    if (t.x[static_cast<std::size_t>(i)] < 0 || t.x[static_cast<std::size_t>(i)] >= n) return false;
    if (partial && t.x[static_cast<std::size_t>(i)] == i)
      ++out;
    else
      start = i;
  }
  if (out == n) return true;
  Wide steps = 0;
  int i = start;
  do {
    i = t.x[static_cast<std::size_t>(i)];
    ++steps;
  } while (i != start && steps <= n);
  return steps == n - out;
}

bool divides(T t) { return t.x[1] != 0 && Wide{t.x[0]} / t.x[1] == t.x[2]; }
bool leaves(T t) { return t.x[1] != 0 && Wide{t.x[0]} % t.x[1] == t.x[2]; }

// By repeated multiplication or division, which ends early where nothing changes any more.
bool isPower(T t) {
  const Wide x = t.x[0];
  if (x == 0) return t.x[1] >= 0 && t.x[2] == (t.x[1] == 0 ? 1 : 0);
  Wide z = 1;
  for (Wide y = std::abs(Wide{t.x[1]}) % 1000; y > 0 && z > -(Wide{1} << 31) - 1 && z < Wide{1} << 31; --y)
    z = t.x[1] > 0 ? z * x : z / x;
  if (std::abs(x) == 1) z = x == 1 || t.x[1] % 2 == 0 ? 1 : -1;
  return z == t.x[2];
}

Row operation(const char *name, Door door, Meaning meaning, Example example) {
  Row row{name, "vvv", door, meaning, kDomain, std::move(example)};
  row.domain = {-2, 3};
  return row;
}

bool standsTwice(std::vector<Wide> values) {
  std::ranges::sort(values);
  return std::ranges::adjacent_find(values) != values.end();
}

// Arrays: variables, counts. Values; whether there are no others.
bool cardinality(T t) {
  const std::vector<Wide> &values = t.lists[0];
  if (standsTwice(values)) return false;
  std::ptrdiff_t counted = 0;
  for (std::size_t j = 0; j < values.size(); ++j) {
    const std::ptrdiff_t times = std::ranges::count(t.arrays[0], values[j]);
    if (times != t.arrays[1][j]) return false;
    counted += times;
  }
  return t.k[0] == 0 || counted == std::ssize(t.arrays[0]);
}

bool nValues(T t) {
  const std::set<int> different(t.arrays[0].begin(), t.arrays[0].end());
  return std::ssize(different) == t.x.back();
}

// Arrays: bins, loads. Sizes.
bool binPacking(T t) {
  std::vector<Wide> filled(t.arrays[1].size(), 0);
  for (std::size_t i = 0; i < t.arrays[0].size(); ++i) {
    const int bin = t.arrays[0][i];
    if (t.lists[0][i] < 0 || bin < 0 || bin >= std::ssize(filled)) return false;
    filled[static_cast<std::size_t>(bin)] += t.lists[0][i];
  }
  return std::ranges::equal(filled, t.arrays[1]);
}

Row element(const char *name, const char *kinds, Door door, Meaning meaning, Example example) {
  Row row{name, kinds, door, meaning, kDomain, std::move(example)};
  row.fewest = 1;
  return row;
}

const Row kRows[] = {
    {"cs_Increasing", "an", door<cs_Increasing>, increasing, kDomain, {{1, 2, 1}}},
    {"cs_StrictlyIncreasing", "an", door<cs_StrictlyIncreasing>, strictlyIncreasing, kDomain, {{1, 2, 2}}},
    {"cs_Inverse", "aan", door<cs_Inverse>, inverse, kNone, {{0, 1, 2, 0, 2, 1}}},
    {"cs_Precede", "anii", door<cs_Precede>, precedes, kDomain, {{5, 4, 3}, {}, {3, 4}}},
    {"cs_BinPacking", "aknan", door<cs_BinPacking>, binPacking, kKnown, {{0, 1, 1, 3, 5}, {3, 2}, {}, {{3, 4}}}},
    {"cs_Cardinality",
     "ankanb",
     door<cs_Cardinality>,
     cardinality,
     kKnown,
     {{5, 6, 5, 1, 1}, {3, 2}, {0}, {{5, 6, 7, 8, 9}}}},
    {"cs_CardinalityDomain",
     "ankanb",
     door<cs_CardinalityDomain>,
     cardinality,
     kBounds,
     {{5, 6, 5, 1, 1}, {3, 2}, {0}, {{5, 6, 7, 8, 9}}}},
    {"cs_CountOf", "anvv", door<cs_CountOf>, countOf, kDomain, {{1, 1, 2, 1, 3}}},
    {"cs_NValues", "anv", door<cs_NValues>, nValues, kKnown, {{1, 1, 2, 3}}},
    element("cs_ElementOf", "vknv", door<cs_ElementOf>, elementOf, {{1, 5}, {}, {}, {{2, 3, 5}}}),
    element("cs_VarElementOf", "vanv", door<cs_VarElementOf>, varElementOf, {{1, 1, 2, 3, 4}}),
    {"cs_Circuit", "an", door<cs_Circuit>, circuit<false>, kNone, {{1, 2, 1}}},
    {"cs_Subcircuit", "an", door<cs_Subcircuit>, circuit<true>, kNone, {{1, 0, 3, 2}, {4}}},
    operation("cs_DivTrunc", door<cs_DivTrunc>, divides, {{7, 2, 4}}),
    operation("cs_Mod", door<cs_Mod>, leaves, {{7, 4, 2}}),
    operation("cs_Pow", door<cs_Pow>, isPower, {{3, 2, 8}}),
    element("cs_PositionOf", "aniv", door<cs_PositionOf>, positionOf, {{1, 2, 7, 1}, {}, {7}}),
};

}  // namespace

std::span<const Row> relationalRows() { return kRows; }

}  // namespace koru::catalogue
