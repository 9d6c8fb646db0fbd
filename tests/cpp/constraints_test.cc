// SPDX-License-Identifier: MIT
// The constraints of koru.hpp mean what their names say; what each of them finds out is tested with the C functions.
#include <algorithm>
#include <cstdlib>
#include <numeric>

#include "brute_force.h"

namespace cpp_test {
namespace {

using koru::IntVar;
using koru::Strength;

bool different(const Values &v) { return std::set<int>(v.begin(), v.end()).size() == v.size(); }
int howMany(const Values &v, int value) { return static_cast<int>(std::count(v.begin(), v.end(), value)); }
Values part(const Values &v, std::size_t from, std::size_t n) {
  const auto start = v.begin() + static_cast<std::ptrdiff_t>(from);
  return {start, start + static_cast<std::ptrdiff_t>(n)};
}
IntVars part(const IntVars &v, std::size_t from, std::size_t n) {
  const auto start = v.begin() + static_cast<std::ptrdiff_t>(from);
  return {start, start + static_cast<std::ptrdiff_t>(n)};
}

TEST(CppConstraint, AllDifferent) {
  for (const Strength strength : {Strength::simple, Strength::bounds, Strength::domain})
    expectMeaning(4, 0, 4, different, [&](const IntVars &x) { return koru::all_different(x, strength); });
  expectMeaning(
      3, 0, 2, [](const Values &v) { return v[0] != v[2]; },
      [](const IntVars &x) {
        return koru::all_different({x[0], x[2]});
      });
}

TEST(CppConstraint, OfNoVariables) {
  koru::Model m;
  const IntVars none;
  for (const Strength strength : {Strength::simple, Strength::bounds, Strength::domain})
    EXPECT_TRUE(m.post(koru::all_different(none, strength)));
  EXPECT_TRUE(m.post(koru::circuit(none), koru::subcircuit(none), koru::inverse(none, none), koru::increasing(none)));
  EXPECT_TRUE(m.post(koru::lex_le(none, none), koru::disjunctive(none, none), koru::precede(none, 1, 2)));
  EXPECT_TRUE(m.post(koru::count(none, 3).is(0), koru::cardinality(none, {}, none), koru::bin_packing(none, {}, none)));
  EXPECT_TRUE(m.post(koru::nvalues(none, m.constant(0)), koru::cumulative(none, none, none, m.constant(0))));
  EXPECT_TRUE(m.post(koru::Constraint(), koru::Constraint()));
  EXPECT_FALSE(m.failed());
  EXPECT_FALSE(m.post(koru::lex_lt(none, none)));
  EXPECT_TRUE(m.failed());
}

TEST(CppConstraint, Tables) {
  const std::vector<std::vector<int>> rows = {{0, 1, 2}, {2, 2, 0}, {1, 1, 1}};
  const auto isRow = [&](const Values &v) { return std::find(rows.begin(), rows.end(), v) != rows.end(); };
  expectMeaning(3, 0, 2, isRow, [&](const IntVars &x) { return koru::table(x, rows); });
  expectMeaning(
      3, 0, 2, [&](const Values &v) { return !isRow(v); }, [&](const IntVars &x) { return koru::not_table(x, rows); });
  expectMeaning(
      2, 0, 3, [&](const Values &v) { return v[0] == 1 || v[1] == 2; },
      [&](const IntVars &x) {
        return koru::table(x, {{1, CS_ANY}, {CS_ANY, 2}});
      });
  expectMeaning(
      2, 0, 1, [&](const Values &) { return false; }, [&](const IntVars &x) { return koru::table(x, {}); });
  EXPECT_THROW(koru::Model().post(koru::table(IntVars(2), {{1, 2}, {1}})), std::invalid_argument);
}

// Never two ones in a row.
TEST(CppConstraint, Automata) {
  const auto noTwoOnes = [](const Values &v) {
    for (std::size_t i = 1; i < v.size(); ++i)
      if (v[i - 1] == 1 && v[i] == 1) return false;
    return true;
  };
  const koru::Automaton automaton = {.states = 2, .symbols = 2, .finals = {0, 1}, .next = {0, 1, 0, -1}};
  expectMeaning(4, 0, 1, noTwoOnes, [&](const IntVars &x) { return koru::regular(x, automaton); });
  const std::vector<koru::Arc> arcs = {{0, 0, 2}, {0, 1, 1}, {1, 0, 3}, {2, 0, 3}, {2, 1, 3}};
  expectMeaning(2, 0, 1, noTwoOnes, [&](const IntVars &x) { return koru::mdd(x, arcs, 0, 3); });
  EXPECT_THROW(koru::regular(IntVars(1), {.states = 2, .symbols = 2, .next = {0, 1, 0}}), std::invalid_argument);
  EXPECT_THROW(koru::regular(IntVars(1), {}), std::invalid_argument);
}

// The nodes from `start` on, and whether they come back to it.
bool isTour(const Values &next, bool mayLeaveOut) {
  if (!different(next)) return false;
  std::size_t start = 0;
  std::size_t outside = 0;
  for (std::size_t i = 0; i < next.size(); ++i) {
    if (mayLeaveOut && next[i] == static_cast<int>(i))
      ++outside;
    else
      start = i;
  }
  std::size_t length = 1;
  for (std::size_t i = static_cast<std::size_t>(next[start]); i != start; i = static_cast<std::size_t>(next[i]))
    ++length;
  return outside == next.size() || length + outside == next.size();
}

TEST(CppConstraint, Tours) {
  expectMeaning(
      4, 0, 3, [](const Values &v) { return isTour(v, false); }, [](const IntVars &x) { return koru::circuit(x); });
  expectMeaning(
      4, 0, 3, [](const Values &v) { return isTour(v, true); }, [](const IntVars &x) { return koru::subcircuit(x); });
}

TEST(CppConstraint, Permutations) {
  const auto inverse = [](const Values &v) {
    for (std::size_t i = 0; i < 3; ++i)
      if (v[3 + static_cast<std::size_t>(v[i])] != static_cast<int>(i)) return false;
    return true;
  };
  expectMeaning(6, 0, 2, inverse, [](const IntVars &x) { return koru::inverse(part(x, 0, 3), part(x, 3, 3)); });
  EXPECT_THROW(koru::inverse(IntVars(2), IntVars(3)), std::invalid_argument);
}

TEST(CppConstraint, Orders) {
  expectMeaning(
      3, 0, 3, [](const Values &v) { return std::is_sorted(v.begin(), v.end()); },
      [](const IntVars &x) { return koru::increasing(x); });
  expectMeaning(
      3, 0, 3, [](const Values &v) { return v[0] < v[1] && v[1] < v[2]; },
      [](const IntVars &x) { return koru::strictly_increasing(x); });
  expectMeaning(
      4, 0, 2, [](const Values &v) { return part(v, 0, 2) <= part(v, 2, 2); },
      [](const IntVars &x) { return koru::lex_le(part(x, 0, 2), part(x, 2, 2)); });
  expectMeaning(
      4, 0, 2, [](const Values &v) { return part(v, 0, 2) < part(v, 2, 2); },
      [](const IntVars &x) { return koru::lex_lt(part(x, 0, 2), part(x, 2, 2)); });
  const auto preceded = [](const Values &v) {
    return std::find(v.begin(), v.end(), 1) <= std::find(v.begin(), v.end(), 2);
  };
  expectMeaning(4, 0, 2, preceded, [](const IntVars &x) { return koru::precede(x, 1, 2); });
}

TEST(CppConstraint, Counts) {
  for (int lo = -1; lo <= 4; ++lo) {
    for (int hi = lo - 1; hi <= 4; ++hi) {
      expectMeaning(
          3, 0, 2, [&](const Values &v) { return howMany(v, 1) >= lo && howMany(v, 1) <= hi; },
          [&](const IntVars &x) { return koru::count(x, 1).in(lo, hi); });
    }
  }
  expectMeaning(
      3, 0, 2, [](const Values &v) { return howMany(v, 2) == 2; },
      [](const IntVars &x) { return koru::count(x, 2).is(2); });
  expectMeaning(
      3, 0, 2, [](const Values &v) { return howMany(v, 2) == v[0]; },
      [](const IntVars &x) { return koru::count(x, 2).is(x[0]); });
  expectMeaning(
      4, 0, 2, [](const Values &v) { return howMany(part(v, 0, 3), v[3]) == v[0]; },
      [](const IntVars &x) { return koru::count(part(x, 0, 3), x[3], x[0]); });
  expectMeaning(
      4, 0, 3, [](const Values &v) { return static_cast<int>(std::set<int>(v.begin() + 1, v.end()).size()) == v[0]; },
      [](const IntVars &x) { return koru::nvalues(part(x, 1, 3), x[0]); });
}

TEST(CppConstraint, Cardinalities) {
  for (const Strength strength : {Strength::simple, Strength::domain}) {
    for (const bool closed : {false, true}) {
      const auto holds = [&](const Values &v) {
        const Values x = part(v, 0, 3);
        return howMany(x, 0) == v[3] && howMany(x, 2) == v[4] && (!closed || howMany(x, 0) + howMany(x, 2) == 3);
      };
      expectMeaning(5, 0, 2, holds, [&](const IntVars &x) {
        return koru::cardinality(part(x, 0, 3), {0, 2}, part(x, 3, 2), closed, strength);
      });
    }
  }
}

TEST(CppConstraint, Bins) {
  const std::vector<int> sizes = {1, 2, 1};
  const auto holds = [&](const Values &v) {
    int loads[2] = {0, 0};
    for (std::size_t i = 0; i < 3; ++i) {
      if (v[i] > 1) return false;
      loads[v[i]] += sizes[i];
    }
    return loads[0] == v[3] && loads[1] == v[4];
  };
  expectMeaning(5, 0, 3, holds,
                [&](const IntVars &x) { return koru::bin_packing(part(x, 0, 3), sizes, part(x, 3, 2)); });
}

TEST(CppConstraint, Elements) {
  const std::vector<int> values = {3, 1, 1};
  const auto inside = [](const Values &v) { return v[0] >= 0 && v[0] < 3; };
  expectMeaning(
      2, -1, 3, [&](const Values &v) { return inside(v) && values[static_cast<std::size_t>(v[0])] == v[1]; },
      [&](const IntVars &x) { return koru::element(values, x[0], x[1]); });
  expectMeaning(
      4, 0, 3, [&](const Values &v) { return inside(v) && v[static_cast<std::size_t>(v[0]) + 1] == v[1]; },
      [&](const IntVars &x) { return koru::element(part(x, 1, 3), x[0], x[1]); });
}

// Three tasks, the last of which may be left out.
TEST(CppConstraint, Schedules) {
  const std::vector<int> durations = {2, 1, 2};
  const auto load = [&](const Values &v, int time) {
    int all = 0;
    for (std::size_t i = 0; i < 3; ++i)
      if ((i < 2 || v[3] >= 1) && v[i] <= time && time < v[i] + durations[i]) ++all;
    return all;
  };
  const auto atMost = [&](int most) {
    return [&load, most](const Values &v) {
      for (int time = 0; time < 6; ++time)
        if (load(v, time) > most) return false;
      return true;
    };
  };
  const auto schedule = [&](bool alone) {
    koru::Model m;
    const IntVars x = m.ints(4, 0, 3);
    const IntVars d = m.constants(durations);
    const IntVars present = {m.constant(1), m.constant(1), x[3]};
    const IntVars starts = part(x, 0, 3);
    m.post(alone ? koru::disjunctive(starts, d, present)
                 : koru::cumulative(starts, d, m.constants({1, 1, 1}), m.constant(2), present));
    EXPECT_EQ(found(m, x), counted(4, 0, 3, atMost(alone ? 1 : 2)));
    m.post(x[3] >= 1);
    const std::set<Values> all = found(m, x);
    m.post(alone ? koru::disjunctive(starts, d) : koru::cumulative(starts, d, m.constants({1, 1, 1}), m.constant(2)));
    EXPECT_EQ(found(m, x), all);
  };
  schedule(true);
  schedule(false);
}

TEST(CppConstraint, Rectangles) {
  const auto apart = [](const Values &v) {
    return v[0] + 2 <= v[2] || v[2] + 1 <= v[0] || v[1] + 1 <= v[3] || v[3] + 2 <= v[1];
  };
  koru::Model m;
  const IntVars x = m.ints(4, 0, 2);
  m.post(koru::no_overlap({x[0], x[2]}, m.constants({2, 1}), {x[1], x[3]}, m.constants({1, 2})));
  EXPECT_EQ(found(m, x), counted(4, 0, 2, apart));
  EXPECT_THROW(koru::no_overlap({x[0]}, {x[0]}, {x[0]}, {}), std::invalid_argument);
}

TEST(CppConstraint, TasksWithTimesBetween) {
  // After task 0 comes nothing for 3 units, after task 1 one can go on; the second is there when the third says so.
  const auto apart = [](const Values &v) { return v[2] < 1 || v[1] >= v[0] + 4 || v[0] >= v[1] + 2; };
  koru::Model m;
  const IntVars x = m.ints(3, 0, 5);
  const IntVars starts = part(x, 0, 2);
  const IntVars ones = m.constants({1, 1});
  m.post(koru::transitions(starts, ones, {0, 1}, {0, 1}, {{0, 3}, {1, 0}}, {ones[0], x[2]}));
  EXPECT_EQ(found(m, x), counted(3, 0, 5, apart));
  m.post(koru::transitions(starts, ones, {0, 1}, {0, 1}, {{0, 3}, {1, 0}}));
  EXPECT_EQ(found(m, x), counted(3, 0, 5, [&](const Values &v) { return apart({v[0], v[1], 1}); }));
  EXPECT_THROW(koru::transitions(starts, ones, {0}, {0, 1}, {{0}}), std::invalid_argument);
  EXPECT_THROW(koru::transitions(starts, ones, {0, 1}, {0, 1}, {{0, 3}, {1}}), std::invalid_argument);
}

TEST(CppConstraint, Precedences) {
  koru::Model m;
  const IntVars x = m.ints(3, 0, 4);
  m.post(koru::precedence(x[0], m.constant(1), x[1], 1, x[2]));
  EXPECT_EQ(found(m, x), counted(3, 0, 4, [](const Values &v) { return v[2] < 1 || v[0] + 2 <= v[1]; }));
  m.post(koru::precedence(x[1], m.constant(2), x[0]));
  EXPECT_EQ(found(m, x), counted(3, 0, 4, [](const Values &v) { return v[2] < 1 && v[1] + 2 <= v[0]; }));
}

TEST(CppConstraint, TasksOfTasks) {
  koru::Model m;
  const IntVar one = m.constant(1);
  const IntVars x = m.ints(4, 0, 2);
  {
    const koru::Context c = m.context();
    m.post(koru::span(x[0], x[1], {x[2], x[3]}, {one, one}));
    EXPECT_EQ(found(m, x), counted(4, 0, 2, [](const Values &v) {
                const int first = std::min(v[2], v[3]);
                return v[0] == first && v[0] + v[1] == std::max(v[2], v[3]) + 1;
              }));
  }
  {
    const koru::Context c = m.context();
    m.post(koru::span(x[0], one, {x[1]}, {one}, {x[2]}, x[3]));
    EXPECT_EQ(found(m, x),
              counted(4, 0, 2, [](const Values &v) { return (v[2] > 0) == (v[3] > 0) && (v[3] < 1 || v[0] == v[1]); }));
  }
  m.post(koru::alternative(x[0], one, {x[1], x[2]}, {one, one}, {x[3], m.reify(x[3] == 0)}));
  EXPECT_EQ(found(m, x), counted(4, 0, 2, [](const Values &v) { return v[0] == (v[3] > 0 ? v[1] : v[2]); }));
  EXPECT_THROW(koru::span(one, one, {one}, {}), std::invalid_argument);
}

TEST(CppConstraint, Levels) {
  const auto stays = [](const Values &v) {
    for (int now = 0; now <= 2; ++now) {
      const int level = (v[0] <= now && v[2] > 0 ? -1 : 0) + (v[1] <= now ? 1 : 0);
      if (level < 0 || level > 1) return false;
    }
    return true;
  };
  koru::Model m;
  const IntVars x = m.ints(3, 0, 2);
  const IntVars changes = m.constants({-1, 1});
  m.post(koru::reservoir({x[0], x[1]}, changes, 0, 0, 1, {x[2], m.constant(1)}));
  EXPECT_EQ(found(m, x), counted(3, 0, 2, stays));
  m.post(koru::reservoir({x[0], x[1]}, changes, 0, 0, 1));
  EXPECT_EQ(found(m, x), counted(3, 0, 2, [&](const Values &v) { return stays({v[0], v[1], 1}); }));
}

// --- Results ---

// A result of the first variables of lo..hi, against its meaning; where there is none, there is no solution.
void expectResult(int lo, int hi, const std::function<IntVar(koru::Model &, const IntVars &)> &make,
                  const std::function<std::optional<int>(const Values &)> &meaning) {
  koru::Model m;
  const IntVars x = m.ints(3, lo, hi);
  const IntVar result = make(m, x);
  std::set<Values> all;
  for (const koru::Solution &s : m.solutions({.vars = x})) {
    all.insert(s[x]);
    EXPECT_EQ(s[result], meaning(s[x]));
  }
  EXPECT_EQ(all, counted(3, lo, hi, [&](const Values &v) { return meaning(v).has_value(); }));
}

TEST(CppResult, IsWhatItsNameSays) {
  using koru::Model;
  expectResult(
      -2, 2, [](Model &m, const IntVars &x) { return m.min(x); },
      [](const Values &v) { return *std::min_element(v.begin(), v.end()); });
  expectResult(
      -2, 2, [](Model &m, const IntVars &x) { return m.max(x); },
      [](const Values &v) { return *std::max_element(v.begin(), v.end()); });
  expectResult(
      -2, 2, [](Model &m, const IntVars &x) { return m.abs(x[0]); }, [](const Values &v) { return std::abs(v[0]); });
  expectResult(
      -2, 2, [](Model &m, const IntVars &x) { return m.product(x[0], x[1]); },
      [](const Values &v) { return v[0] * v[1]; });
  const auto unlessZero = [](const Values &v, int (*f)(int, int)) {
    return v[1] != 0 ? std::optional<int>(f(v[0], v[1])) : std::nullopt;
  };
  expectResult(
      -5, 5, [](Model &m, const IntVars &x) { return m.div(x[0], x[1]); },
      [&](const Values &v) { return unlessZero(v, [](int a, int b) { return a / b; }); });
  expectResult(
      -5, 5, [](Model &m, const IntVars &x) { return m.mod(x[0], x[1]); },
      [&](const Values &v) { return unlessZero(v, [](int a, int b) { return a % b; }); });
  expectResult(
      0, 4, [](Model &m, const IntVars &x) { return m.pow(x[0], x[1]); },
      [](const Values &v) {
        int power = 1;
        for (int i = 0; i < v[1]; ++i) power *= v[0];
        return power;
      });
  expectResult(
      -1, 2,
      [](Model &m, const IntVars &x) {
        return m.element({7, -7, 7}, x[0]);
      },
      [](const Values &v) { return v[0] >= 0 ? std::optional<int>(v[0] == 1 ? -7 : 7) : std::nullopt; });
  expectResult(
      0, 3, [](Model &m, const IntVars &x) { return m.element(x, x[0]); },
      [](const Values &v) { return v[0] < 3 ? std::optional<int>(v[static_cast<std::size_t>(v[0])]) : std::nullopt; });
  expectResult(
      0, 2, [](Model &m, const IntVars &x) { return m.count(x, 1); }, [](const Values &v) { return howMany(v, 1); });
  expectResult(
      0, 2, [](Model &m, const IntVars &x) { return m.nvalues(x); },
      [](const Values &v) { return static_cast<int>(std::set<int>(v.begin(), v.end()).size()); });
  expectResult(
      -2, 2, [](Model &m, const IntVars &x) { return m.var(2 * x[0] - x[1] + 5, "sum"); },
      [](const Values &v) { return 2 * v[0] - v[1] + 5; });
}

TEST(CppResult, OfPowersWithNegativeBasesAndExponents) {
  koru::Model m;
  const IntVar x = m.var(-3, 3);
  const IntVar y = m.var(-1, 3);
  const IntVar z = m.pow(x, y);
  std::set<Values> all;
  for (const koru::Solution &s : m.solutions({.vars = {x, y}})) all.insert({s[x], s[y], s[z]});
  EXPECT_EQ(all.size(), 34u);  // all but 0 to the power of -1
  EXPECT_TRUE(all.count({-3, 3, -27}) == 1 && all.count({-1, -1, -1}) == 1 && all.count({2, -1, 0}) == 1);
}

TEST(CppResult, BeyondTheInts) {
  koru::Model m;
  const IntVar x = m.var(0, 2000000000);
  EXPECT_THROW(m.var(x + x), std::range_error);
  EXPECT_EQ(m.div(m.constant(-2147483647 - 1), m.constant(1)).value(), -2147483647 - 1);
  EXPECT_EQ(m.pow(m.constant(2), m.constant(30)).value(), 1 << 30);
  EXPECT_FALSE(m.failed());
  m.pow(m.constant(2), m.constant(31));
  EXPECT_TRUE(m.failed());
  EXPECT_THROW(m.element(std::vector<int>{}, x), std::invalid_argument);
  EXPECT_THROW(m.element(IntVars{}, x), std::invalid_argument);
}

// --- A constraint of the host's ---

TEST(CppPropagator, NarrowsAndRefuses) {
  koru::Model m;
  const IntVars x = m.ints(3, 0, 3);
  m.post(koru::propagator(x, [&m](std::span<const IntVar> v) { return m.post(v[0] <= v[1].max()); }));
  m.post(koru::propagator({x[2]}, [](std::span<const IntVar> v) { return v[0].max() > 0; }));
  m.post(x[1] <= 2);
  EXPECT_EQ(x[0].max(), 2);
  const auto holds = [](const Values &v) { return v[0] <= v[1] && v[1] <= 2 && v[2] > 0; };
  EXPECT_EQ(found(m, x), counted(3, 0, 3, holds));
}

}  // namespace
}  // namespace cpp_test
