// SPDX-License-Identifier: MIT
// Saving raises the propagation limit to the depth it is called at, so that changes made inside a context that a
// handler opened propagate at once; closing puts the limit back.
#include "core/check.h"
#include "core/context_stack.h"
#include "core/lifetime.h"
#include "core/ports.h"
#include "core/posting_phase.h"
#include "core/queue.h"
#include "core/refusal.h"
#include "core/trail.h"

namespace koru {

namespace {

enum class Close { kForget, kAccept, kRestore };

void restoreTo(const ContextMark &mark) {
  if (solver::queue.depth > 0) {
    solver::agenda.dropAll();
    solver::queue.untoldUnknown = true;
  }
  solver::refusals = mark.refusals;
  solver::trail.undoTo(mark.trailMark);
  solver::queue.untold = mark.untold;
}

void acceptDownTo(const ContextMark &mark, int left) {
  if constexpr (kChecked) check::noteAccept();
  if (solver::ports.watched) solver::ports.tellMarks();
  if (left > 0 && solver::trail.count() > mark.trailMark) solver::acceptedInside = true;
  solver::trail.discardTo(mark.trailMark);
}

// The oldest of those that were closed has the mark; `left` are still open.
[[gnu::always_inline]] inline void finishClosing(const ContextMark &mark, int left, Close how) {
  ++solver::closings;
  solver::trail.setContexts(left);
  solver::queue.limit = mark.savedLimit;
  if (how == Close::kRestore) restoreTo(mark);
  if (how == Close::kAccept) acceptDownTo(mark, left);
  if constexpr (kChecked) check::invariantsWhenIdle();
}

// Closes contexts until `label` - 1 remain.
void closeIfOpen(int label, Close how) {
  if (label < 1 || label > solver::contexts.count()) return;
  [[maybe_unused]] const check::Entered entered;
  ContextMark mark{};
  while (solver::contexts.count() >= label) mark = *solver::contexts.pop();
  finishClosing(mark, label - 1, how);
}

[[gnu::always_inline]] inline void closeNewest(Close how) {
  const int label = solver::contexts.count();
  [[maybe_unused]] const check::Entered entered;
  if (label > 0) finishClosing(*solver::contexts.pop(), label - 1, how);
}

// The run whose own changes are under way is woken by those that are made in the context.
void settle() {
  solver::agenda.hush(nullptr);
  if (solver::agenda.posting()) endPosting();
  if (!solver::events.empty() || solver::agenda.due()) propagate();
  if (solver::agenda.watched()) solver::ports.tellMarks();
}

}  // namespace
}  // namespace koru

using koru::Close;
namespace solver = koru::solver;

// Deliberate: a failure of the propagation made here is not reported, though it stays counted; nor is a mark that
// could not be stored, beyond the memory handler's call.
int cs_saveContext(void) {
  if (!solver::initialised) return 0;
  const unsigned savedLimit = solver::queue.limit;
  solver::queue.limit = solver::queue.depth;
  if (!solver::events.empty() || solver::agenda.busy()) koru::settle();
  const int trailMark = solver::trail.count();
  if (koru::ContextMark *mark = solver::contexts.push())
    *mark = {trailMark,           savedLimit, ++solver::contextSerial, solver::refusals, solver::contexts.count(),
             solver::queue.untold};
  const int label = solver::contexts.count();
  solver::trail.setContexts(label);
  return label;
}

void cs_forgetSaveContext(void) { koru::closeNewest(Close::kForget); }
void cs_acceptContext(void) { koru::closeNewest(Close::kAccept); }
void cs_restoreContext(void) { koru::closeNewest(Close::kRestore); }

void cs_acceptAll(void) { koru::closeIfOpen(1, Close::kAccept); }
void cs_restoreAll(void) { koru::closeIfOpen(1, Close::kRestore); }

void cs_forgetSaveContextUntil(int label) { koru::closeIfOpen(label, Close::kForget); }
void cs_acceptContextUntil(int label) { koru::closeIfOpen(label, Close::kAccept); }
void cs_restoreContextUntil(int label) { koru::closeIfOpen(label, Close::kRestore); }

int cs_restoreAndSaveContext(void) {
  cs_restoreContext();
  return cs_saveContext();
}

namespace koru {

// The undo comes before it is known whether there is more than domains to take back: that of domains calls nobody, so
// nobody sees that the context is still open.
void renewContext() {
  if (solver::contexts.empty() || solver::queue.depth > 0 || !solver::events.empty() || solver::agenda.busy() ||
      !solver::trail.undoDomainsTo(solver::contexts.newest().trailMark)) {
    cs_restoreAndSaveContext();
    return;
  }
  [[maybe_unused]] const check::Entered entered;
  ContextMark &mark = solver::contexts.newest();
  mark.serial = ++solver::contextSerial;
  ++solver::closings;
  solver::refusals = mark.refusals;
  solver::queue.untold = mark.untold;
  solver::queue.limit = 0;  // the depth
  if constexpr (kChecked) check::invariantsWhenIdle();
}

}  // namespace koru
