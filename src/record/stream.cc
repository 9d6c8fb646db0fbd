// SPDX-License-Identifier: MIT
#include "record/stream.h"

#include <cstring>

namespace koru::record {

bool Stream::open(const char *path) {
  close();
  file_ = std::fopen(path, "wb");
  if (file_ != nullptr) std::fputs(kMagic, file_);
  return file_ != nullptr;
}

void Stream::close() {
  if (file_ != nullptr) std::fclose(file_);
  file_ = nullptr;
}

void Stream::number(std::uint64_t n) const {
  for (; n >= 128; n >>= 7) byte(static_cast<int>(n & 127) | 128);
  byte(static_cast<int>(n));
}

void Stream::small(int code, std::uint64_t n) const {
  if (n < kSmall) return byte(code + static_cast<int>(n));
  byte(code + kSmall);
  number(n - kSmall);
}

void Stream::text(const char *text) const {
  const std::size_t length = std::strlen(text);
  number(length);
  std::fwrite(text, 1, length, file_);
}

}  // namespace koru::record
