// SPDX-License-Identifier: MIT
// The solver: all mutable state of the core in one struct, and the one instance there is.
#pragma once

#include "core/block_stack.h"
#include "core/check.h"
#include "core/constraint.h"
#include "core/context.h"
#include "core/errors.h"
#include "core/pool.h"
#include "core/ports.h"
#include "core/queue.h"
#include "core/site.h"
#include "core/trail.h"
#include "core/variable.h"

namespace koru {

struct Solver {
  Queue queue;
  Trail trail;
  BlockStack<ContextMark> contexts;
  std::uint64_t contextSerial = 0;
  BlockStack<EventRecord> events;
  BlockStack<CSint> variables;  // the only owner of variables that the host sees
  Ports ports;
  Entry *graveyard = nullptr;  // entries detached while handlers run
  SiteTable sites;
  Site *userSite = nullptr;  // of the user-defined constraint whose callback is running
  Errors errors;
  Pool pool;
  int ownersAlive = 0;  // constraints whose record has something to destroy
  bool initialised = false;
  check::State checked;
};

extern constinit Solver solver;

// A change made now waits for the propagation that runs; otherwise it is propagated before the call returns.
inline bool changesWait() { return solver.queue.depth > solver.queue.limit; }

}  // namespace koru
