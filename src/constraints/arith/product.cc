// SPDX-License-Identifier: MIT
// cs_Mul, cs_VMul, cs_Div, cs_VDiv: p = a * b. z = x * y is {z, x, y}; the exact quotient z = x / y is {x, z, y}.
// Consistency: the bounds of the four corners, which need not be part of a solution; nothing for an operand while the
// other one can be 0.  Cost: O(1) per event.  State: none.
// Wakes: when a bound moves or a variable is bound.
// Deliberate: nothing is narrowed at posting, since the result is made with what the operands allow; a product that is
// decided is posted all the same, which keeps the number of constraints independent of the domains.
// Deliberate: a divisor that includes 0 says nothing, so its quotient ranges over all ints.
#include <cstdarg>

#include "constraints/arith/corner_bounds.h"
#include "core/post.h"

namespace koru::product {

struct Product {
  CSint *p;
  CSint *a;
  CSint *b;
};

// ----- rules

static bool narrowTo(CSint *v, Bounds bounds) { return narrowMin64(v, bounds.low) && narrowMax64(v, bounds.high); }

static bool narrowProduct(Product &c) { return narrowTo(c.p, productBounds(c.a, c.b)); }

static bool narrowFactor(Product &c, CSint *factor, const CSint *other) {
  return !excludesZero(other) || narrowTo(factor, quotientBounds(c.p, other));
}

static bool dropZeroBound(CSint *factor) {
  if (factor->min == 0 && factor->max >= 1) return narrowMin(factor, 1);
  return factor->max != 0 || factor->min >= 0 || narrowMax(factor, -1);
}

static bool excludeZero(Product &c) { return !excludesZero(c.p) || (dropZeroBound(c.a) && dropZeroBound(c.b)); }

// ----- handler: a is tested first, then b, as one variable may stand in several places

static bool changed(Product &c, const Event &e) {
  if (!excludeZero(c)) return false;
  if (e.var == c.a) return narrowProduct(c) && narrowFactor(c, c.b, c.a);
  if (e.var == c.b) return narrowProduct(c) && narrowFactor(c, c.a, c.b);
  return narrowFactor(c, c.b, c.a) && narrowFactor(c, c.a, c.b);
}

constexpr auto kTable = handlers<Product>({.newMin = on<changed>,
                                           .newMax = on<changed>,
                                           .minBound = on<changed>,
                                           .maxBound = on<changed>,
                                           .bound = on<changed>});

// ----- posting

using Operation = CSint *(*)(Posting &posting, CSint *x, CSint *y);

static CSint *attach(Posting &posting, const Product &product, CSint *z, CSint *x, CSint *y) {
  auto c = posting.add(kTable, product);
  c.attach(z);
  c.attach(x);
  c.attach(y);
  return posting ? z : nullptr;
}

static CSint *multiply(Posting &posting, CSint *x, CSint *y) {
  const Bounds bounds = productBounds(x, y);
  CSint *z = createVariable(static_cast<int>(bounds.low), static_cast<int>(bounds.high));
  return z != nullptr ? attach(posting, {z, x, y}, z, x, y) : nullptr;
}

static CSint *divide(Posting &posting, CSint *x, CSint *y) {
  const Bounds bounds = excludesZero(y) ? quotientBounds(x, y) : Bounds{kIntMin, kIntMax};
  if (bounds.low > bounds.high || bounds.low > kIntMax) return nullptr;
  CSint *z = createVariable(static_cast<int>(bounds.low), clampToInt(bounds.high));
  return z != nullptr ? attach(posting, {x, z, y}, z, x, y) : nullptr;
}

static CSint *post(const Poster &poster, Operation operation, CSint *x, CSint *y) {
  if (x == nullptr || y == nullptr) return nullptr;
  Posting posting{poster};
  return posting ? operation(posting, x, y) : nullptr;
}

// Left to right under one site; x alone for n < 2.
static CSint *postChain(const Poster &poster, Operation operation, int n, CSint *x, std::va_list others) {
  Posting posting{poster};
  CSint *result = posting ? x : nullptr;
  for (int i = 1; i < n && result != nullptr; ++i) {
    CSint *y = va_arg(others, CSint *);
    result = y != nullptr ? operation(posting, result, y) : nullptr;
  }
  return result;
}

}  // namespace koru::product

using koru::door;
using namespace koru::product;

CSint *cs_Mul(CSint *x, CSint *y) { return door(post("cs_Mul", multiply, x, y)); }
CSint *cs_Div(CSint *x, CSint *y) { return door(post("cs_Div", divide, x, y)); }

CSint *cs_VMul(int n, CSint *x1, ...) {
  std::va_list others;
  va_start(others, x1);
  CSint *result = postChain("cs_VMul", multiply, n, x1, others);
  va_end(others);
  return door(result);
}

CSint *cs_VDiv(int n, CSint *x1, ...) {
  std::va_list others;
  va_start(others, x1);
  CSint *result = postChain("cs_VDiv", divide, n, x1, others);
  va_end(others);
  return door(result);
}
