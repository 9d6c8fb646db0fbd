// SPDX-License-Identifier: MIT
// A line as a relation for the model: arrays cut down to their sizes as the calls are.
#include <algorithm>
#include <climits>
#include <cstring>
#include <string_view>

#include "traces/machine.h"

namespace koru::traces {
namespace {

constexpr std::size_t kVariadic = 4;  // variables that variadic forms are called with at most

bool isVariadic(const Row &row) { return std::string_view(row.name).starts_with("cs_V") && *row.kinds == 'a'; }

std::int64_t magnitude(const CSint *v) {
  return std::max(std::abs(std::int64_t{v->initialMin}), std::abs(std::int64_t{v->initialMax}));
}

std::int64_t greatestProduct(const std::vector<CSint *> &x) {
  std::int64_t product = 1;
  for (const CSint *v : x) product = std::min<std::int64_t>(product * std::max<std::int64_t>(magnitude(v), 1), INT_MAX);
  return product;
}

}  // namespace

// For each argument the length that the size after it leaves of it.
std::vector<std::size_t> Machine::lengths(const Line &line) {
  std::vector<std::size_t> result(line.args.size(), SIZE_MAX);
  std::vector<std::size_t> waiting;
  std::size_t i = 0;
  for (const char *kind = line.row->kinds; *kind != '\0'; ++kind) {
    if (*kind == 'x') continue;
    const int number = line.args[i].number;
    if (*kind == 'a' || *kind == 'k') waiting.push_back(i);
    if (*kind == 'i') waiting.clear();
    if (*kind == 'n') {
      std::size_t limit = number < 0 ? 0 : static_cast<std::size_t>(number);
      for (const std::size_t w : waiting) limit = std::min(limit, line.args[w].list.size());
      if (isVariadic(*line.row)) limit = std::min(limit, kVariadic);
      for (const std::size_t w : waiting) result[w] = limit;
      waiting.clear();
    }
    ++i;
  }
  return result;
}

Posted Machine::posted(const Line &line) const {
  Posted result{line.row, {}, {}, {}, nullptr};
  const std::vector<std::size_t> length = lengths(line);
  std::size_t i = 0;
  for (const char *kind = line.row->kinds; *kind != '\0'; ++kind, ++i) {
    const Arg &arg = line.args[i];
    const std::size_t n = std::min(length[i], arg.list.size());
    if (*kind == 'v') result.x.push_back(variable(arg.number));
    if (*kind == 'i') result.k.push_back(arg.number);
    if (*kind == 'k') result.lists.emplace_back(arg.list.begin(), arg.list.begin() + static_cast<std::ptrdiff_t>(n));
    for (std::size_t p = 0; *kind == 'a' && p < n; ++p) result.x.push_back(variable(arg.list[p]));
    if ((*kind == 'a' || *kind == 'k') && arg.number == kNull) result.x.push_back(nullptr);
  }
  if (line.row->name == std::string_view("cs_VScalProd")) result.lists[0].resize(kVariadic);
  if (line.row->name == std::string_view("cs_Regular")) {
    for (std::size_t dimension = 0; dimension < 2; ++dimension) result.k[dimension] = std::min(result.k[dimension], 6);
    result.lists[0].resize(std::max<std::size_t>(result.lists[0].size(), 36), -1);
  }
  return result;
}

// Where the library is documented to accept, or to refuse, more than the relation does, the model looks away: the same
// variable at two places, negative tasks, results at the ends of the int range.
bool Machine::usual(const Posted &relation) {
  const std::string_view name = relation.row->name;
  if (std::ranges::count(relation.x, nullptr) > 0) return false;
  if (name == "cs_Cumulative" || name == "cs_Disjunctive")
    return std::ranges::all_of(relation.x, [](const CSint *v) { return v->initialMin >= 0; });
  if (name == "cs_AllNeq" || name == "cs_IfEq") {
    std::vector<CSint *> x = relation.x;
    std::ranges::sort(x);
    return std::ranges::adjacent_find(x) == x.end();
  }
  if (name.ends_with("Mul") || name.ends_with("Div"))
    return !relation.x.empty() && greatestProduct(relation.x) < INT_MAX;
  if (relation.row->group != Group::kFunction) return true;
  std::int64_t factor = 1;
  for (const std::vector<int> &list : relation.lists)
    for (const int each : list) factor = std::max(factor, std::abs(std::int64_t{each}));
  return std::ranges::all_of(relation.x, [=](const CSint *v) { return magnitude(v) < 100000000 / factor; });
}

}  // namespace koru::traces
