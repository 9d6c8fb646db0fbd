// SPDX-License-Identifier: MIT
// cs_Pow: z = x ^ y. 0 ^ 0 is 1; with a negative exponent it is 1 / (x ^ -y), cut off towards 0, which 0 does not have.
// Consistency: domain while x and y have few pairs of values (two_to_one.h), else bounds are narrowed by the rules
// below. Cost: a run of O(pairs * log(pairs)), else of some 31 * 31 steps.  State: none.  Wakes: at every change.
#include <algorithm>

#include "constraints/relational/two_to_one.h"
#include "koru_extras.h"

namespace koru::power {

using relational::Hull;
using relational::hullOf;
using relational::TwoToOne;

constexpr int kMostExponent = 31;  // (-2) ^ 31 is the smallest int
constexpr std::int64_t kBeyond = (std::int64_t{1} << 31) + 1;

// base ^ exponent for base >= 2, exponent >= 1; not more than kBeyond.
static std::int64_t powerOf(std::int64_t base, int exponent) {
  std::int64_t result = 1;
  for (int i = 0; i < exponent && result < kBeyond; ++i) result = std::min(result * base, kBeyond);
  return result;
}

// The greatest base with base ^ exponent <= number, number >= 1.
static std::int64_t rootOf(std::int64_t number, int exponent) {
  std::int64_t low = 1;
  std::int64_t high = kBeyond;  // too great: its powers are beyond what a number may be
  while (high - low > 1) {
    const std::int64_t middle = (low + high) / 2;
    (powerOf(middle, exponent) <= number ? low : high) = middle;
  }
  return low;
}

static bool power(int x, int y, std::int64_t &z) {
  if (x >= -1 && x <= 1) {
    z = x == 0 && y == 0 ? 1 : x < 0 && y % 2 == 0 ? 1 : x;
    return x != 0 || y >= 0;
  }
  if (y <= 0) {
    z = y == 0 ? 1 : 0;
    return true;
  }
  const std::int64_t magnitude = powerOf(x < 0 ? -std::int64_t{x} : x, y);
  z = x < 0 && y % 2 != 0 ? -magnitude : magnitude;
  return true;
}

// ----- rules on bounds, and what they leave

struct Left {
  Hull x;
  Hull y;
  Hull z;
};

// A base of -1, 0 or 1. Two exponents beside each other and 0 give all results that there are.
static void addSmallBase(const TwoToOne &c, int x, Left &left) {
  if (!contains(c.x, x)) return;
  const int last = c.y->max;
  for (const int y : {0, last, last - (last > kIntMin ? 1 : 0)}) {
    std::int64_t z;
    if (y < c.y->min || y > last || !power(x, y, z) || !contains(c.z, static_cast<int>(z))) continue;
    left.x.add(x, x);
    left.y.add(x == 0 ? std::max(c.y->min, 0) : c.y->min, last);
    left.z.add(z, z);
  }
}

// Bases of 2 and more, and of -2 and less, with exponents that all lead to z.
static void addConstant(const TwoToOne &c, int from, int to, int z, Left &left) {
  from = std::max(from, c.y->min);
  to = std::min(to, c.y->max);
  const bool positive = c.x->max >= 2;
  const bool negative = c.x->min <= -2;
  if (from > to || !contains(c.z, z) || !(positive || negative)) return;
  if (positive) left.x.add(std::max(c.x->min, 2), c.x->max);
  if (negative) left.x.add(c.x->min, std::min(c.x->max, -2));
  left.y.add(from, to);
  left.z.add(z, z);
}

// Bases of one sign, with one exponent of 1 and more.
static void addExponent(const TwoToOne &c, int sign, int y, Left &left) {
  const int signOfZ = y % 2 == 0 ? 1 : sign;
  Hull x = hullOf(c.x, sign);
  Hull z = hullOf(c.z, signOfZ);
  x.low = std::max<std::int64_t>(x.low, 2);
  z.low = std::max<std::int64_t>(z.low, 1);
  if (z.low > z.high) return;
  x.low = std::max(x.low, rootOf(z.low, y));
  if (powerOf(x.low, y) < z.low) ++x.low;
  x.high = std::min(x.high, rootOf(z.high, y));
  if (x.low > x.high) return;
  left.x.add(x.low, x.high, sign);
  left.y.add(y, y);
  left.z.add(powerOf(x.low, y), powerOf(x.high, y), signOfZ);
}

static bool filterBounds(const TwoToOne &c) {
  Left left;
  for (const int x : {-1, 0, 1}) addSmallBase(c, x, left);
  addConstant(c, kIntMin, -1, 0, left);
  addConstant(c, 0, 0, 1, left);
  for (int y = 1; y <= kMostExponent; ++y) {
    if (!contains(c.y, y)) continue;
    addExponent(c, 1, y, left);
    addExponent(c, -1, y, left);
  }
  return narrowTo(c.x, left.x) && narrowTo(c.y, left.y) && narrowTo(c.z, left.z);
}

static bool post(const Poster &poster, CSint *x, CSint *y, CSint *z) {
  return relational::postTwoToOne<relational::filterTwoToOne<power, filterBounds>>(poster, x, y, z);
}

}  // namespace koru::power

using koru::door;
using koru::leftOut;

bool cs_Pow(CSint *x, CSint *y, CSint *z) { return leftOut("cs_Pow") || door(koru::power::post("cs_Pow", x, y, z)); }
