// SPDX-License-Identifier: MIT
// The undo trail: a log of changes from which earlier states are rebuilt, newest change first.
#pragma once

#include <algorithm>

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

// 16 bytes (in 32-bit code 12): the variable's address and the kind share a word, for variables are cache lines.
struct TrailRecord {
  std::uintptr_t variableAndKind;
  int value;
  int oldCount;

  static constexpr std::uintptr_t kKindBits = 15;

  TrailKind kind() const { return static_cast<TrailKind>(variableAndKind & kKindBits); }
  CSint *variable() const { return reinterpret_cast<CSint *>(variableAndKind & ~kKindBits); }
};
static_assert(alignof(CSint) > TrailRecord::kKindBits);

// What a record of kind 7, 9, 10 or 11 stands for, on a stack of its own.
struct TrailNote {
  union {
    CSint *variable;
    std::uint64_t *word;
    SharedBlock *buffer;
  };
  union {
    CSbacktrackCallback callback;
    std::uint64_t oldWord;
  };
  TrailKind kind;
  int index;  // handed to the callback
  int place;  // how many records the trail had before
};

class Trail : public BlockStack<TrailRecord> {
  static constexpr int kNotes = 64;

 public:
  // For a trail that has room.
  void noteMin(const CSint *v) { note(v, TrailKind::kMin, v->min); }
  void noteMax(const CSint *v) { note(v, TrailKind::kMax, v->max); }
  void noteRemoved(const CSint *v, int value) { note(v, TrailKind::kRemoved, value); }

  // The same while a search tries a value: a context is open.
  void noteMinOfTrial(const CSint *v) { write(pushInRoom(), v, TrailKind::kMin, v->min); }
  void noteMaxOfTrial(const CSint *v) { write(pushInRoom(), v, TrailKind::kMax, v->max); }
  void noteRemovedOfTrial(const CSint *v, int value) { write(pushInRoom(), v, TrailKind::kRemoved, value); }
  // A value that was a bound, or between them: the kind tells.
  void noteTakenOfTrial(const CSint *v, TrailKind kind, int value) {
    taken_ = true;
    write(pushInRoom(), v, kind, value);
  }

  // As BlockStack has it, but a block may be filled anew.
  [[nodiscard]] bool makeRoom() { return hasRoom() || makeRoomBeyond(); }

  // Each is false when memory is exhausted (reported).
  [[nodiscard]] bool noteAttached(const CSint *v) {
    if (!makeRoom()) return false;
    note(v, TrailKind::kAttached, 0);
    return true;
  }
  [[nodiscard]] bool noteCallback(TrailKind kind, CSint *v, int index, CSbacktrackCallback callback);
  [[nodiscard]] bool noteWord(std::uint64_t *word);
  [[nodiscard]] bool noteBuffer(SharedBlock *buffer);  // takes over the caller's share, also on failure

  // Take back, or make permanent, everything noted since the trail had `mark` records.
  void undoTo(int mark);
  void discardTo(int mark) {
    if (count() > mark) discardBeyond(mark);
    seen_ = std::min(seen_, mark);
  }
  // Takes back changes of domains as far as there is nothing else. False when there is.
  [[nodiscard]] bool undoDomainsTo(int mark);

  // Changes made now, by a callback of the undo, are about to be taken back with the rest.
  bool undoing() const { return others_ > read_; }

  // A context is open, or somebody reads.
  bool isRead() const { return readers_ > 0; }

  // How many contexts are open.
  void setContexts(int open) { readers_ = open + others_; }

  // As core/meter asks.
  TrailRecord *const *placeOfEnd() const { return placeOfTop(); }
  int changesSince(const TrailRecord *end) const;

  // Somebody reads the records as they come, `seen` of them so far, and finds them written also where nobody else
  // would.
  void setRead(bool read);
  int seen() const { return seen_; }
  void setSeen(int count) { seen_ = count; }

  void destroy();
  std::uint64_t bytes() const;

 private:
  void undo(const TrailRecord &record);
  template <bool taken>
  bool undoDomains(int mark);
  void undoRest(int mark);
  void undoNote();
  void discardNotes(int mark);
  void discardBeyond(int mark);
  TrailNote *pushNote(TrailKind kind);
  [[gnu::noinline, gnu::cold]] bool makeRoomBeyond();

  // Without an open context nobody will read the record: it is counted and takes its place, but is not written, and a
  // block that is full is used again for the next places. So a trail that only grows, while a model is posted and in
  // propagation outside a search, takes no memory.
  void note(const CSint *v, TrailKind kind, int value) {
    TrailRecord *record = pushInRoom();
    if (!kChecked && readers_ == 0) return;
    write(record, v, kind, value);
  }
  static void write(TrailRecord *record, const CSint *v, TrailKind kind, int value) {
    *record = {reinterpret_cast<std::uintptr_t>(v) | static_cast<std::uintptr_t>(kind), value, v->count};
  }

  BlockStack<TrailNote, kNotes> notes_;  // in small blocks, for many models have few of them
  int read_ = 0;                         // 1 when somebody reads
  int others_ = 0;                       // the same, and undoTo running, one inside the other
  int readers_ = 0;                      // those, and the contexts that are open
  int seen_ = 0;
  bool taken_ = false;  // since the trail was created, by noteTakenOfTrial
};

namespace solver {

inline KORU_STATE Trail trail;

}  // namespace solver

}  // namespace koru
