// SPDX-License-Identifier: MIT
#include "core/domain_words.h"

#include <algorithm>
#include <bit>

#include "core/bit_scan.h"
#include "core/narrow.h"

namespace koru {

namespace {

struct Kept {
  std::int64_t first;
  const std::uint64_t *words;
  int begin;  // the words that v's bounds lie in
  int end;

  std::uint64_t good(const CSint *v, int k) const { return domainWord(v, start(k)) & words[k]; }
  std::int64_t start(int k) const { return first + std::int64_t{k} * kWordBits; }
};

int wordOf(std::int64_t distance, int count) {
  return static_cast<int>(std::clamp<std::int64_t>(distance, -1, std::int64_t{count} * kWordBits) / kWordBits);
}

bool narrowBounds(CSint *v, const Kept &kept) {
  int low = kept.begin;
  while (low < kept.end && kept.good(v, low) == 0) ++low;
  if (low == kept.end) return false;
  int high = kept.end - 1;
  while (kept.good(v, high) == 0) --high;
  const std::int64_t min = kept.start(low) + std::countr_zero(kept.good(v, low));
  const std::int64_t max = kept.start(high) + 63 - std::countl_zero(kept.good(v, high));
  return narrowMin64(v, min) && narrowMax64(v, max);
}

bool removeOthers(CSint *v, const Kept &kept, int k) {
  return forEachBit(0, domainWord(v, kept.start(k)) & ~kept.words[k],
                    [&](int i) { return removeValue(v, static_cast<int>(kept.start(k) + i)); });
}

}  // namespace

bool keepBits(CSint *v, std::int64_t first, std::uint64_t domain, std::uint64_t kept) {
  const int low = std::countr_zero(kept);
  const int high = 63 - std::countl_zero(kept);
  if (!narrowMin64(v, first + low) || !narrowMax64(v, first + high)) return false;
  const std::uint64_t within = ~std::uint64_t{0} << low & ~std::uint64_t{0} >> (63 - high);
  for (std::uint64_t bad = domain & ~kept & within; bad != 0; bad &= bad - 1)
    if (!removeValue(v, static_cast<int>(first + std::countr_zero(bad)))) return false;
  return true;
}

bool keepValues(CSint *v, std::int64_t first, const std::uint64_t *words, int count) {
  const Kept kept{first, words, wordOf(v->min - first, count), std::min(wordOf(v->max - first, count) + 1, count)};
  if (!narrowBounds(v, kept)) return false;
  for (int k = wordOf(v->min - first, count); k < kept.end; ++k)
    if (!removeOthers(v, kept, k)) return false;
  return true;
}

}  // namespace koru
