// SPDX-License-Identifier: MIT
// A second implementation of the reified comparisons and of conditional equality, written out case by case and sharing
// nothing with the library's but the core's four narrowing operations.
#pragma once

#include <algorithm>

#include "core/post.h"
#include "support/kit/solver_test.h"

namespace koru::test::reif_twin {

struct Data {
  CSint *b;
  CSint *x;
  CSint *y;
  int v;
  int w;
};

using Control = bool (*)(const Data &);
using Watch = bool (*)(const Data &, int code, const CSint *changed, int m);

inline bool isFree(const CSint *v) { return v->count > 1; }
inline bool isOne(const CSint *b) { return b->min == 1; }

// ----- x < y

inline bool controlLt(const Data &d) {
  if (isOne(d.b)) {
    if (d.x->min >= d.y->max) return false;
    if (d.x->max >= d.y->max && !narrowMax(d.x, d.y->max - 1)) return false;
    return d.y->min > d.x->min || narrowMin(d.y, d.x->min + 1);
  }
  if (d.y->min > d.x->max) return false;
  if (d.y->max > d.x->max && !narrowMax(d.y, d.x->max)) return false;
  return d.x->min >= d.y->min || narrowMin(d.x, d.y->min);
}

inline bool watchLt(const Data &d, int code, const CSint *c, int m) {
  if (code == 5) return true;
  if (code == 0 || code == 2) {
    if (isFree(d.b)) {
      if (c == d.x && d.x->min >= d.y->max) return bindValue(d.b, 0);
      if (c == d.y && d.y->min > d.x->max) return bindValue(d.b, 1);
      return true;
    }
    if (isOne(d.b)) return c != d.x || d.y->min > m || narrowMin(d.y, m + 1);
    return c != d.y || d.x->min >= m || narrowMin(d.x, m);
  }
  if (code == 1 || code == 3) {
    if (isFree(d.b)) {
      if (c == d.y && d.x->min >= d.y->max) return bindValue(d.b, 0);
      if (c == d.x && d.y->min > d.x->max) return bindValue(d.b, 1);
      return true;
    }
    if (isOne(d.b)) return c != d.y || d.x->max < m || narrowMax(d.x, m - 1);
    return c != d.x || d.y->max <= m || narrowMax(d.y, m);
  }
  if (!isFree(d.b)) return controlLt(d);
  if (d.x->min >= d.y->max && !bindValue(d.b, 0)) return false;
  return d.y->min <= d.x->max || bindValue(d.b, 1);
}

// ----- x <= y

inline bool controlLe(const Data &d) {
  if (isOne(d.b)) {
    if (d.x->min > d.y->max) return false;
    return narrowMax(d.x, d.y->max) && narrowMin(d.y, d.x->min);
  }
  if (d.y->min >= d.x->max) return false;
  return narrowMax(d.y, d.x->max - 1) && narrowMin(d.x, d.y->min + 1);
}

inline bool watchLe(const Data &d, int code, const CSint *c, int m) {
  if (code == 5) return true;
  if (code == 0 || code == 2) {
    if (isFree(d.b)) {
      if (c == d.x && d.x->min > d.y->max) return bindValue(d.b, 0);
      if (c == d.y && d.x->max <= d.y->min) return bindValue(d.b, 1);
      return true;
    }
    if (isOne(d.b)) return c != d.x || narrowMin(d.y, m);
    return c != d.y || narrowMin(d.x, m + 1);
  }
  if (code == 1 || code == 3) {
    if (isFree(d.b)) {
      if (c == d.y && d.x->min > d.y->max) return bindValue(d.b, 0);
      if (c == d.x && d.x->max <= d.y->min) return bindValue(d.b, 1);
      return true;
    }
    if (isOne(d.b)) return c != d.y || narrowMax(d.x, m);
    return c != d.x || narrowMax(d.y, m - 1);
  }
  if (!isFree(d.b)) return controlLe(d);
  if (d.x->min > d.y->max && !bindValue(d.b, 0)) return false;
  return d.x->max > d.y->min || bindValue(d.b, 1);
}

// ----- x = y and x != y

inline bool plain(const CSint *v) { return v->count == v->max - v->min + 1; }

inline bool share(CSint *x, CSint *y) {
  if (x->max < y->min || y->max < x->min) return false;
  if (plain(x) && plain(y)) return true;
  for (int v = std::max(x->min, y->min); v <= std::min(x->max, y->max); ++v)
    if (cs_isIn(x, v) && cs_isIn(y, v)) return true;
  return false;
}

inline bool sameValue(const CSint *x, const CSint *y) { return x->count == 1 && y->count == 1 && x->min == y->min; }

inline bool equalise(const Data &d) {
  if (d.x->min < d.y->min && !narrowMin(d.x, d.y->min)) return false;
  if (d.y->min < d.x->min && !narrowMin(d.y, d.x->min)) return false;
  if (d.y->max > d.x->max && !narrowMax(d.y, d.x->max)) return false;
  if (d.x->max > d.y->max && !narrowMax(d.x, d.y->max)) return false;
  if (plain(d.x) && plain(d.y)) return true;
  for (int v = d.x->min, last = d.x->max; v <= last; ++v) {
    const bool inX = cs_isIn(d.x, v);
    const bool inY = cs_isIn(d.y, v);
    if (!inX && inY && !removeValue(d.y, v)) return false;
    if (inX && !inY && !removeValue(d.x, v)) return false;
  }
  return true;
}

inline bool separate(const Data &d) {
  if (d.x->count == 1 && cs_isIn(d.y, d.x->min) && !removeValue(d.y, d.x->min)) return false;
  return d.y->count != 1 || !cs_isIn(d.x, d.y->min) || removeValue(d.x, d.y->min);
}

inline bool controlEq(const Data &d) { return isOne(d.b) ? equalise(d) : separate(d); }
inline bool controlNeq(const Data &d) { return isOne(d.b) ? separate(d) : equalise(d); }

inline bool watchEq(const Data &d, int, const CSint *, int) {
  if (!isFree(d.b)) return controlEq(d);
  if (!share(d.x, d.y)) return bindValue(d.b, 0);
  return !sameValue(d.x, d.y) || bindValue(d.b, 1);
}

inline bool watchNeq(const Data &d, int, const CSint *, int) {
  if (!isFree(d.b)) return controlNeq(d);
  if (!share(d.x, d.y)) return bindValue(d.b, 1);
  return !sameValue(d.x, d.y) || bindValue(d.b, 0);
}

// ----- x = v and x != v

inline bool controlEQ(const Data &d) { return isOne(d.b) ? bindValue(d.x, d.v) : removeValue(d.x, d.v); }
inline bool controlNEQ(const Data &d) { return isOne(d.b) ? removeValue(d.x, d.v) : bindValue(d.x, d.v); }

inline bool watchEQ(const Data &d, int code, const CSint *, int m) {
  if (code == 0) return isFree(d.b) ? d.x->min <= d.v || bindValue(d.b, 0) : !isOne(d.b) || d.x->min <= d.v;
  if (code == 1) return isFree(d.b) ? d.x->max >= d.v || bindValue(d.b, 0) : !isOne(d.b) || d.x->max >= d.v;
  if (code == 5) return isFree(d.b) ? m != d.v || bindValue(d.b, 0) : !isOne(d.b) || m != d.v;
  const int outcome = d.x->min == d.v ? 1 : 0;
  return isFree(d.b) ? bindValue(d.b, outcome) : d.b->min == outcome;
}

inline bool watchNEQ(const Data &d, int code, const CSint *, int m) {
  if (code == 0) return isFree(d.b) ? d.x->min <= d.v || bindValue(d.b, 1) : isOne(d.b) || d.x->min <= d.v;
  if (code == 1) return isFree(d.b) ? d.x->max >= d.v || bindValue(d.b, 1) : isOne(d.b) || d.x->max >= d.v;
  if (code == 5) return isFree(d.b) ? m != d.v || bindValue(d.b, 1) : isOne(d.b) || m != d.v;
  const int outcome = d.x->min == d.v ? 0 : 1;
  return isFree(d.b) ? bindValue(d.b, outcome) : d.b->min == outcome;
}

// ----- x < v, x <= v, x > v, x >= v

inline bool controlLT(const Data &d) { return isOne(d.b) ? narrowMax(d.x, d.v - 1) : narrowMin(d.x, d.v); }
inline bool controlLE(const Data &d) { return isOne(d.b) ? narrowMax(d.x, d.v) : narrowMin(d.x, d.v + 1); }
inline bool controlGT(const Data &d) { return isOne(d.b) ? narrowMin(d.x, d.v + 1) : narrowMax(d.x, d.v); }
inline bool controlGE(const Data &d) { return isOne(d.b) ? narrowMin(d.x, d.v) : narrowMax(d.x, d.v - 1); }

inline bool watchLT(const Data &d, int code, const CSint *, int) {
  if (code == 5) return true;
  if (!isFree(d.b)) return isOne(d.b) ? d.x->min < d.v : d.x->max >= d.v;
  if ((code == 1 || code >= 3) && d.x->max < d.v) return bindValue(d.b, 1);
  if (code % 2 == 0 && d.x->min >= d.v) return bindValue(d.b, 0);
  return true;
}

inline bool watchLE(const Data &d, int code, const CSint *, int) {
  if (code == 5) return true;
  if (!isFree(d.b)) return isOne(d.b) ? d.x->min <= d.v : d.x->max > d.v;
  if ((code == 1 || code >= 3) && d.x->max <= d.v) return bindValue(d.b, 1);
  if (code % 2 == 0 && d.x->min > d.v) return bindValue(d.b, 0);
  return true;
}

inline bool watchGT(const Data &d, int code, const CSint *, int) {
  if (code == 5) return true;
  if (!isFree(d.b)) return isOne(d.b) ? d.x->max > d.v : d.x->min <= d.v;
  if ((code == 1 || code >= 3) && d.x->max <= d.v) return bindValue(d.b, 0);
  if (code % 2 == 0 && d.x->min > d.v) return bindValue(d.b, 1);
  return true;
}

inline bool watchGE(const Data &d, int code, const CSint *, int) {
  if (code == 5) return true;
  if (!isFree(d.b)) return isOne(d.b) ? d.x->max >= d.v : d.x->min < d.v;
  if ((code == 1 || code >= 3) && d.x->max < d.v) return bindValue(d.b, 0);
  if (code % 2 == 0 && d.x->min >= d.v) return bindValue(d.b, 1);
  return true;
}

// ----- x = v exactly when y = w, and never both

inline bool demand(CSint *from, int value, CSint *to, int wanted) {
  if (from->count != 1 || from->min != value) return true;
  return cs_isIn(to, wanted) && bindValue(to, wanted);
}

inline bool exclude(CSint *from, int value, CSint *to, int unwanted) {
  if (from->count != 1 || from->min != value) return true;
  return !cs_isIn(to, unwanted) || removeValue(to, unwanted);
}

inline bool watchIfEq(const Data &d, int code, const CSint *c, int) {
  if (code < 2 || code == 5) return true;
  return c == d.x ? demand(d.x, d.v, d.y, d.w) : demand(d.y, d.w, d.x, d.v);
}

inline bool watchIfNeq(const Data &d, int code, const CSint *c, int) {
  if (code < 2 || code == 5) return true;
  return c == d.x ? exclude(d.x, d.v, d.y, d.w) : exclude(d.y, d.w, d.x, d.v);
}

// ----- posting

struct ControlRecord {
  Data data;
  Control rule;
};
struct WatchRecord {
  Data data;
  Watch rule;
};

inline bool runControl(ControlRecord &r, const Event &) { return r.rule(r.data); }
template <int code>
bool runWatch(WatchRecord &r, const Event &e) {
  return r.rule(r.data, code, e.var, e.newValue);
}

inline constexpr auto kControlTable =
    handlers<ControlRecord>({.minBound = on<runControl>, .maxBound = on<runControl>, .bound = on<runControl>});
inline constexpr auto kWatchTable = handlers<WatchRecord>({.newMin = on<runWatch<0>>,
                                                           .newMax = on<runWatch<1>>,
                                                           .minBound = on<runWatch<2>>,
                                                           .maxBound = on<runWatch<3>>,
                                                           .bound = on<runWatch<4>>,
                                                           .removed = on<runWatch<5>>});

inline CSint *undecided(const char *name, Data data, Control control, Watch watch) {
  data.b = cs_createCSint(0, 1);
  Posting posting{name};
  auto onB = posting.add(kControlTable, ControlRecord{data, control});
  onB.attach(data.b);
  auto onCompared = posting.add(kWatchTable, WatchRecord{data, watch});
  onCompared.attach(data.x);
  if (data.y != nullptr) onCompared.attach(data.y);
  return posting ? data.b : nullptr;
}

inline CSint *lt(const char *name, CSint *x, CSint *y) {
  if (x == y || x->min >= y->max) return CSINT(0);
  if (x->max < y->min) return CSINT(1);
  return undecided(name, {nullptr, x, y, 0, 0}, controlLt, watchLt);
}

inline CSint *le(const char *name, CSint *x, CSint *y) {
  if (x == y || x->max <= y->min) return CSINT(1);
  if (x->min > y->max) return CSINT(0);
  return undecided(name, {nullptr, x, y, 0, 0}, controlLe, watchLe);
}

inline CSint *eq(CSint *x, CSint *y) {
  if (x == y) return CSINT(1);
  if (!share(x, y)) return CSINT(0);
  if (sameValue(x, y)) return CSINT(1);
  return undecided("cs_ReifEq", {nullptr, x, y, 0, 0}, controlEq, watchEq);
}

inline CSint *neq(CSint *x, CSint *y) {
  if (x == y) return CSINT(0);
  if (!share(x, y)) return CSINT(1);
  if (sameValue(x, y)) return CSINT(0);
  return undecided("cs_ReifNeq", {nullptr, x, y, 0, 0}, controlNeq, watchNeq);
}

inline CSint *lt(CSint *x, CSint *y) { return lt("cs_ReifLt", x, y); }
inline CSint *le(CSint *x, CSint *y) { return le("cs_ReifLe", x, y); }
inline CSint *gt(CSint *x, CSint *y) { return lt("cs_ReifGt", y, x); }
inline CSint *ge(CSint *x, CSint *y) { return le("cs_ReifGe", y, x); }

inline CSint *EQ(CSint *x, int v) {
  if (x->count == 1) return CSINT(x->min == v ? 1 : 0);
  if (!cs_isIn(x, v)) return CSINT(0);
  return undecided("cs_ReifEQ", {nullptr, x, nullptr, v, 0}, controlEQ, watchEQ);
}

inline CSint *NEQ(CSint *x, int v) {
  if (x->count == 1) return CSINT(x->min == v ? 0 : 1);
  if (!cs_isIn(x, v)) return CSINT(1);
  return undecided("cs_ReifNEQ", {nullptr, x, nullptr, v, 0}, controlNEQ, watchNEQ);
}

inline CSint *LT(CSint *x, int v) {
  if (x->max < v) return CSINT(1);
  if (x->min >= v) return CSINT(0);
  return undecided("cs_ReifLT", {nullptr, x, nullptr, v, 0}, controlLT, watchLT);
}

inline CSint *LE(CSint *x, int v) {
  if (x->max <= v) return CSINT(1);
  if (x->min > v) return CSINT(0);
  return undecided("cs_ReifLE", {nullptr, x, nullptr, v, 0}, controlLE, watchLE);
}

inline CSint *GT(CSint *x, int v) {
  if (x->min > v) return CSINT(1);
  if (x->max <= v) return CSINT(0);
  return undecided("cs_ReifGT", {nullptr, x, nullptr, v, 0}, controlGT, watchGT);
}

inline CSint *GE(CSint *x, int v) {
  if (x->min >= v) return CSINT(1);
  if (x->max < v) return CSINT(0);
  return undecided("cs_ReifGE", {nullptr, x, nullptr, v, 0}, controlGE, watchGE);
}

inline bool conditional(const char *name, const Data &data, Watch watch) {
  Posting posting{name};
  auto c = posting.add(kWatchTable, WatchRecord{data, watch});
  c.attach(data.x);
  c.attach(data.y);
  return static_cast<bool>(posting);
}

inline bool ifEq(CSint *x, CSint *y, int v, int w) {
  return conditional("cs_IfEq", {nullptr, x, y, v, w}, watchIfEq) && demand(x, v, y, w) && demand(y, w, x, v);
}

inline bool ifNeq(CSint *x, CSint *y, int v, int w) {
  return conditional("cs_IfNeq", {nullptr, x, y, v, w}, watchIfNeq) && exclude(x, v, y, w) && exclude(y, w, x, v);
}

}  // namespace koru::test::reif_twin
