// SPDX-License-Identifier: MIT
// cs_recordSearches, cs_goToNode: searches are written down, and their nodes can be gone to.
#include <new>

#include "core/solver.h"
#include "record/recorder.h"
#include "search/branching.h"

namespace koru::record {

namespace {

KORU_STATE Recorder *recorder = nullptr;

void forgetRecorder() {
  if (recorder == nullptr) return;
  recorder->~Recorder();
  deallocate(recorder);
  recorder = nullptr;
}

bool take(const CSstep &step) {
  if (step.variable < 0 || step.variable >= solver::variables.count()) return false;
  if (!openContext()) return false;
  if (cs_selectValue(&solver::variables.at(step.variable), &step.decision)) return true;
  cs_restoreContext();
  return false;
}

bool isMethod(int method) { return method >= CS_METHOD_EQ && method <= CS_METHOD_GT; }

}  // namespace
}  // namespace koru::record

using namespace koru;
using namespace koru::record;

// The record is the thread's own, whatever solvers come and go.
bool cs_recordSearches(const char *path) {
  forgetRecorder();
  if (path == nullptr) return true;
  void *memory = allocate(sizeof(Recorder));
  if (memory == nullptr) return false;
  recorder = new (memory) Recorder;
  if (recorder->start(path)) return true;
  forgetRecorder();
  return false;
}

int cs_goToNode(const CSstep *path, int n) {
  if (!solver::initialised || path == nullptr) return 0;
  const AtWork atWork;
  int taken = 0;
  while (taken < n && isMethod(path[taken].decision.method) && take(path[taken])) ++taken;
  return taken;
}
