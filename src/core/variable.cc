// SPDX-License-Identifier: MIT
// Creation, names and queries of variables.
#include "core/variable.h"

#include <cstring>
#include <utility>

#include "core/post.h"
#include "core/solver.h"

namespace koru {

CSint *createVariable(int min, int max) {
  if (min > max || !solver.initialised) return nullptr;
  CSint *v = solver.variables.push();
  if (v != nullptr) *v = {min, max, min, max, nullptr, rangeSize(min, max), 0, nullptr, nullptr, min, max};
  return v;
}

CSint *createEmptyVariable(int min, int max) {
  CSint *v = createVariable(min, max);
  if (v == nullptr) return nullptr;
  v->bits = DomainBits::create(min, max, DomainBits::Fill::kNone);
  if (v->bits == nullptr) return nullptr;
  v->count = 0;
  return v;
}

CSint *createFromBits(DomainBits *bits) {
  const int min = bits->has(bits->low) ? bits->low : nextPresent(bits, bits->low);
  const std::int64_t count = countPresent(bits, bits->low, bits->high);
  CSint *v = count > 0 ? createVariable(bits->low, bits->high) : nullptr;
  if (v == nullptr) {
    DomainBits::destroy(bits);
    return nullptr;
  }
  v->min = min;
  v->max = bits->has(bits->high) ? bits->high : previousPresent(bits, bits->high);
  v->count = wrap(count);
  v->bits = bits;
  return v;
}

void destroyDomain(CSint &v) {
  DomainBits::destroy(v.bits);
  deallocate(v.name);
  v.bits = nullptr;
  v.name = nullptr;
}

static void addValue(CSint *v, int value) {
  if (v->bits->has(value)) return;
  v->bits->set(value);
  v->count = wrapAdd(v->count, 1);
}

static CSint *createFromValues(const int *values, int size) {
  int min = kIntMax;
  int max = kIntMin;
  for (int i = 0; i < size; ++i) {
    if (values[i] < min) min = values[i];
    if (values[i] > max) max = values[i];
  }
  CSint *v = createEmptyVariable(min, max);
  if (v == nullptr) return nullptr;
  for (int i = 0; i < size; ++i) addValue(v, values[i]);
  return v;
}

static char *copyText(const char *text) {
  const std::size_t size = std::strlen(text) + 1;
  auto *copy = static_cast<char *>(allocate(size));
  if (copy != nullptr) std::memcpy(copy, text, size);
  return copy;
}

// The domain in increasing order. Deliberate: a count that was written back too high leaves entries over, which hold
// the maximum; one that is too low ends the walk.
static void listValues(const CSint *v, int *values) {
  int value = v->min;
  for (int i = 0; i < v->count; ++i) {
    values[i] = value;
    if (value < v->max) value = valueAfter(v, value);
  }
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
  if (!solver.initialised) return nullptr;
  const Shared<CSint *> array(size);
  if (!array || !solver.trail.noteBuffer(array.share())) return nullptr;
  for (int i = 0; i < size; ++i) {
    array.get()[i] = createVariable(min, max);
    if (array.get()[i] == nullptr) return nullptr;
  }
  return array.get();
}

CSint *cs_createCSintFromDomain(const int *array, int size) {
  return array == nullptr ? nullptr : createFromValues(array, size);
}

// A name that is not longer than the old one is copied over it, whatever part of the old one it may be. A memory
// handler finds no name, and one that it gives is taken away again.
void cs_setName(CSint *vint, const char *name) {
  if (vint == nullptr) return;
  if (name != nullptr && vint->name != nullptr && std::strlen(vint->name) >= std::strlen(name)) {
    std::memmove(vint->name, name, std::strlen(name) + 1);
    return;
  }
  deallocate(std::exchange(vint->name, nullptr));
  char *copy = name != nullptr ? copyText(name) : nullptr;
  deallocate(std::exchange(vint->name, copy));
}

char *cs_getName(CSint *vint) { return vint != nullptr ? vint->name : nullptr; }

bool cs_isFree(CSint *vint) { return vint != nullptr && vint->count > 1; }
bool cs_isInstantiated(CSint *vint) { return vint != nullptr && isInstantiated(vint); }
int cs_getMin(CSint *vint) { return vint != nullptr ? vint->min : 0; }
int cs_getMax(CSint *vint) { return vint != nullptr ? vint->max : 0; }
int cs_getNbElements(CSint *vint) { return vint != nullptr ? vint->count : 0; }
int cs_getNbConstraints(CSint *vint) { return vint != nullptr ? vint->constraintCount : 0; }

int cs_getValue(CSint *vint) {
  if (vint == nullptr) return 0;
  if (!isBound(vint)) reportNotInstantiated(vint);
  return vint->min;
}

int cs_getNextValue(CSint *vint, int val) {
  if (vint == nullptr || val >= vint->max) return kIntMax;
  return val < vint->min ? vint->min : valueAfter(vint, val);
}

int cs_getPreviousValue(CSint *vint, int val) {
  if (vint == nullptr || val <= vint->min) return kIntMin;
  return val > vint->max ? vint->max : valueBefore(vint, val);
}

bool cs_isIn(CSint *vint, int val) { return vint != nullptr && contains(vint, val); }

int *cs_getDomain(CSint *vint) {
  if (vint == nullptr) return nullptr;
  if (countPresent(vint->bits, vint->min, vint->max) > kIntMax) {
    reportMemoryExhausted();
    return nullptr;
  }
  const auto size = static_cast<std::size_t>(vint->count > 0 ? vint->count : 0);
  auto *values = static_cast<int *>(allocateArray(0, size, sizeof(int)));
  if (values != nullptr) listValues(vint, values);
  return values;
}

void cs_freeDomain(int *array) { deallocate(array); }
