// SPDX-License-Identifier: MIT
// The time that a search has spent: monotonic, running only while it works.
#pragma once

#include <chrono>

namespace koru::solve {

class Clock {
 public:
  void pause() {
    before_ = seconds();
    running_ = false;
  }
  void resume() {
    started_ = Steady::now();
    running_ = true;
  }
  double seconds() const {
    return running_ ? before_ + std::chrono::duration<double>(Steady::now() - started_).count() : before_;
  }

 private:
  using Steady = std::chrono::steady_clock;
  Steady::time_point started_{};
  double before_ = 0;
  bool running_ = false;
};

}  // namespace koru::solve
