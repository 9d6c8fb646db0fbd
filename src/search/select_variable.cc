// SPDX-License-Identifier: MIT
// The built-in variable selections: one pass over the array. Null entries never qualify.
#include "search/select_variable.h"

namespace koru {

template <class Rule>
static CSint *selectFrom(CSint **array, int size) {
  Rule rule;
  for (int i = 0; array != nullptr && i < size; ++i)
    if (array[i] != nullptr && !rule.offer(array[i])) break;
  return rule.best;
}

}  // namespace koru

using namespace koru;

CSint *cs_findFreeVar(CSint **array, int size) { return selectFrom<FirstFree>(array, size); }

CSint *cs_findFreeVarNbElements(CSint **array, int size) { return selectFrom<FewestElements>(array, size); }

CSint *cs_findFreeVarNbElementsMin(CSint **array, int size) {
  return selectFrom<FewestElementsThenLowest>(array, size);
}

CSint *cs_findFreeVarNbConstraints(CSint **array, int size) { return selectFrom<MostConstraints>(array, size); }
