// SPDX-License-Identifier: MIT
// cs_Disjunctive: no two tasks of positive duration overlap; every task uses 1 of a capacity of 1.
// Consistency, cost, state and wakes: as cs_Cumulative.
// Deliberate: one private variable, bound to 1, stands for all uses and the capacity. It belongs to a constraint on the
// first start that is never woken, and to those on starts and durations, so that it lives as long as its last reader.
#include "constraints/global/cumulative.h"

namespace koru::disjunctive {

struct Holder {
  PrivateVariables unit;
};
constexpr auto kHolderTable = handlers<Holder>({});

static bool post(const Poster &poster, CSint **starts, CSint **durations, int n) {
  if (n < 1) return true;
  if (starts == nullptr || durations == nullptr) return false;
  if (!allPresent(starts, n) || !allPresent(durations, n)) return false;
  Posting posting{poster};
  if (!posting) return false;
  cumulative::Unit unit{PrivateVariables(1), {}};
  if (!unit.variable) return false;
  unit.uses = Buffer<CSint *>(n);
  if (!unit.uses) return false;
  CSint *one = unit.variable[0];
  unit.variable.init(0, 1, 1);
  CSint **uses = unit.uses.get();
  for (int i = 0; i < n; ++i) uses[i] = one;
  auto holder = posting.add(kHolderTable, Holder{unit.variable});
  holder.attach(starts[0]);
  return cumulative::post(posting, {starts, durations, uses, n}, one, std::move(unit));
}

}  // namespace koru::disjunctive

using koru::door;
using koru::leftOut;
using namespace koru::disjunctive;

bool cs_Disjunctive(CSint **starts, CSint **durations, int n) {
  return leftOut("cs_Disjunctive") || door(post("cs_Disjunctive", starts, durations, n));
}
