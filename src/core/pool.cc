// SPDX-License-Identifier: MIT
#include "core/pool.h"

#include <algorithm>

#include "core/alloc.h"

namespace koru {

void Pool::give(void *record, std::size_t size) {
  if (record == nullptr) return;
  if (kChecked || size > kLargest) {
    --loose_;
    bytes_ -= size;
    return deallocate(record);
  }
  auto *freed = static_cast<FreeRecord *>(record);
  FreeRecord *&head = free_[(size + kUnit - 1) / kUnit];
  freed->next = head;
  head = freed;
}

void *Pool::takeLoose(std::size_t size) {
  void *record = allocate(size);
  if (record == nullptr) return nullptr;
  ++loose_;
  bytes_ += size;
  return record;
}

void *Pool::takeFromNextChunk(std::size_t size) { return addChunk() ? cut(size) : nullptr; }

std::size_t Pool::nextChunk() const {
  if (bytes_ < kMany) return std::clamp(bytes_ / 2 / kUnit * kUnit, kFirstChunk, kLargestChunk);
  return std::min(bytes_ / 8 / kUnit * kUnit, kLargestOfMany);
}

bool Pool::addChunk() {
  const std::size_t size = nextChunk();
  auto *chunk = static_cast<Chunk *>(allocate(size));
  if (chunk == nullptr) return false;
  if (bytes_ >= kMany) askForLargePages(chunk, size);
  chunk->previous = chunks_;
  chunks_ = chunk;
  bytes_ += size;
  next_ = reinterpret_cast<char *>(chunk + 1);
  end_ = reinterpret_cast<char *>(chunk) + size;
  return true;
}

void Pool::destroy() {
  while (chunks_ != nullptr) {
    Chunk *previous = chunks_->previous;
    deallocate(chunks_);
    chunks_ = previous;
  }
  *this = Pool{};
}

std::size_t Pool::bytes() const { return bytes_; }

}  // namespace koru
