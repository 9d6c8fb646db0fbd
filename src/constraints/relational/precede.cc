// SPDX-License-Identifier: MIT
// cs_Precede: wherever the value t stands among x1..xn, the value s stands somewhere before it (Law, Lee 2004).
// Consistency: domain.  Cost: O(n) in a run.  State: none.
// Wakes: on every event.
// With alpha the first place that can take s: t cannot stand up to alpha. With gamma the first place that is bound to
// t: if alpha is the only place before gamma that can take s, it does. Deliberate: with s = t nothing can be before the
// first, so the value stands nowhere.
#include "constraints/relational/fixpoint.h"
#include "koru_extras.h"

namespace koru::precede {

struct Precede : Deferred {
  Shared<CSint *> vars;
  int n;
  int s;
  int t;

  CSint *at(int i) const { return vars.get()[i]; }
  bool mayTakeS(int i) const { return s != t && contains(at(i), s); }
  std::int64_t size() const { return sizeOf(vars.get(), n); }
};

static int nextForS(const Precede &c, int from) {
  while (from < c.n && !c.mayTakeS(from)) ++from;
  return from;
}

static bool filter(Precede &c) {
  const int alpha = nextForS(c, 0);
  for (int i = 0; i < c.n && i <= alpha; ++i)
    if (!removeValue(c.at(i), c.t)) return false;
  int gamma = alpha;
  while (gamma < c.n && !(isBound(c.at(gamma)) && valueOf(c.at(gamma)) == c.t)) ++gamma;
  return gamma >= c.n || nextForS(c, alpha + 1) < gamma || bindValue(c.at(alpha), c.s);
}

static bool post(const Poster &poster, CSint *const *array, int n, int s, int t) {
  Posting posting{poster};
  if (!posting) return false;
  const Shared<CSint *> vars = relational::copyOf(array, n);
  if (!vars) return false;
  auto c = posting.add(relational::kTable<Precede, filter>, Precede{{}, vars, n, s, t});
  for (int i = 0; i < n; ++i) c.attach(vars.get()[i], i);
  return posting && runSoon(*c);
}

}  // namespace koru::precede

using koru::door;
using koru::leftOut;

bool cs_Precede(CSint **vars, int n, int s, int t) {
  return leftOut("cs_Precede") || door(koru::precede::post("cs_Precede", vars, n, s, t));
}
