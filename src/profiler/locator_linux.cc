// SPDX-License-Identifier: MIT
// Places on Linux: file, line and function from the program's debug information, read by libbacktrace where the library
// was built with it; else the module, and the function if its symbol is there.
//
// libbacktrace looks at the modules that are loaded when it is first asked. It is asked afresh when an address is in
// none of those and modules have been loaded since, and whenever modules have been unloaded.
#include <dlfcn.h>
#include <link.h>
#include <unwind.h>

#include <ctime>

#include "core/state.h"
#include "profiler/platform.h"

#if KORU_HAS_BACKTRACE
#include <backtrace.h>
#include <cxxabi.h>
#endif

namespace koru::platform {

const char kReportHead[] = "platform: generic\n";

namespace {

struct Modules {
  std::uint64_t loads = 0;
  std::uint64_t unloads = 0;
};

// Counted by the dynamic linker since the program's start.
Modules countModules() {
  Modules modules;
  const auto look = [](dl_phdr_info *info, std::size_t, void *found) {
    *static_cast<Modules *>(found) = {info->dlpi_adds, info->dlpi_subs};
    return 1;
  };
  dl_iterate_phdr(look, &modules);
  return modules;
}

#if KORU_HAS_BACKTRACE

void ignoreError(void *, const char *, int) {}  // GCOVR_EXCL_LINE: for damaged files

// The innermost function comes first, also when it was inlined into another; no more are wanted.
int takeLine(void *argument, std::uintptr_t, const char *file, int line, const char *function) {
  auto *place = static_cast<Place *>(argument);
  place->file = file;
  place->line = file != nullptr ? line : 0;
  place->function = function;
  return 1;
}

void takeSymbol(void *argument, std::uintptr_t, const char *name, std::uintptr_t, std::uintptr_t) {
  static_cast<Place *>(argument)->function = name;
}

// What has been read of the modules stays with libbacktrace; it has no way of giving that back.
struct DebugInformation {
  backtrace_state *state = nullptr;
  Modules seen;

  void read(const Modules &now) {
    seen = now;
    state = backtrace_create_state(nullptr, 0, ignoreError, nullptr);
  }

  void look(std::uintptr_t address, Place &place) const {
    if (state == nullptr) return;
    backtrace_pcinfo(state, address, takeLine, ignoreError, &place);
    if (place.function == nullptr) backtrace_syminfo(state, address, takeSymbol, ignoreError, &place);
  }
};

KORU_STATE DebugInformation debugInformation;

void findLine(std::uintptr_t address, Place &place) {
  const Modules now = countModules();
  if (debugInformation.state == nullptr || debugInformation.seen.unloads != now.unloads) debugInformation.read(now);
  debugInformation.look(address, place);
  if (place.function == nullptr && debugInformation.seen.loads != now.loads) {
    debugInformation.read(now);
    debugInformation.look(address, place);
  }
  if (place.function == nullptr) return;
  place.ownText.reset(abi::__cxa_demangle(place.function, nullptr, nullptr, nullptr));
  if (place.ownText != nullptr) place.function = place.ownText.get();
}

#else

void findLine(std::uintptr_t, Place &) {}

#endif

const void *moduleOf(const void *address) {
  Dl_info info;
  return dladdr(address, &info) != 0 ? info.dli_fbase : nullptr;
}

struct Walk {
  static constexpr int kFrames = 64;
  const void *own;
  int left = kFrames;
  const void *found = nullptr;
};

_Unwind_Reason_Code visitFrame(_Unwind_Context *context, void *argument) {
  auto *walk = static_cast<Walk *>(argument);
  const auto *address = reinterpret_cast<const void *>(_Unwind_GetIP(context));
  if (moduleOf(address) != walk->own) walk->found = address;
  return walk->found != nullptr || --walk->left == 0 ? _URC_END_OF_STACK : _URC_NO_REASON;
}

}  // namespace

bool find(const void *returnAddress, Place &place) {
  place.address = callBefore(returnAddress);
  Dl_info module;
  if (dladdr(place.address, &module) == 0) return false;
  findLine(reinterpret_cast<std::uintptr_t>(place.address), place);
  if (place.file == nullptr) place.file = module.dli_fname;
  if (place.function == nullptr) place.function = module.dli_sname;
  return place.file != nullptr;
}

// Nothing that can be closed: what has been read of the modules stays.
void close() {}

// 32-bit code is compiled for it; see cmake/KoruTarget.cmake.
std::int64_t now() {
  static_assert(sizeof(std::time_t) == sizeof(std::int64_t));
  return std::time(nullptr);
}

std::uint64_t unloads() { return countModules().unloads; }

const void *firstOutside(const void *returnAddress) {
  Walk walk{moduleOf(kReportHead)};
  if (!kOwnModule || moduleOf(returnAddress) != walk.own) return returnAddress;
  _Unwind_Backtrace(visitFrame, &walk);
  return walk.found;
}

}  // namespace koru::platform
