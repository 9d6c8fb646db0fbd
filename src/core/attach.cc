// SPDX-License-Identifier: MIT
#include "core/attach.h"

#include "core/pool.h"
#include "core/trail.h"
#include "core/variable.h"

namespace koru {

static std::uint8_t heardBy(const Constraint &c) {
  if (c.flags == kWoken) return c.table->heard;
  return (c.flags & kConflictListener) != 0 ? kHearsConflicts : 0;
}

static Entry entryAbove(Entry *older, Constraint *c, int index, std::uint8_t heard) {
  if (older == nullptr) return {c, nullptr, nullptr, index, heard, 0, 0};
  const auto aboveOldest = static_cast<std::uint8_t>(heard | older->heardAboveOldest);
  return {c, older, nullptr, index, heard, older->heardFromHere(), aboveOldest};
}

bool attachConstraint(Constraint *c, CSint *v, int index, std::uint8_t concerned) {
  auto *entry = static_cast<Entry *>(solver::pool.take(sizeof(Entry)));
  if (entry == nullptr) return false;
  *entry = entryAbove(v->constraints, c, index, static_cast<std::uint8_t>(heardBy(*c) & concerned));
  ++c->references;
  v->constraints = entry;
  if (!solver::trail.noteAttached(v)) {
    bury(unlinkNewest(v));
    return false;
  }
  ++v->constraintCount;
  return true;
}

}  // namespace koru
