// SPDX-License-Identifier: MIT
// A trace of the engine on the standard error stream, for builds with KORU_LOGGING. There are five places that log: the
// four narrowing operations and the handler call.
#pragma once

#include <cstdio>

#include "core/queue.h"

namespace koru {

inline void logChange(const char *what, CSint *v, int value) { cs_fprintf(stderr, "%s %d: %T\n", what, value, v); }

inline void logCall(const EventRecord &event, const Entry &entry) {
  cs_fprintf(stderr, "  wake %s for event %d (%d): %T\n", entry.constraint->site->name(), static_cast<int>(event.code),
             event.value, event.variable);
}

}  // namespace koru
