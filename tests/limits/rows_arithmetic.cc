// SPDX-License-Identifier: MIT
// Relations, arithmetic, sums and reified comparisons.
#include <algorithm>
#include <cstdint>
#include <limits>

#include "limits/table.h"

namespace koru::test::limits {

namespace {

struct Span {
  std::int64_t min;
  std::int64_t max;
  bool operator==(const Span &) const = default;
};

Span boundsOf(CSint *v) { return {cs_getMin(v), cs_getMax(v)}; }

// v was narrowed to what lies in `allowed` as well, or refused and left alone.
bool intersected(CSint *v, Span before, Span allowed, bool result) {
  const Span both{std::max(before.min, allowed.min), std::min(before.max, allowed.max)};
  const bool possible = both.min <= both.max;
  return result == possible && boundsOf(v) == (possible ? both : before);
}

constexpr std::int64_t kLeast = INT64_MIN;
constexpr std::int64_t kMost = INT64_MAX;

Span allowedBy(bool (*relation)(CSint *, int), std::int64_t v) {
  if (relation == cs_EQ) return {v, v};
  if (relation == cs_LE) return {kLeast, v};
  if (relation == cs_GE) return {v, kMost};
  // Deliberate: below the least int and above the greatest, everything.
  if (relation == cs_LT) return {kLeast, v == INT_MIN ? kMost : v - 1};
  return {v == INT_MAX ? kLeast : v + 1, kMost};
}

template <auto relation>
bool intersects(Operands &o, const Arguments &a) {
  if (a.anyNull()) return !relation(nullptr, a[0]);
  const Span ofX = boundsOf(o.x);
  const Span ofWide = boundsOf(o.w);
  return intersected(o.x, ofX, allowedBy(relation, a[0]), relation(o.x, a[0])) &&
         intersected(o.w, ofWide, allowedBy(relation, a[0]), relation(o.w, a[0]));
}

// An inner value of the whole range needs a bit array, which cannot be had.
bool removes(Operands &o, const Arguments &a) {
  CSint *const x = a.pointer(0, o.x);
  if (a.anyNull()) return !cs_NEQ(x, a[0]);
  const bool inner = a[0] != INT_MIN && a[0] != INT_MAX;
  const bool ofWide = cs_NEQ(o.w, a[0]);
  return cs_NEQ(x, a[0]) && !cs_isIn(x, a[0]) && ofWide == !inner && (ofWide ? !cs_isIn(o.w, a[0]) : refused());
}

template <auto relation>
bool relates(Operands &o, const Arguments &a) {
  const bool posted = relation(a.pointer(0, o.x), a.pointer(1, o.y));
  return posted == !a.anyNull() && relation(o.w, o.x) && relation(o.y, o.w);
}

template <auto function>
bool computes(Operands &o, const Arguments &a) {
  const bool made = function(a.pointer(0, o.x), a.pointer(1, o.y)) != nullptr;
  return made == !a.anyNull() && function(o.w, o.w) != nullptr && function(o.x, o.w) != nullptr;
}

template <auto function, auto holds>
bool reifies(Operands &o, const Arguments &a) {
  CSint *const b = function(a.pointer(0, o.x), a[0]);
  if (a.anyNull()) return b == nullptr;
  bool never = true;
  bool always = true;
  for (int value = -5; value <= 5; ++value) (holds(value, a[0]) ? never : always) = false;
  return b != nullptr && cs_getMin(b) == (always ? 1 : 0) && cs_getMax(b) == (never ? 0 : 1) &&
         function(o.w, a[0]) != nullptr;
}

// x, y and b add up to -10..11; n of them.
Span sumOf(int n) { return n < 1 ? Span{0, 0} : n == 1 ? Span{-5, 5} : n == 2 ? Span{-10, 10} : Span{-10, 11}; }

bool isSum(CSint *sum, const Arguments &a, Span expected) {
  return a.anyNull() ? sum == nullptr : sum != nullptr && boundsOf(sum) == expected;
}

// Of positive numbers of variables; less than one is taken back to the first variable by products and quotients.
template <auto function>
bool variadic(Operands &o, const Arguments &a) {
  return (function(a[0], a.pointer(0, o.x), o.y, o.b) == nullptr) == a.anyNull();
}

bool sigma(Operands &o, const Arguments &a) {
  o.array[0] = a.pointer(1, o.x);
  return isSum(cs_Sigma(a.pointer(0, o.array), a[0]), a, sumOf(a[0]));
}

bool variadicSum(Operands &o, const Arguments &a) {
  return isSum(cs_VAdd(a[0], a.pointer(0, o.x), o.y, o.b), a, sumOf(a[0]));
}

bool variadicDifference(Operands &o, const Arguments &a) {
  const Span expected = a[0] == 3 ? Span{-11, 10} : sumOf(a[0]);
  return isSum(cs_VSub(a[0], a.pointer(0, o.x), o.y, o.b), a, expected);
}

#ifdef __SIZEOF_INT128__
__extension__ using Wide = __int128;
#else
using Wide = long double;  // exact for totals of three products
static_assert(std::numeric_limits<Wide>::digits >= 64);
#endif

// The bounds of a sum of the first n terms, if all totals on the way fit.
struct Total {
  Wide min = 0;
  Wide max = 0;
  bool fits = true;

  void add(Wide coefficient, CSint *v) {
    const Wide ends[] = {coefficient * cs_getMin(v), coefficient * cs_getMax(v)};
    min += std::min(ends[0], ends[1]);
    max += std::max(ends[0], ends[1]);
    fits = fits && min >= INT64_MIN && max <= INT64_MAX;
  }
};

bool isClampedSum(CSint *sum, const Total &total) {
  if (!total.fits)
    return sum == nullptr ? cs_getErr() == CS_ERR_OVERFLOW : total.min >= INT64_MIN && total.max <= INT64_MAX;
  const auto clamped = [](Wide v) { return static_cast<std::int64_t>(std::clamp<Wide>(v, INT_MIN, INT_MAX)); };
  return sum != nullptr && boundsOf(sum) == Span{clamped(total.min), clamped(total.max)};
}

bool scalarProduct(Operands &o, const Arguments &a) {
  int *coefficients = o.keep({a[1], a[2], a[3]});
  o.array[0] = a.pointer(2, o.x);
  CSint *sum = cs_ScalProd(a.pointer(0, o.array), a.pointer(1, coefficients), a[0]);
  if (a.anyNull()) return sum == nullptr;
  Total total;
  Total wide;
  for (int i = 0; i < a[0]; ++i) {
    total.add(coefficients[i], o.array[i]);
    wide.add(coefficients[i], o.wide[i]);
  }
  return isClampedSum(sum, total) && isClampedSum(cs_ScalProd(o.wide, coefficients, a[0]), wide);
}

bool variadicScalarProduct(Operands &o, const Arguments &a) {
  CSint *const x = a.pointer(0, o.x);
  CSint *const sum = a[0] < 1    ? cs_VScalProd(a[0])
                     : a[0] == 1 ? cs_VScalProd(1, x, a[1])
                     : a[0] == 2 ? cs_VScalProd(2, x, o.y, a[1], a[2])
                                 : cs_VScalProd(3, x, o.y, o.b, a[1], a[2], a[3]);
  if (a.anyNull()) return sum == nullptr;
  Total total;
  for (int i = 0; i < a[0]; ++i) total.add(a[static_cast<std::size_t>(i + 1)], o.array[i]);
  return isClampedSum(sum, total);
}

// Nothing is bound, so nothing is refused.
template <auto post>
bool conditional(Operands &o, const Arguments &a) {
  return post(a.pointer(0, o.x), a.pointer(1, o.y), a[0], a[1]) == !a.anyNull();
}

bool absolute(Operands &o, const Arguments &a) {
  CSint *const x = cs_Abs(a.pointer(0, o.x));
  CSint *const wide = cs_Abs(o.w);
  return (a.anyNull() ? x == nullptr : boundsOf(x) == Span{0, 5}) && boundsOf(wide) == Span{0, INT_MAX};
}

}  // namespace

std::vector<LimitsRow> arithmeticRows() {
  return {
      {"cs_EQ", "v", 1, intersects<cs_EQ>},
      {"cs_NEQ", "v", 1, removes},
      {"cs_LE", "v", 1, intersects<cs_LE>},
      {"cs_LT", "v", 1, intersects<cs_LT>},
      {"cs_GE", "v", 1, intersects<cs_GE>},
      {"cs_GT", "v", 1, intersects<cs_GT>},
      {"cs_Eq", "", 2, relates<cs_Eq>},
      {"cs_Neq", "", 2, relates<cs_Neq>},
      {"cs_Le", "", 2, relates<cs_Le>},
      {"cs_Lt", "", 2,
       [](Operands &o, const Arguments &a) { return cs_Lt(a.pointer(0, o.x), a.pointer(1, o.w)) == !a.anyNull(); }},
      {"cs_Ge", "", 2, relates<cs_Ge>},
      {"cs_Gt", "", 2,
       [](Operands &o, const Arguments &a) { return cs_Gt(a.pointer(0, o.w), a.pointer(1, o.x)) == !a.anyNull(); }},
      {"cs_Add", "", 2, computes<cs_Add>},
      {"cs_Sub", "", 2, computes<cs_Sub>},
      {"cs_Mul", "", 2, computes<cs_Mul>},
      {"cs_Div", "", 2, computes<cs_Div>},
      {"cs_Abs", "", 1, absolute},
      {"cs_VAdd", "s", 1, variadicSum},
      {"cs_VSub", "s", 1, variadicDifference},
      {"cs_VMul", "s", 1, variadic<cs_VMul>},
      {"cs_VDiv", "s", 1, variadic<cs_VDiv>},
      {"cs_Sigma", "s", 2, sigma},
      {"cs_ScalProd", "svvv", 3, scalarProduct},
      {"cs_VScalProd", "svvv", 1, variadicScalarProduct},
      {"cs_ReifEQ", "v", 1, reifies<cs_ReifEQ, [](int x, int v) { return x == v; }>},
      {"cs_ReifNEQ", "v", 1, reifies<cs_ReifNEQ, [](int x, int v) { return x != v; }>},
      {"cs_ReifLT", "v", 1, reifies<cs_ReifLT, [](int x, int v) { return x < v; }>},
      {"cs_ReifLE", "v", 1, reifies<cs_ReifLE, [](int x, int v) { return x <= v; }>},
      {"cs_ReifGT", "v", 1, reifies<cs_ReifGT, [](int x, int v) { return (x > v); }>},
      {"cs_ReifGE", "v", 1, reifies<cs_ReifGE, [](int x, int v) { return (x >= v); }>},
      {"cs_ReifEq", "", 2, computes<cs_ReifEq>},
      {"cs_ReifNeq", "", 2, computes<cs_ReifNeq>},
      {"cs_ReifLt", "", 2, computes<cs_ReifLt>},
      {"cs_ReifLe", "", 2, computes<cs_ReifLe>},
      {"cs_ReifGt", "", 2, computes<cs_ReifGt>},
      {"cs_ReifGe", "", 2, computes<cs_ReifGe>},
      {"cs_IfEq", "vv", 2, conditional<cs_IfEq>},
      {"cs_IfNeq", "vv", 2, conditional<cs_IfNeq>},
  };
}

}  // namespace koru::test::limits
