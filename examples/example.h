// SPDX-License-Identifier: MIT
// What the example programs share: exit statuses, starting the solver, time, and the state of the terminal.
// Include it first: it asks the system headers for clock_gettime, isatty and fileno.
#ifndef KORU_EXAMPLE_H
#define KORU_EXAMPLE_H

#ifndef _POSIX_C_SOURCE
#define _POSIX_C_SOURCE 200809L
#endif

#include <koru.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

enum { EXIT_AS_HOPED = 0, EXIT_OTHERWISE = 1, EXIT_TROUBLE = 2 };

// The memory handler. The default one aborts; a command-line program had better say what happened and leave.
static inline void outOfMemory(CSint *vint, void *program) {
  (void)vint;
  fprintf(stderr, "%s: out of memory\n", (const char *)program);
  exit(EXIT_TROUBLE);
}

// Start the solver for the program of that name. Handlers are installed after cs_init, which resets them.
static inline void startSolver(char *program) {
  cs_init();
  if (cs_getErr() == CS_ERR_MEMORY) outOfMemory(NULL, program);
  cs_setErrHandler(CS_ERR_MEMORY, outOfMemory, program);
}

// Seconds on a clock that nobody sets back.
static inline double secondsNow(void) {
  struct timespec now = {0, 0};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return (double)now.tv_sec + (double)now.tv_nsec * 1e-9;
}

// True when text written to stream may carry colours and the like.
static inline bool isTerminal(FILE *stream) { return isatty(fileno(stream)) != 0; }

static inline bool wantsColour(FILE *stream) {
  const char *noColour = getenv("NO_COLOR");
  return isTerminal(stream) && (noColour == NULL || noColour[0] == '\0');
}

// Flush standard output. A full disk or a closed pipe is trouble even when all went well before.
static inline int finish(const char *program, int status) {
  if (fflush(stdout) == 0 && !ferror(stdout)) return status;
  fprintf(stderr, "%s: cannot write the output\n", program);
  return EXIT_TROUBLE;
}

#endif  // KORU_EXAMPLE_H
