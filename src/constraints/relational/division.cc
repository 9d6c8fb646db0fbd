// SPDX-License-Identifier: MIT
// cs_DivTrunc, cs_Mod: x = q * y + r, with the quotient cut off towards 0 and a rest of the sign of x, as in C.
// Consistency: domain while x and y have few pairs of values (two_to_one.h), else bounds are narrowed by the rules
// below. Cost: a run of O(pairs * log(pairs)), of O(quotients) by a positive constant, else O(1).  State: none.
// Wakes: at every change.
#include <algorithm>
#include <utility>

#include "constraints/relational/two_to_one.h"
#include "koru_extras.h"

namespace koru::division {

using relational::Hull;
using relational::TwoToOne;

struct Interval : Hull {
  bool empty() const { return low > high; }
  void clip(std::int64_t from, std::int64_t to) {
    low = std::max(low, from);
    high = std::min(high, to);
  }
};

// Absolute values, of at most 2^31: x = q * y + r with 0 <= r < y.
struct Magnitudes {
  Interval x;
  Interval y;
  Interval q;
  Interval r;

  bool empty() const { return x.empty() || y.empty() || q.empty() || r.empty(); }
};

constexpr Interval kAnything{{0, std::int64_t{1} << 31}};

// One walk over the rules; each must have something to work on.
static bool narrow(Magnitudes &m) {
  if (m.empty()) return false;
  m.r.clip(0, m.y.high - 1);
  m.q.clip(m.x.low / m.y.high, m.x.high / m.y.low);
  if (m.empty()) return false;
  m.r.clip(m.x.low - m.q.high * m.y.high, m.x.high - m.q.low * m.y.low);
  m.x.clip(m.q.low * m.y.low + m.r.low, m.q.high * m.y.high + m.r.high);
  m.y.clip(m.r.low + 1, m.y.high);
  if (m.empty()) return false;
  m.y.clip(m.x.low / (m.q.high + 1) + 1, m.q.low > 0 ? (m.x.high - m.r.low) / m.q.low : m.y.high);
  return !m.empty();
}

// The part of v with a sign: 1 for 0 or more, -1 for 0 or less.
static Interval part(const CSint *v, int sign, std::int64_t least) {
  Interval magnitude{relational::hullOf(v, sign)};
  magnitude.clip(least, kAnything.high);
  return magnitude;
}

// Each choice of signs for itself, and what is left of all.
template <bool rest>
bool filterBounds(const TwoToOne &c) {
  Hull x;
  Hull y;
  Hull z;
  for (const int signOfX : {1, -1}) {
    for (const int signOfY : {1, -1}) {
      const int signOfZ = rest ? signOfX : signOfX * signOfY;
      Magnitudes m{part(c.x, signOfX, 0), part(c.y, signOfY, 1), kAnything, kAnything};
      Interval &result = rest ? m.r : m.q;
      result = part(c.z, signOfZ, 0);
      if (!narrow(m)) continue;
      x.add(m.x.low, m.x.high, signOfX);
      y.add(m.y.low, m.y.high, signOfY);
      z.add(result.low, result.high, signOfZ);
    }
  }
  return narrowTo(c.x, x) && narrowTo(c.y, y) && narrowTo(c.z, z);
}

static bool quotient(int x, int y, std::int64_t &z) {
  if (y == 0) return false;
  z = std::int64_t{x} / y;
  return true;
}

static bool remainder(int x, int y, std::int64_t &z) {
  if (y == 0) return false;
  z = std::int64_t{x} % y;
  return true;
}

// ----- by a constant: numerators of one quotient lie side by side, and rise with it

static Hull numeratorsOf(std::int64_t quotient, std::int64_t y) {
  Hull hull;
  hull.add(quotient * y - (quotient > 0 ? 0 : y - 1), quotient * y + (quotient < 0 ? 0 : y - 1));
  return hull;
}

static bool hasAny(const CSint *v, const Hull &within) {
  return !forEachValue(v, clampToInt(within.low), clampToInt(within.high), [](int) { return false; });
}

static bool keepQuotients(const CSint *x, int y, CSint *z) {
  return narrowMin(z, x->min / y) && narrowMax(z, x->max / y) &&
         forEachValue(z, [&](int value) { return hasAny(x, numeratorsOf(value, y)) || removeValue(z, value); });
}

static bool keepNumerators(CSint *x, int y, const CSint *z) {
  if (!narrowMin64(x, numeratorsOf(z->min, y).low) || !narrowMax64(x, numeratorsOf(z->max, y).high)) return false;
  std::int64_t last = numeratorsOf(z->min, y).high;
  return forEachValue(z, [&](int value) {
    const Hull next = numeratorsOf(value, y);
    return relational::dropBetween(x, clampToInt(std::exchange(last, next.high)), clampToInt(next.low));
  });
}

// As a walk over all pairs, in as many steps as there are quotients.
static bool filterQuotient(TwoToOne &c) {
  const bool byConstant = isBound(c.y) && c.y->min > 0 && relational::hasFewPairs(c) && c.x != c.z;
  if (byConstant) return keepQuotients(c.x, c.y->min, c.z) && keepNumerators(c.x, c.y->min, c.z);
  return relational::filterTwoToOne<quotient, filterBounds<false>>(c);
}

static bool postQuotient(const Poster &poster, CSint *x, CSint *y, CSint *z) {
  return relational::postTwoToOne<filterQuotient>(poster, x, y, z);
}

// A divisor is never its own rest. The rules would find out, one value at a time.
static bool postRemainder(const Poster &poster, CSint *x, CSint *y, CSint *z) {
  return y != z && relational::postTwoToOne<relational::filterTwoToOne<remainder, filterBounds<true>>>(poster, x, y, z);
}

}  // namespace koru::division

using koru::door;
using koru::leftOut;
using namespace koru::division;

bool cs_DivTrunc(CSint *x, CSint *y, CSint *z) {
  return leftOut("cs_DivTrunc") || door(postQuotient("cs_DivTrunc", x, y, z));
}
bool cs_Mod(CSint *x, CSint *y, CSint *z) { return leftOut("cs_Mod") || door(postRemainder("cs_Mod", x, y, z)); }
