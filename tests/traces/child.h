// SPDX-License-Identifier: MIT
// Traces in processes of their own, with limits: whatever a trace does, it ends there and is named.
#pragma once

#include <functional>
#include <string>

#include "traces/machine.h"

namespace koru::traces {

// How a trace ended; empty when nothing is wrong. What stands in parentheses is different for each trace.
using Failure = std::string;
bool sameKind(const Failure &a, const Failure &b);

// What a child and its parent share.
struct Shared {
  Tally tally;
  std::uint64_t seed;  // of the trace that runs
  char failure[256];
};

Shared *makeShared();

class Child {
 public:
  // Forks; `body` runs in the child, which ends with it. `shared` must stay.
  Child(Shared &shared, const std::function<void()> &body);
  int pid() const { return pid_; }
  // What the status from waiting for it says.
  Failure judge(int status) const;

 private:
  std::string complaint() const;

  Shared &shared_;
  int output_;
  int pid_;
};

// In a child: run a trace within the time that one may take; does not return when it fails.
void runOne(const Trace &trace, const Settings &settings, Shared &shared);

Failure runInChild(const Trace &trace, const Settings &settings, Shared &shared);

}  // namespace koru::traces
