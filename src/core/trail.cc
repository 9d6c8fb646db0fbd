// SPDX-License-Identifier: MIT
#include "core/trail.h"

#include <algorithm>
#include <cstddef>

#include "core/context_stack.h"
#include "core/lifetime.h"
#include "core/meter.h"
#include "core/ports.h"
#include "core/queue.h"

namespace koru {

// A meter remembers the end of the trail by its address.
bool Trail::makeRoomBeyond() {
  if (!kChecked && readers_ == 0 && !solver::ports.metered && refill()) return true;
  return BlockStack::makeRoom();
}

// The note goes where the record does, and both or none.
TrailNote *Trail::pushNote(TrailKind kind) {
  const int place = count();
  if (!makeRoom()) return nullptr;
  TrailRecord *record = pushInRoom();
  *record = {static_cast<std::uintptr_t>(kind), 0, 0};
  TrailNote *note = notes_.create() ? notes_.push() : nullptr;
  if (note == nullptr) {
    pop();
    return nullptr;
  }
  note->kind = kind;
  note->place = place;
  return note;
}

bool Trail::noteCallback(TrailKind kind, CSint *v, int index, CSbacktrackCallback callback) {
  TrailNote *note = pushNote(kind);
  if (note == nullptr) return false;
  note->variable = v;
  note->index = index;
  note->callback = callback;
  return true;
}

bool Trail::noteWord(std::uint64_t *word) {
  TrailNote *note = pushNote(TrailKind::kWord);
  if (note == nullptr) return false;
  note->word = word;
  note->oldWord = *word;
  return true;
}

bool Trail::noteBuffer(SharedBlock *buffer) {
  TrailNote *note = pushNote(TrailKind::kBuffer);
  if (note == nullptr) {
    dropShare(buffer);
    return false;
  }
  note->buffer = buffer;
  return true;
}

// An undone bound is at once the one that handlers have been told last: no event tells of an undo, and the next change
// is reported as seen from the restored bound. What was noted is the count, not recomputed from the bits, so a restore
// costs the same for every domain; after an inner context was accepted and an outer one is restored, it may be too
// high.
static int &fieldOf(CSint *v, std::size_t offset) {
  return *reinterpret_cast<int *>(reinterpret_cast<char *>(v) + offset);
}

// The kind is how many ints a maximum lies behind its minimum: no jump between the two, which the processor could not
// foresee.
[[gnu::always_inline]] static inline void undoBound(const TrailRecord &record, std::size_t kind) {
  static_assert(offsetof(CSint, max) == offsetof(CSint, min) + sizeof(int));
  static_assert(offsetof(CSint, reportedMax) == offsetof(CSint, reportedMin) + sizeof(int));
  CSint *v = record.variable();
  fieldOf(v, offsetof(CSint, min) + kind * sizeof(int)) = record.value;
  fieldOf(v, offsetof(CSint, reportedMin) + kind * sizeof(int)) = record.value;
  v->count = record.oldCount;
}

// The bit array, made by the first removal, is not taken away again: with all bits set it means the same as none.
[[gnu::always_inline]] static inline void undoRemoved(const TrailRecord &record) {
  CSint *v = record.variable();
  v->count = record.oldCount;
  if (v->bits != nullptr && v->bits->covers(record.value)) v->bits->set(record.value);
}

// A callback may push records and notes of its own over the one that is being undone, which is not read again after
// the call.
void Trail::undoNote() {
  const TrailNote *note = notes_.pop();
  if (note->kind == TrailKind::kBuffer) return dropShare(note->buffer);
  if (note->kind == TrailKind::kWord) {
    *note->word = note->oldWord;
  } else if (note->callback != nullptr) {
    note->callback(note->variable, note->index);
  }
}

void Trail::undo(const TrailRecord &record) {
  switch (record.kind()) {  // GCOVR_EXCL_BR_LINE: there is no other kind
    case TrailKind::kMin:
    case TrailKind::kMinReserved:
      return undoBound(record, 0);
    case TrailKind::kMax:
    case TrailKind::kMaxReserved:
      return undoBound(record, 1);
    case TrailKind::kRemoved:
      return undoRemoved(record);
    case TrailKind::kAttached:
      return detachNewest(record.variable());
    case TrailKind::kCallback:
    case TrailKind::kCallbackExt:
    case TrailKind::kBuffer:
    case TrailKind::kWord:
      return undoNote();
    case TrailKind::kReserved:
    case TrailKind::kReservedToo:
      return;
  }
}

static bool isOfDomain(TrailKind kind) {
  constexpr unsigned kOfDomain = 1U << static_cast<int>(TrailKind::kMin) | 1U << static_cast<int>(TrailKind::kMax) |
                                 1U << static_cast<int>(TrailKind::kRemoved);
  return (kOfDomain >> static_cast<int>(kind) & 1) != 0;
}

// The same for a record of either kind, of a domain that is a word, without a jump for which: where a value was removed
// inside, the bound goes into the sink. Records of a sum or a product are mostly of one kind, which the processor
// foresees; where all-differents take values they are not, and this saves up to 7 % of the time.
[[gnu::always_inline]] static inline void undoEither(const TrailRecord &record, std::uintptr_t kind, CSint *sink) {
  CSint *v = record.variable();
  const int value = record.value;
  const std::uintptr_t removed = kind >> 2;
  const auto address = reinterpret_cast<std::uintptr_t>(v);
  const std::uintptr_t target = address ^ ((address ^ reinterpret_cast<std::uintptr_t>(sink)) & (0 - removed));
  auto *bound = reinterpret_cast<char *>(target + (kind & 1) * sizeof(int));
  *reinterpret_cast<int *>(bound + offsetof(CSint, min)) = value;
  *reinterpret_cast<int *>(bound + offsetof(CSint, reportedMin)) = value;
  v->count = record.oldCount;
  v->bits->words()[0] |= std::uint64_t{removed} << (v->bits->offset(value) % 64);
}

// Takes back changes of domains, down to the mark, the block's first record or one of another kind, with the top of the
// stack in a register and no call: this saves some 15 instructions a record.
template <bool taken>
[[gnu::noinline]] bool Trail::undoDomains(int mark) {
  TrailRecord *end = top();
  CSint sink;
  for (const TrailRecord *const low = lowestFrom(mark); end != low; --end) {
    const TrailRecord &record = end[-1];
    const TrailKind kind = record.kind();
    if (taken && isOfDomain(kind) && has(record.variable(), kEasy)) {
      undoEither(record, static_cast<std::uintptr_t>(kind), &sink);
    } else if (kind == TrailKind::kMin || kind == TrailKind::kMax) {
      undoBound(record, static_cast<std::size_t>(kind));
    } else if (kind == TrailKind::kRemoved) {
      undoRemoved(record);
    } else {
      break;
    }
  }
  cutAt(end);
  return count() <= mark;
}

[[gnu::noinline]] void Trail::undoRest(int mark) {
  ++others_;
  ++readers_;
  while (count() > mark) {
    undo(*pop());
    undoDomains<false>(mark);
  }
  --others_;
  --readers_;
  seen_ = std::min(seen_, mark);
  ++solver::closings;
}

bool Trail::undoDomainsTo(int mark) { return taken_ ? undoDomains<true>(mark) : undoDomains<false>(mark); }

void Trail::undoTo(int mark) {
  if (!undoDomainsTo(mark)) undoRest(mark);
}

// Only buffers have anything to end.
void Trail::discardNotes(int mark) {
  while (notes_.count() > 0 && notes_.at(notes_.count() - 1).place >= mark) {
    const TrailNote *note = notes_.pop();
    if (note->kind == TrailKind::kBuffer) dropShare(note->buffer);
  }
}

void Trail::discardBeyond(int mark) {
  discardNotes(mark);
  popTo(mark);
}

// The end of a full block belongs to its last record.
int Trail::changesSince(const TrailRecord *end) const {
  const int index = indexOf(end);
  const int mark = index >= 0 ? index : indexOf(end - 1) + 1;
  int firstNote = notes_.count();
  while (firstNote > 0 && notes_.at(firstNote - 1).place >= mark) --firstNote;
  return std::max(0, count() - mark - (notes_.count() - firstNote));
}

TrailRecord *const *placeOfTrailEnd() { return solver::trail.placeOfEnd(); }
int changesSince(const TrailRecord *end) { return solver::trail.changesSince(end); }

void Trail::setRead(bool read) {
  const int more = (read ? 1 : 0) - read_;
  read_ += more;
  others_ += more;
  readers_ += more;
  seen_ = count();
}

std::uint64_t Trail::bytes() const { return BlockStack::bytes() + notes_.bytes(); }

void Trail::destroy() {
  discardNotes(0);
  notes_.destroy();
  BlockStack::destroy();
  read_ = others_ = readers_ = seen_ = 0;
  taken_ = false;
}

}  // namespace koru

namespace solver = koru::solver;
using koru::TrailKind;

// Without memory for the record the call is not undone, and the memory handler has been told.
static void noteCall(TrailKind kind, CSint *v, int index, CSbacktrackCallback callback) {
  if (!solver::initialised) return;
  solver::queue.untoldUnknown = true;  // it may set off a propagation before all has been undone
  static_cast<void>(solver::trail.noteCallback(kind, v, index, callback));
}

void cs_backtrack(CSint *vint, int index, CSbacktrackCallback callback) {
  noteCall(TrailKind::kCallback, vint, index, callback);
}

void cs_backtrackExt(CSint *vint, int index, CSbacktrackCallback callback) {
  noteCall(TrailKind::kCallbackExt, vint, index, callback);
}
