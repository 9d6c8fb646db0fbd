// SPDX-License-Identifier: MIT
#include "core/branch_set.h"

#include "core/context_stack.h"
#include "core/int_math.h"
#include "core/trail.h"

namespace koru {

BranchStamp BranchStamp::now() {
  if (solver::trail.undoing()) return {kIntMax, 0};
  const int level = solver::contexts.count();
  return {level, level > 0 ? solver::contexts.at(level - 1).serial : 0};
}

bool BranchStamp::stands() const {
  return level == 0 || (level <= solver::contexts.count() && solver::contexts.at(level - 1).serial == serial);
}

BranchSetOn::BranchSetOn(int size, std::uint64_t *words, Taken *taken)
    : words_(words), taken_(taken), wordCount_(wordsFor(size)) {
  for (int i = 0; i < wordCount_; ++i) words_[i] = ~std::uint64_t{0};
  if (size % 64 != 0) words_[wordCount_ - 1] = maskOf(size) - 1;
}

void BranchSetOn::takeOut(int position, const BranchStamp &stamp) {
  std::uint64_t &word = words_[position / 64];
  if ((word & maskOf(position)) == 0) return;
  word &= ~maskOf(position);
  taken_[takenCount_++] = {position, stamp.level, stamp.serial};
}

BranchSet::BranchSet(int size) : words_(wordsFor(size)) {
  if (!words_) return;
  taken_ = Buffer<Taken>(size);
  if (taken_) static_cast<BranchSetOn &>(*this) = BranchSetOn(size, words_.get(), taken_.get());
}

}  // namespace koru
