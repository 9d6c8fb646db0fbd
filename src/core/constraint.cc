// SPDX-License-Identifier: MIT
#include "core/constraint.h"

#include "core/pool.h"
#include "core/variable.h"

namespace koru {

bool doNothing(CSint *, Entry *, int, int) { return true; }

void release(Constraint *c) {
  if (--c->references > 0) return;
  if (c->table->destroy != nullptr) {
    --solver::ownersAlive;
    c->table->destroy(c->record());
  }
  Site::release(c->site);
  solver::pool.give(c, c->size);
}

Entry *unlinkNewest(CSint *v) {
  Entry *entry = v->constraints;
  v->constraints = entry->next;
  if (v->constraints == nullptr) setTrait(v, kShifted, false);
  return entry;
}

void bury(Entry *entry) {
  release(entry->constraint);
  solver::pool.give(entry, (entry->heard & kKeyed) != 0 ? sizeof(KeyedEntry) : sizeof(Entry));
}

void detachAll(CSint &v) {
  while (v.constraints != nullptr) bury(unlinkNewest(&v));
}

}  // namespace koru
