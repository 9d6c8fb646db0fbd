// SPDX-License-Identifier: MIT
// The built-in variable selections: one pass over the array. Null entries never qualify.
#include "core/variable.h"

namespace koru {

// The first variable with at least two elements that no other one is better than. `worst` is where the running best
// starts; only what is strictly better replaces it, so a measure that equals it is never chosen.
template <class Measure, class Better>
static CSint *selectBest(CSint **array, int size, int worst, Measure measure, Better better) {
  CSint *best = nullptr;
  int bestMeasure = worst;
  for (int i = 0; i < size; ++i) {
    CSint *v = array[i];
    if (v == nullptr || v->count < 2) continue;
    const int m = measure(v);
    if (!better(m, bestMeasure, v, best)) continue;
    best = v;
    bestMeasure = m;
  }
  return best;
}

static int elements(const CSint *v) { return v->count; }
static int constraints(const CSint *v) { return v->constraintCount; }
static bool fewer(int m, int best, const CSint *, const CSint *) { return m < best; }
static bool more(int m, int best, const CSint *, const CSint *) { return m > best; }

static bool fewerThenLower(int m, int best, const CSint *v, const CSint *bestVariable) {
  return m < best || (m == best && bestVariable != nullptr && v->min < bestVariable->min);
}

}  // namespace koru

using namespace koru;

CSint *cs_findFreeVar(CSint **array, int size) {
  for (int i = 0; array != nullptr && i < size; ++i)
    if (array[i] != nullptr && array[i]->min < array[i]->max) return array[i];
  return nullptr;
}

CSint *cs_findFreeVarNbElements(CSint **array, int size) {
  return array != nullptr ? selectBest(array, size, kIntMax, elements, fewer) : nullptr;
}

CSint *cs_findFreeVarNbElementsMin(CSint **array, int size) {
  return array != nullptr ? selectBest(array, size, kIntMax, elements, fewerThenLower) : nullptr;
}

CSint *cs_findFreeVarNbConstraints(CSint **array, int size) {
  return array != nullptr ? selectBest(array, size, kIntMin, constraints, more) : nullptr;
}
