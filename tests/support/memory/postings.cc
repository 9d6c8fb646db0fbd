// SPDX-License-Identifier: MIT
// Each row of the catalogue: its example, on variables that are free, bound, the same, watched, with holes and without,
// in arrays of several lengths.
#include <set>

#include "catalogue/form.h"
#include "support/memory/scenario.h"

namespace koru::test {

namespace {

using catalogue::Form;
using catalogue::Row;

struct Letters {
  std::string array;    // of the first array
  std::string singles;  // of what stands alone
};

const Letters kWithoutArrays[] = {{"", "xyzb"}, {"", "xhnc"}, {"", "hxyt"}, {"", "txyz"}, {"", "xtyb"},
                                  {"", "hnxy"}, {"", "xxyz"}, {"", "cdxy"}, {"", "tcxy"}, {"", "nctx"},
                                  {"", "thxb"}, {"", "htxn"}, {"", "ttxy"}};
const Letters kWithArrays[] = {{"", "xeby"},    {"x", "ebyd"},   {"xy", "ezbd"},  {"tt", "xeby"}, {"xyz", "heby"},
                               {"xyx", "tzbe"}, {"thx", "bezy"}, {"tch", "xeby"}, {"hnc", "xeby"}};

bool hasArrays(const Row &row) { return catalogue::countKinds(row.kinds, catalogue::isArray) > 0; }

std::span<const Letters> lettersFor(const Row &row) {
  if (hasArrays(row)) return kWithArrays;
  return kWithoutArrays;
}

// The letters that further arrays have in the place of those of the first.
std::string shifted(std::string letters, std::size_t by) {
  static const std::string kLetters = "xyzthcnb";
  for (char &letter : letters) letter = kLetters[(kLetters.find(letter) + by) % kLetters.size()];
  return letters;
}

// The letters of a row's variables, by argument.
std::vector<std::string> lettersOf(const Row &row, const Letters &given) {
  std::vector<std::string> result;
  std::size_t singles = 0;
  std::size_t arrays = 0;
  for (const char kind : std::string(row.kinds)) {
    if (catalogue::isVariable(kind)) result.emplace_back(1, given.singles[singles++ % given.singles.size()]);
    if (catalogue::isArray(kind)) result.push_back(shifted(given.array, arrays++));
  }
  return result;
}

// Those of lists as in the example.
std::vector<int> sizesOf(const Row &row, std::size_t length) {
  std::vector<int> sizes;
  bool isOfArray = false;
  for (const char kind : std::string(row.kinds)) {
    isOfArray = isOfArray || catalogue::isArray(kind);
    if (!catalogue::isSize(kind)) continue;
    const int ofList = row.example.sizes.empty() ? 3 : row.example.sizes[sizes.size()];
    sizes.push_back(isOfArray ? static_cast<int>(length) : ofList);
    isOfArray = false;
  }
  return sizes;
}

// "cs_Eq/xy", "cs_Sigma/none", "cs_VarElement/x-xyz".
std::string nameOf(const Row &row, const std::vector<std::string> &letters) {
  std::string name = std::string(row.name) + "/";
  for (std::size_t i = 0; i < letters.size(); ++i) {
    if (i > 0 && hasArrays(row)) name += "-";
    name += letters[i].empty() ? "none" : letters[i];
  }
  return name;
}

// Without an undo record or a bit array a relation with an int narrows nothing, unless somebody is to hear of it.
std::function<bool(Stage &)> leftByFailure(const Row &row, char letter) {
  if (!row.postsNothing || std::string_view(row.kinds) != "vi" || letter == 'c') return {};
  return [letter](const Stage &s) { return s.isWhole(letter); };
}

void addRow(Scenarios &scenarios, const Row &row) {
  std::set<std::string> names;
  for (const Letters &given : lettersFor(row)) {
    const std::vector<std::string> letters = lettersOf(row, given);
    const Form form = exampleOf(row, sizesOf(row, given.array.size()));
    const std::string name = nameOf(row, letters);
    if (form.isRefused() || !names.insert(name).second) continue;
    std::string all;
    for (const std::string &each : letters) all += each;
    const auto run = [form, all](Stage &s) {
      CSint *result = nullptr;
      return form.post(s.array(all.c_str()), result) && cs_getErr() == CS_ERR_NONE;
    };
    scenarios.add(name, run, leftByFailure(row, (all + ' ')[0]));
  }
}

}  // namespace

void addPostings(Scenarios &scenarios) {
  for (const Row *row : catalogue::rowsWithModels()) addRow(scenarios, *row);
}

}  // namespace koru::test
