// SPDX-License-Identifier: MIT
#include "core/domain_bits.h"

#include <bit>
#include <cstring>

#include "core/pool.h"

namespace koru {

std::size_t DomainBits::sizeOf(int low, int high) {
  const std::uint64_t wordCount = std::uint64_t{distance(low, high)} / 64 + 1;
  return static_cast<std::size_t>(sizeof(DomainBits) + wordCount * sizeof(std::uint64_t));
}

DomainBits *DomainBits::create(int low, int high, Fill fill) {
  const std::size_t size = sizeOf(low, high);
  auto *bits = static_cast<DomainBits *>(solver::pool.take(size));
  if (bits == nullptr) return nullptr;
  bits->low = low;
  bits->high = high;
  std::memset(bits->words(), static_cast<unsigned char>(fill), size - sizeof(DomainBits));
  return bits;
}

void DomainBits::destroy(DomainBits *bits) {
  if (bits != nullptr) solver::pool.give(bits, sizeOf(bits->low, bits->high));
}

namespace {

constexpr std::uint64_t kOnes = ~std::uint64_t{0};
constexpr std::uint64_t fromBit(std::uint32_t bit) { return kOnes << (bit % 64); }
constexpr std::uint64_t upToBit(std::uint32_t bit) { return kOnes >> (63 - bit % 64); }

std::int64_t count(const std::uint64_t *words, std::uint32_t first, std::uint32_t last) {
  std::uint32_t word = first / 64;
  const std::uint32_t lastWord = last / 64;
  if (word == lastWord) return countOnes(words[word] & fromBit(first) & upToBit(last));
  std::int64_t count = countOnes(words[word] & fromBit(first));
  while (++word != lastWord) count += countOnes(words[word]);
  return count + countOnes(words[word] & upToBit(last));
}

}  // namespace

std::int64_t countPresent(const DomainBits *bits, int a, int b) {
  if (bits == nullptr) return b < a ? 0 : std::int64_t{b} - a + 1;
  if (a < bits->low) a = bits->low;
  if (b > bits->high) b = bits->high;
  if (b < a) return 0;
  return count(bits->words(), bits->offset(a), bits->offset(b));
}

int nextPresent(const DomainBits *bits, int x) {
  if (bits == nullptr || x < bits->low || x >= bits->high) return wrapAdd(x, 1);
  const std::uint64_t *words = bits->words();
  const std::uint32_t first = bits->offset(x) + 1;
  const std::uint32_t last = bits->offset(bits->high);
  std::uint64_t present = words[first / 64] & fromBit(first);
  for (std::uint32_t word = first / 64;; present = words[++word]) {
    if (word == last / 64) present &= upToBit(last);
    if (present != 0) return wrap(std::int64_t{bits->low} + word * std::int64_t{64} + std::countr_zero(present));
    if (word == last / 64) return x + 1;
  }
}

int previousPresent(const DomainBits *bits, int x) {
  if (bits == nullptr || x <= bits->low || x > bits->high) return wrapSub(x, 1);
  const std::uint64_t *words = bits->words();
  const std::uint32_t last = bits->offset(x) - 1;
  std::uint64_t present = words[last / 64] & upToBit(last);
  for (std::uint32_t word = last / 64;; present = words[--word]) {
    if (present != 0) return wrap(std::int64_t{bits->low} + word * std::int64_t{64} + 63 - std::countl_zero(present));
    if (word == 0) return x - 1;
  }
}

}  // namespace koru
