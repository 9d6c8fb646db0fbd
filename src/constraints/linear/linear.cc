// SPDX-License-Identifier: MIT
// cs_Linear, cs_ReifLinear, cs_LinearIff, cs_LinearIf: c1 * x1 + ... + cn * xn op constant, op being =, !=, <=, <, >=
// or >. Consistency, cost, state, wakes: those of the one or two constraints it is made of, see bounded.cc and
// differs.cc. b <=> S is made of b => S and not b => not S. Deliberate: repeated variables are added up and the divisor
// of the coefficients is taken out first, so 2x - 2y = 1 is refused at once.
#include "constraints/linear/bounded.h"
#include "core/post.h"
#include "koru_extras.h"

namespace koru::linear {

struct Given {
  CSint *const *vars;
  const long long *coefficients;
  int n;
  int method;
  long long constant;
};

static bool impose(Posting &posting, const Sum &sum, const truth::Guard &guard) {
  if (!sum) return false;
  if (sum.n == 0) return sum.holdsEmpty() || guard.refuse();
  return sum.kind == Kind::kDiffers ? postDiffers(posting, sum, guard) : postBounded(posting, sum, guard);
}

static bool imposeIff(Posting &posting, const Sum &sum, CSint *b) {
  return impose(posting, sum, {b, true}) && impose(posting, sum.negation(), {b, false});
}

static bool make(Sum &sum, const Given &given) {
  return sum.make(given.vars, given.coefficients, given.n, given.method, given.constant);
}

static bool post(const Poster &poster, const Given &given) {
  Posting posting{poster};
  Sum sum;
  return posting && make(sum, given) && impose(posting, sum, {});
}

static bool postIf(const Poster &poster, CSint *b, const Given &given) {
  if (b == nullptr) return false;
  Posting posting{poster};
  Sum sum;
  return posting && make(sum, given) && impose(posting, sum, {b, true});
}

static bool postIff(const Poster &poster, CSint *b, const Given &given) {
  if (b == nullptr) return false;
  Posting posting{poster};
  Sum sum;
  return posting && make(sum, given) && imposeIff(posting, sum, b);
}

static CSint *reify(const Poster &poster, const Given &given) {
  Posting posting{poster};
  Sum sum;
  if (!posting || !make(sum, given)) return nullptr;
  CSint *b = createVariable(0, 1);
  return b != nullptr && imposeIff(posting, sum, b) ? b : nullptr;
}

}  // namespace koru::linear

using koru::door;
using koru::leftOut;
using namespace koru::linear;

bool cs_Linear(CSint **vars, const long long *coeffs, int n, int method, long long constant) {
  return leftOut("cs_Linear") || door(post("cs_Linear", {vars, coeffs, n, method, constant}));
}

CSint *cs_ReifLinear(CSint **vars, const long long *coeffs, int n, int method, long long constant) {
  return door(reify("cs_ReifLinear", {vars, coeffs, n, method, constant}));
}

bool cs_LinearIff(CSint *b, CSint **vars, const long long *coeffs, int n, int method, long long constant) {
  return leftOut("cs_LinearIff") || door(postIff("cs_LinearIff", b, {vars, coeffs, n, method, constant}));
}

bool cs_LinearIf(CSint *b, CSint **vars, const long long *coeffs, int n, int method, long long constant) {
  return leftOut("cs_LinearIf") || door(postIf("cs_LinearIf", b, {vars, coeffs, n, method, constant}));
}
