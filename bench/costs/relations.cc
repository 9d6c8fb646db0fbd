// SPDX-License-Identifier: MIT
// Examples of relations, arithmetic and truth values.
#include "costs/row.h"

namespace koru::bench::costs {

namespace {

void nothing(Model &m) { m.array(20, 0, 99); }

template <bool (*relation)(CSint *, CSint *)>
void chain(Model &m) {
  const Array &x = m.array(20, 0, 99);
  for (std::size_t i = 1; i < x.size(); ++i) m.require(relation(x[i - 1], x[i]));
}

template <auto relation>
void pairs(Model &m) {
  const Array &x = m.array(20, 0, 4);
  for (std::size_t i = 1; i < x.size(); ++i) m.require(relation(x[i - 1], x[i], 1, 2) != 0);
}

template <CSint *(*make)(CSint *, CSint *)>
void made(Model &m) {
  for (int i = 0; i < 6; ++i) {
    const Array &xy = m.array(2, 1, 30);
    CSint *z = make(xy[0], xy[1]);
    m.require(cs_LE(z, 20));
    m.require(cs_GE(z, 1));
  }
}

template <bool (*relation)(CSint *, CSint *, CSint *)>
void given(Model &m) {
  for (int i = 0; i < 6; ++i) {
    const Array &xyz = m.array(3, 1, 30);
    m.require(relation(xyz[0], xyz[1], xyz[2]));
  }
}

constexpr int kTerms = 30;

void sigma(Model &m) { m.require(cs_EQ(cs_Sigma(m.array(kTerms, 0, 9).data(), kTerms), 135)); }
void scalProd(Model &m) {
  std::vector<int> weights;
  for (int i = 0; i < kTerms; ++i) weights.push_back(1 + i % 7);
  m.require(cs_EQ(cs_ScalProd(m.array(kTerms, 0, 9).data(), m.ints(std::move(weights)).data(), kTerms), 500));
}
template <int method>
void linear(Model &m) {
  std::vector<long long> weights;
  for (int i = 0; i < kTerms; ++i) weights.push_back(1 + i % 7);
  m.require(cs_Linear(m.array(kTerms, 0, 9).data(), weights.data(), kTerms, method, 500));
}
void maximum(Model &m) { m.require(cs_EQ(cs_Max(m.array(kTerms, 0, 9).data(), kTerms), 8)); }

// ----- truth values

void reified(Model &m) {
  Array &x = m.array(20, 0, 4);
  Array &equal = m.others({});
  for (std::size_t i = 1; i < x.size(); ++i) equal.push_back(cs_ReifEq(x[i - 1], x[i]));
  m.require(cs_EQ(cs_Sigma(equal.data(), sizeOf(equal)), 6));
}

template <bool (*post)(CSint *, CSint *, CSint *)>
void tied(Model &m) {
  const Array &x = m.array(20, 0, 4);
  const Array &b = m.array(19, 0, 1);
  for (std::size_t i = 1; i < x.size(); ++i) m.require(post(b[i - 1], x[i - 1], x[i]));
}

void clauses(Model &m) {
  const Array &x = m.array(100, 0, 1);
  for (int i = 0; i < 350; ++i) {
    Array sides[2];
    for (int k = 0; k < 3; ++k) sides[m.random.below(2)].push_back(x[static_cast<std::size_t>(m.random.below(100))]);
    m.require(cs_Clause(sides[0].data(), sizeOf(sides[0]), sides[1].data(), sizeOf(sides[1])));
  }
}

void linearIf(Model &m) {
  Array &x = m.array(kTerms, 0, 1);
  const std::vector<long long> ones(x.size(), 1);
  for (int count = 5; count < 30; count += 5)
    m.require(cs_LinearIf(m.variable(0, 1), x.data(), ones.data(), kTerms, CS_METHOD_GE, count));
}

constexpr Row kRows[] = {
    {"cs_EQ", "20 variables over 0..99, nothing else", nothing},
    {"cs_Lt", "20 over 0..99, ascending", chain<cs_Lt>},
    {"cs_Neq", "20 over 0..99, neighbours differ", chain<cs_Neq>},
    {"cs_IfNeq", "20 over 0..4, each after the next", pairs<cs_IfNeq>},
    {"cs_IfEq", "the same", pairs<cs_IfEq>},
    {"cs_Add", "six of x + y <= 20, over 1..30", made<cs_Add>},
    {"cs_Mul", "six of x * y <= 20, over 1..30", made<cs_Mul>},
    {"cs_Div", "six of 1 <= x / y, over 1..30", made<cs_Div>},
    {"cs_Mod", "six of x % y = z, over 1..30", given<cs_Mod>},
    {"cs_Pow", "six of x to the power of y, over 1..30", given<cs_Pow>},
    {"cs_Sigma", "30 over 0..9, their sum is 135", sigma},
    {"cs_ScalProd", "30 over 0..9 with weights of 1 to 7, 500", scalProd},
    {"cs_Linear", "the same", linear<CS_METHOD_EQ>},
    {"cs_Linear", "the same, at most 500", linear<CS_METHOD_LE>},
    {"cs_Max", "30 over 0..9, the largest is 8", maximum},
    {"cs_ReifEq", "20 over 0..4, six equal neighbours", reified},
    {"cs_EqIff", "20 over 0..4, with 19 truth values", tied<cs_EqIff>},
    {"cs_EqIf", "the same", tied<cs_EqIf>},
    {"cs_Clause", "100 truth values, 350 clauses of three", clauses},
    {"cs_LinearIf", "30 truth values, at least 5, 10, ... of them if ...", linearIf},
};

}  // namespace

std::span<const Row> relationRows() { return kRows; }

}  // namespace koru::bench::costs
