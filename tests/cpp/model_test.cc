// SPDX-License-Identifier: MIT
// Models of koru.hpp: failures that nobody looked at, contexts, several models, moves, misuse, and their variables as
// text.
#include <sstream>

#include "brute_force.h"

namespace cpp_test {
namespace {

using koru::IntVar;
using koru::Model;

template <class T>
std::string text(const T &shown) {
  std::ostringstream out;
  out << shown;
  return out.str();
}

TEST(CppVariable, TellsItsDomain) {
  Model m;
  const IntVar x = m.var(-1, 7, "x");
  EXPECT_EQ(text(x), "x: {-1..7}");
  m.post(koru::one_of(x, {-1, 0, 2, 4, 5, 6}));
  EXPECT_EQ(text(x), "x: {-1, 0, 2, 4..6}");
  EXPECT_EQ(x.min(), -1);
  EXPECT_EQ(x.max(), 6);
  EXPECT_EQ(x.size(), 6);
  EXPECT_FALSE(x.fixed());
  EXPECT_TRUE(x.contains(4));
  EXPECT_FALSE(x.contains(3));
  EXPECT_EQ(x.domain(), (Values{-1, 0, 2, 4, 5, 6}));
  EXPECT_THROW(static_cast<void>(x.value()), std::logic_error);
  m.post(x == 2);
  EXPECT_EQ(text(x), "x: 2");
  EXPECT_EQ(x.value(), 2);
  EXPECT_EQ(x.domain(), Values{2});
  x.name("y");
  EXPECT_EQ(x.name(), "y");
  EXPECT_EQ(text(m.boolean()), "{0, 1}");
  EXPECT_EQ(text(m.var_of({5, 1, 5, 9})), "{1, 5, 9}");
}

TEST(CppVariable, SeveralAreNamedByPosition) {
  Model m;
  const IntVars x = m.ints(6, 0, 1, "x");
  EXPECT_EQ(x[5].name(), "x[5]");
  EXPECT_EQ(m.bools(2)[1].name(), "");
  EXPECT_EQ(koru::rows(x, 3)[1][0].name(), "x[3]");
  EXPECT_EQ(koru::columns(x, 3)[2][1].name(), "x[5]");
  EXPECT_THROW(koru::rows(x, 4), std::invalid_argument);
  EXPECT_THROW(koru::columns(x, 0), std::invalid_argument);
}

TEST(CppVariable, OfNoModelIsRefused) {
  Model m;
  Model other;
  const IntVar none;
  EXPECT_THROW(static_cast<void>(none.min()), std::logic_error);
  EXPECT_THROW(m.post(none <= 3), std::invalid_argument);
  EXPECT_THROW(m.post(other.var(0, 1) <= 3), std::invalid_argument);
  EXPECT_THROW(m.post(koru::all_different({m.var(0, 1), other.var(0, 1)})), std::invalid_argument);
  EXPECT_THROW(m.var(1, 0), std::invalid_argument);
  EXPECT_THROW(m.var_of({}), std::invalid_argument);
}

TEST(CppModel, RemembersARefusal) {
  Model m;
  const IntVars x = m.ints(2, 0, 3);
  EXPECT_FALSE(m.failed());
  EXPECT_FALSE(m.post(x[0] == 4));
  m.post(x[0] == 1);
  EXPECT_TRUE(m.failed());
  EXPECT_EQ(m.solve({.vars = x}).status, koru::exhausted);
  EXPECT_FALSE(m.minimize(x[0], {.vars = x}).best);
  EXPECT_TRUE(found(m, x).empty());
}

TEST(CppModel, PostsUpToTheFirstRefusal) {
  Model m;
  const IntVars x = m.ints(6, 0, 9);
  EXPECT_TRUE(m.post(x[0] <= 1, x[1] <= 2, x[2] <= 3, x[3] <= 4, x[4] <= 5));
  EXPECT_EQ(m.all().size(), 6u);
  EXPECT_FALSE(m.post(x[0] <= 0, x[1] <= 0, x[2] <= 0, x[3] <= 0, x[4] > 9, x[5] <= 0));
  EXPECT_FALSE(m.post({x[5] <= 8, x[5] > 8, x[5] <= 7}));
  EXPECT_EQ(x[3].max(), 0);
  EXPECT_EQ(x[5].max(), 8);
}

// Refusals that no function of the library is asked for.
TEST(CppModel, RemembersWhatItRefusesItself) {
  Model m;
  const IntVar x = m.var(0, 3);
  const auto refused = [&](const koru::Constraint &c) {
    const koru::Context context = m.context();
    return !m.post(c) && m.failed() && m.solve().status == koru::exhausted;
  };
  EXPECT_TRUE(refused(x < x));
  EXPECT_TRUE(refused(2 * x == 3));
  EXPECT_TRUE(refused(0 * x > 0));
  EXPECT_TRUE(refused(koru::count({x}, 1).in(2, 5)));
  EXPECT_TRUE(refused(koru::any_of({})));
  EXPECT_FALSE(m.failed());
  EXPECT_EQ(found(m, {x}).size(), 4u);
}

TEST(CppModel, GoesOnWithARefusedResult) {
  Model m;
  const IntVar x = m.var(1, 3);
  const IntVar quotient = m.div(x, m.constant(0));
  EXPECT_TRUE(m.failed());
  m.post(quotient + x <= 5);
  EXPECT_EQ(m.solve().status, koru::exhausted);
}

TEST(CppContext, TakesBack) {
  Model m;
  const IntVar x = m.var(0, 9);
  {
    const koru::Context outer = m.context();
    m.post(x <= 5);
    {
      const koru::Context inner = m.context();
      EXPECT_FALSE(m.post(x > 5));
      EXPECT_TRUE(m.failed());
    }
    EXPECT_FALSE(m.failed());
    EXPECT_EQ(x.max(), 5);
    koru::Context kept = m.context();
    m.post(x <= 4);
    kept.keep();
    EXPECT_EQ(x.max(), 4);
  }
  EXPECT_EQ(x.max(), 9);
}

TEST(CppModel, SeveralByTurns) {
  Model a;
  const IntVars x = a.ints(2, 0, 2, "x");
  Model b;
  const IntVars y = b.ints(2, 0, 3, "y");
  a.post(x[0] < x[1]);
  b.post(y[0] > y[1]);
  koru::Solutions ofA = a.solutions({.vars = x});
  koru::Solutions ofB = b.solutions({.vars = y});
  int nbA = 0;
  int nbB = 0;
  for (bool more = true; more;) {
    const bool nextA = ofA.next();
    const bool nextB = ofB.next();
    EXPECT_TRUE(!nextA || ofA.solution()[x[0]] < ofA.solution()[x[1]]);
    EXPECT_TRUE(!nextB || ofB.solution()[y[0]] > ofB.solution()[y[1]]);
    nbA += nextA ? 1 : 0;
    nbB += nextB ? 1 : 0;
    more = nextA || nextB;
  }
  EXPECT_EQ(nbA, 3);
  EXPECT_EQ(nbB, 6);
  EXPECT_EQ(text(x[0]), "x[0]: {0, 1}");
}

TEST(CppModel, EndsInAnyOrder) {
  auto a = std::make_unique<Model>();
  auto b = std::make_unique<Model>();
  Model c;
  const IntVar x = c.var(0, 3);
  static_cast<void>(b->var(0, 1));
  a.reset();
  EXPECT_EQ(x.max(), 3);
  b.reset();
  EXPECT_EQ(found(c, {x}).size(), 4u);
}

TEST(CppModel, Moves) {
  Model a;
  const IntVar x = a.var(0, 3);
  Model b = std::move(a);
  b.post(x <= 2);
  EXPECT_EQ(x.max(), 2);
  EXPECT_THROW(a.var(0, 1), std::logic_error);  // NOLINT(bugprone-use-after-move): that is what is tested
  a = Model();
  EXPECT_EQ(a.var(0, 5).max(), 5);
  a = std::move(b);
  EXPECT_EQ(found(a, {x}).size(), 3u);
}

TEST(CppModel, ASearchOutlivesIt) {
  auto m = std::make_unique<Model>();
  koru::Solutions all = m->solutions({.vars = m->ints(2, 0, 1)});
  m.reset();
  int n = 0;
  while (all.next()) ++n;
  EXPECT_EQ(n, 4);
}

TEST(CppModel, BesideASolverOfTheCInterface) {
  cs_init();
  EXPECT_THROW(Model(), std::logic_error);
  CSint *outside = cs_createCSint(0, 7);
  CSsolver *parked = cs_detachSolver();
  Model m;
  const IntVar x = m.var(0, 3);
  m.park();
  ASSERT_TRUE(cs_attachSolver(parked));
  EXPECT_THROW(static_cast<void>(x.min()), std::logic_error);
  EXPECT_EQ(cs_getMax(outside), 7);
  cs_end();
  EXPECT_EQ(x.max(), 3);
  m.use();
  EXPECT_TRUE(cs_LE(x.get(), 2));
  EXPECT_EQ(x.max(), 2);
}

TEST(CppModel, AnotherOneWithinACallbackIsRefused) {
  Model a;
  Model b;
  const IntVar x = a.var(0, 3);
  const IntVar y = b.var(0, 3);
  EXPECT_THROW(a.post(koru::propagator({x}, [&](auto) { return y.max() == 3; })), std::logic_error);
  EXPECT_TRUE(a.failed());
  EXPECT_EQ(y.max(), 3);
}

TEST(CppProfiler, TellsTheLinesOfTheCaller) {
  const std::string path = testing::TempDir() + "koru_cpp_profile.txt";
  Model m;
  m.profile();
  const IntVars x = m.ints(3, 0, 2);
  m.post(x[0] < x[1]);
  const int line = __LINE__ - 1;
  m.post(koru::all_different(x));
  static_cast<void>(m.solve({.vars = x}));
  m.profile_report(path);
  std::ostringstream report;
  std::FILE *f = std::fopen(path.c_str(), "r");
  ASSERT_NE(f, nullptr);
  for (int c = std::fgetc(f); c != EOF; c = std::fgetc(f)) report << static_cast<char>(c);
  std::fclose(f);
  std::remove(path.c_str());
  const std::string place = std::string(__FILE__) + "\t" + std::to_string(line) + "\t0\tTestBody\tcs_Lt\t";
  EXPECT_NE(report.str().find(place), std::string::npos) << report.str();
  EXPECT_NE(report.str().find("\t" + std::to_string(line + 2) + "\t0\tTestBody\tcs_AllNeq\t"), std::string::npos);
}

TEST(CppProfiler, TellsDetailsWhenAsked) {
  const std::string path = testing::TempDir() + "koru_cpp_details.txt";
  Model m;
  m.profile(true);
  const IntVars x = m.ints(3, 0, 2);
  m.post(x[0] < x[1]);
  m.profile_report(path);
  char line[64] = "";
  std::FILE *f = std::fopen(path.c_str(), "r");
  ASSERT_NE(f, nullptr);
  EXPECT_NE(std::fgets(line, sizeof line, f), nullptr);
  std::fclose(f);
  std::remove(path.c_str());
  EXPECT_STREQ(line, "Koru Profiler: Details 1.0\n");
}

}  // namespace
}  // namespace cpp_test
