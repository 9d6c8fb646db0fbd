// SPDX-License-Identifier: MIT
// The orders of values: the first decision on a variable.
// Cost: a step over the domain's bits; for the middle element and one at random, of a domain with holes, a count.
#include "nogood/no_good.h"
#include "solve/choose.h"
#include "solve/room.h"

namespace koru::solve {

namespace {

int middle(const CSint *v) { return static_cast<int>(v->min + (std::int64_t{v->max} - v->min) / 2); }

// The present value nearest to `value`, the smaller of two.
int nearest(const CSint *v, int value) {
  if (contains(v, value)) return value;
  const int below = valueBefore(v, value);
  const int above = valueAfter(v, value);
  return distance(below, value) <= distance(value, above) ? below : above;
}

// The k-th present value, from 0 on; the maximum should there be fewer.
int element(const CSint *v, std::uint32_t k) {
  if (!hasHoles(v) || v->bits == nullptr) return static_cast<int>(v->min + std::int64_t{k});
  int value = v->min;
  while (k-- > 0 && value < v->max) value = valueAfter(v, value);
  return value;
}

std::uint32_t elementsLessOne(const CSint *v) { return static_cast<std::uint32_t>(v->count) - 1; }

int randomElement(CSsearch &s, const CSint *v) {
  const std::uint32_t lessOne = elementsLessOne(v);
  return element(v, lessOne == UINT32_MAX ? static_cast<std::uint32_t>(s.random.next()) : s.random.below(lessOne + 1));
}

CSvalueSelection equalTo(int value) { return {CS_METHOD_EQ, value}; }

// A decision that the domain does not settle: both it and its opposite leave something.
CSvalueSelection ifUsable(bool given, const CSvalueSelection &decision, const CSint *v) {
  const bool usable = given && isMethod(decision.method) && isUndecided(decision, v);
  return usable ? decision : equalTo(v->min);
}

CSvalueSelection askHost(const CSsearch &s, int position) {
  const CSint *v = s.labelled[position];
  CSvalueSelection decision = equalTo(v->min);
  const bool given = s.options.chooseValue != nullptr &&
                     s.options.chooseValue(&decision, position, s.labelled.variables(), s.hostSize, s.options.extra);
  return ifUsable(given, decision, v);
}

// Begins and ends the selector for the sake of its first decision.
CSvalueSelection askSelector(const CSsearch &s, int position) {
  const CSint *v = s.labelled[position];
  CSvalueSelection decision = equalTo(v->min);
  if (s.options.selectors == nullptr) return decision;
  CSvalueSelector *selector = s.options.selectors[position];
  CSint **array = s.labelled.variables();
  void *word = nullptr;
  if (!cs_initValueSelector(selector, position, array, s.hostSize, &word)) return decision;
  const bool given = cs_selectNextValue(&decision, selector, position, array, s.hostSize, &word);
  cs_endValueSelector(selector, position, array, s.hostSize, &word);
  return ifUsable(given, decision, v);
}

// True when there is at least as much room with the first one first.
CSvalueSelection roomier(const CSint *v, const CSorder &order) {
  return ifUsable(true, {roomFirst(order) >= roomSecond(order) ? CS_METHOD_GE : CS_METHOD_LT, 1}, v);
}

}  // namespace

CSvalueSelection chooseDecision(CSsearch &s, const Phase &phase, int position) {
  const CSint *v = s.labelled[position];
  if (phase.order == CS_ORDER_SET_TIMES) return equalTo(v->min);
  if (s.options.guided) {
    const Wish &wish = s.labelled.wish(position);
    if (wish.made && contains(v, wish.value)) return equalTo(wish.value);
  }
  switch (phase.value) {
    case CS_VALUE_MAX:
      return equalTo(v->max);
    case CS_VALUE_MIDDLE:
      return equalTo(nearest(v, middle(v)));
    case CS_VALUE_MEDIAN:
      return equalTo(element(v, elementsLessOne(v) / 2));
    case CS_VALUE_LOW_HALF:
      return {CS_METHOD_LE, middle(v)};
    case CS_VALUE_HIGH_HALF:
      return {CS_METHOD_GT, middle(v)};
    case CS_VALUE_RANDOM:
      return equalTo(randomElement(s, v));
    case CS_VALUE_HOST:
      return askHost(s, position);
    case CS_VALUE_SELECTOR:
      return askSelector(s, position);
    case CS_VALUE_SLACK:
      return roomier(v, s.labelled.orderOf(phase, position));
    default:
      return equalTo(v->min);
  }
}

}  // namespace koru::solve
