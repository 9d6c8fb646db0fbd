// SPDX-License-Identifier: MIT
#include "core/branch_set.h"

namespace koru {

BranchSetOn::BranchSetOn(int size, std::uint64_t *words, Taken *taken)
    : words_(words), taken_(taken), wordCount_(wordsFor(size)) {
  for (int i = 0; i < wordCount_; ++i) words_[i] = ~std::uint64_t{0};
  if (size % 64 != 0) words_[wordCount_ - 1] = maskOf(size) - 1;
}

BranchSet::BranchSet(int size) : words_(wordsFor(size)) {
  if (!words_) return;
  taken_ = Buffer<Taken>(size);
  if (taken_) static_cast<BranchSetOn &>(*this) = BranchSetOn(size, words_.get(), taken_.get());
}

}  // namespace koru
