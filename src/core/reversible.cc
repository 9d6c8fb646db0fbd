// SPDX-License-Identifier: MIT
#include "core/reversible.h"

#include "core/context_stack.h"
#include "core/trail.h"

namespace koru {

WordStamp WordStamp::now() {
  if (solver::trail.undoing()) return {kUndoing};
  return {solver::contexts.empty() ? 0 : solver::contexts.newest().serial};
}

// Changes made by a callback of an undo are taken back with the rest: they are noted each time, and leave no stamp that
// would outlive the note.
bool ReversibleWord::note(const WordStamp &stamp) {
  if (stamp.serial != 0 && !solver::trail.noteWord(&bits_)) return false;
  if (stamp.serial != WordStamp::kUndoing) noted_ = stamp.serial;
  return true;
}

bool Lockstep::kept() const { return !solver::acceptedInside || noted_.stands(); }

}  // namespace koru
