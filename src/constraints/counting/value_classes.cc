// SPDX-License-Identifier: MIT
#include "constraints/counting/value_classes.h"

#include <algorithm>

#include "core/domain_walk.h"
#include "core/narrow.h"

namespace koru::counting {

bool ValueClasses::build(const int *values, CSint *const *counts, int m) {
  if (m < 0 || m == kIntMax || (m > 0 && (values == nullptr || counts == nullptr))) return false;
  m_ = m;
  if (!make(counted_, static_cast<unsigned>(m))) return false;
  for (int j = 0; j < m; ++j) {
    if (counts[j] == nullptr) return false;
    counted_[j] = {values[j], counts[j]};
  }
  Counted *begin = counted_.get();
  std::sort(begin, begin + m, [](const Counted &a, const Counted &b) { return a.value < b.value; });
  consecutive_ = m > 0 && std::int64_t{begin[m - 1].value} - begin[0].value == m - 1;
  if (consecutive_) first_ = begin[0].value;
  return std::adjacent_find(begin, begin + m, [](const Counted &a, const Counted &b) { return a.value == b.value; }) ==
         begin + m;
}

// The first class with this value or a greater one.
int ValueClasses::firstFrom(int value) const {
  const Counted *begin = counted_.get();
  return static_cast<int>(
      std::lower_bound(begin, begin + m_, value, [](const Counted &a, int wanted) { return a.value < wanted; }) -
      begin);
}

int ValueClasses::find(int value) const {
  const int j = firstFrom(value);
  return j < m_ && counted_[j].value == value ? j : others();
}

bool ValueClasses::hasOthers(const CSint *v) const {
  if (m_ == 0 || v->min < counted_[0].value || v->max > counted_[m_ - 1].value) return true;
  int j = firstFrom(v->min);
  return !forEachValue(v, [&](int value) {
    while (counted_[j].value < value) ++j;
    return counted_[j].value == value;
  });
}

void ValueClasses::readEach(const CSint *v, std::uint64_t *classes) const {
  std::fill_n(classes, words(), 0);
  WordSet found(classes);
  for (int j = firstFrom(v->min); j < m_ && counted_[j].value <= v->max; ++j)
    if (contains(v, counted_[j].value)) found.set(j);
  if (hasOthers(v)) found.set(others());
}

// None of the others. Bounds first, so that they move once.
bool ValueClasses::keepCounted(CSint *v, const std::uint64_t *classes) const {
  if (consecutive_) return keepValues(v, first_, classes, words());
  int low = 0;
  while (low < m_ && !hasClass(classes, low)) ++low;
  if (low == m_) return false;
  int high = m_ - 1;
  while (!hasClass(classes, high)) --high;
  if (!narrowMin(v, counted_[low].value) || !narrowMax(v, counted_[high].value)) return false;
  return forEachValue(v, [&](int value) { return hasClass(classes, classOf(value)) || removeValue(v, value); });
}

bool ValueClasses::keep(CSint *v, const std::uint64_t *classes) const {
  if (!hasClass(classes, others())) return keepCounted(v, classes);
  for (int j = firstFrom(v->min); j < m_ && counted_[j].value <= v->max; ++j)
    if (!hasClass(classes, j) && !removeValue(v, counted_[j].value)) return false;
  return true;
}

}  // namespace koru::counting
