// SPDX-License-Identifier: MIT
// The error code, the three replaceable handlers, and the reporting step that every failure takes.
#pragma once

#include "core/state.h"
#include "koru.h"

namespace koru {

struct ErrorHandler {
  CSerrHandler call;
  void *extra;
};

void printNotInstantiated(CSint *vint, void *extra);
void ignoreError(CSint *vint, void *extra);
void abortOnError(CSint *vint, void *extra);

// Handlers outlive cs_end: only cs_init and cs_setErrHandler change them.
struct Errors {
  ErrorHandler notInstantiated{printNotInstantiated, nullptr};
  ErrorHandler overflow{ignoreError, nullptr};
  ErrorHandler memory{abortOnError, nullptr};
  int code = CS_ERR_NONE;
  unsigned memoryReports = 0;  // how often memory has been exhausted; the code may be reset
};

// Each sets the code, then calls the handler; the caller then returns its failure value.
void reportNotInstantiated(CSint *vint);
void reportOverflow();
void reportMemoryExhausted();

// While the solver is being set up exhausted memory is only recorded, never fatal.
void prepareErrorsForInit();
void finishErrorsAfterInit();

namespace solver {

inline KORU_STATE Errors errors;

}  // namespace solver
}  // namespace koru
