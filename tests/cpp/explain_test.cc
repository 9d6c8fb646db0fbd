// SPDX-License-Identifier: MIT
// koru::explain: lines, functions and conditions of several postings; limits, exceptions, and models that run already.
#include <sstream>

#include "brute_force.h"

namespace cpp_test {
namespace {

using koru::Explained;
using koru::Model;

// The lines below are counted from this one.
constexpr int kBegin = __LINE__;
void inOrder(Model &m) {
  const auto x = m.ints(4, 0, 9, "x");
  m.post(x[0] < x[1], x[1] < x[2], x[2] < x[3]);
  m.post(x[0] != 5 || x[3] != 7);
  m.post(x[1] >= 4);
  m.post(x[2] <= 4);
  m.post(koru::all_different(x));
}

// Three into two.
void pigeons(Model &m) {
  const auto x = m.ints(3, 0, 1);
  m.post(x[0] != x[1], x[1] != x[2], x[0] != x[2]);
  m.post(x[0] + x[1] + x[2] <= 3);
}

std::vector<int> linesOf(const koru::Explanation &e) {
  std::vector<int> lines;
  for (const koru::Reason &r : e.reasons) lines.push_back(r.line - kBegin);
  return lines;
}

TEST(CppExplain, NamesTheLinesOfAModel) {
  const koru::Explanation e = koru::explain(inOrder);
  EXPECT_EQ(e.status, Explained::minimal);
  EXPECT_EQ(linesOf(e), (std::vector<int>{3, 5, 6}));
  EXPECT_EQ(e.places, 3);
  EXPECT_GT(e.checks, 3);
  EXPECT_EQ(e.reasons[0].function, "cs_Lt");
  EXPECT_EQ(e.reasons[0].number, 2);
  EXPECT_EQ(e.reasons[0].number_of, 3);
  EXPECT_EQ(e.reasons[0].position, 2);
  EXPECT_EQ(e.reasons[0].caller, "inOrder");
  EXPECT_EQ(e.reasons[2].function, "cs_LE");
  EXPECT_NE(e.reasons[2].file.find("explain_test.cc"), std::string::npos);
}

TEST(CppExplain, NamesWhatHasToGo) {
  const koru::Explanation e = koru::explain(inOrder, {.nearest = true});
  EXPECT_EQ(e.status, Explained::minimal);
  EXPECT_EQ(linesOf(e), std::vector<int>{3});
}

TEST(CppExplain, IsAMethodOfAModelToo) {
  EXPECT_EQ(linesOf(Model::explain(inOrder)), (std::vector<int>{3, 5, 6}));
  Model m;
  const auto x = m.var(0, 3);
  m.post(x != 2);
  EXPECT_EQ(linesOf(m.explain(inOrder, {.nearest = true})), std::vector<int>{3});
  EXPECT_EQ(x.size(), 3) << "it is as before";
}

TEST(CppExplain, SearchesWhatIsNotRefused) {
  EXPECT_EQ(linesOf(koru::explain(pigeons)), (std::vector<int>{13, 13, 13}));
  const koru::Explanation cut = koru::explain(pigeons, {.search = {.choice_points = 1}});
  EXPECT_EQ(cut.status, Explained::unknown);
}

TEST(CppExplain, TellsOfASolutionAndOfNone) {
  EXPECT_EQ(koru::explain([](Model &m) { m.post(m.var(0, 3) == 2); }).status, Explained::solution);
  EXPECT_EQ(koru::explain([](Model &m) { m.product(m.div(m.var(1, 1), m.var(0, 0)), m.var(0, 1)); }).status,
            Explained::minimal);
}

TEST(CppExplain, HasLimits) {
  const koru::Explanation e = koru::explain(inOrder, {.checks = 1});
  EXPECT_EQ(e.status, Explained::partly);
  EXPECT_EQ(e.checks, 1);
  EXPECT_EQ(koru::explain(inOrder, {.seconds = 1000}).status, Explained::minimal);
}

TEST(CppExplain, LetsExceptionsThrough) {
  EXPECT_THROW(koru::explain([](Model &) { throw std::range_error("mine"); }), std::range_error);
  EXPECT_THROW(koru::explain(inOrder, {.checks = -1}), std::logic_error);
}

TEST(CppExplain, LeavesOtherModelsAsTheyAre) {
  Model m;
  const auto x = m.var(0, 9);
  m.post(x >= 4);
  EXPECT_EQ(koru::explain(inOrder).reasons.size(), 3U);
  m.post(x <= 5);
  EXPECT_EQ(x.domain(), (Values{4, 5}));
}

std::string text(const koru::Explanation &e) {
  std::ostringstream out;
  out << e;
  return out.str();
}

TEST(CppExplain, IsWritten) {
  koru::Explanation e{Explained::minimal, {{"cs_Lt", "rota.cc", 7, "rota", 2, 3, 2}, {"cs_GE", "rota.cc", 9}}, 2, 5};
  EXPECT_EQ(text(e),
            "no solution, because of 2 postings at 2 places\nrota.cc:7  cs_Lt  no. 2 of 3\nrota.cc:9  cs_GE\n");
  e = {Explained::partly, {{"cs_GE", "rota.cc", 9}}, 1, 5, true};
  EXPECT_EQ(text(e), "a solution without 1 posting at 1 place, perhaps fewer\nrota.cc:9  cs_GE\n");
  e.status = Explained::never;
  EXPECT_EQ(text(e), "no solution, whatever is left out\n");
  e.status = Explained::solution;
  EXPECT_EQ(text(e), "there is a solution\n");
}

TEST(CppRemovals, NameTheLines) {
  Model m;
  koru::record_removals(m);
  const auto x = m.ints(3, 0, 9, "x");
  const int line = __LINE__;
  m.post(x[0] < x[1]);
  m.post(x[1] < x[2]);
  m.post(x[0] >= 3, x[2] != 7);
  const std::vector<koru::Removal> steps = koru::why_removed(x[2], 4);
  ASSERT_EQ(steps.size(), 3U);
  EXPECT_EQ(steps[0].variable + steps[0].relation, "x[2]>=");
  EXPECT_EQ(steps[0].value, 5);
  EXPECT_EQ(steps[0].line, line + 2);
  EXPECT_EQ(steps[1].line, line + 1);
  EXPECT_EQ(steps[2].line, line + 3);
  EXPECT_EQ(steps[2].function, "cs_GE");
  std::ostringstream text;
  text << steps[2];
  EXPECT_EQ(text.str().rfind("x[0] >= 3  cs_GE  ", 0), 0U);
  EXPECT_TRUE(koru::why_removed(x[2], 8).empty());
  koru::record_removals(m, false);
  EXPECT_THROW(koru::why_removed(x[2], 4), std::logic_error);
}

TEST(CppRemovals, NameASearch) {
  Model m;
  koru::record_removals(m);
  const auto x = m.ints(2, 0, 1);
  m.post(x[0] != x[1]);
  koru::Solutions solutions = m.solutions({.vars = x});
  ASSERT_TRUE(solutions.begin() != solutions.end());
  const std::vector<koru::Removal> steps = koru::why_removed(x[1], 0);
  ASSERT_EQ(steps.size(), 2U);
  EXPECT_EQ(steps[0].variable, "a variable");
  EXPECT_TRUE(steps[1].by_search);
  std::ostringstream text;
  text << steps[1];
  EXPECT_EQ(text.str(), "a variable = 0  a search");
}

}  // namespace
}  // namespace cpp_test
