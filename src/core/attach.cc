// SPDX-License-Identifier: MIT
#include "core/attach.h"

#include <algorithm>

#include "core/pool.h"
#include "core/trail.h"
#include "core/variable.h"

namespace koru {

static std::uint8_t heardBy(const Constraint &c) {
  if (c.flags == kWoken) return c.table->heard;
  return (c.flags & kConflictListener) != 0 ? kHearsConflicts : 0;
}

static Entry entryAbove(Entry *older, Constraint *c, int index, std::uint8_t heard) {
  if (older == nullptr) return {c, nullptr, nullptr, index, heard, 0, 0, heard};
  const auto aboveOldest = static_cast<std::uint8_t>(heard | older->heardAboveOldest);
  return {c, older, nullptr, index, heard, older->heardFromHere(), aboveOldest, heard};
}

static const KeyedEntry *asKeyed(const Entry *entry) {
  return entry != nullptr && (entry->heard & kKeyed) != 0 ? static_cast<const KeyedEntry *>(entry) : nullptr;
}

// Two neighbouring spans of the same length become one with the entry above them.
static void spanOlder(KeyedEntry &entry) {
  const KeyedEntry *next = asKeyed(entry.next);
  const KeyedEntry *second = next != nullptr ? asKeyed(next->past) : nullptr;
  if (second == nullptr || next->span != second->span) return;
  entry.past = second->past;
  entry.lowest = std::min({entry.key, next->lowest, second->lowest});
  entry.highest = std::max({entry.key, next->highest, second->highest});
  entry.span = 1 + 2 * next->span;
}

static bool link(Entry *entry, CSint *v) {
  ++entry->constraint->references;
  v->constraints = entry;
  if (!solver::trail.noteAttached(v)) {
    bury(unlinkNewest(v));
    return false;
  }
  ++v->constraintCount;
  return true;
}

bool attachConstraint(Constraint *c, CSint *v, int index, std::uint8_t concerned) {
  auto *entry = static_cast<Entry *>(solver::pool.take(sizeof(Entry)));
  if (entry == nullptr) return false;
  *entry = entryAbove(v->constraints, c, index, static_cast<std::uint8_t>(heardBy(*c) & concerned));
  return link(entry, v);
}

bool attachKeyed(Constraint *c, CSint *v, int index, int key) {
  auto *entry = static_cast<KeyedEntry *>(solver::pool.take(sizeof(KeyedEntry)));
  if (entry == nullptr) return false;
  *entry = {entryAbove(v->constraints, c, index, kKeyed), v->constraints, key, key, key, 1};
  spanOlder(*entry);
  return link(entry, v);
}

}  // namespace koru
