// SPDX-License-Identifier: MIT
#include "minizinc/ranks.h"

#include <dlfcn.h>

#include <cstdlib>

namespace koru::fzn {

namespace {

bool wasLaunched() {
  for (const char *name : {"OMPI_COMM_WORLD_SIZE", "PMI_SIZE", "PMIX_RANK"})
    if (std::getenv(name) != nullptr) return true;
  return false;
}

bool isOneOfSeveral() {
  for (const char *name : {"OMPI_COMM_WORLD_SIZE", "PMI_SIZE"})
    if (const char *size = std::getenv(name)) return std::atoi(size) > 1;
  return false;
}

template <class Function>
Function *functionOf(void *library, const char *name) {
  return library != nullptr ? reinterpret_cast<Function *>(dlsym(library, name)) : nullptr;
}

}  // namespace

// Global, as the parts of an MPI that are loaded later look for it there.
bool join(Ranks &ranks, std::string &message) {
  if (!wasLaunched()) return true;
  void *library = dlopen(KORU_MPI_LIBRARY, RTLD_NOW | RTLD_GLOBAL);
  auto *const rank = functionOf<int()>(library, "cs_mpiRank");
  auto *const size = functionOf<int()>(library, "cs_mpiSize");
  auto *const solve = functionOf<CSstatus(CSsearch *, bool (*)(CSsearch *, void *), void *)>(library, "cs_mpiSolve");
  const bool found = rank != nullptr && size != nullptr && solve != nullptr;
  if (found && (size() > 1 || !isOneOfSeveral())) {
    ranks = {solve, rank()};
    return true;
  }
  message = std::string(KORU_MPI_LIBRARY) + (found ? " was built without MPI" : " is needed for several processes");
  return !isOneOfSeveral();
}

}  // namespace koru::fzn
