// SPDX-License-Identifier: MIT
// cs_search, cs_searchFail, cs_Vsearch: depth-first labelling to the first solution.
//
// n-ary branching: each present value of the chosen variable, in increasing order, is posted as an equality inside a
// context of its own; a value that propagation refuses counts as a fail.  Cost: one stack frame per level, no
// allocation.  Deliberate: a cancel and the fail limit leave contexts as they are, for the host to look at; the level
// that notices a cancel returns at once, the levels above go on as after any failure and notice it at their next value.
#include "search/depth_first.h"

#include <cstdarg>

#include "core/alloc.h"
#include "search/branching.h"
#include "search/selection.h"

namespace koru {

namespace {

struct DepthFirst {
  Selection selection;
  int failLimit;
  const CSint *objective;

  bool label() {
    CSint *v = selection.next();
    if (v == nullptr) return solved(objective);
    Values values(v);
    if (!openContext()) return false;
    tellEnter(v);
    for (; values.more(); values.advance()) {
      ++searchState.choicePoints;
      if (searchState.cancelled) return leave();
      if (tryValue(v, values.current(), failLimit) && label()) return true;
      if (failLimitReached(failLimit)) return leave();
      renewContext();
    }
    cs_acceptContext();
    return leave();
  }
};

bool searchDepthFirst(CSint **array, int size, CSfindFreeVar select, int failLimit) {
  const SearchRun run;
  if (!Selection::canChoose(array, size, select)) return run.refused();
  const bool found = labelDepthFirst(array, size, select, failLimit);
  return run.ended(found, failLimitReached(failLimit));
}

}  // namespace

bool labelDepthFirst(CSint **array, int size, CSfindFreeVar select, int failLimit, const CSint *objective) {
  return DepthFirst{{array, size, select}, failLimit, objective}.label();
}

}  // namespace koru

bool cs_search(CSint **array, int size, CSfindFreeVar f) { return koru::searchDepthFirst(array, size, f, 0); }

bool cs_searchFail(CSint **array, int size, CSfindFreeVar f, int nbFailsMax) {
  return koru::searchDepthFirst(array, size, f, nbFailsMax);
}

bool cs_Vsearch(int nbVars, CSint *var1, ...) {
  const int size = nbVars < 1 ? 0 : nbVars;
  const koru::Buffer<CSint *> array(size);
  if (!array) {
    koru::searchState.status = CS_STATUS_MEMORY;
    return false;
  }
  std::va_list arguments;
  va_start(arguments, var1);
  for (int i = 0; i < size; ++i) array[i] = i == 0 ? var1 : va_arg(arguments, CSint *);
  const CSfindFreeVar select = va_arg(arguments, CSfindFreeVar);
  va_end(arguments);
  return koru::searchDepthFirst(array.get(), size, select, 0);
}
