// SPDX-License-Identifier: MIT
// model_Apart: x + distance != y.
// Consistency: forward checking, acts when one side is bound.  Cost: O(1) per event.  State: none.
// Wakes: when a side becomes bound.
// Deliberate: the same variable twice -> whether distance is not 0, nothing posted.
#include "catalogue/models/models.h"
#include "core/post.h"

namespace koru::model_apart {

// ----- record

struct Apart {
  CSint *x;
  CSint *y;
  int distance;
};

// ----- rules

// The difference of two ints may be none.
static bool exclude(std::int64_t value, CSint *v) {
  return value < v->min || value > v->max || removeValue(v, static_cast<int>(value));
}
static bool excludeFromY(const Apart &c) { return exclude(std::int64_t{valueOf(c.x)} + c.distance, c.y); }
static bool excludeFromX(const Apart &c) { return exclude(std::int64_t{valueOf(c.y)} - c.distance, c.x); }

static bool filter(const Apart &c) {
  if (isBound(c.x)) return excludeFromY(c);
  return !isBound(c.y) || excludeFromX(c);
}

// ----- handlers

static bool bound(Apart &c, const Event &e) { return e.var == c.x ? excludeFromY(c) : excludeFromX(c); }

constexpr auto kTable = handlers<Apart>({.minBound = on<bound>, .maxBound = on<bound>, .bound = on<bound>});

// ----- posting

static bool post(const Poster &poster, CSint *x, CSint *y, int distance) {
  if (x == nullptr || y == nullptr) return false;
  if (x == y) return distance != 0;
  Posting posting{poster};
  auto c = posting.add(kTable, Apart{x, y, distance});
  c.attach(x);
  c.attach(y);
  return posting && filter(*c);
}

}  // namespace koru::model_apart

bool model_Apart(CSint *x, CSint *y, int distance) { return koru::model_apart::post("model_Apart", x, y, distance); }
