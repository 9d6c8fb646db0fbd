// SPDX-License-Identifier: MIT
// Definitions of the constraints, as plainly as they can be put. Numbers are 64-bit; sums and products 128-bit.
#include "minizinc/check.h"

#include <algorithm>
#include <map>
#include <set>

namespace koru::fzn {

namespace {

__extension__ using Wide = __int128;
using List = std::vector<long long>;
using Sets = std::vector<std::set<long long>>;

// Arguments with the values put in.
class Arguments {
 public:
  Arguments(const Syntax &s, const List &values, Part part) : s_(s), values_(values), list_(s.list(part)) {}

  std::size_t size() const { return list_.size(); }
  long long number(std::size_t i) const { return numberOf(list_[i]); }
  bool isSet(std::size_t i) const { return number(i) != 0; }
  List list(std::size_t i) const {
    List all;
    for (const Expr &e : s_.list(end(list_[i]).part)) all.push_back(numberOf(e));
    return all;
  }
  bool contains(std::size_t i, long long value) const { return contains(list_[i], value); }
  // Of element `j` of an array of sets.
  bool contains(std::size_t i, std::size_t j, long long value) const {
    return contains(s_.list(end(list_[i]).part)[j], value);
  }
  bool contains(const Expr &set, long long value) const {
    const Expr e = end(set);
    const std::span<const long long> numbers = s_.numbersOf(e);
    if (e.kind == Kind::kRange) return numbers[0] <= value && value <= numbers[1];
    return std::find(numbers.begin(), numbers.end(), value) != numbers.end();
  }

 private:
  Expr end(Expr e) const {
    for (;;) {
      if (e.kind == Kind::kAccess) {
        const Declaration &array = s_.declarations[static_cast<std::size_t>(s_.list(e.part)[0].number)];
        e = s_.list(array.value.part)[static_cast<std::size_t>(s_.list(e.part)[1].number - 1)];
      } else if (e.kind == Kind::kDeclared && !isVariable(e)) {
        e = s_.declarations[static_cast<std::size_t>(e.number)].value;
      } else {
        return e;
      }
    }
  }
  bool isVariable(const Expr &e) const {
    const Declaration &d = s_.declarations[static_cast<std::size_t>(e.number)];
    return d.isVar && !d.isArray;
  }
  long long numberOf(const Expr &expr) const {
    const Expr e = end(expr);
    return e.kind == Kind::kDeclared ? values_[static_cast<std::size_t>(e.number)] : e.number;
  }

  const Syntax &s_;
  const List &values_;
  std::span<const Expr> list_;
};

// --- What constraints mean, without a truth value ---

using Meaning = bool (*)(const Arguments &);

Wide sum(const Arguments &a) {
  const List coefficients = a.list(0), xs = a.list(1);
  Wide total = 0;
  for (std::size_t i = 0; i < xs.size(); ++i) total += static_cast<Wide>(coefficients[i]) * xs[i];
  return total - a.number(2);
}

bool allDifferent(const Arguments &a) {
  const List xs = a.list(0);
  return std::set<long long>(xs.begin(), xs.end()).size() == xs.size();
}

bool allTrue(const List &xs) {
  return std::all_of(xs.begin(), xs.end(), [](long long x) { return x != 0; });
}
bool anyTrue(const List &xs) {
  return std::any_of(xs.begin(), xs.end(), [](long long x) { return x != 0; });
}

bool clause(const Arguments &a) { return anyTrue(a.list(0)) || !allTrue(a.list(1)); }

bool isPower(const Arguments &a) {
  const long long x = a.number(0), y = a.number(1), z = a.number(2);
  if (y < 0) return x == 1 ? z == 1 : x == -1 ? z == (y % 2 == 0 ? 1 : -1) : x != 0 && z == 0;
  if (y == 0) return z == 1;
  if (x == 0 || x == 1) return z == x;
  if (x == -1) return z == (y % 2 == 0 ? 1 : -1);
  Wide power = 1;
  for (long long i = 0; i < y && power < (Wide{1} << 64) && power > -(Wide{1} << 64); ++i) power *= x;
  return power == z;
}

bool isElement(const Arguments &a) {
  const List xs = a.list(1);
  const long long i = a.number(0);
  return i >= 1 && i <= static_cast<long long>(xs.size()) && xs[static_cast<std::size_t>(i - 1)] == a.number(2);
}

bool isRow(const Arguments &a) {
  const List xs = a.list(0), rows = a.list(1);
  for (std::size_t r = 0; r + xs.size() <= rows.size(); r += std::max<std::size_t>(xs.size(), 1)) {
    if (std::equal(xs.begin(), xs.end(), rows.begin() + static_cast<std::ptrdiff_t>(r))) return true;
  }
  return xs.empty();
}

bool isWord(const Arguments &a) {
  const List xs = a.list(0), table = a.list(3);
  const long long symbols = a.number(2);
  long long state = a.number(4);
  for (const long long x : xs) {
    if (x < 1 || x > symbols) return false;
    state = table[static_cast<std::size_t>((state - 1) * symbols + x - 1)];
    if (state == 0) return false;
  }
  return a.contains(5, state);
}

bool isWordWithChoice(const Arguments &a) {
  const long long states = a.number(1), symbols = a.number(2);
  std::set<long long> now = {a.number(4)};
  for (const long long x : a.list(0)) {
    if (x < 1 || x > symbols) return false;
    std::set<long long> next;
    for (const long long q : now) {
      for (long long to = 1; to <= states; ++to) {
        if (a.contains(3, static_cast<std::size_t>((q - 1) * symbols + x - 1), to)) next.insert(to);
      }
    }
    now = std::move(next);
  }
  return std::any_of(now.begin(), now.end(), [&](long long q) { return a.contains(5, q); });
}

bool isPath(const Arguments &a) {
  const List from = a.list(4), to = a.list(6);
  std::set<long long> now = {1};
  for (const long long x : a.list(0)) {
    std::set<long long> next;
    for (std::size_t e = 0; e < from.size(); ++e) {
      if (now.contains(from[e]) && a.contains(5, e, x)) next.insert(to[e]);
    }
    now = std::move(next);
  }
  return now.contains(0);
}

bool areInverse(const Arguments &a) {
  const List f = a.list(0), g = a.list(1);
  const long long fBegin = a.number(2), gBegin = a.number(3);
  const auto oneWay = [](const List &x, const List &y, long long xBegin, long long yBegin) {
    for (std::size_t i = 0; i < x.size(); ++i) {
      const long long j = x[i] - yBegin;
      if (j < 0 || j >= static_cast<long long>(y.size())) return false;
      if (y[static_cast<std::size_t>(j)] != static_cast<long long>(i) + xBegin) return false;
    }
    return true;
  };
  return oneWay(f, g, fBegin, gBegin) && oneWay(g, f, gBegin, fBegin);
}

// Nodes that are their own successors are left out where `sub` says so; the others are one circuit.
template <bool sub>
bool isCircuit(const Arguments &a) {
  const List next = a.list(0);
  const long long begin = a.number(1), n = static_cast<long long>(next.size());
  long long first = -1, inside = 0;
  for (long long i = 0; i < n; ++i) {
    const long long to = next[static_cast<std::size_t>(i)] - begin;
    if (to < 0 || to >= n) return false;
    if (sub && to == i) continue;
    if (first < 0) first = i;
    ++inside;
  }
  if (first < 0) return true;
  long long at = first, steps = 0;
  do {
    at = next[static_cast<std::size_t>(at)] - begin;
    ++steps;
  } while (at != first && steps <= n);
  return at == first && steps == inside && (!sub || allDifferent(a));
}

long long countIn(const List &xs, long long value) { return std::count(xs.begin(), xs.end(), value); }

bool isCovered(const List &xs, const List &values) {
  return std::all_of(xs.begin(), xs.end(), [&](long long x) { return countIn(values, x) > 0; });
}

template <bool closed>
bool areCounts(const Arguments &a) {
  const List xs = a.list(0), values = a.list(1), counts = a.list(2);
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (countIn(xs, values[i]) != counts[i]) return false;
  }
  return !closed || isCovered(xs, values);
}

template <bool closed>
bool areCountsWithin(const Arguments &a) {
  const List xs = a.list(0), values = a.list(1), least = a.list(2), most = a.list(3);
  for (std::size_t i = 0; i < values.size(); ++i) {
    const long long count = countIn(xs, values[i]);
    if (count < least[i] || count > most[i]) return false;
  }
  return !closed || isCovered(xs, values);
}

Wide loadOf(long long bin, const List &bins, const List &sizes) {
  Wide load = 0;
  for (std::size_t i = 0; i < bins.size(); ++i) load += bins[i] == bin ? sizes[i] : 0;
  return load;
}

// Loads equal to, or at most, those that are given.
template <bool equal>
bool isPacked(const Arguments &a) {
  const List loads = a.list(0), bins = a.list(1), sizes = a.list(2);
  const long long begin = a.number(3), n = static_cast<long long>(loads.size());
  for (const long long bin : bins) {
    if (bin < begin || bin >= begin + n) return false;
  }
  for (long long i = 0; i < n; ++i) {
    const Wide load = loadOf(begin + i, bins, sizes), given = loads[static_cast<std::size_t>(i)];
    if (equal ? load != given : load > given) return false;
  }
  return true;
}

bool isPackedEqually(const Arguments &a) {
  const List bins = a.list(1), sizes = a.list(2);
  return std::all_of(bins.begin(), bins.end(), [&](long long b) { return loadOf(b, bins, sizes) <= a.number(0); });
}

bool precedes(const Arguments &a) {
  bool seen = false;
  for (const long long x : a.list(2)) {
    if (x == a.number(1) && !seen) return false;
    seen = seen || x == a.number(0);
  }
  return true;
}

struct Tasks {
  List starts, durations, uses;
  List present;  // empty: all are

  bool runs(std::size_t i, long long time) const {
    return (present.empty() || present[i] != 0) && starts[i] <= time && time < starts[i] + durations[i];
  }
  // At each start, which is where a sum can be greatest, and none is negative.
  bool fit(long long capacity) const {
    for (const long long time : starts) {
      Wide sum = 0;
      for (std::size_t i = 0; i < starts.size(); ++i) sum += runs(i, time) ? uses[i] : 0;
      if (sum > capacity) return false;
    }
    return capacity >= 0 && std::ranges::all_of(durations, [](long long d) { return d >= 0; }) &&
           std::ranges::all_of(uses, [](long long u) { return u >= 0; });
  }
};

bool isSchedule(const Arguments &a) {
  return Tasks{a.list(0), a.list(1), a.list(2), a.size() > 4 ? a.list(4) : List()}.fit(a.number(3));
}

bool isOneAtATime(const Arguments &a) {
  const List ones(a.list(0).size(), 1);
  return Tasks{a.list(0), a.list(1), ones, a.size() > 2 ? a.list(2) : List()}.fit(1);
}

bool areApart(const Arguments &a) {
  const List x = a.list(0), y = a.list(1), w = a.list(2), h = a.list(3);
  const auto overlap = [](long long at, long long size, long long other, long long otherSize) {
    return size > 0 && otherSize > 0 && at < other + otherSize && other < at + size;
  };
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (w[i] < 0 || h[i] < 0) return false;
    for (std::size_t j = 0; j < i; ++j) {
      if (overlap(x[i], w[i], x[j], w[j]) && overlap(y[i], h[i], y[j], h[j])) return false;
    }
  }
  return true;
}

template <class Compare>
bool isOrdered(const Arguments &a) {
  const List xs = a.list(0);
  return std::adjacent_find(xs.begin(), xs.end(), [](long long x, long long y) { return !Compare()(x, y); }) ==
         xs.end();
}

#define KORU_MEANING(expression) [](const Arguments &a) { return expression; }

struct Named {
  std::string_view name;
  Meaning meaning;
};

constexpr Named kMeanings[] = {
    {"int_eq", KORU_MEANING(a.number(0) == a.number(1))},
    {"int_ne", KORU_MEANING(a.number(0) != a.number(1))},
    {"int_le", KORU_MEANING(a.number(0) <= a.number(1))},
    {"int_lt", KORU_MEANING(a.number(0) < a.number(1))},
    {"int_ge", KORU_MEANING(a.number(0) >= a.number(1))},
    {"int_gt", KORU_MEANING(a.number(0) > a.number(1))},
    {"bool_eq", KORU_MEANING(a.number(0) == a.number(1))},
    {"bool2int", KORU_MEANING(a.number(0) == a.number(1))},
    {"bool_ne", KORU_MEANING(a.number(0) != a.number(1))},
    {"bool_not", KORU_MEANING(a.number(0) != a.number(1))},
    {"bool_xor", KORU_MEANING((a.number(0) != a.number(1)) == (a.size() < 3 || a.isSet(2)))},
    {"bool_le", KORU_MEANING(a.number(0) <= a.number(1))},
    {"bool_lt", KORU_MEANING(a.number(0) < a.number(1))},
    {"bool_ge", KORU_MEANING(a.number(0) >= a.number(1))},
    {"bool_gt", KORU_MEANING(a.number(0) > a.number(1))},
    {"set_in", KORU_MEANING(a.contains(1, a.number(0)))},
    {"int_lin_eq", KORU_MEANING(sum(a) == 0)},
    {"int_lin_ne", KORU_MEANING(sum(a) != 0)},
    {"int_lin_le", KORU_MEANING(sum(a) <= 0)},
    {"int_lin_lt", KORU_MEANING(sum(a) < 0)},
    {"int_lin_ge", KORU_MEANING(sum(a) >= 0)},
    {"int_lin_gt", KORU_MEANING(sum(a) > 0)},
    {"bool_lin_eq", KORU_MEANING(sum(a) == 0)},
    {"bool_lin_ne", KORU_MEANING(sum(a) != 0)},
    {"bool_lin_le", KORU_MEANING(sum(a) <= 0)},
    {"bool_lin_lt", KORU_MEANING(sum(a) < 0)},
    {"bool_lin_ge", KORU_MEANING(sum(a) >= 0)},
    {"bool_lin_gt", KORU_MEANING(sum(a) > 0)},
    {"int_plus", KORU_MEANING(static_cast<Wide>(a.number(0)) + a.number(1) == a.number(2))},
    {"int_minus", KORU_MEANING(static_cast<Wide>(a.number(0)) - a.number(1) == a.number(2))},
    {"int_times", KORU_MEANING(static_cast<Wide>(a.number(0)) * a.number(1) == a.number(2))},
    {"int_div", KORU_MEANING(a.number(1) != 0 && static_cast<Wide>(a.number(0)) / a.number(1) == a.number(2))},
    {"int_mod", KORU_MEANING(a.number(1) != 0 && static_cast<Wide>(a.number(0)) % a.number(1) == a.number(2))},
    {"int_pow", isPower},
    {"int_pow_fixed", isPower},
    {"int_abs", KORU_MEANING((a.number(0) < 0 ? -a.number(0) : a.number(0)) == a.number(1))},
    {"int_max", KORU_MEANING(std::max(a.number(0), a.number(1)) == a.number(2))},
    {"int_min", KORU_MEANING(std::min(a.number(0), a.number(1)) == a.number(2))},
    {"array_int_maximum", KORU_MEANING(std::ranges::max(a.list(1)) == a.number(0))},
    {"array_int_minimum", KORU_MEANING(std::ranges::min(a.list(1)) == a.number(0))},
    {"bool_clause", clause},
    {"array_bool_or", KORU_MEANING(anyTrue(a.list(0)) == (a.size() < 2 || a.isSet(1)))},
    {"array_bool_and", KORU_MEANING(allTrue(a.list(0)) == (a.size() < 2 || a.isSet(1)))},
    {"array_bool_xor", KORU_MEANING(countIn(a.list(0), 1) % 2 == 1)},
    {"bool_or", KORU_MEANING((a.isSet(0) || a.isSet(1)) == (a.size() < 3 || a.isSet(2)))},
    {"bool_and", KORU_MEANING((a.isSet(0) && a.isSet(1)) == (a.size() < 3 || a.isSet(2)))},
    {"array_int_element", isElement},
    {"array_bool_element", isElement},
    {"array_var_int_element", isElement},
    {"array_var_bool_element", isElement},
    {"koru_table", isRow},
    {"koru_regular", isWord},
    {"koru_regular_nfa", isWordWithChoice},
    {"koru_mdd", isPath},
    {"koru_all_different", allDifferent},
    {"koru_inverse", areInverse},
    {"koru_circuit", isCircuit<false>},
    {"koru_subcircuit", isCircuit<true>},
    {"koru_count", KORU_MEANING(countIn(a.list(0), a.number(1)) == a.number(2))},
    {"koru_member", KORU_MEANING(countIn(a.list(0), a.number(1)) > 0)},
    {"koru_global_cardinality", areCounts<false>},
    {"koru_global_cardinality_closed", areCounts<true>},
    {"koru_global_cardinality_low_up", areCountsWithin<false>},
    {"koru_global_cardinality_low_up_closed", areCountsWithin<true>},
    {"koru_nvalue", KORU_MEANING([](const List &xs) {
       return static_cast<long long>(std::set<long long>(xs.begin(), xs.end()).size());
     }(a.list(1)) == a.number(0))},
    {"koru_bin_packing_load", isPacked<true>},
    {"koru_bin_packing_capa", isPacked<false>},
    {"koru_bin_packing", isPackedEqually},
    {"koru_increasing", isOrdered<std::less_equal<>>},
    {"koru_decreasing", isOrdered<std::greater_equal<>>},
    {"koru_strictly_increasing", isOrdered<std::less<>>},
    {"koru_strictly_decreasing", isOrdered<std::greater<>>},
    {"koru_cumulative", isSchedule},
    {"koru_cumulative_opt", isSchedule},
    {"koru_disjunctive", isOneAtATime},
    {"koru_disjunctive_opt", isOneAtATime},
    {"koru_diffn", areApart},
    {"koru_lex_less", KORU_MEANING(a.list(0) < a.list(1))},
    {"koru_lex_lesseq", KORU_MEANING(a.list(0) <= a.list(1))},
    {"koru_value_precede", precedes},
};

#undef KORU_MEANING

// Null for a name that has none.
Meaning meaningOf(std::string_view name) {
  static const std::map<std::string_view, Meaning> all = [] {
    std::map<std::string_view, Meaning> table;
    for (const Named &named : kMeanings) table.emplace(named.name, named.meaning);
    return table;
  }();
  const auto it = all.find(name);
  return it == all.end() ? nullptr : it->second;
}

// Names in _reif and _imp have a truth value at the end.
bool holds(const Syntax &s, const List &values, const Constraint &c, bool &known) {
  std::string_view name = s.name(c.at);
  known = true;
  if (const Meaning meaning = meaningOf(name)) return meaning(Arguments(s, values, c.arguments));
  const bool reif = name.ends_with("_reif"), imp = name.ends_with("_imp");
  if (reif || imp) name.remove_suffix(reif ? 5 : 4);
  const Meaning meaning = meaningOf(name);
  known = (reif || imp) && meaning != nullptr && c.arguments.count > 0;
  if (!known) return false;
  const Arguments all(s, values, c.arguments);
  const bool truth = all.isSet(all.size() - 1);
  const bool statement = meaning(Arguments(s, values, {c.arguments.first, c.arguments.count - 1}));
  return reif ? statement == truth : statement || !truth;
}

bool isInDomain(const Syntax &s, const List &values, std::size_t i) {
  const Declaration &d = s.declarations[i];
  if (!d.isVar || d.isArray) return true;
  if (d.base == Base::kBool && values[i] != 0 && values[i] != 1) return false;
  const Arguments arguments(s, values, {});
  return d.domain.kind == Kind::kNone || arguments.contains(d.domain, values[i]);
}

}  // namespace

bool isSolution(const Syntax &syntax, const List &values, Mistake &wrong) {
  for (std::size_t i = 0; i < syntax.declarations.size(); ++i) {
    const Declaration &d = syntax.declarations[i];
    if (!isInDomain(syntax, values, i)) wrong.set(d.at, "wrong: a value outside of the domain");
  }
  for (const Constraint &c : syntax.constraints) {
    bool known = false;
    if (!holds(syntax, values, c, known))
      wrong.set(c.at, known ? "wrong: this does not hold" : "there is no check for this constraint");
  }
  return !wrong.isSet();
}

}  // namespace koru::fzn
