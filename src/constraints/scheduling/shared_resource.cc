// SPDX-License-Identifier: MIT
#include "constraints/scheduling/shared_resource.h"

#include <algorithm>

namespace koru::scheduling {

SharedResource::SharedResource(int count) : count_(count), table_(count) {
  if (!table_) return;
  energy_ = OneMachine(count);
  if (energy_) make(loads_, static_cast<unsigned>(count));
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

// ----- overload: of a machine that does one unit of energy at a time, and has as many times of it as there is capacity

constexpr Time kMost = Time{1} << 60;

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
  if (!energiesFit()) return true;
  for (int i = 0; i < count_; ++i) {
    const auto &[task, use] = loads_[i];
    energy_[i] = {task.earliest * capacity_, task.latest * capacity_, task.length * use, task.presence};
  }
  if (!energy_.overloadOnly()) return false;
  for (int i = 0; i < count_; ++i) loads_[i].task.presence = energy_[i].presence;
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
