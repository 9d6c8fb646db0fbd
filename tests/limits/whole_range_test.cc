// SPDX-License-Identifier: MIT
// Every posting of koru.h over variables that range over all ints, and what binding them to the ends does: no int
// overflows, invariants hold, and a restore brings the whole range back.
#include <climits>
#include <ostream>

#include "core/solver.h"
#include "support/memory/scenario.h"

namespace koru::test {

void PrintTo(const Scenario &scenario, std::ostream *out) { *out << scenario.name; }

namespace {

constexpr int kEnds[] = {INT_MIN, INT_MIN + 1, -1, 0, 1, INT_MAX - 1, INT_MAX};

const std::vector<Scenario> &postings() {
  static const std::vector<Scenario> scenarios = [] {
    Scenarios made;
    for (const auto add : {addPostings, addRelations, addGlobals}) add(made);
    std::vector<Scenario> ofKoruH;
    for (const Scenario &each : made.all()) {
      const catalogue::Row *row = catalogue::findRow(each.function());
      if (row != nullptr && isOfKoruH(*row)) ofKoruH.push_back(each);
    }
    return ofKoruH;
  }();
  return scenarios;
}

// Where one variable stands twice, or c < d as well as c = d, bounds crawl through all ints a step at a time.
bool crawls(const Scenario &scenario) {
  const std::string letters = scenario.name.substr(scenario.name.find_last_of('/') + 1);
  return letters == "cd" || letters == "xx" || letters == "xyx" || letters == "xtx";
}

class WholeRanges : public SolverTest, public ::testing::WithParamInterface<int> {
 protected:
  // One after the other until one is refused, then back.
  static void narrow(const Stage &stage, bool (*relation)(CSint *, int)) {
    for (const int first : kEnds) {
      const int label = cs_saveContext();
      const bool more = relation(stage.x, first) && relation(stage.c, -1 - first);
      if (more && relation(stage.y, first)) relation(stage.z, kEnds[3]);
      cs_restoreContextUntil(label);
    }
  }

  static void expectWholeAgain(const Stage &stage) {
    for (CSint *v : {stage.x, stage.y, stage.z}) {
      EXPECT_EQ(cs_getMin(v), INT_MIN);
      EXPECT_EQ(cs_getMax(v), INT_MAX);
    }
  }
};

// Removing an inner value would take a bit array of half a gigabyte, which is refused.
TEST_P(WholeRanges, AreNarrowedAtTheirEndsByEveryConstraint) {
  int posted = 0;
  for (const Scenario &scenario : postings()) {
    if (crawls(scenario)) continue;
    SCOPED_TRACE(scenario.name);
    SetUp();
    allocationHook = [](std::size_t size) { return size < 1000000; };
    Stage stage({INT_MIN, INT_MAX, GetParam()});
    cs_saveContext();
    if (scenario.run(stage)) ++posted;
    for (const auto relation : {cs_EQ, cs_LE, cs_GE, cs_NEQ}) narrow(stage, relation);
    cs_restoreAll();
    expectWholeAgain(stage);
    allocationHook = nullptr;
    TearDown();
    if (HasFailure()) break;
  }
  EXPECT_GT(posted, static_cast<int>(postings().size()) / 2) << "most can be posted";
}

INSTANTIATE_TEST_SUITE_P(WithAConstant, WholeRanges, ::testing::ValuesIn(kEnds),
                         [](const auto &end) { return std::to_string(end.index); });

}  // namespace
}  // namespace koru::test
