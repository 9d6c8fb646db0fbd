// SPDX-License-Identifier: MIT
// The constraints of koru_extras.h.
#include <set>

#include "catalogue/relations.h"
#include "catalogue/row.h"
#include "koru_extras.h"

namespace koru::catalogue {

namespace {

using enum Consistency;

// Cells CS_ANY stand for all values, or for that one.
template <bool isShort>
bool inTable(T t) {
  const std::size_t n = t.x.size();
  const std::vector<Wide> &cells = t.lists[0];
  for (std::size_t at = 0; at + n <= cells.size(); at += n) {
    bool equal = true;
    for (std::size_t i = 0; i < n; ++i)
      equal = equal && (cells[at + i] == t.x[i] || (isShort && cells[at + i] == CS_ANY));
    if (equal) return true;
  }
  return false;
}
bool notInTable(T t) { return !inTable<false>(t); }

// From k0 to k1 along arcs: sources, values, targets.
bool isPath(T t) {
  std::set<Wide> reached{t.k[0]};
  for (const int value : t.x) {
    std::set<Wide> next;
    for (std::size_t k = 0; k < t.lists[0].size(); ++k)
      if (t.lists[1][k] == value && reached.contains(t.lists[0][k])) next.insert(t.lists[2][k]);
    reached = std::move(next);
  }
  return reached.contains(t.k[1]);
}

template <bool strict>
bool inOrder(T t) {
  const auto x = t.arrays[0];
  const auto y = t.arrays[1];
  for (std::size_t i = 0; i < x.size(); ++i)
    if (x[i] != y[i]) return x[i] < y[i];
  return !strict;
}

// A row: {"cs_Name", "kinds", door<cs_Name>, relation, kDomain, {{values that violate it}}}
const Row kRows[] = {
    {"cs_AllNeqBounds", "an", door<cs_AllNeqBounds>, allDifferent, kBounds, {{7, 1, 7}}},
    {"cs_AllNeqDomain", "an", door<cs_AllNeqDomain>, allDifferent, kDomain, {{7, 1, 7}}},
    {"cs_LexLe", "aan", door<cs_LexLe>, inOrder<false>, kDomain, {{2, 5, 1, 2, 5, 0}}},
    {"cs_LexLt", "aan", door<cs_LexLt>, inOrder<true>, kDomain, {{2, 5, 1, 2, 5, 1}}},
    {"cs_Mdd",
     "ankkknii",
     door<cs_Mdd>,
     isPath,
     kDomain,
     {{5, 6, 5}, {3, 6}, {0, 9}, {{0, 0, 1, 2, 3, 4}, {5, 6, 6, 6, 6, 5}, {1, 2, 3, 4, 9, 9}}}},
    {.name = "cs_NotTable",
     .kinds = "anmr",
     .door = door<cs_NotTable>,
     .meaning = notInTable,
     .consistency = kDomain,
     .example = {{1, 2, 3}, {3, 2}, {}, {{1, 2, 3, 4, 5, 6}}},
     .fewest = 1,
     .fewestRows = 0},
    {.name = "cs_ShortTable",
     .kinds = "anmr",
     .door = door<cs_ShortTable>,
     .meaning = inTable<true>,
     .consistency = kDomain,
     .example = {{1, 2, 4}, {3, 2}, {}, {{1, CS_ANY, 3, 4, 5, CS_ANY}}},
     .fewest = 1},
    {.name = "cs_Table",
     .kinds = "anmr",
     .door = door<cs_Table>,
     .meaning = inTable<false>,
     .consistency = kDomain,
     .example = {{1, 2, 6}, {3, 2}, {}, {{1, 2, 3, 4, 5, 6}}},
     .fewest = 1},
};

}  // namespace

std::span<const Row> extraRows() { return kRows; }

}  // namespace koru::catalogue
