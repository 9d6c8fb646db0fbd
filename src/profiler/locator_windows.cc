// SPDX-License-Identifier: MIT
// Places on Windows: file, line and function from dbghelp.dll, which is loaded at the first look; where it is missing
// or does not work, every place is unknown.
//
// dbghelp knows the modules that were loaded when a session with it began. A new one begins when an address is in a
// module that the present one has not heard of, and whenever modules have been unloaded. cs_end ends the session and
// closes the process handle, dbghelp.dll and the subscription to unloads, so that a host can unload this library.
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
// dbghelp.h needs what windows.h declares.
// clang-format off
#include <windows.h>
#include <dbghelp.h>
// clang-format on

#include <atomic>
#include <ctime>

#include "profiler/platform.h"

namespace koru::platform {

#ifdef _WIN64
const char kReportHead[] = "platform: windows\narch: x86_64\n";
#else
const char kReportHead[] = "platform: windows\narch: i386\n";
#endif

namespace {

HMODULE moduleOf(const void *address) {
  constexpr DWORD kFlags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  HMODULE module = nullptr;
  return GetModuleHandleExA(kFlags, static_cast<const char *>(address), &module) != 0 ? module : nullptr;
}

// False when the function is missing.
template <class Function>
bool fetch(HMODULE module, const char *name, Function &function) {
  function = reinterpret_cast<Function>(reinterpret_cast<void *>(GetProcAddress(module, name)));
  return function != nullptr;
}

// Told by the loader, in whichever thread unloads something, between start and stop.
class UnloadCounter {
 public:
  constexpr UnloadCounter() = default;
  UnloadCounter(const UnloadCounter &) = delete;
  UnloadCounter &operator=(const UnloadCounter &) = delete;
  ~UnloadCounter() { stop(); }

  void start() {
    LONG(NTAPI * subscribe)(ULONG, void(CALLBACK *)(ULONG, const void *, void *), void *, void **);
    if (cookie_ == nullptr && fetch(GetModuleHandleA("ntdll.dll"), "LdrRegisterDllNotification", subscribe))
      subscribe(0, hear, this, &cookie_);
  }
  void stop() {
    LONG(NTAPI * unsubscribe)(void *);
    if (cookie_ != nullptr && fetch(GetModuleHandleA("ntdll.dll"), "LdrUnregisterDllNotification", unsubscribe))
      unsubscribe(cookie_);
    cookie_ = nullptr;
  }
  std::uint32_t count() const { return count_; }

 private:
  static void CALLBACK hear(ULONG reason, const void *, void *counter) {
    constexpr ULONG kUnloaded = 2;
    if (reason == kUnloaded) ++static_cast<UnloadCounter *>(counter)->count_;
  }

  std::atomic<std::uint32_t> count_{0};
  void *cookie_ = nullptr;
};

constinit UnloadCounter unloadCounter;

struct Symbol {
  static constexpr ULONG kLongestName = 2048;
  SYMBOL_INFO info;
  char rest[kLongestName];  // the name begins in info
};

// A process handle of its own keeps the session apart from those of others that use dbghelp.
class DebugHelp {
 public:
  // False when there is none, nor will be one before it is closed.
  bool isReady() {
    if (state_ == State::kNew) state_ = open() ? State::kReady : State::kBroken;
    if (state_ == State::kReady && seenUnloads_ != unloadCounter.count()) beginAgain();
    return state_ == State::kReady;
  }

  bool findModule(DWORD64 address, IMAGEHLP_MODULE64 &module) {
    module.SizeOfStruct = sizeof module;
    if (getModule_(process_, address, &module) != 0) return true;
    beginAgain();
    return state_ == State::kReady && getModule_(process_, address, &module) != 0;
  }

  void findLine(DWORD64 address, Place &place) const {
    static IMAGEHLP_LINE64 line;
    DWORD distance = 0;
    line.SizeOfStruct = sizeof line;
    if (getLine_(process_, address, &distance, &line) == 0) return;
    place.file = line.FileName;
    place.line = static_cast<int>(line.LineNumber);
  }

  void findFunction(DWORD64 address, Place &place) const {
    static Symbol symbol;
    DWORD64 distance = 0;
    symbol.info.SizeOfStruct = sizeof symbol.info;
    symbol.info.MaxNameLen = Symbol::kLongestName;
    if (getSymbol_(process_, address, &distance, &symbol.info) != 0) place.function = symbol.info.Name;
  }

  // The texts of places that were found are gone with it.
  void close() {
    if (state_ == State::kReady) cleanUp_(process_);
    if (process_ != nullptr) CloseHandle(process_);
    if (library_ != nullptr) FreeLibrary(library_);
    *this = DebugHelp{};
  }

 private:
  enum class State { kNew, kReady, kBroken };

  bool open() {
    library_ = LoadLibraryExA("dbghelp.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (library_ == nullptr || !fetchAll(library_)) return false;
    process_ = OpenProcess(PROCESS_ALL_ACCESS, FALSE, GetCurrentProcessId());
    return process_ != nullptr && begin();
  }

  bool fetchAll(HMODULE library) {
    return fetch(library, "SymSetOptions", setOptions_) && fetch(library, "SymInitialize", initialize_) &&
           fetch(library, "SymCleanup", cleanUp_) && fetch(library, "SymGetModuleInfo64", getModule_) &&
           fetch(library, "SymGetLineFromAddr64", getLine_) && fetch(library, "SymFromAddr", getSymbol_);
  }

  bool begin() {
    unloadCounter.start();
    seenUnloads_ = unloadCounter.count();
    setOptions_(SYMOPT_DEFERRED_LOADS | SYMOPT_LOAD_LINES);
    return initialize_(process_, nullptr, TRUE) != 0;
  }

  void beginAgain() {
    cleanUp_(process_);
    state_ = begin() ? State::kReady : State::kBroken;
  }

  State state_ = State::kNew;
  std::uint32_t seenUnloads_ = 0;
  HMODULE library_ = nullptr;
  HANDLE process_ = nullptr;
  decltype(&SymSetOptions) setOptions_ = nullptr;
  decltype(&SymInitialize) initialize_ = nullptr;
  decltype(&SymCleanup) cleanUp_ = nullptr;
  decltype(&SymGetModuleInfo64) getModule_ = nullptr;
  decltype(&SymGetLineFromAddr64) getLine_ = nullptr;
  decltype(&SymFromAddr) getSymbol_ = nullptr;
};

constinit DebugHelp debugHelp;

}  // namespace

bool find(const void *returnAddress, Place &place) {
  static IMAGEHLP_MODULE64 module;
  place.address = callBefore(returnAddress);
  const auto address = static_cast<DWORD64>(reinterpret_cast<std::uintptr_t>(place.address));
  if (moduleOf(place.address) == nullptr || !debugHelp.isReady() || !debugHelp.findModule(address, module))
    return false;
  place.file = module.ModuleName;
  debugHelp.findLine(address, place);
  debugHelp.findFunction(address, place);
  return true;
}

void close() {
  debugHelp.close();
  unloadCounter.stop();
}

std::int64_t now() { return _time64(nullptr); }

std::uint64_t unloads() { return unloadCounter.count(); }

const void *firstOutside(const void *returnAddress) {
  constexpr DWORD kFrames = 62;  // as many as the oldest versions allow
  const HMODULE own = moduleOf(kReportHead);
  if (!kOwnModule || moduleOf(returnAddress) != own) return returnAddress;
  void *frames[kFrames];
  const int count = RtlCaptureStackBackTrace(0, kFrames, frames, nullptr);
  for (int i = 0; i < count; ++i)
    if (moduleOf(frames[i]) != own) return frames[i];
  return nullptr;
}

}  // namespace koru::platform
