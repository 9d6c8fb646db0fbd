// SPDX-License-Identifier: MIT
// Numbers drawn for instances that a program makes up: the same for a seed on every machine.
#ifndef KORU_EXAMPLE_MADE_UP_H
#define KORU_EXAMPLE_MADE_UP_H

// From 0 to n - 1.
static inline int randomBelow(unsigned *state, int n) {
  *state = *state * 1664525u + 1013904223u;
  return (int)((unsigned long long)(*state >> 8) * (unsigned)n >> 24);
}

#endif  // KORU_EXAMPLE_MADE_UP_H
