// SPDX-License-Identifier: MIT
#include "core/constraint.h"

#include "core/solver.h"

namespace koru {

bool doNothing(CSint *, Entry *, int, int) { return true; }

static std::uint8_t heardBy(const Constraint &c) {
  if (c.flags == kWoken) return c.table->heard;
  return (c.flags & kConflictListener) != 0 ? kHearsConflicts : 0;
}

static void bury(Entry *entry) {
  release(entry->constraint);
  solver.pool.give(entry, sizeof(Entry));
}

static Entry *unlinkNewest(CSint *v) {
  Entry *entry = v->constraints;
  v->constraints = entry->next;
  return entry;
}

bool attachConstraint(Constraint *c, CSint *v, int index, std::uint8_t concerned) {
  auto *entry = static_cast<Entry *>(solver.pool.take(sizeof(Entry)));
  if (entry == nullptr) return false;
  const std::uint8_t heardByOlder = v->constraints != nullptr ? v->constraints->heardFromHere() : std::uint8_t{0};
  *entry = {c, v->constraints, nullptr, index, static_cast<std::uint8_t>(heardBy(*c) & concerned), heardByOlder};
  ++c->references;
  v->constraints = entry;
  if (!solver.trail.noteAttached(v)) {
    bury(unlinkNewest(v));
    return false;
  }
  ++v->constraintCount;
  return true;
}

void detachNewest(CSint *v) {
  if (v->constraints == nullptr) return;
  Entry *entry = unlinkNewest(v);
  if (solver.queue.depth == 0) return bury(entry);
  entry->nextDead = solver.graveyard;
  solver.graveyard = entry;
}

void detachAll(CSint &v) {
  while (v.constraints != nullptr) bury(unlinkNewest(&v));
}

void emptyGraveyard() {
  while (solver.graveyard != nullptr) {
    Entry *entry = solver.graveyard;
    solver.graveyard = entry->nextDead;
    bury(entry);
  }
}

void release(Constraint *c) {
  if (--c->references > 0) return;
  if (c->table->destroy != nullptr) {
    --solver.ownersAlive;
    c->table->destroy(c->record());
  }
  Site::release(c->site);
  solver.pool.give(c, c->size);
}

}  // namespace koru
