// SPDX-License-Identifier: MIT
#include "core/errors.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "core/lifetime.h"

namespace koru {

void printNotInstantiated(CSint *vint, void *) {
  std::fputs("\nrcsInt not instantiated ", stderr);
  cs_fprintf(stderr, "%D", vint);
  solver::errors.code = CS_ERR_NOT_INSTANTIATED;
}

void ignoreError(CSint *, void *) {}

void abortOnError(CSint *, void *) { std::abort(); }  // GCOVR_EXCL_LINE: such a process does not count lines

static void recordMemoryExhausted(CSint *, void *) { solver::errors.code = CS_ERR_MEMORY; }

static void report(int code, const ErrorHandler &handler, CSint *vint) {
  const HostAsked asked;
  solver::errors.code = code;
  handler.call(vint, handler.extra);
}

void reportNotInstantiated(CSint *vint) { report(CS_ERR_NOT_INSTANTIATED, solver::errors.notInstantiated, vint); }
void reportOverflow() { report(CS_ERR_OVERFLOW, solver::errors.overflow, nullptr); }
void reportMemoryExhausted() {
  ++solver::errors.memoryReports;
  report(CS_ERR_MEMORY, solver::errors.memory, nullptr);
}

void prepareErrorsForInit() {
  solver::errors = Errors{};
  solver::errors.memory.call = recordMemoryExhausted;
}

void finishErrorsAfterInit() { solver::errors.memory = {abortOnError, nullptr}; }

static CSerrHandler install(ErrorHandler &slot, CSerrHandler handler, CSerrHandler fallback, void *extra) {
  slot = {handler != nullptr ? handler : fallback, extra};
  return slot.call;
}

}  // namespace koru

namespace solver = koru::solver;

int cs_setErr(int code) { return solver::errors.code = code; }

int cs_getErr(void) { return solver::errors.code; }

void cs_initErr(void) { solver::errors.code = CS_ERR_NONE; }

CSerrHandler cs_setErrHandler(int code, CSerrHandler handler, void *extra) {
  koru::Errors &errors = solver::errors;
  switch (code) {
    case CS_ERR_NOT_INSTANTIATED:
      return koru::install(errors.notInstantiated, handler, koru::printNotInstantiated, extra);
    case CS_ERR_OVERFLOW:
      return koru::install(errors.overflow, handler, koru::ignoreError, extra);
    case CS_ERR_MEMORY:
      return koru::install(errors.memory, handler, koru::abortOnError, extra);
    default:
      return reinterpret_cast<CSerrHandler>(static_cast<std::intptr_t>(code));
  }
}
