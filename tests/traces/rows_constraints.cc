// SPDX-License-Identifier: MIT
// Rows of the table: relations and functions, each with its meaning.
#include "traces/calls.h"
#include "traces/meanings.h"

namespace koru::traces {
namespace {

// ----- variadic forms: up to four variables, of which n are handed over

struct Several {
  int n;
  CSint *v[4] = {};
  Several(Machine &m, const Line &line) {
    const std::vector<int> &references = line.args[0].list;
    for (std::size_t i = 0; i < std::min(references.size(), std::size_t{4}); ++i) v[i] = m.variable(references[i]);
    n = std::min({line.args[1].number, static_cast<int>(references.size()), 4});
  }
};

template <auto F>
void callVariadic(Machine &m, const Line &line) {
  const Several s(m, line);
  m.answer(line, F(s.n, s.v[0], s.v[1], s.v[2], s.v[3]));
}

void scalarProduct(Machine &m, const Line &line) {
  const Several s(m, line);
  int c[4] = {};
  for (std::size_t i = 0; i < std::min(line.args[2].list.size(), std::size_t{4}); ++i) c[i] = line.args[2].list[i];
  CSint *const *v = s.v;
  if (s.n < 1) return m.answer(line, cs_VScalProd(s.n));
  if (s.n == 1) return m.answer(line, cs_VScalProd(1, v[0], c[0]));
  if (s.n == 2) return m.answer(line, cs_VScalProd(2, v[0], v[1], c[0], c[1]));
  if (s.n == 3) return m.answer(line, cs_VScalProd(3, v[0], v[1], v[2], c[0], c[1], c[2]));
  m.answer(line, cs_VScalProd(4, v[0], v[1], v[2], v[3], c[0], c[1], c[2], c[3]));
}

// The table must be as large as it is said to be.
void regular(Machine &m, const Line &line) {
  Reader in(m, line);
  CSint **vars = in.next<CSint **>();
  const int n = in.next<int>();
  const Arg &table = in.take();
  const int states = std::min(in.next<int>(), 6);
  const int symbols = std::min(in.next<int>(), 6);
  const int start = in.next<int>();
  const Arg &finals = in.take();
  const int finalCount = std::min(in.take().number, static_cast<int>(finals.list.size()));
  std::vector<int> &entries = m.kept().ints.emplace_back(table.list);
  entries.resize(std::max<std::size_t>(entries.size(), 36), -1);
  const bool none = table.number == kNull;
  m.answer(line, cs_Regular(vars, n, none ? nullptr : entries.data(), states, symbols, start,
                            finals.number == kNull ? nullptr : finals.list.data(), finalCount));
}

using enum Group;
using T = const Terms &;
using meaning::Value;

template <int Gap>
bool order(T t) {
  return std::int64_t{t.x[0]} + Gap <= t.x[1];
}
template <int Gap>
bool orderBack(T t) {
  return std::int64_t{t.x[1]} + Gap <= t.x[0];
}
template <bool (*Holds)(T)>
Value asNumber(T t) {
  return Holds(t) ? 1 : 0;
}
bool eq(T t) { return t.x[0] == t.x[1]; }
bool neq(T t) { return t.x[0] != t.x[1]; }
bool isK(T t) { return t.x[0] == t.k[0]; }
bool isNotK(T t) { return t.x[0] != t.k[0]; }
bool leK(T t) { return t.x[0] <= t.k[0]; }
bool ltK(T t) { return t.x[0] < t.k[0]; }
bool geK(T t) { return t.x[0] >= t.k[0]; }
bool gtK(T t) { return t.x[0] > t.k[0]; }
// At the ends of the int range these say nothing, by design.
bool ltKOrEnd(T t) { return ltK(t) || t.k[0] == INT_MIN; }
bool gtKOrEnd(T t) { return gtK(t) || t.k[0] == INT_MAX; }
bool among(T t) { return std::ranges::count(t.lists[0], t.x[0]) > 0; }
bool notAmong(T t) { return !among(t); }
bool within(T t) { return t.k[0] <= t.x[0] && t.x[0] <= t.k[1]; }
bool notWithin(T t) { return !within(t); }
bool bothOrNone(T t) { return (t.x[0] == t.k[0]) == (t.x[1] == t.k[1]); }
bool notBoth(T t) { return t.x[0] != t.k[0] || t.x[1] != t.k[1]; }
Value absolute(T t) { return std::abs(std::int64_t{t.x[0]}); }

const Row kRows[] = {
    {"cs_EQ", 'b', "vi", kRelation, 4, call<cs_EQ>, {isK}},
    {"cs_NEQ", 'b', "vi", kRelation, 12, call<cs_NEQ>, {isNotK}},
    {"cs_LE", 'b', "vi", kRelation, 4, call<cs_LE>, {leK}},
    {"cs_LT", 'b', "vi", kRelation, 4, call<cs_LT>, {ltKOrEnd}},
    {"cs_GE", 'b', "vi", kRelation, 4, call<cs_GE>, {geK}},
    {"cs_GT", 'b', "vi", kRelation, 4, call<cs_GT>, {gtKOrEnd}},
    {"cs_Eq", 'b', "vv", kRelation, 4, call<cs_Eq>, {eq}},
    {"cs_Neq", 'b', "vv", kRelation, 6, call<cs_Neq>, {neq}},
    {"cs_Le", 'b', "vv", kRelation, 4, call<cs_Le>, {order<0>}},
    {"cs_Lt", 'b', "vv", kRelation, 3, call<cs_Lt>, {order<1>}},
    {"cs_Ge", 'b', "vv", kRelation, 4, call<cs_Ge>, {orderBack<0>}},
    {"cs_Gt", 'b', "vv", kRelation, 3, call<cs_Gt>, {orderBack<1>}},
    {"cs_IfEq", 'b', "vvii", kRelation, 4, call<cs_IfEq>, {bothOrNone}},
    {"cs_IfNeq", 'b', "vvii", kRelation, 4, call<cs_IfNeq>, {notBoth}},
    {"cs_AllNeq", 'b', "an", kRelation, 6, call<cs_AllNeq>, {meaning::allDifferent}},
    {"cs_InArray", 'b', "vkn", kRelation, 3, call<cs_InArray>, {among}},
    {"cs_NotInArray", 'b', "vkn", kRelation, 3, call<cs_NotInArray>, {notAmong}},
    {"cs_InInterval", 'b', "vii", kRelation, 3, call<cs_InInterval>, {within}},
    {"cs_NotInInterval", 'b', "vii", kRelation, 3, call<cs_NotInInterval>, {notWithin}},
    {"cs_Occur", 'b', "vian", kRelation, 3, call<cs_Occur>, {meaning::counted}},
    {"cs_OccurConstraints", 'b', "vian", kRelation, 4, call<cs_OccurConstraints>, {meaning::counted}},
    {"cs_Regular", 'b', "ankiiikn", kRelation, 8, regular, {meaning::accepted}},
    {"cs_Cumulative", 'b', "aaanv", kRelation, 6, call<cs_Cumulative>, {meaning::cumulative, nullptr, true}},
    {"cs_Disjunctive", 'b', "aan", kRelation, 5, call<cs_Disjunctive>, {meaning::disjunctive, nullptr, true}},

    {"cs_Add", 'v', "vv", kFunction, 6, call<cs_Add>, {nullptr, meaning::sum}},
    {"cs_Sub", 'v', "vv", kFunction, 6, call<cs_Sub>, {nullptr, meaning::firstLessOthers}},
    {"cs_VAdd", 'v', "an", kFunction, 3, callVariadic<cs_VAdd>, {nullptr, meaning::sum}},
    {"cs_VSub", 'v', "an", kFunction, 3, callVariadic<cs_VSub>, {nullptr, meaning::firstLessOthers}},
    {"cs_Mul", 'v', "vv", kFunction, 5, call<cs_Mul>, {nullptr, meaning::product}},
    {"cs_VMul", 'v', "an", kFunction, 2, callVariadic<cs_VMul>, {nullptr, meaning::product}},
    {"cs_Div", 'v', "vv", kFunction, 4, call<cs_Div>, {meaning::quotient}},
    {"cs_VDiv", 'v', "an", kFunction, 2, callVariadic<cs_VDiv>, {meaning::quotient}},
    {"cs_Abs", 'v', "v", kFunction, 5, call<cs_Abs>, {nullptr, absolute}},
    {"cs_Sigma", 'v', "an", kFunction, 4, call<cs_Sigma>, {nullptr, meaning::sum}},
    {"cs_ScalProd", 'v', "akn", kFunction, 5, call<cs_ScalProd>, {nullptr, meaning::scalarProduct}},
    {"cs_VScalProd", 'v', "ank", kFunction, 3, scalarProduct, {nullptr, meaning::scalarProduct}},
    {"cs_ReifEQ", 'v', "vi", kFunction, 3, call<cs_ReifEQ>, {nullptr, asNumber<isK>}},
    {"cs_ReifNEQ", 'v', "vi", kFunction, 2, call<cs_ReifNEQ>, {nullptr, asNumber<isNotK>}},
    {"cs_ReifLT", 'v', "vi", kFunction, 2, call<cs_ReifLT>, {nullptr, asNumber<ltK>}},
    {"cs_ReifLE", 'v', "vi", kFunction, 2, call<cs_ReifLE>, {nullptr, asNumber<leK>}},
    {"cs_ReifGT", 'v', "vi", kFunction, 2, call<cs_ReifGT>, {nullptr, asNumber<gtK>}},
    {"cs_ReifGE", 'v', "vi", kFunction, 2, call<cs_ReifGE>, {nullptr, asNumber<geK>}},
    {"cs_ReifEq", 'v', "vv", kFunction, 4, call<cs_ReifEq>, {nullptr, asNumber<eq>}},
    {"cs_ReifNeq", 'v', "vv", kFunction, 3, call<cs_ReifNeq>, {nullptr, asNumber<neq>}},
    {"cs_ReifLt", 'v', "vv", kFunction, 2, call<cs_ReifLt>, {nullptr, asNumber<order<1>>}},
    {"cs_ReifLe", 'v', "vv", kFunction, 2, call<cs_ReifLe>, {nullptr, asNumber<order<0>>}},
    {"cs_ReifGt", 'v', "vv", kFunction, 2, call<cs_ReifGt>, {nullptr, asNumber<orderBack<1>>}},
    {"cs_ReifGe", 'v', "vv", kFunction, 2, call<cs_ReifGe>, {nullptr, asNumber<orderBack<0>>}},
    {"cs_Element", 'v', "vkn", kFunction, 5, call<cs_Element>, {nullptr, meaning::element}},
    {"cs_Index", 'v', "ani", kFunction, 4, call<cs_Index>, {meaning::indexOfValue}},
    {"cs_Min", 'v', "an", kFunction, 4, call<cs_Min>, {nullptr, meaning::least}},
    {"cs_VMin", 'v', "an", kFunction, 2, callVariadic<cs_VMin>, {nullptr, meaning::least}},
    {"cs_Max", 'v', "an", kFunction, 4, call<cs_Max>, {nullptr, meaning::greatest}},
    {"cs_VMax", 'v', "an", kFunction, 2, callVariadic<cs_VMax>, {nullptr, meaning::greatest}},
    {"cs_OccurDomain", 'v', "ian", kFunction, 4, call<cs_OccurDomain>, {nullptr, meaning::occurrences}},
    {"cs_VarElement", 'v', "van", kFunction, 5, call<cs_VarElement>, {nullptr, meaning::variableElement}},
    {"cs_VarElementRange", 'v', "van", kFunction, 4, call<cs_VarElementRange>, {nullptr, meaning::variableElement}},
};

}  // namespace

std::span<const Row> constraintRows() { return kRows; }

}  // namespace koru::traces
