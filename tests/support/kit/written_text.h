// SPDX-License-Identifier: MIT
// Streams to write to, and what was written to them.
#pragma once

#include <cstdio>
#include <string>

#include "support/kit/temporary_path.h"

namespace koru::test {

// A file of bytes that is gone when it is closed. Windows would make that of tmpfile in the drive's root, where only
// administrators may write.
inline std::FILE *temporaryFile() {
#ifdef _WIN32
  return std::fopen(temporaryPath().string().c_str(), "w+bD");
#else
  return std::tmpfile();
#endif
}

// What `write`, called with a stream, writes there.
template <class Write>
std::string textOf(Write write) {
  std::FILE *file = temporaryFile();
  write(file);
  std::rewind(file);
  std::string text;
  for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file)) text += static_cast<char>(c);
  std::fclose(file);
  return text;
}

}  // namespace koru::test
