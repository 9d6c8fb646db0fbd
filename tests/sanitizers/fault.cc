// SPDX-License-Identifier: MIT
// Commits the fault that it is told to, so that a test sees whether the sanitizers of this build notice.
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "koru.h"

namespace {

// The library reads a value more than the host's array has.
void readTooFar() {
  cs_init();
  auto *values = static_cast<int *>(std::calloc(3, sizeof(int)));
  cs_Element(cs_createCSint(0, 9), values, 4);
  std::free(values);
  cs_end();
}

void leak() {
  static void *volatile memory;
  memory = std::malloc(100);
  memory = nullptr;
}

void overflow() {
  volatile int large = INT_MAX;
  std::printf("%d\n", large + 1);
}

}  // namespace

int main(int argc, char **argv) {
  const char *fault = argc == 2 ? argv[1] : "";
  if (std::strcmp(fault, "read_too_far") == 0) readTooFar();
  if (std::strcmp(fault, "leak") == 0) leak();
  if (std::strcmp(fault, "overflow") == 0) overflow();
  return 0;
}
