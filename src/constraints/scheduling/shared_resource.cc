// SPDX-License-Identifier: MIT
#include "constraints/scheduling/shared_resource.h"

#include <algorithm>

namespace koru::scheduling {

SharedResource::SharedResource(int count) : count_(count), table_(count) {
  if (!table_) return;
  energy_ = OneMachine(count);
  if (energy_) edges_ = TimeTableEdges(count);
  if (edges_) make(loads_, static_cast<unsigned>(count));
}

// A task with no room for it anywhere. False when it must be there.
static bool drop(Task &task) {
  const bool optional = !task.isIn();
  task.presence = Presence::kOut;
  return optional;
}

bool SharedResource::dropTooLarge() {
  for (int i = 0; i < count_; ++i) {
    Load &load = loads_[i];
    if (load.use > capacity_ && !load.task.isOut() && !drop(load.task)) return false;
  }
  return true;
}

// ----- time table

// Where it has a part, that is in the table already, and there is room for it.
bool SharedResource::raise(Load &load) {
  Task &task = load.task;
  const bool hasPart = load.hasPart();
  const Time latestStart = task.latestStart();
  const Time room = capacity_ - load.use;
  Time start = task.earliest;
  for (int k = table_.at(start);;) {
    k = table_.firstAbove(k, room);
    if (k == TimeTable::kNone || table_.beginOf(k) >= (hasPart ? latestStart : start + task.length)) break;
    while (table_.levelOf(k) > room) ++k;
    start = table_.beginOf(k);
    if (start <= latestStart) continue;
    if (!hasPart) return drop(task);
    start = latestStart;
    break;
  }
  changed_ = changed_ || start != task.earliest;
  task.earliest = start;
  return true;
}

bool SharedResource::pass() {
  table_.build(loads_);
  if (table_.highest() > capacity_) return false;
  for (int i = 0; i < count_; ++i)
    if (loads_[i].use > 0 && !loads_[i].task.isOut() && !raise(loads_[i])) return false;
  return true;
}

void SharedResource::mirror() {
  for (int i = 0; i < count_; ++i) {
    Task &task = loads_[i].task;
    task.earliest = -std::exchange(task.latest, -task.earliest);
  }
}

// ----- overload: of a machine whose time is what is free of the resource, summed up from the beginning

constexpr Time kMost = Time{1} << 59;

bool SharedResource::energiesFit() const {
  Time first = kMost;
  Time last = -kMost;
  Time total = 0;
  for (int i = 0; i < count_ && total <= kMost; ++i) {
    const Load &load = loads_[i];
    first = std::min(first, load.task.earliest);
    last = std::max(last, load.task.latest);
    total += load.task.length * load.use;
  }
  return total <= kMost && std::max(last, -first) <= kMost / std::max<Time>(capacity_, 1);
}

bool SharedResource::overload() {
  most_ = 0;
  if (!energiesFit()) return true;
  table_.sumUp();
  const auto freeUntil = [&](Time time) { return time * capacity_ - table_.takenUntil(time); };
  for (int i = 0; i < count_; ++i) {
    const Task &task = loads_[i].task;
    const Time energy = loads_[i].energyBesideTable();
    energy_[i] = {};
    if (energy > 0 && !task.isOut())
      energy_[i] = {freeUntil(task.earliest), freeUntil(task.latest), energy, task.presence};
    most_ = std::max(most_, energy);
  }
  if (!energy_.overloadOnly()) return false;
  for (int i = 0; i < count_; ++i)
    if (energy_[i].length > 0) loads_[i].task.presence = energy_[i].presence;
  return true;
}

// ----- all of it

bool SharedResource::filter(Time capacity) {
  capacity_ = capacity;
  if (!dropTooLarge()) return false;
  do {
    changed_ = false;
    mirror();
    if (!pass()) return false;
    mirror();
    if (!pass()) return false;
  } while (changed_);
  return overload();
}

bool SharedResource::edges(Time capacity) {
  capacity_ = capacity;
  if (!energiesFit()) return true;
  table_.build(loads_);
  table_.sumUp();
  return edges_.filter(loads_, table_, capacity);
}

// Where the task certainly runs, the others leave it so much.
Time SharedResource::mostUse(int i) const {
  const Load &load = loads_[i];
  if (!load.hasPart()) return capacity_;
  return capacity_ + load.use - table_.highest(load.task.latestStart(), load.task.earliestEnd());
}

// The first time behind its start and part at which there is no room for it.
Time SharedResource::latestEnd(int i, Time latestStart) const {
  const Load &load = loads_[i];
  const Time from = std::max(latestStart, load.task.earliestEnd());
  const int k = table_.firstAbove(table_.at(from), capacity_ - load.use);
  return k == TimeTable::kNone ? kNoEnd : std::max(from, table_.beginOf(k));
}

}  // namespace koru::scheduling
