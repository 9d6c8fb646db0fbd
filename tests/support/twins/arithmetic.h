// SPDX-License-Identifier: MIT
// The arithmetic constraints for the twin engine, each handler as plain as it can be said: all totals, all divisions,
// all comparisons, and nothing skipped because it would not matter.
#pragma once

#include <climits>
#include <cstdint>
#include <optional>
#include <utility>

#include "support/twins/engine.h"

namespace koru::test::twin {

inline Wide clamped(Wide value) { return std::clamp<Wide>(value, INT_MIN, INT_MAX); }

// ----- s = c1 * x1 + ... + cn * xn

struct ScalProd {
  Engine &e;
  int s;
  std::vector<int> x;
  std::vector<int> c;

  Wide coefficient(std::size_t i) const { return c[i]; }
  Wide low(std::size_t i) const { return c[i] > 0 ? c[i] * e.min(x[i]) : c[i] * e.max(x[i]); }
  Wide high(std::size_t i) const { return c[i] > 0 ? c[i] * e.max(x[i]) : c[i] * e.min(x[i]); }
  Wide lows() const {
    Wide total = 0;
    for (std::size_t i = 0; i < x.size(); ++i) total += low(i);
    return total;
  }
  Wide highs() const {
    Wide total = 0;
    for (std::size_t i = 0; i < x.size(); ++i) total += high(i);
    return total;
  }
  // Lows and highs as they are added up; nothing when a partial total leaves 64 bits.
  std::optional<std::pair<std::int64_t, std::int64_t>> totals() const {
    std::int64_t min = 0;
    std::int64_t max = 0;
    for (std::size_t i = 0; i < x.size(); ++i)
      if (__builtin_add_overflow(min, low(i), &min) || __builtin_add_overflow(max, high(i), &max)) return std::nullopt;
    return std::pair{min, max};
  }
  bool raise(int v, Wide bound) const { return bound <= e.min(v) || (bound <= e.max(v) && e.narrowMin(v, bound)); }
  bool lower(int v, Wide bound) const { return bound >= e.max(v) || (bound >= e.min(v) && e.narrowMax(v, bound)); }

  bool sumRaised() const {
    const Wide slack = highs() - e.min(s);
    if (slack < 0) return false;
    for (std::size_t i = 0; i < x.size(); ++i) {
      if (c[i] > 0 && !raise(x[i], e.max(x[i]) - slack / c[i])) return false;
      if (c[i] < 0 && !lower(x[i], e.min(x[i]) - slack / c[i])) return false;
    }
    return true;
  }
  bool sumLowered() const {
    const Wide excess = lows() - e.max(s);
    if (excess > 0) return false;
    for (std::size_t i = 0; i < x.size(); ++i) {
      if (c[i] > 0 && !lower(x[i], e.min(x[i]) - excess / c[i])) return false;
      if (c[i] < 0 && !raise(x[i], e.max(x[i]) - excess / c[i])) return false;
    }
    return true;
  }
  bool termMoved(int k) const {
    const Wide sumLow = lows();
    const Wide sumHigh = highs();
    const Wide slack = sumHigh - e.min(s);
    const Wide excess = sumLow - e.max(s);
    if (slack < 0 || excess > 0 || !raise(s, sumLow) || !lower(s, sumHigh)) return false;
    for (std::size_t i = 0; i < x.size(); ++i) {
      if (static_cast<int>(i) == k || c[i] == 0) continue;
      const Wide newMin = e.max(x[i]) - (c[i] > 0 ? slack : excess) / c[i];
      const Wide newMax = e.min(x[i]) - (c[i] > 0 ? excess : slack) / c[i];
      if (!raise(x[i], newMin) || !lower(x[i], newMax)) return false;
    }
    return true;
  }
};

// The new sum; nothing when a partial total leaves 64 bits.
inline std::optional<int> postScalProd(Engine &e, const std::vector<int> &x, const std::vector<int> &c) {
  ScalProd p{e, -1, x, c};
  const auto totals = p.totals();
  if (!totals.has_value()) return std::nullopt;
  p.s = e.create(clamped(totals->first), clamped(totals->second));
  e.attach(e.addConstraint([p](const Engine::Event &event) {
    if (event.code == 5) return true;
    if (event.code == 4) return p.sumRaised() && p.sumLowered();
    return event.code % 2 == 0 ? p.sumRaised() : p.sumLowered();
  }),
           p.s, -1);
  const int onTerms = e.addConstraint([p](const Engine::Event &event) {
    if (event.code == 5) return true;
    if (event.code == 4) return p.termMoved(event.index) && p.termMoved(event.index);
    return p.termMoved(event.index);
  });
  for (std::size_t i = 0; i < x.size(); ++i) e.attach(onTerms, x[i], static_cast<int>(i));
  return p.s;
}

// ----- s = a1 + ... + an, n > 1

struct SumOf {
  Engine &e;
  int s;
  std::vector<int> a;

  Wide minima() const {
    Wide total = 0;
    for (const int v : a) total += e.min(v);
    return total;
  }
  Wide maxima() const {
    Wide total = 0;
    for (const int v : a) total += e.max(v);
    return total;
  }
  bool raise(int v, Wide bound) const { return bound <= e.min(v) || (bound <= e.max(v) && e.narrowMin(v, bound)); }
  bool lower(int v, Wide bound) const { return bound >= e.max(v) || (bound >= e.min(v) && e.narrowMax(v, bound)); }

  bool minRule(int k) const {  // of s when k is negative, else of addend k
    if (k < 0) {
      const Wide slack = maxima() - e.min(s);
      if (slack < 0) return false;
      return std::ranges::all_of(a, [&](int v) { return raise(v, e.max(v) - slack); });
    }
    const Wide excess = minima() - e.max(s);
    if (excess > 0 || !raise(s, minima())) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
      if (static_cast<int>(i) != k && !lower(a[i], e.min(a[i]) - excess)) return false;
    return true;
  }
  bool maxRule(int k) const {
    if (k < 0) {
      const Wide excess = minima() - e.max(s);
      if (excess > 0) return false;
      return std::ranges::all_of(a, [&](int v) { return lower(v, e.min(v) - excess); });
    }
    const Wide slack = maxima() - e.min(s);
    if (slack < 0 || !lower(s, maxima())) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
      if (static_cast<int>(i) != k && !raise(a[i], e.max(a[i]) - slack)) return false;
    return true;
  }
};

inline int postSum(Engine &e, const std::vector<int> &a) {
  SumOf p{e, -1, a};
  p.s = e.create(clamped(p.minima()), clamped(p.maxima()));
  const auto handler = [p](const Engine::Event &event) {
    if (event.code == 5) return true;
    if (event.code == 4) return p.minRule(event.index) && p.maxRule(event.index);
    return event.code % 2 == 0 ? p.minRule(event.index) : p.maxRule(event.index);
  };
  e.attach(e.addConstraint(handler), p.s, -1);
  const int onAddends = e.addConstraint(handler);
  for (std::size_t i = 0; i < a.size(); ++i) e.attach(onAddends, a[i], static_cast<int>(i));
  return p.s;
}

// ----- p = a * b

struct Interval {
  Wide low;
  Wide high;
};

inline Interval productOf(Wide a1, Wide a2, Wide b1, Wide b2) {
  Interval result{INT_MAX, INT_MIN};
  for (const Wide a : {a1, a2})
    for (const Wide b : {b1, b2}) {
      result.low = std::min(result.low, clamped(a * b));
      result.high = std::max(result.high, clamped(a * b));
    }
  return result;
}

// Smallest ceiling and largest floor of the four corner quotients.
inline Interval quotientOf(Wide n1, Wide n2, Wide d1, Wide d2) {
  Interval result{Wide{INT64_MAX}, Wide{INT64_MIN}};
  for (const Wide n : {n1, n2})
    for (const Wide d : {d1, d2}) {
      Wide floor = n / d;
      while (floor * d > n && d > 0) --floor;
      while (floor * d < n && d < 0) --floor;
      const Wide ceiling = floor * d == n ? floor : floor + 1;
      result.low = std::min(result.low, ceiling);
      result.high = std::max(result.high, floor);
    }
  return result;
}

struct Product {
  Engine &e;
  int p, a, b;

  bool excludesZero(int v) const { return e.min(v) > 0 || e.max(v) < 0; }
  bool narrow(int v, Interval to) const {
    if (to.low > e.min(v) && !e.narrowMin(v, to.low)) return false;
    return to.high >= e.max(v) || e.narrowMax(v, to.high);
  }
  bool loseZero(int f) const {
    if (e.min(f) == 0 && e.max(f) >= 1 && !e.narrowMin(f, 1)) return false;
    return !(e.max(f) == 0 && e.min(f) < 0) || e.narrowMax(f, -1);
  }
  bool product() const { return narrow(p, productOf(e.min(a), e.max(a), e.min(b), e.max(b))); }
  bool quotient(int f, int by) const {
    return !excludesZero(by) || narrow(f, quotientOf(e.min(p), e.max(p), e.min(by), e.max(by)));
  }
  bool changed(int v) const {
    if (excludesZero(p) && !(loseZero(a) && loseZero(b))) return false;
    if (v == a) return product() && quotient(b, a);
    if (v == b) return product() && quotient(a, b);
    return quotient(b, a) && quotient(a, b);
  }
};

inline void postProduct(Engine &e, int p, int a, int b, std::vector<int> order) {
  const Product rule{e, p, a, b};
  const int c =
      e.addConstraint([rule](const Engine::Event &event) { return event.code == 5 || rule.changed(event.var); });
  for (const int v : order) e.attach(c, v, -1);
}

inline int postMul(Engine &e, int x, int y) {
  const Interval bounds = productOf(e.min(x), e.max(x), e.min(y), e.max(y));
  const int z = e.create(bounds.low, bounds.high);
  postProduct(e, z, x, y, {z, x, y});
  return z;
}

inline std::optional<int> postDiv(Engine &e, int x, int y) {
  Interval bounds{INT_MIN, INT_MAX};
  if (e.min(y) > 0 || e.max(y) < 0) bounds = quotientOf(e.min(x), e.max(x), e.min(y), e.max(y));
  if (bounds.low > bounds.high || bounds.low > INT_MAX) return std::nullopt;
  const int z = e.create(bounds.low, clamped(bounds.high));
  postProduct(e, x, z, y, {z, x, y});
  return z;
}

}  // namespace koru::test::twin
