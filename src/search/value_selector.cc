// SPDX-License-Identifier: MIT
// Value selectors: the record, the six decisions that it can ask for, and the five built-in ones.
//
// A built-in selector keeps a cursor in the word that the engine gives each level, as an int: the next value to look at
// (kinds 0 and 1), else the number of decisions produced.  Cost per decision: a step to the next present value; for
// kind 4, which counts up to the median, one for each value below it where the domain has holes. Deliberate: all
// figures are those of the domain as it is at each call.  A variable whose count has wrapped has no second element, so
// kind 4 tries its minimum and nothing else.
#include <algorithm>
#include <cstdlib>

#include "core/alloc.h"
#include "core/refusal.h"
#include "core/site.h"
#include "core/variable.h"

namespace koru {

namespace {

// What a cursor says that has gone past an end of the int range: a value near the other end, to a variable that does
// not reach so far. Deliberate: to one that does it says that value, so the decisions begin again; it would have to
// hold nearly all ints. The cursor is an int all the same, since a host may set it as one.
constexpr int kPastMax = kIntMin + 2;
constexpr int kPastMin = kIntMax - 2;

int above(int value) { return value < kIntMax ? value + 1 : kPastMax; }
int below(int value) { return value > kIntMin ? value - 1 : kPastMin; }
bool isAbove(int cursor, const CSint &v) { return cursor > v.max || (cursor == kPastMax && v.min > kPastMax); }
bool isBelow(int cursor, const CSint &v) { return cursor < v.min || (cursor == kPastMin && v.max < kPastMin); }

template <auto start>
bool init(int index, CSint **array, int, void *state) {
  if (array == nullptr || index < 0 || state == nullptr) return false;
  *static_cast<int *>(state) = start(array[index]);
  return true;
}

int atFirst(CSint *) { return 0; }

using Produce = bool (*)(CSvalueSelection &, const CSint &, int &);

template <Produce produce>
bool next(CSvalueSelection *r, int index, CSint **array, int, void *state) {
  if (r == nullptr || array == nullptr || index < 0 || array[index] == nullptr || state == nullptr) return false;
  return produce(*r, *array[index], *static_cast<int *>(state));
}

bool produceValue(CSvalueSelection &r, const CSint &v, int value) {
  r = {CS_METHOD_EQ, value};
  return contains(&v, value);
}

bool ascending(CSvalueSelection &r, const CSint &v, int &cursor) {
  if (isAbove(cursor, v)) return false;
  int value = cursor < v.min ? v.min : cursor;
  if (!contains(&v, value)) value = valueAfter(&v, value);
  cursor = above(value);
  return produceValue(r, v, value);
}

bool descending(CSvalueSelection &r, const CSint &v, int &cursor) {
  if (isBelow(cursor, v)) return false;
  int value = cursor > v.max ? v.max : cursor;
  if (!contains(&v, value)) value = valueBefore(&v, value);
  cursor = below(value);
  return produceValue(r, v, value);
}

// A decision and the rest, which may be nothing.
struct Split {
  CSvalueSelection first;
  CSvalueSelection second;
  bool hasSecond;
};

template <Split (*splitOf)(const CSint &)>
bool firstThenSecond(CSvalueSelection &r, const CSint &v, int &cursor) {
  if (cursor < 0 || cursor > 1) return false;
  const Split split = splitOf(v);
  if (cursor == 1 && !split.hasSecond) return false;
  r = cursor == 0 ? split.first : split.second;
  ++cursor;
  return true;
}

int middle(const CSint &v) { return static_cast<int>(v.min + (std::int64_t{v.max} - v.min) / 2); }

Split lowerHalfFirst(const CSint &v) {
  const int mid = middle(v);
  return {{CS_METHOD_LE, mid}, {CS_METHOD_GT, mid}, mid < v.max};
}

Split upperHalfFirst(const CSint &v) {
  int mid = middle(v);
  if (isFree(&v) && mid == v.min) mid = wrapAdd(mid, 1);
  return {{CS_METHOD_GE, mid}, {CS_METHOD_LT, mid}, mid > v.min};
}

// The k-th present value from the minimum on, k = (count + 1) / 2; the maximum should the count be too high for that.
int median(const CSint &v) {
  const int steps = isFree(&v) ? (v.count - 1) / 2 : 0;
  if (v.bits == nullptr) return static_cast<int>(std::min(std::int64_t{v.min} + steps, std::int64_t{v.max}));
  int value = v.min;
  for (int i = 0; i < steps && value < v.max; ++i) value = valueAfter(&v, value);
  return value;
}

Split medianFirst(const CSint &v) {
  const int m = median(v);
  return {{CS_METHOD_EQ, m}, {CS_METHOD_NEQ, m}, isFree(&v)};
}

CSvalueSelector builtIn[] = {
    {init<cs_getMin>, next<ascending>, nullptr},
    {init<cs_getMax>, next<descending>, nullptr},
    {init<atFirst>, next<firstThenSecond<lowerHalfFirst>>, nullptr},
    {init<atFirst>, next<firstThenSecond<upperHalfFirst>>, nullptr},
    {init<atFirst>, next<firstThenSecond<medianFirst>>, nullptr},
};

bool isBuiltIn(const CSvalueSelector *vs) {
  for (const CSvalueSelector &each : builtIn)
    if (vs == &each) return true;
  return false;
}

// ----- a decision

bool select(CSint *v, const CSvalueSelection &r) {
  switch (r.method) {  // GCOVR_EXCL_BR_LINE: see below
    case CS_METHOD_EQ:
      return cs_EQ(v, r.value);
    case CS_METHOD_NEQ:
      return cs_NEQ(v, r.value);
    case CS_METHOD_LE:
      return cs_LE(v, r.value);
    case CS_METHOD_LT:
      return cs_LT(v, r.value);
    case CS_METHOD_GE:
      return cs_GE(v, r.value);
    case CS_METHOD_GT:
      return cs_GT(v, r.value);
    default:         // GCOVR_EXCL_LINE: a process that aborts does not count lines
      std::abort();  // GCOVR_EXCL_LINE
  }
}

// A censor is asked about this call, not about the relation under it.
[[gnu::cold, gnu::noinline]] bool selectClosely(const Poster &poster, CSint *v, const CSvalueSelection *r) {
  if (leftOut(poster.name, poster.caller)) return true;
  bool consistent = false;
  if (r != nullptr) {
    const AtWork atWork;
    consistent = select(v, *r);
  }
  return door(consistent);
}

}  // namespace
}  // namespace koru

using namespace koru;

CSvalueSelector *cs_createValueSelector(CSvalueSelectorInit init, CSvalueSelectorNext next, CSvalueSelectorEnd end) {
  auto *vs = static_cast<CSvalueSelector *>(allocate(sizeof(CSvalueSelector)));
  if (vs != nullptr) *vs = {init, next, end};
  return vs;
}

CSvalueSelector *cs_getValueSelector(int kind) {
  return kind >= CS_SELECT_ASCENDING && kind <= CS_SELECT_MEDIAN ? &builtIn[kind] : nullptr;
}

bool cs_initValueSelector(CSvalueSelector *vs, int index, CSint **array, int size, void *state) {
  return vs != nullptr && (vs->init == nullptr || vs->init(index, array, size, state));
}

bool cs_selectNextValue(CSvalueSelection *r, CSvalueSelector *vs, int index, CSint **array, int size, void *state) {
  return vs != nullptr && vs->next != nullptr && vs->next(r, index, array, size, state);
}

bool cs_endValueSelector(CSvalueSelector *vs, int index, CSint **array, int size, void *state) {
  return vs != nullptr && (vs->end == nullptr || vs->end(index, array, size, state));
}

bool cs_selectValue(CSint *v, const CSvalueSelection *r) {
  if (solver::attention) [[unlikely]]
    return selectClosely("cs_selectValue", v, r);
  return r != nullptr ? select(v, *r) : door(false);
}

void cs_freeValueSelector(CSvalueSelector *vs) {
  if (!isBuiltIn(vs)) deallocate(vs);
}
