// SPDX-License-Identifier: MIT
#include "traces/table.h"

#include <cstring>
#include <map>

namespace koru::traces {

const std::vector<const Row *> &rows() {
  static const std::vector<const Row *> all = [] {
    std::vector<const Row *> result;
    for (const auto part : {coreRows(), constraintRows(), searchRows()})
      for (const Row &row : part) result.push_back(&row);
    return result;
  }();
  return all;
}

static const std::map<std::string_view, std::size_t> &byName() {
  static const std::map<std::string_view, std::size_t> index = [] {
    std::map<std::string_view, std::size_t> result;
    for (std::size_t i = 0; i < rows().size(); ++i) result.emplace(rows()[i]->name, i);
    return result;
  }();
  return index;
}

const Row *findRow(std::string_view name) {
  const auto found = byName().find(name);
  return found == byName().end() ? nullptr : rows()[found->second];
}

std::size_t indexOf(const Row *row) { return byName().at(row->name); }

char targetLetter(const Row &row) {
  if (row.result == 'a') return 'v';
  return std::strchr("vsqhgp", row.result) != nullptr ? row.result : '\0';
}

char referenceLetter(char kind) {
  switch (kind) {
    case 'a':
    case 'A':
    case 'o':
    case 'O':
      return 'v';
    case 'Q':
      return 'q';
    default:
      return std::strchr("vsqhgp", kind) != nullptr ? kind : '\0';
  }
}

}  // namespace koru::traces
