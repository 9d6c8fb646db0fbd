// SPDX-License-Identifier: MIT
// Sums, products, quotients and reified comparisons.
#include "catalogue/relations.h"
#include "catalogue/row.h"

namespace koru::catalogue {
namespace {

using enum Consistency;

// The coefficients stand behind the variables, so that each number of them is a call of its own.
struct Weighted {
  static constexpr int kLine = __LINE__ + 2;
  [[gnu::noinline]] static Answer three(CSint *const *x, const int *c) {
    CSint *const result = cs_VScalProd(3, x[0], x[1], x[2], c[0], c[1], c[2]);
    return answer(result);
  }

  static Answer call(const Actual *a) {
    CSint *x[4] = {};
    const int *const c = a[2].ints;
    const auto n = static_cast<int>(a[1].number);
    if (a[0].variables != nullptr) std::copy_n(a[0].variables, std::clamp(n, 0, 4), x);
    if (n < 1) return answer(cs_VScalProd(n));
    if (c == nullptr) return {};
    if (n == 1) return answer(cs_VScalProd(1, x[0], c[0]));
    if (n == 2) return answer(cs_VScalProd(2, x[0], x[1], c[0], c[1]));
    if (n == 3) return three(x, c);
    return answer(cs_VScalProd(4, x[0], x[1], x[2], x[3], c[0], c[1], c[2], c[3]));
  }
};
constexpr Door kWeighted{&Weighted::call, Weighted::kLine, true, __FILE__};

Value absolute(T t) { return t.x[0] < 0 ? -Wide{t.x[0]} : t.x[0]; }

// A function of any number of variables, handed over one by one.
Row variadic(const char *name, Door door, Meaning meaning, Consistency consistency, Example example, int fewest) {
  Row row{name, "an", door, meaning, consistency, std::move(example)};
  row.fewest = fewest;
  row.most = 4;
  return row;
}

Row weighted() {
  Row row{"cs_VScalProd", "ank", kWeighted, scalarProduct, kKnown, {{1, 1, 1, 9}, {}, {}, {{2, -3, 1}}}};
  row.most = 4;
  return row;
}

Row vAdd() {
  Row row = variadic("cs_VAdd", spread<cs_VAdd>, sum, kBounds, {{1, 2, 3, 4}}, 0);
  row.site = "cs_Vadd";
  return row;
}

// Of products and quotients less than one variable is taken for the first one.
const Row kArithmetic[] = {
    {"cs_Add", "vv", door<cs_Add>, sum, kBounds, {{1, 2, 4}}},
    {"cs_Sub", "vv", door<cs_Sub>, firstLessOthers, kBounds, {{2, 1, 4}}},
    vAdd(),
    variadic("cs_VSub", spread<cs_VSub>, firstLessOthers, kBounds, {{6, 2, 1, 4}}, 0),
    {"cs_Mul", "vv", door<cs_Mul>, product, kKnown, {{2, 3, 4}}},
    variadic("cs_VMul", spread<cs_VMul>, product, kNone, {{2, 3, 4, 5}}, 1),
    {"cs_Div", "vv", door<cs_Div>, quotient, kNone, {{6, 3, 4}}},
    variadic("cs_VDiv", spread<cs_VDiv>, quotient, kNone, {{8, 2, 2, 1}}, 1),
    {.name = "cs_Abs",
     .kinds = "v",
     .door = door<cs_Abs>,
     .meaning = absolute,
     .consistency = kBounds,
     .example = {{2, 3}},
     .results = {0, 4}},
    {"cs_Sigma", "an", door<cs_Sigma>, sum, kBounds, {{1, 2, 3, 4}}},
    {"cs_ScalProd", "akn", door<cs_ScalProd>, scalarProduct, kKnown, {{1, 1, 1, 9}, {}, {}, {{2, -3, 1}}}},
    weighted(),
};

Row comparison(const char *name, const char *kinds, Door door, Meaning outcome, Consistency consistency,
               Example example) {
  Row row{name, kinds, door, outcome, consistency, std::move(example)};
  row.results = {0, 1};
  return row;
}

// Deciding and imposing an equality looks at values; a difference of two is decided and imposed by bound variables,
// which is as much as any reasoning could do.
const Row kReified[] = {
    comparison("cs_ReifEQ", "vi", door<cs_ReifEQ>, outcome<equalsInt>, kDomain, {{5, 0}, {}, {5}}),
    comparison("cs_ReifNEQ", "vi", door<cs_ReifNEQ>, outcome<differsFromInt>, kDomain, {{5, 1}, {}, {5}}),
    comparison("cs_ReifLT", "vi", door<cs_ReifLT>, outcome<belowInt>, kBounds, {{5, 1}, {}, {5}}),
    comparison("cs_ReifLE", "vi", door<cs_ReifLE>, outcome<atMostInt>, kBounds, {{5, 0}, {}, {5}}),
    comparison("cs_ReifGT", "vi", door<cs_ReifGT>, outcome<aboveInt>, kBounds, {{5, 1}, {}, {5}}),
    comparison("cs_ReifGE", "vi", door<cs_ReifGE>, outcome<atLeastInt>, kBounds, {{5, 0}, {}, {5}}),
    comparison("cs_ReifEq", "vv", door<cs_ReifEq>, outcome<equal>, kDomain, {{5, 5, 0}}),
    comparison("cs_ReifNeq", "vv", door<cs_ReifNeq>, outcome<different>, kDomain, {{5, 5, 1}}),
    comparison("cs_ReifLt", "vv", door<cs_ReifLt>, outcome<below>, kBounds, {{5, 5, 1}}),
    comparison("cs_ReifLe", "vv", door<cs_ReifLe>, outcome<atMost>, kBounds, {{5, 5, 0}}),
    comparison("cs_ReifGt", "vv", door<cs_ReifGt>, outcome<above>, kBounds, {{5, 5, 1}}),
    comparison("cs_ReifGe", "vv", door<cs_ReifGe>, outcome<atLeast>, kBounds, {{5, 5, 0}}),
};

}  // namespace

std::span<const Row> arithmeticRows() { return kArithmetic; }
std::span<const Row> reifiedRows() { return kReified; }

}  // namespace koru::catalogue
