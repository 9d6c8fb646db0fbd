// SPDX-License-Identifier: MIT
// A line that is a constraint of the catalogue: as a call, and as a relation for the model. Sizes are cut down to what
// the arrays hold.
#include <algorithm>
#include <climits>
#include <cstring>
#include <string_view>

#include "traces/machine.h"

namespace koru::traces {
namespace {

using catalogue::Actual;

constexpr int kMostOfTable = 6;  // states, symbols; a table is at least as large as these say

std::int64_t magnitude(const CSint *v) {
  return std::max(std::abs(std::int64_t{v->initialMin}), std::abs(std::int64_t{v->initialMax}));
}

std::int64_t greatestProduct(const std::vector<CSint *> &x) {
  std::int64_t product = 1;
  for (const CSint *v : x) product = std::min<std::int64_t>(product * std::max<std::int64_t>(magnitude(v), 1), INT_MAX);
  return product;
}

int lengthOf(const Arg &arg) { return static_cast<int>(arg.list.size()); }
bool isNull(const Arg &arg) { return arg.number == kNull; }

// The numbers and sizes of a line as they are handed over.
std::vector<int> numbersOf(const Line &line) {
  const catalogue::Row &row = *line.row->constraint;
  std::vector<int> result;
  int limit = row.most;
  int size = 0;
  int ofTable = 0;
  for (std::size_t i = 0; i < line.args.size(); ++i) {
    const char kind = row.kinds[i];
    const Arg &arg = line.args[i];
    result.push_back(arg.number);
    if (kind == 'T') ofTable = 2;
    if (kind == 'i' && ofTable-- > 0) result[i] = std::min(arg.number, kMostOfTable);
    if (kind == 'm') limit = lengthOf(arg) / std::max(size, 1);
    if (kind == 'k' || kind == 'L' || (catalogue::isArray(kind) && !(kind == 'O' && isNull(arg))))
      limit = std::min(limit, lengthOf(arg));
    if (!catalogue::isSize(kind)) continue;
    result[i] = size = std::min(arg.number, limit);
    limit = row.most;
  }
  return result;
}

// The size that follows an argument; of a list that no size follows, the most.
int sizeOf(const Line &line, std::size_t at, const std::vector<int> &numbers) {
  const std::string_view kinds = line.row->kinds;
  const std::size_t end = kinds.find('n', at);
  return end != std::string_view::npos ? std::max(numbers[end], 0) : line.row->constraint->most;
}

// The cells of a matrix: so many rows as the size after it says, as wide as the size before it.
std::size_t cellsOf(const Line &line, std::size_t at, const std::vector<int> &numbers) {
  const std::string_view kinds = line.row->kinds;
  const auto sizeAt = [&](std::size_t i) { return static_cast<std::size_t>(std::max(numbers[i], 0)); };
  return sizeAt(kinds.rfind('n', at)) * sizeAt(kinds.find('r', at));
}

// The ints of a list, as many as the sizes say.
std::vector<catalogue::Wide> listOf(const Line &line, std::size_t at, const std::vector<int> &numbers) {
  std::vector<catalogue::Wide> list(line.args[at].list.begin(), line.args[at].list.end());
  const char kind = line.row->kinds[at];
  if (kind == 'T') list.resize(std::max<std::size_t>(list.size(), kMostOfTable * kMostOfTable), -1);
  if (kind == 'k' || kind == 'L') list.resize(static_cast<std::size_t>(sizeOf(line, at, numbers)));
  if (kind == 'm') list.resize(std::min(list.size(), cellsOf(line, at, numbers)));
  return list;
}

}  // namespace

void Machine::callConstraint(const Line &line) {
  const std::vector<int> numbers = numbersOf(line);
  std::vector<Actual> actuals(line.args.size());
  for (std::size_t i = 0; i < actuals.size(); ++i) {
    const char kind = line.row->kinds[i];
    const Arg &arg = line.args[i];
    actuals[i].number = numbers[i];
    if (catalogue::isVariable(kind)) actuals[i].variable = variable(arg.number);
    if (isNull(arg)) continue;
    if (catalogue::isArray(kind)) actuals[i].variables = array(arg.list);
    if (!catalogue::isList(kind)) continue;
    std::vector<long long> &longs = world_.kept.longs.emplace_back(listOf(line, i, numbers));
    std::vector<int> &ints = world_.kept.ints.emplace_back(longs.begin(), longs.end());
    longs.push_back(0);
    ints.push_back(0);
    actuals[i].longs = longs.data();
    actuals[i].ints = ints.data();
  }
  const catalogue::Answer answered = line.row->constraint->door.call(actuals.data());
  if (line.row->isFunction()) return answer(line, answered.result);
  answer(line, answered.number);
}

Posted Machine::posted(const Line &line) const {
  const std::vector<int> numbers = numbersOf(line);
  std::vector<CSint *> x;
  std::vector<int> sizes;
  std::vector<catalogue::Wide> k;
  std::vector<std::vector<catalogue::Wide>> lists;
  unsigned nulls = 0;
  unsigned nullable = 0;
  for (std::size_t i = 0; i < line.args.size(); ++i) {
    const char kind = line.row->kinds[i];
    const Arg &arg = line.args[i];
    const bool mayBeNull = catalogue::mayBeNull(kind);
    const bool none = mayBeNull && (isNull(arg) || (kind == 'o' && variable(arg.number) == nullptr));
    if (mayBeNull) nulls |= (none ? 1U : 0U) << nullable++;
    if (catalogue::isVariable(kind) && !none) x.push_back(variable(arg.number));
    if (catalogue::isSize(kind)) sizes.push_back(numbers[i]);
    if (catalogue::isNumber(kind)) k.push_back(numbers[i]);
    if (catalogue::isList(kind)) lists.push_back(listOf(line, i, numbers));
    const int length = catalogue::isArray(kind) && !none ? std::min(sizeOf(line, i, numbers), lengthOf(arg)) : 0;
    for (std::size_t p = 0; p < static_cast<std::size_t>(length); ++p) x.push_back(variable(arg.list[p]));
    if ((catalogue::isArray(kind) || catalogue::isList(kind)) && !none && isNull(arg)) x.push_back(nullptr);
  }
  return {line.row, {*line.row->constraint, sizes, k, lists, nulls}, std::move(x)};
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
  if (!relation.row->isFunction()) return true;
  std::int64_t factor = 1;
  for (const std::vector<catalogue::Wide> &list : relation.form.lists())
    for (const catalogue::Wide each : list) factor = std::max<std::int64_t>(factor, std::abs(each));
  return std::ranges::all_of(relation.x, [=](const CSint *v) { return magnitude(v) < 100000000 / factor; });
}

}  // namespace koru::traces
