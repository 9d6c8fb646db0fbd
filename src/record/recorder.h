// SPDX-License-Identifier: MIT
// Writes down what it is told of searches.
#pragma once

#include <chrono>

#include "core/growing.h"
#include "core/ports.h"
#include "explain/places.h"
#include "record/stream.h"
#include "search/observer.h"

namespace koru::record {

class Recorder {
 public:
  Recorder() = default;
  Recorder(const Recorder &) = delete;
  Recorder &operator=(const Recorder &) = delete;
  ~Recorder() { stop(); }

  bool start(const char *path);  // false when the file cannot be made

 private:
  using Clock = std::chrono::steady_clock;

  // What is written of a level is the difference from the one that was at its depth before.
  struct Level {
    int variable;  // by number
    int first;     // value tried
    int last;
    bool tried;  // since it was entered
  };

  void begin(Engine engine);
  void run(RunKind kind);
  void enter(const CSint *v);
  void tried(const CSvalueSelection &decision, Tried how, bool consistent);
  void leave();
  void solution(bool accepted, const CSint *objective);
  void end(CSstatus status);
  void noteFailure(const Constraint *constraint);

  template <auto member, class... A>
  static void to(void *self, A... a) {
    (static_cast<Recorder *>(self)->*member)(a...);
  }

  void stop();
  void writeLeaves();
  void writeName(const CSint *v, int number);
  void writeBy();
  void writeTime();
  int numberOf(const CSint *v) const;
  bool inSearch() const { return roots_.count() > 0; }
  int base() const { return inSearch() ? roots_[roots_.count() - 1] : 0; }

  SearchObserver observer_{};
  Stream out_;
  Growing<Level> levels_;         // those that are open, and behind them what there was last
  Growing<int> roots_;            // of the searches under way: so many levels are below each
  Growing<unsigned char> named_;  // by variable number
  const CSint *first_ = nullptr;  // of the variables that have numbers
  explain::Places places_;
  int depth_ = 0;   // levels open
  int leaves_ = 0;  // not yet written
  int failed_ = 0;  // place of the failure since the last decision: its number from 1, 0 without one
  int by_ = 0;      // as the file has it
  unsigned untilTime_ = 0;
  Clock::time_point timeWritten_{};
};

}  // namespace koru::record
