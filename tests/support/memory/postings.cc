// SPDX-License-Identifier: MIT
// Constraints that no family has scenarios for: their example, on variables that are free, bound, the same, watched,
// with holes and without, in arrays of several lengths.
#include <algorithm>

#include "catalogue/form.h"
#include "support/memory/scenario.h"

namespace koru::test {

namespace {

using catalogue::Row;

constexpr const char *kSingles[] = {"xyzb", "xhnc", "hxyt", "txyz", "xtyb", "hnxy", "xxyz", "cdxy", "tcxy"};
constexpr const char *kArrays[] = {"x", "xy", "xyz", "xyx", "thx", "tch", "hnc"};

// The letters that further arrays have in the place of those of the first.
char shifted(char letter, std::size_t by) {
  const std::string letters = "xyzthcnb";
  return letters[(letters.find(letter) + by) % letters.size()];
}

struct Variant {
  std::string letters;  // of all variables, one behind the other
  std::string name;     // the same by argument
  std::vector<int> sizes;
};

Variant variantOf(const Row &row, std::size_t number) {
  const std::string array = kArrays[number % std::size(kArrays)];
  const auto length = static_cast<int>(array.size());
  Variant v;
  std::size_t singles = 0;
  std::size_t arrays = 0;
  for (const char kind : std::string(row.kinds)) {
    std::string letters;
    if (catalogue::isVariable(kind)) letters = kSingles[number % std::size(kSingles)][singles++ % 4];
    if (catalogue::isArray(kind)) {
      for (const char letter : array) letters += shifted(letter, arrays);
      ++arrays;
    }
    if (catalogue::isSize(kind)) v.sizes.push_back(length);
    if (!letters.empty()) v.name += (v.name.empty() || !catalogue::isArray(kind) ? "" : "-") + letters;
    v.letters += letters;
  }
  return v;
}

void addRow(Scenarios &scenarios, const Row &row) {
  const bool hasArrays = catalogue::countKinds(row.kinds, catalogue::isArray) > 0;
  for (std::size_t i = 0; i < (hasArrays ? std::size(kArrays) : std::size(kSingles)); ++i) {
    const Variant variant = variantOf(row, i);
    const std::string name = std::string(row.name) + "/" + variant.name;
    const bool known = std::ranges::any_of(scenarios.all(), [&](const Scenario &each) { return each.name == name; });
    if (known) continue;
    const catalogue::Form form = exampleOf(row, variant.sizes);
    scenarios.add(name, [form, letters = variant.letters](Stage &s) {
      CSint *result = nullptr;
      return form.post(s.array(letters.c_str()), result);
    });
  }
}

}  // namespace

void addPostings(Scenarios &scenarios) {
  const std::vector<Scenario> byFamily = scenarios.all();
  for (const Row *row : catalogue::rowsWithModels()) {
    const auto isOfRow = [&](const Scenario &each) { return each.function() == row->name; };
    if (std::ranges::none_of(byFamily, isOfRow)) addRow(scenarios, *row);
  }
}

}  // namespace koru::test
