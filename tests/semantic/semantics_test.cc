// SPDX-License-Identifier: MIT
// Every function that posts a constraint against enumeration; semantic/harness/run.h says what is compared. A state is
// a posting, or a narrowing of one by a public relation, with all that is compared then.
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <set>
#include <string>

#include "catalogue/headers.h"
#include "semantic/cases.h"
#include "semantic/pinned.h"
#include "support/kit/instrumented.h"

namespace koru::test::brute {
namespace {

// Sanitized code is some six times slower and looks at a share of the postings.
constexpr long long kShare = kSanitized ? 4 : 1;

constexpr long long kWanted = 5000000;

// Adds up what the tests of this process have seen, and has the last word: "./dev semantics table" prints the
// consistency that was measured, "./dev pin" takes over what was seen.
class Total : public ::testing::Environment {
 public:
  void add(const std::string &name, long long postings, const Seen &seen) {
    std::printf("  %-24s %8lld postings %10lld states\n", name.c_str(), postings, seen.states);
    seen_[name] = seen;
  }

  void SetUp() override { start_ = Clock::now(); }
  void TearDown() override {
    if (std::getenv("KORU_TABLE") != nullptr) printTable();
    if (seen_.size() < 2) return;
    long long states = 0;
    for (const auto &[name, seen] : seen_) states += seen.states;
    const std::chrono::duration<double> seconds = Clock::now() - start_;
    std::printf("%lld states of %zu cases in %.1f s\n", states, seen_.size(), seconds.count());
    if (seen_.size() < allCases().size()) return;
    EXPECT_GE(states, kWanted / kShare);
    if (isPinning() && !::testing::Test::HasFailure()) pin(seen_);
  }

 private:
  using Clock = std::chrono::steady_clock;

  void printTable() const {
    std::cout << kTableHead;
    for (const auto &[name, seen] : seen_) std::cout << rowOf(name, seen.measure) << "\n";
  }

  Clock::time_point start_;
  std::map<std::string, Seen> seen_;
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
    const std::string &name = GetParam().name;
    const bool written = kShare == 1 && times == 1;  // what is seen is written down
    Sweep sweep(GetParam(), scale, replayed(), std::getenv("KORU_CALLS") != nullptr ? &std::cout : nullptr);
    Seen seen;
    if (written) sweep.measure = &seen.measure;
    sweep.run();
    EXPECT_TRUE(sweep.finding.empty()) << sweep.finding;
    seen.states = sweep.states;
    seen.calls = sweep.calls;
    total.add(name, sweep.postings, seen);
    if (sweep.single() || isPinning()) return;
    EXPECT_GE(sweep.states, times * expectedOf(name).leastStates / kShare);
    if (written) isAsWritten(name, seen);
  }

  static void isAsWritten(const std::string &name, const Seen &seen) {
    if (const std::optional<Calls> calls = expectedOf(name).calls) {
      EXPECT_EQ(seen.calls, *calls) << "see semantic/pinned.h";
    }
    if (const auto row = documentedRows().find(name); row != documentedRows().end()) {
      EXPECT_EQ(rowOf(name, seen.measure), row->second) << "docs/consistency.md says otherwise, see semantic/pinned.h";
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
  for (const auto &[name, expected] : expectedCases()) EXPECT_TRUE(names.contains(name)) << name << " is no case";
  for (const auto &[name, row] : documentedRows()) EXPECT_TRUE(names.contains(name)) << name << " is no case";
  EXPECT_GE(documentedRows().size(), expectedCases().size());
}

// What a row alone says is enough for a case: here of constraints that have cases of their own as well.
TEST(SemanticCases, OfARowAloneAgreeWithEnumeration) {
  for (const char *name : {"cs_Neq", "cs_IfNeq", "cs_Regular", "cs_Element", "cs_OccurDomain", "cs_ReifLt"}) {
    const Case c = defaultCase(catalogue::rowOf(name));
    Sweep sweep(c, {1, kShare, 0, 0});
    sweep.run();
    EXPECT_EQ(sweep.finding, "");
    EXPECT_GT(sweep.states, Expected{}.leastStates / kShare) << name;
  }
}

TEST(SemanticCases, ReachFiveMillionStatesTogether) {
  long long states = 0;
  for (const auto &[name, expected] : expectedCases()) states += expected.leastStates;
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

// The page that says which constraint when.
TEST(SemanticCases, AreOfFunctionsThatThePageOfConstraintsNames) {
  const auto root = std::filesystem::path(__FILE__).parent_path().parent_path().parent_path();
  std::ifstream file(root / "docs" / "constraints.md");
  const std::string page{std::istreambuf_iterator<char>(file), {}};
  for (const std::string &function : catalogue::statingFunctions())
    EXPECT_NE(page.find('`' + function + '`'), std::string::npos) << function << " is missing in docs/constraints.md";
}

}  // namespace
}  // namespace koru::test::brute
