// SPDX-License-Identifier: MIT
// cs_Eq: x = y.
// Consistency: domain.  Cost: O(1) per event; posting O(d) when a side has a bit array, d the width of the domains.
// State: none.  Wakes: on every event.
// Deliberate: the same variable twice -> true, nothing posted: it always equals itself.
#include "constraints/arith/eq.h"

#include "core/post.h"

namespace koru::eq {

struct Eq {
  CSint *x;
  CSint *y;
};

static CSint *other(const Eq &c, const CSint *v) { return v == c.x ? c.y : c.x; }

static bool copyBound(const CSint *from, CSint *to) {
  return contains(to, valueOf(from)) && bindValue(to, valueOf(from));
}

static bool alignBounds(Eq &c) {
  if (c.x->min < c.y->min ? !narrowMin(c.x, c.y->min) : !narrowMin(c.y, c.x->min)) return false;
  return c.x->max < c.y->max ? narrowMax(c.y, c.x->max) : narrowMax(c.x, c.y->max);
}

// The bounds are read again at every step: a removal may move them at once.
static bool alignHoles(Eq &c) {
  if (c.x->bits == nullptr && c.y->bits == nullptr) return true;
  for (std::int64_t at = c.x->min; at <= c.x->max; ++at) {
    if (!alignValue(c.x, c.y, static_cast<int>(at))) return false;
  }
  return true;
}

static bool filter(Eq &c) {
  if (isBound(c.x)) return copyBound(c.x, c.y);
  if (isBound(c.y)) return copyBound(c.y, c.x);
  return alignBounds(c) && alignHoles(c);
}

static bool newMin(Eq &c, const Event &e) { return narrowMin(other(c, e.var), e.var->min); }
static bool newMax(Eq &c, const Event &e) { return narrowMax(other(c, e.var), e.var->max); }
static bool bound(Eq &c, const Event &e) { return newMin(c, e) && newMax(c, e); }

static bool removed(Eq &c, const Event &e) { return removeIfPresent(other(c, e.var), e.newValue); }

constexpr auto kTable = handlers<Eq>({.newMin = on<newMin>,
                                      .newMax = on<newMax>,
                                      .minBound = on<newMin>,
                                      .maxBound = on<newMax>,
                                      .bound = on<bound>,
                                      .removed = on<removed>});

static bool post(const Poster &poster, CSint *x, CSint *y) {
  if (x == nullptr || y == nullptr) return false;
  if (x == y) return true;
  Posting posting{poster};
  auto c = posting.add(kTable, Eq{x, y});
  c.attach(x);
  c.attach(y);
  return posting && filter(*c);
}

}  // namespace koru::eq

using koru::door;
using koru::leftOut;
using namespace koru::eq;

bool cs_Eq(CSint *x, CSint *y) { return leftOut("cs_Eq") || door(post("cs_Eq", x, y)); }
