// SPDX-License-Identifier: MIT
// Searches, selections, selectors, hooks and no-goods.
#include <algorithm>
#include <cstdint>

#include "limits/table.h"

namespace koru::test::limits {

namespace {

int firstFree(CSint **array, int size) {
  for (int i = 0; array != nullptr && i < size; ++i)
    if (cs_isFree(array[i])) return i;
  return -1;
}
int anyScore(int, int) { return 0; }
int anyCellScore(int, int, int) { return 0; }
int firstRow(CSint ***rows, int nbRows, int) { return nbRows > 0 && firstFree(rows[0], 3) >= 0 ? 0 : -1; }
int firstColumn(int, CSint **row, int) { return firstFree(row, 3); }

// Without constraints every search finds a solution, unless it lacks a callback: pointer 0 is the array, and where
// there is none, these selections of the host's own leave nothing to label.
bool finds(bool found, const Arguments &a) { return found == !a.anyNullBut(0); }

// A built-in selection needs the array, unless it is empty.
bool findsByBuiltIn(bool found, const Arguments &a) { return found == !(a[0] < 1 ? a.anyNullBut(0) : a.anyNull()); }

bool search(Operands &o, const Arguments &a) {
  return findsByBuiltIn(cs_search(a.pointer(0, o.array), a[0], a.pointer(1, &cs_findFreeVar)), a);
}
bool searchLimited(Operands &o, const Arguments &a) {
  return findsByBuiltIn(cs_searchFail(a.pointer(0, o.array), a[0], a.pointer(1, &cs_findFreeVar), a[1]), a);
}
bool searchThese(Operands &o, const Arguments &a) {
  const CSfindFreeVar select = a.pointer(0, &cs_findFreeVar);
  if (a[0] < 1) return cs_Vsearch(a[0], nullptr, select);
  if (a[0] == 1) return cs_Vsearch(1, o.x, select) == !a.anyNull();
  return a[0] == 2 ? cs_Vsearch(2, o.x, o.y, select) : cs_Vsearch(3, o.x, o.y, o.b, select);
}
bool findAll(Operands &o, const Arguments &a) {
  return findsByBuiltIn(cs_findAll(a.pointer(0, o.array), a[0], a.pointer(1, &cs_findFreeVar), nullptr), a);
}
bool minimize(Operands &o, const Arguments &a) {
  const bool found =
      cs_minimize(a.pointer(0, o.array), a[0], a.pointer(1, &cs_findFreeVar), a.pointer(2, o.w), nullptr);
  return findsByBuiltIn(found, a);
}
bool byCriteria(Operands &o, const Arguments &a) {
  return finds(cs_searchCriteria(a.pointer(0, o.array), a[0], a.pointer(1, &firstFree), a.pointer(2, &anyScore)), a);
}
bool byCriteriaLimited(Operands &o, const Arguments &a) {
  return finds(
      cs_searchCriteriaFail(a.pointer(0, o.array), a[0], a.pointer(1, &firstFree), a.pointer(2, &anyScore), a[1]), a);
}
bool byMatrix(Operands &o, const Arguments &a) {
  CSint **rows[] = {o.array, o.array, o.array};
  return cs_searchMatrix(rows, a[0], a[1], a.pointer(0, &firstRow), a.pointer(1, &firstColumn),
                         a.pointer(2, &anyCellScore)) == !a.anyNull();
}
bool byMatrixLimited(Operands &o, const Arguments &a) {
  CSint **rows[] = {o.array, o.array, o.array};
  return cs_searchMatrixFail(rows, a[0], a[1], a.pointer(0, &firstRow), a.pointer(1, &firstColumn),
                             a.pointer(2, &anyCellScore), a[2]) == !a.anyNull();
}

// The selection of a variable whose size makes it one: x, or b which has fewer values.
template <auto select>
bool selects(Operands &o, const Arguments &a) {
  CSint *const v = select(a.pointer(0, o.array), a[0]);
  if (a.anyNull() || a[0] < 1) return v == nullptr;
  const bool byElements = select == cs_findFreeVarNbElements || select == cs_findFreeVarNbElementsMin;
  return v == (byElements && a[0] == 3 ? o.b : o.x);
}

CSvalueSelector *const *someSelectors() {
  static CSvalueSelector *some[3];
  std::fill_n(some, 3, cs_getValueSelector(CS_SELECT_ASCENDING));
  return some;
}

bool bySelectors(Operands &o, const Arguments &a) {
  auto **selectors = const_cast<CSvalueSelector **>(someSelectors());
  return finds(cs_searchValueSelectorFail(a.pointer(0, o.array), a.pointer(1, selectors), a[0],
                                          a.pointer(2, &firstFree), a[1], nullptr),
               a);
}

int runLimit = 0;

bool byRestarts(Operands &o, const Arguments &a) {
  auto **selectors = const_cast<CSvalueSelector **>(someSelectors());
  runLimit = a[2];
  const CSfailLimit limit = [](void *) { return runLimit; };
  return finds(
      cs_searchValueSelectorRestartNG(a.pointer(0, o.array), a.pointer(1, selectors), a[0], a.pointer(2, &firstFree),
                                      a.pointer(3, limit), nullptr, a[1], nullptr, nullptr),
      a);
}

CSnoGoodSet *makeSet(Operands &o) { return cs_createNoGoodSet(o.array, 3, nullptr, 0, nullptr, nullptr); }

// No-goods of one element each: x is none of 1, 2, 3.
CSnoGoodSet *makeSetOfThree(Operands &o) {
  CSnoGoodSet *set = makeSet(o);
  const int position = 0;
  for (int value = 1; value <= 3; ++value) {
    const CSvalueSelection decision{CS_METHOD_EQ, value};
    cs_addNoGood(set, &position, &decision, 1);
  }
  return set;
}

bool createSet(Operands &o, const Arguments &a) {
  o.array[0] = a.pointer(1, o.x);
  const bool made = cs_createNoGoodSet(a.pointer(0, o.array), a[0], nullptr, a[1], nullptr, nullptr) != nullptr;
  return made == (a[0] >= 1 && !a.anyNull());
}

bool addNoGood(Operands &o, const Arguments &a) {
  CSnoGoodSet *const set = makeSet(o);
  const int indexes[] = {a[1], a[2], 2};
  const CSvalueSelection decisions[] = {{a[3], a[1]}, {CS_METHOD_NEQ, a[2]}, {CS_METHOD_GT, a[1]}};
  cs_addNoGood(a.pointer(0, set), a.pointer(1, indexes), a.pointer(2, decisions), a[0]);
  const auto inSet = [](int index) { return index >= 0 && index < 3; };
  const bool added = a[0] >= 1 && !a.anyNull() && inSet(a[1]) && (a[0] < 2 || inSet(a[2])) && a[3] >= 0 && a[3] <= 5;
  return cs_getNbNoGoods(set) == (added ? 1 : 0);
}

bool setMost(Operands &o, const Arguments &a) {
  CSnoGoodSet *const set = makeSetOfThree(o);
  cs_setMaxNbNoGoods(a.pointer(0, set), a[0]);
  return cs_getNbNoGoods(set) == (a[0] == 1 && !a.anyNull() ? 1 : 3);
}

CSnoGood *oneOf(CSnoGoodSet *set) {
  static CSnoGood *one;
  cs_filterNoGood(set, [](CSnoGoodSet *, CSnoGood *ng, CSint **, int, void *) {
    one = ng;
    return true;
  });
  return one;
}

bool elementAt(Operands &o, const Arguments &a) {
  CSnoGood *const one = oneOf(makeSetOfThree(o));
  int index = 7;
  CSvalueSelection decision{CS_METHOD_LT, 7};
  cs_getNoGoodElementAt(a.pointer(0, &index), a.pointer(1, &decision), a.pointer(2, one), a[0]);
  if (a.anyNull()) return true;
  return a[0] == 0 ? index == 0 && decision.method == CS_METHOD_EQ && decision.value == 3
                   : index == -1 && decision.method == CS_METHOD_LT && decision.value == 7;
}

bool filter(Operands &o, const Arguments &a) {
  CSnoGoodSet *const set = makeSetOfThree(o);
  const CSnoGoodFilter none = [](CSnoGoodSet *, CSnoGood *, CSint **, int, void *) { return false; };
  cs_filterNoGood(a.pointer(0, set), a.pointer(1, none));
  return cs_getNbNoGoods(set) == (a.anyNull() ? 3 : 0);
}

bool getSelector(Operands &, const Arguments &a) {
  return (cs_getValueSelector(a[0]) != nullptr) == (a[0] == 0 || a[0] == 1);
}

// The built-in selectors one after the other.
bool beginSelector(Operands &o, const Arguments &a) {
  for (int kind = CS_SELECT_ASCENDING; kind <= CS_SELECT_MEDIAN; ++kind) {
    void *word = nullptr;
    CSvalueSelector *const selector = a.pointer(0, cs_getValueSelector(kind));
    if (cs_initValueSelector(selector, a[0], o.array, a[1], &word) == a.anyNull()) return false;
  }
  return true;
}

bool endSelector(Operands &o, const Arguments &a) {
  void *word = nullptr;
  CSvalueSelector *const selector = a.pointer(0, cs_getValueSelector(CS_SELECT_MEDIAN));
  return cs_endValueSelector(selector, a[0], o.array, a[1], &word) == !a.anyNull();
}

bool nextOfSelector(Operands &o, const Arguments &a) {
  void *word = nullptr;
  CSvalueSelector *const selector = cs_getValueSelector(CS_SELECT_DESCENDING);
  CSvalueSelection decision{CS_METHOD_LT, 0};
  cs_initValueSelector(selector, a[0], o.array, a[1], &word);
  const bool more = cs_selectNextValue(&decision, a.pointer(0, selector), a[0], o.array, a[1], &word);
  return more == !a.anyNull() && (!more || decision.value == cs_getMax(o.array[a[0]]));
}

bool postDecision(Operands &o, const Arguments &a) {
  const CSvalueSelection decision{CS_METHOD_GE, a[0]};
  return cs_selectValue(a.pointer(0, o.x), a.pointer(1, &decision)) == (!a.anyNull() && a[0] <= 5);
}

bool freeSelector(Operands &, const Arguments &a) {
  CSvalueSelector *const made = a.anyNull() ? nullptr : cs_createValueSelector(nullptr, nullptr, nullptr);
  cs_freeValueSelector(made);
  cs_freeValueSelector(cs_getValueSelector(CS_SELECT_MEDIAN));
  return cs_getValueSelector(CS_SELECT_MEDIAN)->next != nullptr;
}

template <auto set>
bool setsHook(Operands &, const Arguments &a) {
  CSsearchNotify *const made = cs_createSearchNotify(nullptr);
  CSsearchNotify *const given = a.pointer(0, made);
  const bool handedBack = set(given, nullptr) == given;
  cs_freeSearchNotify(made);
  return handedBack;
}

bool makeHooks(Operands &o, const Arguments &a) {
  CSsearchNotify *const made = cs_createSearchNotify(a.pointer(0, &o));
  cs_freeSearchNotify(made);
  return made != nullptr;
}

bool freeHooks(Operands &, const Arguments &a) {
  cs_freeSearchNotify(a.anyNull() ? nullptr : cs_createSearchNotify(nullptr));
  return cs_getErr() == CS_ERR_NONE;
}

bool countNoGoods(Operands &o, const Arguments &a) {
  return cs_getNbNoGoods(a.pointer(0, makeSetOfThree(o))) == (a.anyNull() ? 0 : 3);
}
bool countElements(Operands &o, const Arguments &a) {
  return cs_getNbNoGoodElements(a.pointer(0, oneOf(makeSetOfThree(o)))) == (a.anyNull() ? 0 : 1);
}

}  // namespace

std::vector<LimitsRow> searchRows() {
  return {
      {"cs_search", "s", 2, search},
      {"cs_searchFail", "sv", 2, searchLimited},
      {"cs_Vsearch", "s", 1, searchThese},
      {"cs_findAll", "s", 2, findAll},
      {"cs_minimize", "s", 3, minimize},
      {"cs_searchCriteria", "s", 3, byCriteria},
      {"cs_searchCriteriaFail", "sv", 3, byCriteriaLimited},
      {"cs_searchMatrix", "sv", 3, byMatrix},
      {"cs_searchMatrixFail", "svv", 3, byMatrixLimited},
      {"cs_findFreeVar", "s", 1, selects<cs_findFreeVar>},
      {"cs_findFreeVarNbElements", "s", 1, selects<cs_findFreeVarNbElements>},
      {"cs_findFreeVarNbElementsMin", "s", 1, selects<cs_findFreeVarNbElementsMin>},
      {"cs_findFreeVarNbConstraints", "s", 1, selects<cs_findFreeVarNbConstraints>},
      {"cs_searchValueSelectorFail", "sv", 3, bySelectors},
      {"cs_searchValueSelectorRestartNG", "svv", 4, byRestarts},
      {"cs_createNoGoodSet", "sv", 2, createSet},
      {"cs_addNoGood", "svvv", 3, addNoGood},
      {"cs_filterNoGood", "", 2, filter},
      {"cs_setMaxNbNoGoods", "v", 1, setMost},
      {"cs_getNbNoGoods", "", 1, countNoGoods},
      {"cs_getNbNoGoodElements", "", 1, countElements},
      {"cs_getNoGoodElementAt", "v", 3, elementAt},
      {"cs_getValueSelector", "v", 0, getSelector},
      {"cs_initValueSelector", "is", 1, beginSelector},
      {"cs_selectNextValue", "is", 1, nextOfSelector},
      {"cs_endValueSelector", "is", 1, endSelector},
      {"cs_selectValue", "v", 2, postDecision},
      {"cs_freeValueSelector", "", 1, freeSelector},
      {"cs_createSearchNotify", "", 1, makeHooks},
      {"cs_freeSearchNotify", "", 1, freeHooks},
      {"cs_searchNotifySetSearchStart", "", 1, setsHook<cs_searchNotifySetSearchStart>},
      {"cs_searchNotifySetSearchEnd", "", 1, setsHook<cs_searchNotifySetSearchEnd>},
      {"cs_searchNotifySetBeforeValueSelection", "", 1, setsHook<cs_searchNotifySetBeforeValueSelection>},
      {"cs_searchNotifySetAfterValueSelection", "", 1, setsHook<cs_searchNotifySetAfterValueSelection>},
      {"cs_searchNotifySetEnter", "", 1, setsHook<cs_searchNotifySetEnter>},
      {"cs_searchNotifySetLeave", "", 1, setsHook<cs_searchNotifySetLeave>},
      {"cs_searchNotifySetFound", "", 1, setsHook<cs_searchNotifySetFound>},
  };
}

}  // namespace koru::test::limits
