// SPDX-License-Identifier: MIT
#include "core/post.h"

#include <algorithm>

#include "core/check.h"
#include "core/lifetime.h"
#include "core/pool.h"
#include "core/ports.h"

namespace koru {

Posting::Posting(const Poster &poster) {
  if constexpr (kChecked) ++solver::checked.posters;
  if (!solver::initialised) return;
  site_ = Site::create(poster, solver::ports.textFor(poster));
  if (site_ == nullptr) return;
  site_->references = 1;
  consistent_ = true;
}

Posting::~Posting() {
  Site::release(site_);
  if constexpr (kChecked) --solver::checked.posters;
}

bool Posting::holdsOfNothing() const { return consistent_ || !solver::initialised; }

Constraint *Posting::addConstraint(const HandlerTable &table, std::size_t recordSize, ConstraintFlags flags) {
  if (!consistent_) return nullptr;
  const std::size_t size = sizeof(Constraint) + recordSize;
  void *memory = solver::pool.take(size);
  consistent_ = memory != nullptr;
  if (!consistent_) return nullptr;
  ++site_->references;
  if (table.destroy != nullptr) ++solver::ownersAlive;
  return new (memory) Constraint{&table, site_, 1, static_cast<std::uint16_t>(size), flags};
}

void Posting::attach(Constraint *c, CSint *v, int index, std::uint8_t concerned) {
  if (consistent_) consistent_ = attachConstraint(c, v, index, concerned);
}

void Posting::attachKeyed(Constraint *c, CSint *v, int index, int key) {
  if (consistent_) consistent_ = koru::attachKeyed(c, v, index, key);
}

bool allPresent(CSint *const *variables, int count) {
  for (int i = 0; i < count; ++i)
    if (variables[i] == nullptr) return false;
  return true;
}

Buffer<CSint *> copyVariables(CSint *const *variables, int count) {
  if (count < 0 || (count > 0 && (variables == nullptr || !allPresent(variables, count)))) return {};
  Buffer<CSint *> copy(count);
  if (copy) std::copy_n(variables, count, copy.get());
  return copy;
}

Shared<CSint *> copyArguments(std::va_list arguments, int count) {
  Shared<CSint *> copy(count);
  for (int i = 0; copy && i < count; ++i) copy.get()[i] = va_arg(arguments, CSint *);
  return copy && allPresent(copy.get(), count) ? copy : Shared<CSint *>{};
}

}  // namespace koru
