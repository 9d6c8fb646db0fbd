// SPDX-License-Identifier: MIT
#include "core/create.h"

#include "core/lifetime.h"
#include "core/trail.h"

namespace koru {

CSint *createVariable(int min, int max) {
  if (min > max || !solver::initialised) return nullptr;
  CSint *v = solver::variables.push();
  if (v != nullptr) *v = intervalOf(min, max);
  return v;
}

static int firstIn(const DomainBits *bits) { return bits->has(bits->low) ? bits->low : nextPresent(bits, bits->low); }

static int lastIn(const DomainBits *bits) {
  return bits->has(bits->high) ? bits->high : previousPresent(bits, bits->high);
}

CSint *createFromBits(DomainBits *bits) {
  const std::int64_t count = countPresent(bits, bits->low, bits->high);
  CSint *v = count > 0 ? createVariable(bits->low, bits->high) : nullptr;
  if (v == nullptr) {
    DomainBits::destroy(bits);
    return nullptr;
  }
  v->min = firstIn(bits);
  v->max = lastIn(bits);
  v->count = wrap(count);
  setBits(v, bits);
  return v;
}

DomainBuilder::DomainBuilder(CSint *v, Start start) : v_(v) {
  if (v == nullptr) return;
  const auto fill = start == Start::kFull ? DomainBits::Fill::kAll : DomainBits::Fill::kNone;
  setBits(v, DomainBits::create(v->min, v->max, fill));
  if (v->bits == nullptr) {
    v_ = nullptr;
  } else if (start == Start::kEmpty) {
    v->count = 0;
  }
}

void DomainBuilder::add(int value) {
  if (v_->bits->has(value)) return;
  v_->bits->set(value);
  v_->count = wrapAdd(v_->count, 1);
}

void DomainBuilder::remove(int value) {
  v_->bits->clear(value);
  v_->count = wrapSub(v_->count, 1);
}

void DomainBuilder::fitBounds() {
  v_->min = v_->reportedMin = firstIn(v_->bits);
  v_->max = v_->reportedMax = lastIn(v_->bits);
}

static CSint *createFromValues(const int *values, int size) {
  int min = kIntMax;
  int max = kIntMin;
  for (int i = 0; i < size; ++i) {
    if (values[i] < min) min = values[i];
    if (values[i] > max) max = values[i];
  }
  CSint *v = createVariable(min, max);
  DomainBuilder domain(v, DomainBuilder::Start::kEmpty);
  if (!domain) return nullptr;
  for (int i = 0; i < size; ++i) domain.add(values[i]);
  return v;
}

}  // namespace koru

using namespace koru;

CSint *cs_createCSint(int min, int max) { return createVariable(min, max); }

CSint *CSINT(int value) { return createVariable(value, value); }

CSint *cs_createNamedCSint(int min, int max, const char *name) {
  CSint *v = createVariable(min, max);
  if (v != nullptr) cs_setName(v, name);
  return v;
}

CSint **cs_createCSintArray(int size, int min, int max) {
  if (!solver::initialised) return nullptr;
  const Shared<CSint *> array(size);
  if (!array || !solver::trail.noteBuffer(array.share())) return nullptr;
  for (int i = 0; i < size; ++i) {
    array.get()[i] = createVariable(min, max);
    if (array.get()[i] == nullptr) return nullptr;
  }
  return array.get();
}

CSint *cs_createCSintFromDomain(const int *array, int size) {
  return array == nullptr ? nullptr : createFromValues(array, size);
}
