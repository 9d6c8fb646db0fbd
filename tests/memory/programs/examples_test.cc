// SPDX-License-Identifier: MIT
// The example programs with an allocation of the library failing: each says that memory has run out and leaves with
// the status for trouble, wherever it is.
#include <algorithm>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "memory/programs/child_process.h"

// The main functions of the programs, under names of their own.
extern "C" {
int car_sequencing_main(int argc, char **argv);
int crossword_main(int argc, char **argv);
int exams_main(int argc, char **argv);
int configurator_main(int argc, char **argv);
int factory_main(int argc, char **argv);
int golomb_main(int argc, char **argv);
int jobshop_main(int argc, char **argv);
int knapsack_main(int argc, char **argv);
int magic_sequence_main(int argc, char **argv);
int magic_square_main(int argc, char **argv);
int nonogram_main(int argc, char **argv);
int profile_demo_main(int argc, char **argv);
int quasigroup_main(int argc, char **argv);
int queens_main(int argc, char **argv);
int rcpsp_main(int argc, char **argv);
int roster_main(int argc, char **argv);
int send_more_money_main(int argc, char **argv);
int sudoku_main(int argc, char **argv);
int tour_main(int argc, char **argv);
int timetable_main(int argc, char **argv);
}

namespace koru::test {
namespace {

std::filesystem::path exampleFolder() {
  return std::filesystem::path(__FILE__).parent_path().parent_path().parent_path().parent_path() / "examples";
}

struct Example {
  const char *name;
  Main main;
  std::vector<const char *> options;
  const char *input = nullptr;
};

void PrintTo(const Example &example, std::ostream *out) { *out << example.name; }

const std::string kWords = (exampleFolder() / "data" / "words.txt").string();

const Example kExamples[] = {
    {"car_sequencing", car_sequencing_main, {}, "data/cars_10.txt"},
    {"crossword", crossword_main, {"--words", kWords.c_str()}, "puzzles/stairs.grid"},
    {"exams", exams_main, {"--exams", "6", "--slots", "7", "--students", "5", "--quiet"}},
    {"configurator", configurator_main, {}},
    {"factory", factory_main, {"--quiet"}, "data/factory.csv"},
    {"golomb", golomb_main, {"5"}},
    {"jobshop", jobshop_main, {}, "data/jobshop_ft06.txt"},
    {"knapsack", knapsack_main, {"--steps"}, "data/knapsack_p01.txt"},
    {"magic_sequence", magic_sequence_main, {"7"}},
    {"magic_square", magic_square_main, {"3", "--all"}},
    {"nonogram", nonogram_main, {}, "puzzles/boat.non"},
    {"profile_demo", profile_demo_main, {"--places"}},
    {"quasigroup", quasigroup_main, {"--order", "6", "--holes", "20"}},
    {"queens", queens_main, {"6"}},
    {"rcpsp", rcpsp_main, {}, "data/rcpsp_12.sm"},
    {"roster", roster_main, {"--nurses", "5", "--days", "3", "--wishes", "20", "--quiet"}},
    {"send_more_money", send_more_money_main, {}},
    {"sudoku", sudoku_main, {"--quiet"}, "puzzles/hard9.txt"},
    {"tour", tour_main, {"--towns", "5", "--quiet"}},
    {"timetable", timetable_main, {"--classes", "1", "--quiet"}},
};

class ExampleMemory : public ::testing::TestWithParam<Example> {
 protected:
  static std::vector<std::string> commandLine() {
    const Example &example = GetParam();
    std::vector<std::string> words{example.name};
    words.insert(words.end(), example.options.begin(), example.options.end());
    if (example.input != nullptr) words.push_back((exampleFolder() / example.input).string());
    return words;
  }

  // False when the program came to its end without a k-th allocation.
  static bool failAllocation(int k) {
    const Ending ending = runWithout(GetParam().main, commandLine(), k);
    if (ending.status == 0) return false;
    EXPECT_EQ(ending.status, 2) << "allocation " << k;
    EXPECT_EQ(ending.errors, std::string(GetParam().name) + ": out of memory\n") << "allocation " << k;
    return true;
  }

  // The next allocation is `next(k)`.
  template <class Next>
  static void failUpTo(int most, Next next) {
    int points = 0;
    for (int k = 0; k < most && failAllocation(k) && !HasFailure(); k = next(k)) ++points;
    RecordProperty("points", points);
    EXPECT_GT(points, 10) << "the program allocates";
  }
};

TEST_P(ExampleMemory, EndsWithAMessageWhicheverOfTheFirstAllocationsFails) {
  failUpTo(1000, [](int k) { return k + 1 + k / 4; });
}

using HeavyExampleMemory = ExampleMemory;
TEST_P(HeavyExampleMemory, EndsWithAMessageWhicheverAllocationFails) {
  failUpTo(5000, [](int k) { return k + 1; });
}

std::string nameOf(const ::testing::TestParamInfo<Example> &info) { return info.param.name; }
INSTANTIATE_TEST_SUITE_P(Memory, ExampleMemory, ::testing::ValuesIn(kExamples), nameOf);
INSTANTIATE_TEST_SUITE_P(Memory, HeavyExampleMemory, ::testing::ValuesIn(kExamples), nameOf);

TEST(ExampleMemoryTable, NamesEveryExample) {
  for (const auto &entry : std::filesystem::directory_iterator(exampleFolder())) {
    if (entry.path().extension() != ".c") continue;
    const std::string name = entry.path().stem().string();
    const auto is = [&](const Example &example) { return example.name == name; };
    EXPECT_TRUE(std::any_of(std::begin(kExamples), std::end(kExamples), is)) << name;
  }
}

}  // namespace
}  // namespace koru::test
