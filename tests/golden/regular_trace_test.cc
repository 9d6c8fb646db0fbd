// SPDX-License-Identifier: MIT
// The worked example of docs/regular.md, printed from the library: the page shows exactly what happens.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>

#include "support/constraints/automaton.h"
#include "support/constraints/regular_lists.h"
#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;

std::string page() {
  const auto root = std::filesystem::path(__FILE__).parent_path().parent_path().parent_path();
  std::ifstream file(root / "docs" / "regular.md");
  return {std::istreambuf_iterator<char>(file), {}};
}

// Four shifts: 0 off, 1 day, 2 night. A night is followed by another one or by a free day, three nights in a row are
// too many, and the last shift is no night. State 0 is rested, 1 and 2 count the nights.
const TestAutomaton kShifts{3, 3, 0, {0, 0, 1, 0, -1, 2, 0, -1, -1}, {0}};
constexpr int kLength = 4;

class RegularTraceTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    for (CSint *&v : x) v = cs_createCSint(0, 2);
    ASSERT_EQ(kShifts.post(x, kLength), 1);
    graph = static_cast<const regular::Graph *>(x[0]->constraints->constraint->record());
    allLists.emplace(*graph);
  }

  static std::string set(CSint *v) {
    std::string text = "{";
    for (const int value : values(v)) text += (text.size() > 1 ? "," : "") + std::to_string(value);
    return text + "}";
  }

  std::string domains() const {
    std::ostringstream text;
    text << "variables  ";
    for (CSint *v : x) text << "         " << set(v) << std::string(7 - set(v).size(), ' ');
    text << "\nlayers     ";
    for (int k = 0; k <= kLength; ++k)
      text << set(graph->layer(k)) << std::string(16 - set(graph->layer(k)).size(), ' ');
    std::string lines = text.str();
    for (std::size_t at = lines.find(" \n"); at != std::string::npos; at = lines.find(" \n")) lines.erase(at, 1);
    lines.erase(lines.find_last_not_of(' ') + 1);
    return lines + "\n";
  }

  // The entries, the support in brackets.
  static std::string list(const std::string &name, const ListedEdges &list) {
    std::ostringstream text;
    text << name;
    for (std::size_t i = 0; i < list.edges.size(); ++i) {
      const bool isSupport = static_cast<int>(i) == list.support;
      text << (isSupport ? "  [" : "   ") << list.edges[i].x << "," << list.edges[i].y << (isSupport ? "]" : " ");
    }
    std::string line = text.str();
    line.erase(line.find_last_not_of(' ') + 1);
    return line + "\n";
  }

  std::string lists(int k) const {
    std::string text;
    for (const int q : values(graph->layer(k))) text += list("source " + std::to_string(q), allLists->source(k, q));
    for (const int q : values(graph->layer(k + 1))) text += list("target " + std::to_string(q), allLists->target(k, q));
    for (const int a : values(x[k])) text += list("symbol " + std::to_string(a), allLists->label(k, a));
    return text;
  }

  std::string nameOf(const CSint *v) const {
    for (int k = 0; k < kLength; ++k)
      if (v == x[k]) return "x" + std::to_string(k);
    for (int k = 0; k <= kLength; ++k)
      if (v == graph->layer(k)) return "layer " + std::to_string(k);
    return "?";
  }

  std::string calls(const CallLog &log) const {
    static const char *const events[] = {"minimum raised",         "maximum lowered", "minimum raised, bound",
                                         "maximum lowered, bound", "bound inside",    "value removed inside"};
    std::string text;
    for (const koru::test::Call &call : log.calls) text += nameOf(call.variable) + ": " + events[call.code] + "\n";
    return text;
  }

  static void expectOnPage(const std::string &text) {
    EXPECT_NE(page().find("```\n" + text + "```\n"), std::string::npos) << "docs/regular.md lacks\n" << text;
  }

  CSint *x[kLength] = {};
  const regular::Graph *graph = nullptr;
  std::optional<RegularLists> allLists;
};

TEST_F(RegularTraceTest, ThePageShowsLayersAndListsAfterPosting) {
  expectOnPage(domains());
  expectOnPage(lists(1));
}

TEST_F(RegularTraceTest, ThePageShowsWhatFollowsFromANight) {
  cs_saveContext();
  {
    const CallLog log;
    ASSERT_TRUE(cs_EQ(x[1], 2));
    expectOnPage(calls(log));
  }
  expectOnPage(domains());
  expectOnPage(lists(1));
}

TEST_F(RegularTraceTest, ThePageShowsTheSupportsThatARestoreLeaves) {
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(x[1], 2));
  cs_restoreContext();
  expectOnPage(lists(1));
}

}  // namespace
