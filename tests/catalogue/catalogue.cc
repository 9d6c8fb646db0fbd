// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "catalogue/row.h"

namespace koru::catalogue {

namespace {

using Family = std::span<const Row> (*)();
constexpr Family kOfKoruH[] = {relationRows, arithmeticRows, reifiedRows, arrayRows};
constexpr Family kOfExtras[] = {extraRows, truthRows, relationalRows, scheduleRows};

}  // namespace

const std::vector<const Row *> &rows() {
  static const std::vector<const Row *> all = [] {
    std::vector<const Row *> result;
    for (const std::span<const Family> families :
         {std::span<const Family>(kOfKoruH), std::span<const Family>(kOfExtras)})
      for (const Family family : families)
        for (const Row &row : family()) result.push_back(&row);
    return result;
  }();
  return all;
}

bool isOfKoruH(const Row &row) {
  return std::ranges::any_of(kOfKoruH, [&](Family family) {
    return std::ranges::any_of(family(), [&](const Row &each) { return &each == &row; });
  });
}

const std::vector<const Row *> &rowsWithModels() {
  static const std::vector<const Row *> all = [] {
    std::vector<const Row *> result = rows();
    for (const Row &row : modelRows()) result.push_back(&row);
    return result;
  }();
  return all;
}

const std::vector<const Row *> &postingRows() {
  static const std::vector<const Row *> all = [] {
    std::vector<const Row *> result;
    for (const Row *row : rowsWithModels())
      if (!row->postsNothing) result.push_back(row);
    for (const Row &row : hostRows()) result.push_back(&row);
    return result;
  }();
  return all;
}

const Row *findRow(std::string_view name) {
  static const std::map<std::string_view, const Row *> byName = [] {
    std::map<std::string_view, const Row *> result;
    for (const Row *row : rows()) result.emplace(row->name, row);
    return result;
  }();
  const auto found = byName.find(name);
  return found == byName.end() ? nullptr : found->second;
}

const Row &rowOf(std::string_view name) {
  const Row *row = findRow(name);
  if (row != nullptr) return *row;
  std::fprintf(stderr, "the catalogue has no row %.*s\n", static_cast<int>(name.size()), name.data());
  std::abort();
}

}  // namespace koru::catalogue
