// SPDX-License-Identifier: MIT
#include "constraints/counting/bin_sums.h"

#include <algorithm>
#include <bit>

namespace koru::counting {

constexpr std::int64_t kMostSums = 1 << 13;

BinSums::BinSums(int items, std::int64_t sums)
    : most_(wordsFor(static_cast<int>(std::clamp<std::int64_t>(sums, 1, kMostSums)))) {
  const auto words = static_cast<unsigned>(most_);
  if (make(goals_, words)) rows_ = Buffer<std::uint64_t>((static_cast<unsigned>(items) + std::uint64_t{1}) * words);
}

void BinSums::start(std::int64_t highest) {
  words_ = wordsFor(static_cast<int>(highest) + 1);
  items_ = 0;
  std::fill_n(row(0), words_, 0);
  row(0)[0] = 1;
}

// Word k of the sums when each is raised by a size.
std::uint64_t BinSums::raised(const std::uint64_t *row, int k, int size) const {
  const int from = k - size / kWordBits;
  const int shift = size % kWordBits;
  if (from < 0) return 0;
  return row[from] << shift | (shift > 0 && from > 0 ? row[from - 1] >> (kWordBits - shift) : 0);
}

std::uint64_t BinSums::lowered(const std::uint64_t *row, int k, int size) const {
  const int from = k + size / kWordBits;
  const int shift = size % kWordBits;
  if (from >= words_) return 0;
  return row[from] >> shift | (shift > 0 && from + 1 < words_ ? row[from + 1] << (kWordBits - shift) : 0);
}

void BinSums::add(int size) {
  const std::uint64_t *before = row(items_++);
  std::uint64_t *now = row(items_);
  for (int k = 0; k < words_; ++k) now[k] = before[k] | raised(before, k, size);
}

bool BinSums::meet(const CSint *v, std::int64_t base) {
  std::uint64_t any = 0;
  for (int k = 0; k < words_; ++k)
    any |= goals_[k] = row(items_)[k] & domainWord(v, base + std::int64_t{k} * kWordBits);
  return any != 0;
}

int BinSums::least() const {
  int k = 0;
  while (goals_[k] == 0) ++k;
  return k * kWordBits + std::countr_zero(goals_[k]);
}

int BinSums::greatest() const {
  int k = words_ - 1;
  while (goals_[k] == 0) --k;
  return k * kWordBits + kWordBits - 1 - std::countl_zero(goals_[k]);
}

// Upwards, so that a word is read before it is written.
BinSums::Use BinSums::takeBack(int size) {
  const std::uint64_t *before = row(--items_);
  std::uint64_t with = 0;
  std::uint64_t without = 0;
  for (int k = 0; k < words_; ++k) {
    with |= raised(before, k, size) & goals_[k];
    without |= before[k] & goals_[k];
  }
  for (int k = 0; k < words_; ++k) goals_[k] |= lowered(goals_.get(), k, size);
  return {with != 0, without != 0};
}

}  // namespace koru::counting
