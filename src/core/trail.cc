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

void Trail::undo(const TrailRecord &record) {
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

void cs_backtrack(CSint *vint, int index, CSbacktrackCallback callback) {
  if (solver::initialised) solver::trail.noteCallback(TrailKind::kCallback, vint, index, callback);
}

void cs_backtrackExt(CSint *vint, int index, CSbacktrackCallback callback) {
  if (solver::initialised) solver::trail.noteCallback(TrailKind::kCallbackExt, vint, index, callback);
}
