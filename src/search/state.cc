// SPDX-License-Identifier: MIT
#include "search/state.h"

namespace koru {

CSstatus SearchRun::reasonFor(bool result, bool limitReached, CSstatus complete) const {
  if (result && complete == CS_STATUS_SOLUTION) return complete;
  if (solver::errors.memoryReports != reportsBefore_) return CS_STATUS_MEMORY;
  if (searchState.cancelled) return CS_STATUS_STOPPED;
  if (limitReached) return CS_STATUS_FAILS;
  return result ? complete : CS_STATUS_EXHAUSTED;
}

bool SearchRun::ended(bool result, bool limitReached, CSstatus complete) const {
  searchState.status = reasonFor(result, limitReached, complete);
  return result;
}

}  // namespace koru

void cs_cancelSearch(void) { koru::searchState.cancelled = true; }

CSstatus cs_searchStatus(void) { return koru::searchState.status; }
