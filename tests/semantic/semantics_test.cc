// SPDX-License-Identifier: MIT
// Every function that posts a constraint against enumeration; semantic/harness/run.h says what is compared. A state is
// a posting, or a narrowing of one by a public relation, with all that is compared then.
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>

#include "catalogue/headers.h"
#include "semantic/cases.h"
#include "semantic/expected.h"

namespace koru::test::brute {
namespace {

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KORU_SLOW_BUILD 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define KORU_SLOW_BUILD 1
#endif

// Sanitized code is some six times slower and looks at a share of the postings.
#ifdef KORU_SLOW_BUILD
constexpr long long kShare = 4;
#else
constexpr long long kShare = 1;
#endif

constexpr long long kWanted = 5000000;

// Whether to measure what has no support, and to print it as a table: "./dev semantics table".
const bool kTable = std::getenv("KORU_TABLE") != nullptr;

// Adds up what the tests of this process have seen, and has the last word.
class Total : public ::testing::Environment {
 public:
  void add(const std::string &name, const Sweep &sweep) {
    std::printf("  %-24s %8lld postings %10lld states\n", name.c_str(), sweep.postings, sweep.states);
    names_.insert(name);
    states_ += sweep.states;
  }

  void note(const std::string &name, const Measure &measure) {
    if (table_.str().empty()) printHead(table_);
    printRow(table_, name, measure);
  }

  void SetUp() override { start_ = Clock::now(); }
  void TearDown() override {
    std::cout << table_.str();
    if (names_.size() < 2) return;
    const std::chrono::duration<double> seconds = Clock::now() - start_;
    std::printf("%lld states of %zu cases in %.1f s\n", states_, names_.size(), seconds.count());
    if (names_.size() < allCases().size()) return;
    EXPECT_GE(states_, kWanted / kShare);
  }

 private:
  using Clock = std::chrono::steady_clock;
  Clock::time_point start_;
  std::set<std::string> names_;
  std::ostringstream table_;
  long long states_ = 0;
};

Total &total = *static_cast<Total *>(::testing::AddGlobalTestEnvironment(new Total));

// The posting of a case that alone is to be run again.
long long replayed() {
  const char *number = std::getenv("KORU_POSTING");
  return number != nullptr ? std::atoll(number) : 0;
}

class Semantics : public ::testing::TestWithParam<Case> {
 protected:
  // So many times the least number of states must be seen, unless a single posting is run again.
  static void run(const Scale &scale, long times) {
    Sweep sweep(GetParam(), scale, replayed(), std::getenv("KORU_CALLS") != nullptr ? &std::cout : nullptr);
    Measure measure;
    if (kTable) sweep.measure = &measure;
    sweep.run();
    EXPECT_TRUE(sweep.finding.empty()) << sweep.finding;
    if (kTable) total.note(GetParam().name, measure);
    total.add(GetParam().name, sweep);
    if (sweep.single()) return;
    const Expected expected = expectedOf(GetParam().name);
    EXPECT_GE(sweep.states, times * expected.leastStates / kShare);
    if (kShare == 1 && times == 1 && expected.pinned()) {
      EXPECT_EQ(sweep.calls, expected.calls) << "see expected.h";
    }
  }
};

TEST_P(Semantics, AgreesWithEnumeration) { run({1, kShare, 0, 0}, 1); }

// More postings, wider domains, and pairs of narrowings in full for some.
TEST_P(Semantics, HeavyAgreesWithEnumeration) { run({6, kShare, 1, 40}, 3); }

INSTANTIATE_TEST_SUITE_P(, Semantics, ::testing::ValuesIn(allCases()), [](const auto &row) { return row.param.name; });

// ----- the table

TEST(SemanticCases, HaveNamesOfTheirOwn) {
  std::set<std::string> names;
  for (const Case &c : allCases()) {
    EXPECT_TRUE(names.insert(c.name).second) << c.name;
  }
  for (const Expected &row : kExpected) EXPECT_TRUE(names.contains(row.name)) << row.name << " is no case";
}

// What a row alone says is enough for a case: here of constraints that have cases of their own as well.
TEST(SemanticCases, OfARowAloneAgreeWithEnumeration) {
  for (const char *name : {"cs_Neq", "cs_IfNeq", "cs_Regular", "cs_Element", "cs_OccurDomain", "cs_ReifLt"}) {
    const Case c = defaultCase(catalogue::rowOf(name));
    Sweep sweep(c);
    sweep.run();
    EXPECT_EQ(sweep.finding, "");
    EXPECT_GT(sweep.states, expectedOf("").leastStates) << name;
  }
}

TEST(SemanticCases, ReachFiveMillionStatesTogether) {
  long states = 0;
  for (const Expected &row : kExpected) states += row.leastStates;
  EXPECT_GE(states, kWanted);
}

// Without the models, which are no functions of the library.
std::set<std::string> statedFunctions() {
  std::set<std::string> stated;
  for (const Case &c : allCases()) stated.insert(c.functions.begin(), c.functions.end());
  for (const catalogue::Row &row : catalogue::modelRows()) EXPECT_EQ(stated.erase(row.name), 1U);
  return stated;
}

TEST(SemanticCases, CoverEveryFunctionThatStatesSomething) {
  EXPECT_EQ(statedFunctions(), catalogue::statingFunctions());
}

// "73 cases for the 65 functions", in a text that may break its lines anywhere.
TEST(SemanticCases, AreAsManyAsTheDocumentsSay) {
  const auto root = std::filesystem::path(__FILE__).parent_path().parent_path().parent_path();
  std::ifstream document(root / "docs" / "testing.md");
  std::string text;
  for (std::string word; document >> word;) text += word + " ";
  const std::string said = std::to_string(allCases().size() - catalogue::modelRows().size()) + " cases for the " +
                           std::to_string(statedFunctions().size()) + " functions that relate variables";
  EXPECT_NE(text.find(" " + said), std::string::npos) << "docs/testing.md is to say: " << said;
}

}  // namespace
}  // namespace koru::test::brute
