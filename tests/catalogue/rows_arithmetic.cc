// SPDX-License-Identifier: MIT
// Sums, products, quotients and reified comparisons.
#include "catalogue/relations.h"
#include "catalogue/row.h"

namespace koru::catalogue {
namespace {

using enum Consistency;

// The coefficients stand behind the variables, so that each number of them is a call of its own.
struct Weighted {
  static constexpr int kLine = __LINE__ + 11;
  static Answer call(const Actual *a) {
    CSint *x[4] = {};
    const int *const c = a[2].ints;
    const auto n = static_cast<int>(a[1].number);
    if (a[0].variables != nullptr) std::copy_n(a[0].variables, std::clamp(n, 0, 4), x);
    CSint *result = nullptr;
    if (n < 1) result = cs_VScalProd(n);
    if (n == 1) result = cs_VScalProd(1, x[0], c[0]);
    if (n == 2) result = cs_VScalProd(2, x[0], x[1], c[0], c[1]);
    if (n == 3) result = cs_VScalProd(3, x[0], x[1], x[2], c[0], c[1], c[2]);
    if (n > 3) result = cs_VScalProd(4, x[0], x[1], x[2], x[3], c[0], c[1], c[2], c[3]);
    return answer(result);
  }
};
constexpr Door kWeighted{&Weighted::call, Weighted::kLine, true};

Row function(const char *name, const char *kinds, Door door, Value (*value)(T), Consistency consistency,
             Example example, int weight) {
  return {.name = name,
          .kinds = kinds,
          .door = door,
          .meaning = {nullptr, value},
          .consistency = consistency,
          .example = std::move(example),
          .weight = weight};
}

Row comparison(const char *name, const char *kinds, Door door, Value (*value)(T), Consistency consistency,
               Example example, int weight) {
  return {.name = name,
          .kinds = kinds,
          .door = door,
          .meaning = {nullptr, value},
          .consistency = consistency,
          .example = std::move(example),
          .results = {0, 1},
          .weight = weight};
}

const Row kArithmetic[] = {
    function("cs_Add", "vv", door<cs_Add>, sum, kBounds, {{1, 2, 4}}, 6),
    function("cs_Sub", "vv", door<cs_Sub>, firstLessOthers, kBounds, {{2, 1, 4}}, 6),
    {.name = "cs_VAdd",
     .kinds = "an",
     .door = spread<cs_VAdd>,
     .meaning = {nullptr, sum},
     .consistency = kBounds,
     .example = {{1, 2, 3, 4}},
     .site = "cs_Vadd",
     .weight = 3},
    function("cs_VSub", "an", spread<cs_VSub>, firstLessOthers, kBounds, {{6, 2, 1, 4}}, 3),
    function("cs_Mul", "vv", door<cs_Mul>, product, kKnown, {{2, 3, 4}}, 5),
    // Less than one variable is taken for the first one.
    {.name = "cs_VMul",
     .kinds = "an",
     .door = spread<cs_VMul>,
     .meaning = {nullptr, product},
     .consistency = kNone,
     .example = {{2, 3, 4, 5}},
     .fewest = 1,
     .weight = 2},
    {"cs_Div", "vv", door<cs_Div>, {quotient}, kNone, {{6, 3, 4}}},
    {.name = "cs_VDiv",
     .kinds = "an",
     .door = spread<cs_VDiv>,
     .meaning = {quotient},
     .consistency = kNone,
     .example = {{8, 2, 2, 1}},
     .fewest = 1,
     .weight = 2},
    {.name = "cs_Abs",
     .kinds = "v",
     .door = door<cs_Abs>,
     .meaning = {nullptr, [](T t) -> Value { return t.x[0] < 0 ? -Wide{t.x[0]} : t.x[0]; }},
     .consistency = kBounds,
     .example = {{2, 3}},
     .results = {0, 4},
     .weight = 5},
    function("cs_Sigma", "an", door<cs_Sigma>, sum, kBounds, {{1, 2, 3, 4}}, 4),
    function("cs_ScalProd", "akn", door<cs_ScalProd>, scalarProduct, kKnown, {{1, 1, 1, 9}, {}, {}, {{2, 3, 5}}}, 5),
    function("cs_VScalProd", "ank", kWeighted, scalarProduct, kKnown, {{1, 1, 1, 9}, {}, {}, {{2, 3, 5}}}, 3),
};

// Deciding and imposing an equality looks at values; a difference of two is decided and imposed by bound variables,
// which is as much as any reasoning could do.
const Row kReified[] = {
    comparison("cs_ReifEQ", "vi", door<cs_ReifEQ>, outcome<equalsInt>, kDomain, {{5, 0}, {}, {5}}, 3),
    comparison("cs_ReifNEQ", "vi", door<cs_ReifNEQ>, outcome<differsFromInt>, kDomain, {{5, 1}, {}, {5}}, 2),
    comparison("cs_ReifLT", "vi", door<cs_ReifLT>, outcome<belowInt>, kBounds, {{5, 1}, {}, {5}}, 2),
    comparison("cs_ReifLE", "vi", door<cs_ReifLE>, outcome<atMostInt>, kBounds, {{5, 0}, {}, {5}}, 2),
    comparison("cs_ReifGT", "vi", door<cs_ReifGT>, outcome<aboveInt>, kBounds, {{5, 1}, {}, {5}}, 2),
    comparison("cs_ReifGE", "vi", door<cs_ReifGE>, outcome<atLeastInt>, kBounds, {{5, 0}, {}, {5}}, 2),
    comparison("cs_ReifEq", "vv", door<cs_ReifEq>, outcome<equal>, kDomain, {{5, 5, 0}}, 4),
    comparison("cs_ReifNeq", "vv", door<cs_ReifNeq>, outcome<different>, kDomain, {{5, 5, 1}}, 3),
    comparison("cs_ReifLt", "vv", door<cs_ReifLt>, outcome<below>, kBounds, {{5, 5, 1}}, 2),
    comparison("cs_ReifLe", "vv", door<cs_ReifLe>, outcome<atMost>, kBounds, {{5, 5, 0}}, 2),
    comparison("cs_ReifGt", "vv", door<cs_ReifGt>, outcome<above>, kBounds, {{5, 5, 1}}, 2),
    comparison("cs_ReifGe", "vv", door<cs_ReifGe>, outcome<atLeast>, kBounds, {{5, 5, 0}}, 2),
};

}  // namespace

std::span<const Row> arithmeticRows() { return kArithmetic; }
std::span<const Row> reifiedRows() { return kReified; }

}  // namespace koru::catalogue
