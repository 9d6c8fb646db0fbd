// SPDX-License-Identifier: MIT
// A twin of SharedResource that looks at each time by itself, and at the energy of all sets of tasks.
#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include "constraints/scheduling/shared_resource.h"

namespace koru::scheduling::naive {

using Loads = std::vector<Load>;

inline bool sameLoad(const Load &a, const Load &b) {
  return a.task.presence == b.task.presence &&
         (a.task.isOut() || (a.task.earliest == b.task.earliest && a.task.latest == b.task.latest));
}

// What all but one certainly take at a time.
inline Time levelAt(const Loads &loads, Time time, const Load *but) {
  Time level = 0;
  for (const Load &load : loads)
    if (&load != but && load.hasPart() && load.task.latestStart() <= time && time < load.task.earliestEnd())
      level += load.use;
  return level;
}

inline bool fitsFrom(const Loads &loads, const Load &load, Time start, Time capacity) {
  if (load.use == 0) return true;
  for (Time time = start; time < start + load.task.length; ++time)
    if (levelAt(loads, time, &load) + load.use > capacity) return false;
  return true;
}

// What a task takes of a window wherever it is put, when all of it must be done within, or where it certainly runs.
inline Time takenOf(const Load &load, Time first, Time last) {
  const Task &task = load.task;
  if (task.earliest >= first && task.latest <= last) return task.length * load.use;
  Time taken = 0;
  for (Time time = first; time < last; ++time)
    if (load.hasPart() && task.latestStart() <= time && time < task.earliestEnd()) taken += load.use;
  return taken;
}

// Between two times, beside those that are sure to be there, but one.
inline Time roomBetween(const Loads &loads, Time first, Time last, Time capacity, const Load *but) {
  Time room = capacity * (last - first);
  for (const Load &load : loads)
    if (&load != but && load.task.isIn()) room -= takenOf(load, first, last);
  return room;
}

constexpr Time kEnd = 22;  // no load is beyond it

template <class Look>
bool anyWindow(Look look) {
  for (Time first = -kEnd; first < kEnd; ++first)
    for (Time last = first + 1; last <= kEnd; ++last)
      if (look(first, last)) return true;
  return false;
}

inline bool anyOverload(const Loads &loads, Time capacity) {
  return anyWindow([&](Time first, Time last) { return roomBetween(loads, first, last, capacity, nullptr) < 0; });
}

inline bool isOverloadWith(const Loads &loads, Time capacity, const Load &one) {
  return anyWindow([&](Time first, Time last) {
    return one.task.earliest >= first && one.task.latest <= last &&
           roomBetween(loads, first, last, capacity, nullptr) < one.task.length * one.use;
  });
}

// One round of the time table.
inline bool round(Loads &loads, Time capacity) {
  for (Load &load : loads) {
    Task &task = load.task;
    if (task.isOut()) continue;
    while (task.earliestEnd() <= task.latest && !fitsFrom(loads, load, task.earliest, capacity)) ++task.earliest;
    while (task.earliestEnd() <= task.latest && !fitsFrom(loads, load, task.latestStart(), capacity)) --task.latest;
    if (task.earliestEnd() <= task.latest) continue;
    if (task.isIn()) return false;
    task.presence = Presence::kOut;
  }
  return true;
}

inline bool filterNaively(Loads &loads, Time capacity) {
  for (bool again = true; again;) {
    const Loads before = loads;
    if (!round(loads, capacity)) return false;
    again = !std::ranges::equal(before, loads, sameLoad);
  }
  if (anyOverload(loads, capacity)) return false;
  for (Load &load : loads)
    if (load.task.presence == Presence::kOptional && isOverloadWith(loads, capacity, load))
      load.task.presence = Presence::kOut;
  return true;
}

// Whether the others leave room in the window for a task that starts then.
inline bool leavesRoom(const Loads &loads, const Load &load, Time start, Time first, Time last, Time capacity) {
  const Time overlap = std::max<Time>(0, std::min(start + load.task.length, last) - std::max(start, first));
  return overlap * load.use <= roomBetween(loads, first, last, capacity, &load);
}

inline void moveStart(const Loads &loads, Load &load, Time capacity) {
  Task &task = load.task;
  anyWindow([&](Time first, Time last) {
    const bool isWithin = task.isIn() && task.latest <= last;
    while (first <= task.earliest && task.earliest < last && !isWithin && task.earliestEnd() <= task.latest &&
           !leavesRoom(loads, load, task.earliest, first, last, capacity))
      ++task.earliest;
    return false;
  });
}

inline void mirrorAll(Loads &loads) {
  for (Load &load : loads) load.task.earliest = -std::exchange(load.task.latest, -load.task.earliest);
}

inline bool moveByEdges(Loads &loads, Time capacity) {
  for (int direction = 0; direction < 2; ++direction) {
    for (Load &load : loads) {
      if (load.task.isOut()) continue;
      moveStart(loads, load, capacity);
      if (load.task.earliestEnd() <= load.task.latest) continue;
      if (load.task.isIn()) return false;
      load.task.presence = Presence::kOut;
    }
    mirrorAll(loads);
  }
  return true;
}

// All rules, to their common fixpoint.
inline bool filterAllNaively(Loads &loads, Time capacity) {
  for (bool again = true; again;) {
    if (!filterNaively(loads, capacity)) return false;
    const Loads before = loads;
    if (!moveByEdges(loads, capacity)) return false;
    again = !std::ranges::equal(before, loads, sameLoad);
  }
  return true;
}

}  // namespace koru::scheduling::naive
