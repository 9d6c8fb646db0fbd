// SPDX-License-Identifier: MIT
#include "constraints/linear/terms.h"

#include <algorithm>
#include <functional>

#include "core/post.h"

namespace koru::linear {

static Int128 magnitude(Int128 c) { return c < 0 ? -c : c; }

static Int128 greatestDivisor(Int128 p, Int128 q) {
  while (q != 0) {
    const Int128 rest = p % q;
    p = q;
    q = rest;
  }
  return p;
}

// Sum <= and >= as one: with the opposite sign the latter is the former.
static bool isOpposite(int method) { return method == CS_METHOD_GE || method == CS_METHOD_GT; }

static Kind kindOf(int method) {
  if (method == CS_METHOD_EQ) return Kind::kEqual;
  return method == CS_METHOD_NEQ ? Kind::kDiffers : Kind::kAtMost;
}

bool Sum::make(CSint *const *variables, const long long *given, int size, int method, long long constant) {
  if (size < 0 || method < CS_METHOD_EQ || method > CS_METHOD_GT) return false;
  if (size > 0 && (variables == nullptr || given == nullptr || !allPresent(variables, size))) return false;
  vars = Shared<CSint *>(size);
  if (!vars) return false;
  coefficients = Shared<Int128>(size);
  if (!coefficients) return false;
  kind = kindOf(method);
  n = size;
  const int sign = isOpposite(method) ? -1 : 1;
  const bool strict = method == CS_METHOD_LT || method == CS_METHOD_GT;
  limit = sign * Int128{constant} - (strict ? 1 : 0);
  for (int i = 0; i < n; ++i) {
    vars.get()[i] = variables[i];
    coefficients.get()[i] = sign * Int128{given[i]};
  }
  if (!merge()) return false;
  divide();
  return true;
}

// Adds up the coefficients of a variable where it stands first. Places of the same variable are next to one another in
// an order by addresses, which decides nothing else.
bool Sum::merge() {
  const Buffer<int> order(n);
  if (!order) return false;
  CSint **v = vars.get();
  Int128 *c = coefficients.get();
  for (int i = 0; i < n; ++i) order[i] = i;
  std::sort(order.get(), order.get() + n,
            [v](int i, int j) { return v[i] != v[j] ? std::less<>{}(v[i], v[j]) : i < j; });
  for (int k = 1, first = 0; k < n; ++k) {
    if (v[order[k]] != v[order[first]]) {
      first = k;
      continue;
    }
    c[order[first]] += c[order[k]];
    c[order[k]] = 0;
  }
  int kept = 0;
  for (int i = 0; i < n; ++i) {
    if (c[i] == 0) continue;
    v[kept] = v[i];
    c[kept++] = c[i];
  }
  n = kept;
  return true;
}

// An equality that the divisor rules out becomes one without terms.
void Sum::divide() {
  Int128 divisor = 0;
  Int128 *c = coefficients.get();
  for (int i = 0; i < n; ++i) divisor = greatestDivisor(divisor, magnitude(c[i]));
  if (divisor <= 1) return;
  if (kind != Kind::kAtMost && limit % divisor != 0) {
    n = 0;
    limit = 1;
    return;
  }
  for (int i = 0; i < n; ++i) c[i] /= divisor;
  limit = floorDiv(limit, divisor);
}

Sum Sum::negation() const {
  Sum result = *this;
  if (kind != Kind::kAtMost) {
    result.kind = kind == Kind::kEqual ? Kind::kDiffers : Kind::kEqual;
    return result;
  }
  result.limit = -limit - 1;
  result.coefficients = Shared<Int128>(n);
  if (!result.coefficients) return result;
  std::transform(coefficients.get(), coefficients.get() + n, result.coefficients.get(), std::negate<>{});
  return result;
}

bool Sum::fits64() const {
  constexpr std::int64_t kMost = std::int64_t{1} << 62;
  Int128 total = 0;
  for (int i = 0; i < n; ++i) total += magnitude(coefficients.get()[i]);
  return total <= (kMost >> 32) && magnitude(limit) <= kMost;
}

}  // namespace koru::linear
