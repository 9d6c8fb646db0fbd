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

void setHeard(CSint *v, const Constraint *c, std::uint8_t events, bool heard) {
  Entry *entry = v->constraints;
  while (entry != nullptr && entry->constraint != c) entry = entry->next;
  // Where v stands several times, its entries follow each other.
  for (; entry != nullptr && entry->constraint == c; entry = entry->next)
    entry->heard =
        static_cast<std::uint8_t>(heard ? entry->heard | (entry->concerned & events) : entry->heard & ~events);
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
