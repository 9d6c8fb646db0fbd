// SPDX-License-Identifier: MIT
// Names for files that exist while a test runs.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <string>

namespace koru::test {

// A name that no other call, in this process or in another one, is given.
inline std::filesystem::path temporaryPath() {
  static int count = 0;
  return std::filesystem::temp_directory_path() /
         ("koru_test_" + std::to_string(getpid()) + "_" + std::to_string(++count));
}

}  // namespace koru::test
