// SPDX-License-Identifier: MIT
#include "core/branch_set.h"

#include "core/solver.h"

namespace koru {

BranchStamp BranchStamp::now() {
  if (solver.trail.undoing()) return {kIntMax, 0};
  const int level = solver.contexts.count();
  return {level, level > 0 ? solver.contexts.at(level - 1).serial : 0};
}

bool BranchStamp::stands() const {
  return level == 0 || (level <= solver.contexts.count() && solver.contexts.at(level - 1).serial == serial);
}

BranchSet::BranchSet(int size) : words_((size + 63) / 64), wordCount_((size + 63) / 64) {
  if (!words_) return;
  taken_ = Buffer<Taken>(size);
  for (int i = 0; i < wordCount_; ++i) words_[i] = ~std::uint64_t{0};
  if (size % 64 != 0) words_[wordCount_ - 1] = maskOf(size) - 1;
}

void BranchSet::takeOut(int position) {
  std::uint64_t &word = words_[position / 64];
  if ((word & maskOf(position)) == 0) return;
  word &= ~maskOf(position);
  taken_[takenCount_++] = {position, BranchStamp::now()};
}

}  // namespace koru
