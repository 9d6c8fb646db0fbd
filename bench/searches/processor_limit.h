// SPDX-License-Identifier: MIT
// Stops a search after some processor time, however little of the machine it gets.
#pragma once

#include <sys/time.h>

#include <csignal>

#include "koru_extras.h"

namespace koru::bench::searches {

class ProcessorLimit {
 public:
  ProcessorLimit(CSsearch *search, double seconds) {
    limited_ = search;
    std::signal(SIGPROF, [](int) { cs_stopSearch(limited_); });
    set(seconds);
  }
  ProcessorLimit(const ProcessorLimit &) = delete;
  ProcessorLimit &operator=(const ProcessorLimit &) = delete;
  ~ProcessorLimit() {
    set(0);
    limited_ = nullptr;
  }

 private:
  static void set(double seconds) {
    itimerval timer{};
    timer.it_value.tv_sec = static_cast<time_t>(seconds);
    timer.it_value.tv_usec = static_cast<suseconds_t>((seconds - static_cast<double>(timer.it_value.tv_sec)) * 1e6);
    setitimer(ITIMER_PROF, &timer, nullptr);
  }

  static inline CSsearch *volatile limited_ = nullptr;
};

}  // namespace koru::bench::searches
