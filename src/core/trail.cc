// SPDX-License-Identifier: MIT
#include "core/trail.h"

#include "core/lifetime.h"
#include "core/queue.h"

namespace koru {

bool Trail::noteCallback(TrailKind kind, CSint *v, int index, CSbacktrackCallback callback) {
  TrailRecord *record = push();
  if (record == nullptr) return false;
  record->variable = v;
  record->kind = kind;
  record->value = index;
  record->callback = callback;
  return true;
}

bool Trail::noteWord(std::uint64_t *word) {
  TrailRecord *record = push();
  if (record == nullptr) return false;
  record->word = word;
  record->kind = TrailKind::kWord;
  record->value = static_cast<int>(*word);
  record->oldCount = static_cast<int>(*word >> 32);
  return true;
}

bool Trail::noteBuffer(SharedBlock *buffer) {
  TrailRecord *record = push();
  if (record == nullptr) {
    dropShare(buffer);
    return false;
  }
  ++buffers_;
  record->kind = TrailKind::kBuffer;
  record->buffer = buffer;
  return true;
}

// An undone bound is at once the one that handlers have been told last: no event tells of an undo, and the next change
// is reported as seen from the restored bound. What was noted is the count, not recomputed from the bits, so a restore
// costs the same for every domain; after an inner context was accepted and an outer one is restored, it may be too
// high.
static void undoMin(const TrailRecord &record) {
  CSint *v = record.variable;
  v->min = v->reportedMin = record.value;
  v->count = record.oldCount;
}

static void undoMax(const TrailRecord &record) {
  CSint *v = record.variable;
  v->max = v->reportedMax = record.value;
  v->count = record.oldCount;
}

// The bit array, made by the first removal, is not taken away again: with all bits set it means the same as none.
static void undoRemoved(const TrailRecord &record) {
  CSint *v = record.variable;
  v->count = record.oldCount;
  if (v->bits != nullptr && v->bits->covers(record.value)) v->bits->set(record.value);
}

static void undoWord(const TrailRecord &record) {
  const std::uint64_t high = static_cast<std::uint32_t>(record.oldCount);
  *record.word = high << 32 | static_cast<std::uint32_t>(record.value);
}

void Trail::dropBuffer(const TrailRecord &record) {
  --buffers_;
  dropShare(record.buffer);
}

// Compiled into the loop, which saves some 10 instructions a record.
[[gnu::always_inline]] inline void Trail::undo(const TrailRecord &record) {
  switch (record.kind) {  // GCOVR_EXCL_BR_LINE: there is no other kind
    case TrailKind::kMin:
    case TrailKind::kMinReserved:
      return undoMin(record);
    case TrailKind::kMax:
    case TrailKind::kMaxReserved:
      return undoMax(record);
    case TrailKind::kRemoved:
      return undoRemoved(record);
    case TrailKind::kAttached:
      return detachNewest(record.variable);
    case TrailKind::kCallback:
    case TrailKind::kCallbackExt:
      if (record.callback != nullptr) record.callback(record.variable, record.value);
      return;
    case TrailKind::kBuffer:
      return dropBuffer(record);
    case TrailKind::kWord:
      return undoWord(record);
    case TrailKind::kReserved:
    case TrailKind::kReservedToo:
      return;
  }
}

// A callback may push records of its own over the one that is being undone, which is not read again after the call.
void Trail::undoTo(int mark) {
  ++undoing_;
  while (count() > mark) undo(*pop());
  --undoing_;
}

// Only buffers have anything to end, so records are looked at until the last of those is gone, and the rest is cut off.
// It may belong to an enclosing context: then the whole part is walked.
void Trail::discardTo(int mark) {
  while (buffers_ > 0 && count() > mark) {
    const TrailRecord *record = pop();
    if (record->kind == TrailKind::kBuffer) dropBuffer(*record);
  }
  if (count() > mark) popTo(mark);
}

}  // namespace koru

namespace solver = koru::solver;
using koru::TrailKind;

// Without memory for the record the call is not undone, and the memory handler has been told.
static void noteCall(TrailKind kind, CSint *v, int index, CSbacktrackCallback callback) {
  if (solver::initialised) static_cast<void>(solver::trail.noteCallback(kind, v, index, callback));
}

void cs_backtrack(CSint *vint, int index, CSbacktrackCallback callback) {
  noteCall(TrailKind::kCallback, vint, index, callback);
}

void cs_backtrackExt(CSint *vint, int index, CSbacktrackCallback callback) {
  noteCall(TrailKind::kCallbackExt, vint, index, callback);
}
