// SPDX-License-Identifier: MIT
// The undo trail: a log of changes from which earlier states are rebuilt, newest change first.
#pragma once

#include "core/alloc.h"
#include "core/block_stack.h"
#include "core/state.h"
#include "core/variable.h"

namespace koru {

// The kind is what undo dispatches on; the numbers are fixed. 2 to 4 and 8 are never pushed.
enum class TrailKind : int {
  kMin = 0,           // value: old minimum
  kMax = 1,           // value: old maximum
  kMinReserved = 2,   // undone like kMin
  kMaxReserved = 3,   // undone like kMax
  kReserved = 4,      // nothing to undo
  kRemoved = 5,       // value: a value removed strictly inside the bounds
  kAttached = 6,      // a constraint was attached to the variable
  kCallback = 7,      // value: index handed to the callback
  kReservedToo = 8,   // nothing to undo
  kBuffer = 9,        // a share of a buffer, dropped when the record is popped; no variable
  kCallbackExt = 10,  // as kCallback
  kWord = 11,         // a word of a constraint's own; value and oldCount: its 64 old bits
};

struct TrailRecord {
  union {
    CSint *variable;
    std::uint64_t *word;
  };
  TrailKind kind;
  int value;
  union {
    int oldCount;
    CSbacktrackCallback callback;
    SharedBlock *buffer;
  };
};

class Trail : public BlockStack<TrailRecord> {
 public:
  // Each is false when memory is exhausted (reported).
  [[nodiscard]] bool noteMin(CSint *v) { return note(v, TrailKind::kMin, v->min); }
  [[nodiscard]] bool noteMax(CSint *v) { return note(v, TrailKind::kMax, v->max); }
  [[nodiscard]] bool noteRemoved(CSint *v, int value) { return note(v, TrailKind::kRemoved, value); }
  [[nodiscard]] bool noteAttached(CSint *v) { return note(v, TrailKind::kAttached, 0); }
  [[nodiscard]] bool noteCallback(TrailKind kind, CSint *v, int index, CSbacktrackCallback callback);
  [[nodiscard]] bool noteWord(std::uint64_t *word);
  [[nodiscard]] bool noteBuffer(SharedBlock *buffer);  // takes over the caller's share, also on failure

  // Take back, or make permanent, everything noted since the trail had `mark` records.
  void undoTo(int mark);
  void discardTo(int mark);

  // Changes made now, by a callback of the undo, are about to be taken back with the rest.
  bool undoing() const { return undoing_ > 0; }

 private:
  void undo(const TrailRecord &record);
  void dropBuffer(const TrailRecord &record);

  [[nodiscard]] bool note(CSint *v, TrailKind kind, int value) {
    TrailRecord *record = push();
    if (record == nullptr) [[unlikely]]
      return false;
    record->variable = v;
    record->kind = kind;
    record->value = value;
    record->oldCount = v->count;
    return true;
  }

  int buffers_ = 0;  // records of that kind: only these need a look when records are discarded
  int undoing_ = 0;  // undoTo running, one inside the other
};

namespace solver {

inline KORU_STATE Trail trail;

}  // namespace solver

}  // namespace koru
