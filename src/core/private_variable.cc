// SPDX-License-Identifier: MIT
#include "core/private_variable.h"

#include <algorithm>
#include <bit>
#include <new>

#include "core/alloc.h"
#include "core/constraint.h"
#include "core/create.h"

namespace koru {

PrivateVariables::PrivateVariables(int count) {
  const int size = count > 0 ? count : 0;
  void *memory = allocateArray(sizeof(Block) + alignof(CSint), static_cast<std::size_t>(size), sizeof(CSint));
  if (memory == nullptr) return;
  block_ = new (memory) Block{1, size};
  for (int i = 0; i < size; ++i) new (block_->variables() + i) CSint(intervalOf(0, 0));
}

PrivateVariables::PrivateVariables(const PrivateVariables &other) : block_(other.block_) {
  if (block_ != nullptr) ++block_->owners;
}

PrivateVariables::~PrivateVariables() {
  if (block_ == nullptr || --block_->owners > 0) return;
  for (int i = 0; i < block_->count; ++i) {
    detachAll(block_->variables()[i]);
    destroyDomain(block_->variables()[i]);
  }
  deallocate(block_);
}

void PrivateVariables::init(int i, int min, int max) const { *(*this)[i] = intervalOf(min, max); }

bool PrivateVariables::init(int i, int max, const std::uint64_t *words) const {
  CSint *v = (*this)[i];
  *v = intervalOf(0, max);
  const int last = max / 64;
  int low = 0;
  while (words[low] == 0) ++low;
  int high = last;
  while (words[high] == 0) --high;
  v->min = low * 64 + std::countr_zero(words[low]);
  v->max = high * 64 + 63 - std::countl_zero(words[high]);
  v->count = 0;
  for (int word = low; word <= high; ++word) v->count += countOnes(words[word]);
  if (!hasHoles(v)) return true;
  setBits(v, DomainBits::create(0, max, DomainBits::Fill::kNone));
  if (v->bits == nullptr) return false;
  std::copy(words, words + last + 1, v->bits->words());
  return true;
}

}  // namespace koru
