// SPDX-License-Identifier: MIT
// All constraints by name. Names with _reif and _imp are those of the rows that tie.
#include <unordered_map>

#include "minizinc/postings.h"

namespace koru::fzn {

namespace {

struct Entry {
  const Row *row = nullptr;
  Form form = Form::kPlain;
};

using Table = std::unordered_multimap<std::string, Entry>;

void add(Table &table, std::span<const Row> rows) {
  for (const Row &row : rows) {
    table.emplace(row.name, Entry{&row, Form::kPlain});
    if (!row.ties) continue;
    table.emplace(std::string(row.name) + "_reif", Entry{&row, Form::kReif});
    table.emplace(std::string(row.name) + "_imp", Entry{&row, Form::kImp});
  }
}

Table makeTable() {
  Table table;
  for (const auto &rows : {comparisonRows(), linearRows(), arithmeticRows(), logicRows(), elementRows(),
                           permutationRows(), countingRows(), sequenceRows(), scheduleRows()})
    add(table, rows);
  return table;
}

}  // namespace

std::size_t nbArguments(const Row &row, Form form) {
  return std::string_view(row.arguments).size() + (form == Form::kPlain ? 0 : 1);
}

const Row *findRow(std::string_view name, std::size_t arguments, Form &form) {
  static const Table table = makeTable();
  const Row *found = nullptr;
  const auto [begin, end] = table.equal_range(std::string(name));
  for (auto it = begin; it != end; ++it) {
    const bool fits = nbArguments(*it->second.row, it->second.form) == arguments;
    if (found != nullptr && !fits) continue;
    found = it->second.row;
    form = it->second.form;
  }
  return found;
}

}  // namespace koru::fzn
