// SPDX-License-Identifier: MIT
// Runs of a host's model, each in a solver of its own, with some of its postings left out.
#pragma once

#include "core/errors.h"
#include "explain/calls.h"
#include "koru_extras.h"

namespace koru::explain {

enum class Answer { kNone, kSolution, kUnknown, kStop, kMemory };

class Runs {
 public:
  // The error handlers are installed for each run. While it lives, the host's postings are looked at.
  Runs(CSmodel model, void *extra, const Errors &handlers);
  Runs(const Runs &) = delete;
  Runs &operator=(const Runs &) = delete;
  ~Runs();

  // A run that records the postings before the first one that is refused; all are made, or all left out.
  Answer record(bool leaveOut);
  // A run in which the recorded calls are made that are `on`, and others if `othersToo`.
  Answer run(const bool *on, bool othersToo);
  // A run in which all are made.
  Answer runAll();

  const Calls &calls() const { return calls_; }
  int count() const { return count_; }  // of runs

 private:
  enum class What { kMakeAll, kRecord, kChoose };

  static bool leavesOut(void *self, const Poster &poster);
  bool leavesOut(const Poster &poster);
  Answer go(What what);
  Answer ask() const;

  CSmodel model_;
  void *extra_;
  const Errors &handlers_;
  Calls calls_;
  What what_ = What::kMakeAll;
  bool leaveOut_ = false;
  bool othersToo_ = false;
  const bool *on_ = nullptr;
  bool memory_ = false;  // exhausted while a call was recorded
  int count_ = 0;
};

}  // namespace koru::explain
