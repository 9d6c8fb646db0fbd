// SPDX-License-Identifier: MIT
// Takes the place of the C library's malloc, in this program and in the libraries that it loads, and passes on.
#include "heap.h"

#include <malloc.h>

#include <algorithm>
#include <cstddef>

extern "C" {
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *block, std::size_t size);
void __libc_free(void *block);
}

namespace {

bool counting = false;
long long current = 0;
long long peak = 0;

void *taken(void *block) {
  if (counting && block != nullptr) {
    current += static_cast<long long>(malloc_usable_size(block));
    peak = std::max(peak, current);
  }
  return block;
}

void given(void *block) {
  if (counting && block != nullptr) current -= static_cast<long long>(malloc_usable_size(block));
}

}  // namespace

extern "C" {
void *malloc(std::size_t size) { return taken(__libc_malloc(size)); }
void *calloc(std::size_t count, std::size_t size) { return taken(__libc_calloc(count, size)); }
void *realloc(void *block, std::size_t size) {
  given(block);
  return taken(__libc_realloc(block, size));
}
void free(void *block) {
  given(block);
  __libc_free(block);
}
}

namespace koru::bench {

PeakHeap::PeakHeap() {
  current = peak = 0;
  counting = true;
}

PeakHeap::~PeakHeap() { counting = false; }

long long PeakHeap::bytes() const { return peak; }

}  // namespace koru::bench
