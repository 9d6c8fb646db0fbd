// SPDX-License-Identifier: MIT
#include "nogood/record.h"

#include "core/solver.h"

namespace koru {

void Recorder::beginRun() { reportsBefore_ = solver::errors.memoryReports; }

PathRecorder Recorder::hook() {
  if (set_ == nullptr) return {};
  const auto call = [](void *self, const LevelNode &deepest, int depth) {
    static_cast<Recorder *>(self)->record(deepest, depth);
  };
  return {call, this};
}

void Recorder::record(const LevelNode &deepest, int depth) {
  if (solver::errors.memoryReports != reportsBefore_ || !reserve(depth + 1)) return;
  recordDecisions(deepest);
  recordAlternatives(deepest);
  recordFirstFailed(deepest);
}

// The old array goes first, whether or not the new one can be had.
bool Recorder::reserve(int count) {
  if (count <= capacity_) return true;
  scratch_ = Buffer<NoGoodElement>{};
  scratch_ = Buffer<NoGoodElement>(count);
  capacity_ = scratch_ ? count : 0;
  return capacity_ > 0;
}

// The decisions that are not last, root first, from the level on upwards (null: none).
int Recorder::collect(const LevelNode *deepest) const {
  int count = 0;
  for (const LevelNode *level = deepest; level != nullptr; level = level->parent) count += level->isLast ? 0 : 1;
  int at = count;
  for (const LevelNode *level = deepest; level != nullptr; level = level->parent)
    if (!level->isLast) scratch_[--at] = {level->decision, level->index};
  return count;
}

void Recorder::recordWith(const LevelNode &level, const CSvalueSelection &decision) {
  const int count = collect(level.parent);
  scratch_[count] = {decision, level.index};
  addNoGood(*set_, scratch_.get(), count + 1);
}

void Recorder::recordDecisions(const LevelNode &deepest) {
  const int count = collect(&deepest);
  if (count > 0) addNoGood(*set_, scratch_.get(), count);
}

void Recorder::recordAlternatives(const LevelNode &deepest) {
  const LevelNode *level = &deepest;
  while (level != nullptr && level->isLast) level = level->parent;
  for (; level != nullptr; level = level->parent)
    if (level->isLast) recordWith(*level, negationOf(level->decision));
}

void Recorder::recordFirstFailed(const LevelNode &deepest) {
  const LevelNode *nearestRoot = nullptr;
  for (const LevelNode *level = &deepest; level != nullptr; level = level->parent)
    if (!level->isLast && level->hasFirstFailed) nearestRoot = level;
  if (nearestRoot != nullptr) recordWith(*nearestRoot, nearestRoot->firstFailed);
}

}  // namespace koru
