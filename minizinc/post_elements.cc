// SPDX-License-Identifier: MIT
// Elements of arrays, tables, automata and diagrams. FlatZinc counts from 1 where the library counts from 0: arrays get
// an element in front that the index cannot reach.
#include <climits>

#include "minizinc/postings.h"

namespace koru::fzn {

namespace {

// --- Elements ---

// The positions that hold the value.
bool choosePositions(CSint *index, const std::vector<long long> &values, long long value) {
  std::vector<int> positions;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (values[i] == value) positions.push_back(static_cast<int>(i + 1));
  }
  return cs_InArray(index, positions.data(), static_cast<int>(positions.size())) != 0;
}

bool elementOfConstants(const Call &call) {
  CSint *index = call.variable(0);
  const Operand result = call.operand(2);
  if (result.isConstant) return choosePositions(index, call.constants(1), result.value);
  std::vector<int> values = {0};
  for (const int value : call.ints(1)) values.push_back(value);
  return cs_GE(index, 1) && cs_ElementOf(index, values.data(), static_cast<int>(values.size()), call.variable(2));
}

constexpr long long kWide = 256;

// Whether a look at each value of the result would cost more than it brings: then bounds have to do.
bool isWide(const Array &array) {
  long long low = INT_MAX, high = INT_MIN;
  for (CSint *v : array) {
    low = std::min<long long>(low, cs_getMin(v));
    high = std::max<long long>(high, cs_getMax(v));
  }
  return high - low >= kWide;
}

bool elementOfVariables(const Call &call) {
  const Operand index = call.operand(0);
  const std::span<const Expr> list = call.list(1);
  if (index.isConstant) {
    if (index.value < 1 || index.value > static_cast<long long>(list.size())) return false;
    return cs_Eq(call.variables.get(call.variables.operand(list[static_cast<std::size_t>(index.value - 1)])),
                 call.variable(2));
  }
  Array array = call.array(1);
  if (array.empty()) return false;
  array.insert(array.begin(), array.front());
  if (!cs_GE(call.variable(0), 1) || !cs_LE(call.variable(0), sizeOf(array) - 1)) return false;
  if (isWide(array)) {
    Array &kept = call.keep(std::move(array));
    return call.define(2, cs_VarElementRange(call.variable(0), kept.data(), sizeOf(kept)));
  }
  return cs_VarElementOf(call.variable(0), array.data(), sizeOf(array), call.variable(2));
}

// --- Tables ---

bool table(const Call &call) {
  Array array = call.array(0);
  const std::vector<int> rows = call.ints(1);
  if (array.empty()) return true;
  if (rows.size() % array.size() != 0) return call.refuse("the table has a row that is not as long as the array");
  return cs_Table(array.data(), sizeOf(array), rows.data(), static_cast<int>(rows.size() / array.size()));
}

// --- Automata ---

// The file counts states and symbols from 1, with 0 for no state. The symbol 0 gets a column without transitions.
bool regular(const Call &call) {
  const std::vector<int> table = call.ints(3);
  const int states = call.intAt(1), symbols = call.intAt(2);
  if (states < 1 || symbols < 0 || table.size() != static_cast<std::size_t>(states) * static_cast<std::size_t>(symbols))
    return call.refuse("the table does not have a row for each state and a column for each symbol");
  std::vector<int> shifted;
  for (std::size_t i = 0; i < table.size(); ++i) {
    if (i % static_cast<std::size_t>(symbols) == 0) shifted.push_back(-1);
    shifted.push_back(table[i] - 1);
  }
  std::vector<int> finals;
  const IntSet accepting = call.set(5);
  for (int q = 1; q <= states; ++q) {
    if (accepting.contains(q)) finals.push_back(q - 1);
  }
  Array &word = call.keep(call.array(0));
  if (word.empty()) return accepting.contains(call.constant(4));
  return cs_Regular(word.data(), sizeOf(word), shifted.data(), states, symbols + 1, call.intAt(4) - 1, finals.data(),
                    static_cast<int>(finals.size())) != 0;
}

struct Arcs {
  std::vector<int> sources, values, targets;

  void add(long long from, long long value, long long to) {
    sources.push_back(static_cast<int>(from));
    values.push_back(static_cast<int>(value));
    targets.push_back(static_cast<int>(to));
  }
  // For each value of the label that the variables can take.
  void addAll(long long from, const IntSet &label, long long to, long long low, long long high) {
    for (long long v = std::max(low, label.low); v <= std::min(high, label.high); ++v) {
      if (label.contains(v)) add(from, v, to);
    }
  }
  bool post(Array &array, int root, int terminal) const {
    return cs_Mdd(array.data(), sizeOf(array), sources.data(), values.data(), targets.data(),
                  static_cast<int>(sources.size()), root, terminal);
  }
};

// The least and the greatest value of all.
std::pair<int, int> spanOf(const Array &array) {
  std::pair<int, int> span = {INT_MAX, INT_MIN};
  for (CSint *v : array) span = {std::min(span.first, cs_getMin(v)), std::max(span.second, cs_getMax(v))};
  return span;
}

// An automaton with several successors for a symbol. Transitions into a final state also lead to the state 0, which has
// no successor: the word ends there.
bool regularWithChoice(const Call &call) {
  Array word = call.array(0);
  const long long states = call.constant(1), symbols = call.constant(2);
  const std::vector<IntSet> table = call.sets(3);
  const IntSet accepting = call.set(5);
  if (word.empty()) return accepting.contains(call.constant(4));
  if (states < 1 || symbols < 0 || static_cast<long long>(table.size()) != states * symbols)
    return call.refuse("the table does not have a row for each state and a column for each symbol");
  Arcs arcs;
  for (long long q = 1; q <= states; ++q) {
    for (long long a = 1; a <= symbols; ++a) {
      const IntSet &next = table[static_cast<std::size_t>((q - 1) * symbols + a - 1)];
      bool ends = false;
      for (long long to = std::max(1LL, next.low); to <= std::min(states, next.high); ++to) {
        if (!next.contains(to)) continue;
        arcs.add(q, a, to);
        ends = ends || accepting.contains(to);
      }
      if (ends) arcs.add(q, a, 0);
    }
  }
  return arcs.post(word, call.intAt(4), 0);
}

// Arguments: variables, nodes, levels, edges, from, labels, to; the root is 1, the terminal 0.
bool diagram(const Call &call) {
  Array array = call.array(0);
  const std::vector<int> from = call.ints(4), to = call.ints(6);
  const std::vector<IntSet> labels = call.sets(5);
  if (array.empty()) return true;
  if (from.size() != to.size() || from.size() != labels.size())
    return call.refuse("the arrays of edges are not equally long");
  const auto [low, high] = spanOf(array);
  Arcs arcs;
  for (std::size_t e = 0; e < from.size(); ++e) arcs.addAll(from[e], labels[e], to[e], low, high);
  return arcs.post(array, 1, 0);
}

constexpr Row kRows[] = {
    {"array_int_element", "xCx", elementOfConstants},
    {"array_bool_element", "xCx", elementOfConstants},
    {"array_var_int_element", "xXx", elementOfVariables, false, 2},
    {"array_var_bool_element", "xXx", elementOfVariables, false, 2},
    {"koru_table", "XC", table},
    {"koru_regular", "XccCcs", regular},
    {"koru_regular_nfa", "XccScs", regularWithChoice},
    {"koru_mdd", "XcCcCSC", diagram},
};

}  // namespace

std::span<const Row> elementRows() { return kRows; }

}  // namespace koru::fzn
