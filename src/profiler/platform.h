// SPDX-License-Identifier: MIT
// What the profiler and its built-in locator ask of the platform. One of locator_linux.cc, locator_windows.cc and
// locator_generic.cc is compiled.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

namespace koru::platform {

// The static library is part of the host's own module.
#ifdef KORU_BUILDING
inline constexpr bool kOwnModule = true;
#else
inline constexpr bool kOwnModule = false;
#endif

struct FreeText {
  void operator()(char *text) const { std::free(text); }
};

// The texts are good until the next look-up.
struct Place {
  const char *file = nullptr;
  int line = 0;
  const void *address = nullptr;
  const char *function = nullptr;
  std::unique_ptr<char, FreeText> ownText{};  // for a platform that makes one of the texts
};

// The lines of a report's head on the platform, while the built-in locator is installed.
extern const char kReportHead[];

// Where the call is that returns to the address; false when not even its module can be found.
bool find(const void *returnAddress, Place &place);

// An address that belongs to the call itself, also when the call ends a function.
inline const void *callBefore(const void *returnAddress) {
  return reinterpret_cast<const void *>(reinterpret_cast<std::uintptr_t>(returnAddress) - 1);
}

// Closes what look-ups have opened; the next one opens it again.
void close();

// The time in seconds, 64 bits of it also where the C library's time is narrower.
std::int64_t now();

// How often modules have been unloaded: an address may mean something else afterwards.
std::uint64_t unloads();

// The first address on the stack that does not belong to this library, null when it is too far away. Without a library
// of its own, linked statically into the program, the address given.
const void *firstOutside(const void *returnAddress);

}  // namespace koru::platform
