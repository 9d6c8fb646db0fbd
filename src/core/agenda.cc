// SPDX-License-Identifier: MIT
#include "core/agenda.h"

#include <bit>

namespace koru {

Deferred::~Deferred() { solver::agenda.forget(*this); }

void Agenda::append(Deferred &record) {
  const auto rank = static_cast<unsigned>(record.constraint->table->rank);
  Lane &lane = lanes_[rank];
  record.waiting = true;
  record.next = nullptr;
  if (lane.first == nullptr) {
    lane.first = &record;
  } else {
    lane.last->next = &record;
  }
  lane.last = &record;
  occupied_ |= 1U << rank;
  update();
}

Deferred *Agenda::takeFirst() {
  if (!due()) return nullptr;
  const int rank = std::countr_zero(occupied_);
  Lane &lane = lanes_[rank];
  Deferred *record = lane.first;
  lane.first = record->next;
  if (lane.first == nullptr) occupied_ &= ~(1U << rank);
  record->waiting = false;
  update();
  return record;
}

void Agenda::dropAll() {
  hush(nullptr);
  while (takeFirst() != nullptr) {
  }
}

void Agenda::forget(Deferred &record) {
  if (quiet_ == &record) hush(nullptr);
  if (!record.waiting) return;
  for (unsigned rank = 0; rank < kRanks; ++rank) {
    Lane &lane = lanes_[rank];
    Deferred *previous = nullptr;
    for (Deferred *one = lane.first; one != nullptr; previous = one, one = one->next) {
      if (one != &record) continue;
      (previous == nullptr ? lane.first : previous->next) = record.next;
      if (lane.last == &record) lane.last = previous;
      if (lane.first == nullptr) occupied_ &= ~(1U << rank);
      return update();
    }
  }
}

void Agenda::setPosting(bool posting) {
  turn(kPosting, posting);
  update();
}

}  // namespace koru
