// SPDX-License-Identifier: MIT
// How a long run is getting on, on the standard error stream: one line that is written over and over again when that is
// a terminal, a line for each milestone when it is not.
#ifndef KORU_EXAMPLE_PROGRESS_H
#define KORU_EXAMPLE_PROGRESS_H

#include "example.h"

#include <stdarg.h>

// Show a state of affairs. What is no milestone is left out where lines cannot be written over.
#if defined(__GNUC__)
__attribute__((format(printf, 2, 3)))
#endif
static inline void
showProgress(bool milestone, const char *format, ...) {
  bool terminal = isTerminal(stderr);
  if (!terminal && !milestone) return;
  va_list arguments;
  va_start(arguments, format);
  if (terminal) fputs("\r\033[K", stderr);
  vfprintf(stderr, format, arguments);
  if (!terminal) fputc('\n', stderr);
  va_end(arguments);
  fflush(stderr);
}

// Leave the screen as it was.
static inline void clearProgress(void) {
  if (isTerminal(stderr)) fputs("\r\033[K", stderr);
}

#endif  // KORU_EXAMPLE_PROGRESS_H
