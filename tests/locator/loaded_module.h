// SPDX-License-Identifier: MIT
// A shared library that a test loads and unloads.
#pragma once

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace koru::test {

#ifdef _WIN32
inline void *openModule(const char *path) { return LoadLibraryA(path); }
inline void closeModule(void *module) { FreeLibrary(static_cast<HMODULE>(module)); }
inline void *symbolOf(void *module, const char *name) {
  return reinterpret_cast<void *>(GetProcAddress(static_cast<HMODULE>(module), name));
}
#else
inline void *openModule(const char *path) { return dlopen(path, RTLD_NOW | RTLD_LOCAL); }
inline void closeModule(void *module) { dlclose(module); }
inline void *symbolOf(void *module, const char *name) { return dlsym(module, name); }
#endif

}  // namespace koru::test
