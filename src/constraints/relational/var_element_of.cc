// SPDX-License-Identifier: MIT
// cs_VarElementOf: result = vars[index].  cs_PositionOf: vars[position] = value, an int.
// Consistency: domain, but a result over more than 2^16 values may keep inner ones that no position has.
// Cost: in a run O(n) for the positions, and for each value of the result a look for a
// position that has it.
// State: for each position a value that it shares with the result, and the position that was seen to have a value last:
// not trailed, looked at before they are used.
// Wakes: on every event.
#include "constraints/logic/agree.h"
#include "constraints/relational/fixpoint.h"
#include "koru_extras.h"

namespace koru::var_element_of {

struct VarElementOf : Deferred {
  CSint *index;
  CSint *result;
  Shared<CSint *> vars;
  Buffer<int> shared;  // by position
  int n;
  int lastSupport = 0;

  CSint *at(int position) const { return vars.get()[position]; }
};

constexpr std::uint32_t kWidest = 1U << 16;

static bool filterPositions(VarElementOf &c) {
  return narrowMin(c.index, 0) && narrowMax(c.index, c.n - 1) && forEachValue(c.index, [&c](int position) {
           return shareValue(c.at(position), c.result, c.shared[position]) || removeValue(c.index, position);
         });
}

static bool hasSupport(VarElementOf &c, int value) {
  if (contains(c.index, c.lastSupport) && contains(c.at(c.lastSupport), value)) return true;
  return !forEachValue(c.index, [&c, value](int position) {
    if (!contains(c.at(position), value)) return true;
    c.lastSupport = position;
    return false;
  });
}

static bool filterResult(VarElementOf &c) {
  int low = kIntMax;
  int high = kIntMin;
  forEachValue(c.index, [&](int position) {
    low = std::min(low, c.at(position)->min);
    high = std::max(high, c.at(position)->max);
    return true;
  });
  if (!narrowMin(c.result, low) || !narrowMax(c.result, high)) return false;
  if (distance(c.result->min, c.result->max) > kWidest) return true;
  return forEachValue(c.result, [&c](int value) { return hasSupport(c, value) || removeValue(c.result, value); });
}

// One walk is enough: what goes from the result, no position has.
static bool filter(VarElementOf &c) {
  if (!filterPositions(c)) return false;
  return isBound(c.index) ? equalise(c.at(valueOf(c.index)), c.result) : filterResult(c);
}

constexpr auto kTable = deferred<filter>(Rank::kQuadratic);

static bool post(Posting &posting, CSint *index, CSint *const *array, int n, CSint *result) {
  if (!posting || n < 1) return false;
  Shared<CSint *> vars = relational::copyOf(array, n);
  if (!vars) return false;
  Buffer<int> shared(n);
  if (!shared) return false;
  for (int i = 0; i < n; ++i) shared[i] = array[i]->min;
  auto c = posting.add(kTable, VarElementOf{{}, index, result, vars, std::move(shared), n});
  for (int i = 0; i < n; ++i) c.attach(vars.get()[i], i);
  c.attach(index, n);
  c.attach(result, n);
  return posting && runSoon(*c);
}

static bool postElement(const Poster &poster, CSint *index, CSint *const *vars, int n, CSint *result) {
  if (index == nullptr || result == nullptr) return false;
  Posting posting{poster};
  return post(posting, index, vars, n, result);
}

static bool postPosition(const Poster &poster, CSint *const *vars, int n, int value, CSint *position) {
  if (position == nullptr || n < 1 || vars == nullptr) return false;
  Posting posting{poster};
  CSint *constant = posting ? createVariable(value, value) : nullptr;
  return constant != nullptr && post(posting, position, vars, n, constant);
}

}  // namespace koru::var_element_of

using koru::door;
using koru::leftOut;
using namespace koru::var_element_of;

bool cs_VarElementOf(CSint *index, CSint **vars, int n, CSint *result) {
  return leftOut("cs_VarElementOf") || door(postElement("cs_VarElementOf", index, vars, n, result));
}
bool cs_PositionOf(CSint **vars, int n, int value, CSint *position) {
  return leftOut("cs_PositionOf") || door(postPosition("cs_PositionOf", vars, n, value, position));
}
