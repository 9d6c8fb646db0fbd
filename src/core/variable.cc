// SPDX-License-Identifier: MIT
// Names and queries of variables.
#include "core/variable.h"

#include <cstring>
#include <utility>

#include "core/alloc.h"
#include "core/errors.h"

namespace koru {

void destroyDomain(CSint &v) {
  DomainBits::destroy(v.bits);
  deallocate(v.name);
  setBits(&v, nullptr);
  v.name = nullptr;
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
  solver::named = true;
}

char *cs_getName(CSint *vint) { return vint != nullptr ? vint->name : nullptr; }

bool cs_isFree(CSint *vint) { return vint != nullptr && isFree(vint); }
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
