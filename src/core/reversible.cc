// SPDX-License-Identifier: MIT
#include "core/reversible.h"

#include <algorithm>
#include <utility>

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

// Once changes have been accepted inside a context, the log is of no use: see Lockstep.
void ReversibleWords::takeBack() {
  if (solver::acceptedInside) return;
  std::uint64_t *const words = words_.get();
  const std::uint64_t *const end = log_.get() + length_.bits();
  const std::uint64_t *last = log_.get() + written_;
  while (last > end) {
    const std::uint64_t tag = *--last;
    if (tag < kFirst) {
      words[tag] = *--last;
    } else {
      last -= tag - kFirst;
      std::copy_n(last, tag - kFirst, words);
    }
  }
  written_ = length_.bits();
}

bool ReversibleWords::logFirst(std::uint64_t count) {
  if (!makeRoom(count + 1)) return false;
  std::copy_n(words_.get(), count, log_.get() + written_);
  log_.get()[written_ + count] = kFirst + count;
  length_.setHeld(written_ += count + 1);
  if (stamp_.serial != WordStamp::kUndoing) held_ = stamp_.serial;
  return true;
}

bool ReversibleWords::grow(std::uint64_t more) {
  const std::uint64_t room = std::max(2 * room_, written_ + more);
  Buffer<std::uint64_t> larger(room);
  if (!larger) return false;
  std::copy_n(log_.get(), written_, larger.get());
  log_ = std::move(larger);
  room_ = room;
  return true;
}

bool Lockstep::kept() const {
  if (!solver::acceptedInside && !solver::trail.undoing()) return true;
  return noted_.stands();
}

}  // namespace koru
