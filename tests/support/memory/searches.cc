// SPDX-License-Identifier: MIT
// Every search over problems with and without solutions. Memory that is missing may cost a search solutions, but what
// it calls a solution is one.
#include <functional>
#include <string>

#include "support/kit/search_trace.h"
#include "support/memory/scenario.h"

namespace koru::test {

namespace {

constexpr int kSize = 4;

struct Problem {
  const char *name;
  int most;  // the variables are 0..most
  bool (*post)(CSint **v);
  bool (*holds)(CSint **v);
};

bool allPairs(CSint **v, bool (*post)(CSint *, CSint *, int)) {
  for (int j = 1; j < kSize; ++j)
    for (int i = 0; i < j; ++i)
      if (!post(v[i], v[j], j - i)) return false;
  return true;
}

bool postApart(CSint *u, CSint *v, int distance) {
  CSint *const up = cs_Add(v, CSINT(distance));
  CSint *const down = cs_Sub(v, CSINT(distance));
  return cs_Neq(u, v) && cs_Neq(u, up) && cs_Neq(u, down);
}

bool postDifferent(CSint *u, CSint *v, int) { return cs_Neq(u, v); }

// Every value of one variable takes an inner value from the next, which then needs a bit array.
bool postInner(CSint **v) {
  for (int i = 0; i + 1 < kSize; ++i)
    for (int value = 0; value <= 4; ++value)
      if (!cs_IfNeq(v[i], v[i + 1], value, 2)) return false;
  return true;
}

constexpr Problem kProblems[] = {
    {"queens", 3, [](CSint **v) { return allPairs(v, postApart); },
     [](CSint **v) {
       return allPairs(v, [](CSint *a, CSint *b, int distance) {
         const int gap = cs_getMin(a) - cs_getMin(b);
         return gap != 0 && gap != distance && gap != -distance;
       });
     }},
    {"pigeons", 2, [](CSint **v) { return allPairs(v, postDifferent); }, [](CSint **) { return false; }},
    {"inner", 4, postInner,
     [](CSint **v) {
       for (int i = 1; i < kSize; ++i)
         if (cs_getMin(v[i]) == 2) return false;
       return true;
     }},
};

const Problem *searched = nullptr;
std::string *solutions = nullptr;

bool isSolution(CSint **v) {
  for (int i = 0; i < kSize; ++i)
    if (cs_getMin(v[i]) != cs_getMax(v[i])) return false;
  return searched->holds(v);
}

void expectSolution(CSint **v, int) {
  EXPECT_TRUE(isSolution(v)) << searched->name;
  for (int i = 0; i < kSize; ++i) *solutions += std::to_string(cs_getMin(v[i]));
  *solutions += ' ';
}
void expectCheaper(CSint **v, int size, CSint *) { expectSolution(v, size); }

// A search that leaves its solution in place.
template <auto search>
bool inPlace(CSint **v) {
  const bool found = search(v);
  if (found) expectSolution(v, kSize);
  return found;
}

bool depthFirst(CSint **v) { return cs_search(v, kSize, cs_findFreeVar); }
bool depthFirstByElements(CSint **v) { return cs_search(v, kSize, cs_findFreeVarNbElementsMin); }
bool limited(CSint **v) { return cs_searchFail(v, kSize, cs_findFreeVarNbElements, 5); }
bool variadic(CSint **v) { return cs_Vsearch(kSize, v[0], v[1], v[2], v[3], cs_findFreeVar); }
bool findAll(CSint **v) { return cs_findAll(v, kSize, cs_findFreeVarNbElements, expectSolution); }
bool minimize(CSint **v) { return cs_minimize(v, kSize, cs_findFreeVar, v[kSize - 1], expectCheaper); }

int firstIndex(CSint **v, int size) {
  for (int i = 0; i < size; ++i)
    if (cs_isFree(v[i])) return i;
  return -1;
}
int middleFirst(int, int value) { return value < 2 ? 2 - value : value - 2; }
int cellMiddleFirst(int, int, int value) { return middleFirst(0, value); }
int firstRow(CSint ***rows, int, int columns) { return firstIndex(rows[0], columns) < 0 ? -1 : 0; }
int firstColumn(int, CSint **row, int columns) { return firstIndex(row, columns); }

bool criteria(CSint **v) { return cs_searchCriteria(v, kSize, firstIndex, middleFirst); }
bool criteriaLimited(CSint **v) { return cs_searchCriteriaFail(v, kSize, firstIndex, middleFirst, 4); }
bool matrix(CSint **v) { return cs_searchMatrix(&v, 1, kSize, firstRow, firstColumn, cellMiddleFirst); }
bool matrixLimited(CSint **v) { return cs_searchMatrixFail(&v, 1, kSize, firstRow, firstColumn, cellMiddleFirst, 4); }

template <int kind>
bool selectors(CSint **v) {
  CSvalueSelector *one = cs_getValueSelector(kind);
  CSvalueSelector *each[] = {one, one, one, one};
  return cs_searchValueSelectorFail(v, each, kSize, firstIndex, 0, nullptr);
}

// Seven hooks, three functions of a selector of the host's own, and a solution refused.
bool noted(CSint **v) {
  SearchTrace trace;
  if (trace.hooks() == nullptr) return false;
  bool refused = false;
  trace.accepts = [&refused](CSint **, int) { return std::exchange(refused, true); };
  CSvalueSelector *descending = cs_getValueSelector(CS_SELECT_DESCENDING);
  CSvalueSelector **each = trace.logging({descending, descending, descending, descending});
  const bool found = cs_searchValueSelectorFail(v, each, kSize, firstIndex, 30, trace.hooks());
  for (const std::string &line : trace.lines) *solutions += line + '\n';
  return found;
}

int twoFails(void *) { return 2; }

template <int kind>
bool restarts(CSint **v) {
  CSnoGoodSet *set = cs_createNoGoodSet(v, kSize, nullptr, 5, nullptr, nullptr);
  if (set == nullptr) return false;
  CSvalueSelector *one = cs_getValueSelector(kind);
  CSvalueSelector *each[] = {one, one, one, one};
  const bool found = cs_searchValueSelectorRestartNG(v, each, kSize, firstIndex, twoFails, nullptr, 40, set, nullptr);
  *solutions += std::to_string(cs_getNbNoGoods(set)) + " no-goods ";
  return found;
}

struct Search {
  const char *name;
  bool (*run)(CSint **v);
};

constexpr Search kSearches[] = {
    {"cs_search/", inPlace<depthFirst>},
    {"cs_search/by-elements-", inPlace<depthFirstByElements>},
    {"cs_searchFail/", inPlace<limited>},
    {"cs_Vsearch/", inPlace<variadic>},
    {"cs_findAll/", findAll},
    {"cs_minimize/", minimize},
    {"cs_searchCriteria/", inPlace<criteria>},
    {"cs_searchCriteriaFail/", inPlace<criteriaLimited>},
    {"cs_searchMatrix/", inPlace<matrix>},
    {"cs_searchMatrixFail/", inPlace<matrixLimited>},
    {"cs_searchValueSelectorFail/ascending-", inPlace<selectors<CS_SELECT_ASCENDING>>},
    {"cs_searchValueSelectorFail/descending-", inPlace<selectors<CS_SELECT_DESCENDING>>},
    {"cs_searchValueSelectorFail/lower-half-", inPlace<selectors<CS_SELECT_LOWER_HALF>>},
    {"cs_searchValueSelectorFail/upper-half-", inPlace<selectors<CS_SELECT_UPPER_HALF>>},
    {"cs_searchValueSelectorFail/median-", inPlace<selectors<CS_SELECT_MEDIAN>>},
    {"cs_searchValueSelectorFail/noted-", inPlace<noted>},
    {"cs_searchValueSelectorRestartNG/ascending-", inPlace<restarts<CS_SELECT_ASCENDING>>},
    {"cs_searchValueSelectorRestartNG/median-", inPlace<restarts<CS_SELECT_MEDIAN>>},
};

bool runSearch(const Problem &problem, const Search &search, Stage &s) {
  searched = &problem;
  solutions = &s.seen;
  CSint **v = cs_createCSintArray(kSize, 0, problem.most);
  if (v == nullptr || !problem.post(v)) return false;
  const bool found = search.run(v);
  s.seen += std::to_string(cs_getNbFails()) + " fails " + std::to_string(cs_getNbChoicePoints()) + " choices\n";
  return found;
}

}  // namespace

void addSearches(Scenarios &scenarios) {
  for (const Search &search : kSearches) {
    for (const Problem &problem : kProblems) {
      scenarios.addLenient(std::string(search.name) + problem.name,
                           [&](Stage &s) { return runSearch(problem, search, s); });
    }
  }
}

}  // namespace koru::test
