// SPDX-License-Identifier: MIT
// cs_searchCriteria, cs_searchCriteriaFail: depth-first labelling in which a score decides the order of the values.
//
// Cost: a level with n values asks for up to n (n + 1) / 2 scores; it allocates one bit array over the range that the
// variable was created with, and returns false without opening a context when that cannot be had.
// Deliberate: a value whose score is the largest int is never tried, so that a score can rule one out; the choices that
// it leaves over try the int below the minimum, and count as choice points and fails.
#include "search/criteria.h"

namespace koru {

namespace {

struct CriteriaSearch {
  CSint **array;
  int size;
  CSfindFreeVarIndex select;
  CScriteria criteria;
  int failLimit;

  bool label() const {
    const int index = select(array, size);
    if (index < 0) return solved();
    CSint *v = array != nullptr ? array[index] : nullptr;
    return tryInScoreOrder(
        v, failLimit, [&](int value) { return criteria(index, value); }, [&] { return label(); });
  }
};

}  // namespace
}  // namespace koru

bool cs_searchCriteria(CSint **array, int size, CSfindFreeVarIndex f, CScriteria criteria) {
  return cs_searchCriteriaFail(array, size, f, criteria, 0);
}

bool cs_searchCriteriaFail(CSint **array, int size, CSfindFreeVarIndex f, CScriteria criteria, int nbFailsMax) {
  const koru::SearchRun run;
  if (f == nullptr || criteria == nullptr) return run.refused();
  const bool found = koru::CriteriaSearch{array, size, f, criteria, nbFailsMax}.label();
  return run.ended(found, koru::failLimitReached(nbFailsMax));
}
