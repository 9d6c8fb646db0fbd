// SPDX-License-Identifier: MIT
#include "core/private_variable.h"

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

}  // namespace koru
