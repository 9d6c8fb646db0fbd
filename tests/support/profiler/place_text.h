// SPDX-License-Identifier: MIT
// How the built-in locator writes the path of a source file, what addresses begin with, and what a report's head says
// of the platform.
#pragma once

#include <algorithm>
#include <string>

namespace koru::test {

#ifdef _WIN32
// Drive Z is where wine shows the machine's own files.
inline std::string fileInPlace(std::string path) {
  std::replace(path.begin(), path.end(), '/', '\\');
  return "Z:" + path;
}
inline constexpr char kAddressStart[] = "00";
#ifdef _WIN64
inline constexpr char kPlatformLines[] = "platform: windows\narch: x86_64\n";
#else
inline constexpr char kPlatformLines[] = "platform: windows\narch: i386\n";
#endif
#else
inline std::string fileInPlace(std::string path) { return path; }
inline constexpr char kAddressStart[] = "0x";
inline constexpr char kPlatformLines[] = "platform: generic\n";
#endif

}  // namespace koru::test
