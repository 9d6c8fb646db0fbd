// SPDX-License-Identifier: MIT
// Every exported function that takes ints, with all pairs of the ends of the int range for every two of them, and with
// each of its pointers null: the specified result, no crash, and invariants that hold.
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>

#include <unistd.h>

#include "catalogue/headers.h"
#include "limits/table.h"

namespace koru::test::limits {
namespace {

std::vector<LimitsRow> rowsByHand() {
  std::vector<LimitsRow> rows;
  for (const auto part : {variableRows, arithmeticRows, globalRows, searchRows})
    for (const LimitsRow &row : part()) rows.push_back(row);
  return rows;
}

std::vector<LimitsRow> catalogueRows() {
  // Tables need bit arrays over the whole range, which cannot be had here: unit/constraints/table_test.cc has their
  // ends.
  std::set<std::string_view> byHand{"cs_NotTable", "cs_Table"};
  for (const LimitsRow &row : rowsByHand()) byHand.insert(row.function);
  std::vector<LimitsRow> rows;
  for (const catalogue::Row *row : catalogue::rowsWithModels())
    if (!byHand.contains(row->name)) rows.push_back(defaultRow(*row));
  return rows;
}

// The orthogonal array of a prime number of levels: the first column is one number, the others it plus multiples of
// another, so every two columns show every pair (Bose, "On the Application of the Properties of Galois Fields", 1938).
std::vector<std::vector<int>> pairwise(const std::string &kinds) {
  std::vector<std::vector<int>> calls;
  for (int a = 0; a < kLevels; ++a) {
    for (int b = 0; b < kLevels; ++b) {
      std::vector<int> ints;
      for (int column = 0; column < std::ssize(kinds); ++column)
        ints.push_back(
            valueOf(kinds[static_cast<std::size_t>(column)], column == 0 ? a : (b + a * (column - 1)) % kLevels));
      calls.push_back(ints);
    }
  }
  return calls;
}

std::string callNow;
void sayCall(int signal) {
  if (write(STDERR_FILENO, callNow.c_str(), static_cast<unsigned>(callNow.size())) < 0) return;
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

class LimitsTable : public ::testing::TestWithParam<LimitsRow> {
 protected:
  static void SetUpTestSuite() { std::signal(SIGABRT, sayCall); }
  static void TearDownTestSuite() { std::signal(SIGABRT, SIG_DFL); }

  static void run(const Arguments &arguments) {
    callNow = std::string(GetParam().function) + arguments.text() + "\n";
    const long blocks = blocksAlive;
    cs_init();
    cs_setErrHandler(
        CS_ERR_MEMORY, [](CSint *, void *) {}, nullptr);
    cs_setErrHandler(
        CS_ERR_NOT_INSTANTIATED, [](CSint *, void *) {}, nullptr);
    {
      Operands operands;
      cs_saveContext();
      cs_saveContext();
      // Bit arrays over the whole range would be had, and take their time.
      allocationHook = [](std::size_t size) { return size < 1000000; };
      EXPECT_TRUE(GetParam().call(operands, arguments)) << callNow;
      allocationHook = nullptr;
      check::invariantsWhenIdle();
      cs_restoreAll();
      EXPECT_EQ(values(operands.x), values(operands.y)) << callNow << "a restore brings -5..5 back";
      cs_end();
    }
    EXPECT_EQ(blocksAlive, blocks) << callNow;
  }
};

TEST_P(LimitsTable, EveryPairOfValuesGivesTheSpecifiedResult) {
  for (std::vector<int> &ints : pairwise(GetParam().ints)) run(Arguments(std::move(ints), -1));
}

TEST_P(LimitsTable, EachPointerMayBeNull) {
  const std::size_t count = GetParam().ints.size();
  for (int null = 0; null < GetParam().pointers; ++null) run(Arguments(std::vector<int>(count, 1), null));
}

std::string nameOf(const ::testing::TestParamInfo<LimitsRow> &row) { return row.param.function; }

INSTANTIATE_TEST_SUITE_P(, LimitsTable, ::testing::ValuesIn(rowsByHand()), nameOf);
INSTANTIATE_TEST_SUITE_P(Catalogue, LimitsTable, ::testing::ValuesIn(catalogueRows()), nameOf);

TEST(PairwiseValues, ShowEveryPairOfLevelsInEveryTwoColumns) {
  const auto calls = pairwise("vvvvv");
  for (std::size_t first = 0; first < 5; ++first) {
    for (std::size_t second = first + 1; second < 5; ++second) {
      std::set<std::pair<int, int>> pairs;
      for (const auto &ints : calls) pairs.insert({ints[first], ints[second]});
      EXPECT_EQ(pairs.size(), 49U);
    }
  }
}

// The declarations in the header, from "KORU_API" to the semicolon.
std::vector<std::string> declarations() {
  const auto root = std::filesystem::path(__FILE__).parent_path().parent_path().parent_path();
  std::ifstream header(root / "include" / "koru.h");
  EXPECT_TRUE(header) << "the test runs inside the source tree";
  std::vector<std::string> found;
  bool inside = false;
  for (std::string line; std::getline(header, line);) {
    if (line.starts_with("KORU_API ")) found.emplace_back();
    inside = inside || line.starts_with("KORU_API ");
    if (inside) found.back() += line + " ";
    inside = inside && line.find(';') == std::string::npos;
  }
  return found;
}

TEST(LimitsTableRows, NameEveryFunctionWithParametersToSet) {
  std::set<std::string> rows{"cs_NotTable", "cs_Table"};  // left out above
  for (const LimitsRow &row : rowsByHand()) rows.insert(row.function);
  for (const LimitsRow &row : catalogueRows()) rows.insert(row.function);
  for (const std::string &function : catalogue::statingFunctions()) EXPECT_TRUE(rows.contains(function)) << function;
  for (const std::string &declaration : declarations()) {
    const std::size_t open = declaration.find('(');
    const std::string parameters = declaration.substr(open);
    if (parameters.find("int ") == std::string::npos && parameters.find('*') == std::string::npos) continue;
    std::size_t start = declaration.find_last_of(" *", open);
    const std::string name = declaration.substr(start + 1, open - start - 1);
    EXPECT_TRUE(rows.contains(name)) << name;
  }
}

}  // namespace
}  // namespace koru::test::limits
