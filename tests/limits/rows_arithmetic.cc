// SPDX-License-Identifier: MIT
// What narrows exactly, and scalar products that overflow; the catalogue has the rest.
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

bool absolute(Operands &o, const Arguments &a) {
  CSint *const x = cs_Abs(a.pointer(0, o.x));
  CSint *const wide = cs_Abs(o.w);
  return (a.anyNull() ? x == nullptr : boundsOf(x) == Span{0, 5}) && boundsOf(wide) == Span{0, INT_MAX};
}

}  // namespace

std::vector<LimitsRow> arithmeticRows() {
  return {
      {"cs_EQ", "v", 1, intersects<cs_EQ>}, {"cs_NEQ", "v", 1, removes},
      {"cs_LE", "v", 1, intersects<cs_LE>}, {"cs_LT", "v", 1, intersects<cs_LT>},
      {"cs_GE", "v", 1, intersects<cs_GE>}, {"cs_GT", "v", 1, intersects<cs_GT>},
      {"cs_Abs", "", 1, absolute},          {"cs_ScalProd", "svvv", 3, scalarProduct},
  };
}

}  // namespace koru::test::limits
