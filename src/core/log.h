// SPDX-License-Identifier: MIT
// A trace of the engine on the standard error stream, for builds with KORU_LOGGING (the preset "logging"): a line for
// each change of a domain as it is asked for, and an indented one for each call of a handler.
//
//   raise minimum of x {0..9} to 3
//     cs_Le hears newMin 3 of x {3..9}
//   raise minimum of #1 {0..9} to 3
//
// A variable without a name shows its number in the order of creation, looked for among all of them, and "private" when
// it belongs to a constraint. There are five places that log: the four narrowing operations and the handler call.
#pragma once

#include <cstdio>

#include "core/constraint.h"
#include "core/variable.h"

namespace koru {

inline const char *eventName(EventCode code) {
  constexpr const char *kNames[kEventCodes] = {"newMin", "newMax", "minBound", "maxBound", "bound", "removed"};
  return kNames[code];
}

// "x {0..9}"
inline void logVariable(CSint *v) {
  int number = 0;
  int position = -1;
  solver::variables.forEach([&](CSint &each) {
    if (&each == v) position = number;
    ++number;
  });
  if (v->name != nullptr) {
    std::fputs(v->name, stderr);
  } else if (position >= 0) {
    std::fprintf(stderr, "#%d", position);
  } else {
    std::fputs("private", stderr);
  }
  cs_fprintf(stderr, " %D", v);
}

inline void logChange(const char *what, CSint *v, const char *preposition, int value) {
  std::fprintf(stderr, "%s ", what);
  logVariable(v);
  std::fprintf(stderr, " %s %d\n", preposition, value);
}

inline void logCall(const Entry &entry, CSint *v, EventCode code, int value) {
  std::fprintf(stderr, "  %s hears %s %d of ", entry.constraint->site->name(), eventName(code), value);
  logVariable(v);
  std::fputc('\n', stderr);
}

}  // namespace koru
