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

bool attachConstraint(Constraint *c, CSint *v, int index, std::uint8_t concerned) {
  auto *entry = static_cast<Entry *>(solver::pool.take(sizeof(Entry)));
  if (entry == nullptr) return false;
  const std::uint8_t heardByOlder = v->constraints != nullptr ? v->constraints->heardFromHere() : std::uint8_t{0};
  *entry = {c, v->constraints, nullptr, index, static_cast<std::uint8_t>(heardBy(*c) & concerned), heardByOlder};
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
