// SPDX-License-Identifier: MIT
// What is written on the standard output, and the end of a run: at a signal or at the time limit a thread of its own
// asks the search to stop, and where that takes too long writes the end itself.
#ifndef KORU_MINIZINC_REPORT_H
#define KORU_MINIZINC_REPORT_H

#include <koru_extras.h>

#include <atomic>
#include <mutex>
#include <string>
#include <thread>

#include "minizinc/options.h"
#include "minizinc/syntax.h"

namespace koru::fzn {

// How a run stands; what is written at the end follows from it.
enum class Outcome { kUnknown, kSolutions, kComplete, kUnsatisfiable };

class Report {
 public:
  // A run with a profile that is ended by the thread goes on to undo what it has done, silently, and to write that.
  explicit Report(const Options &options)
      : immediate_(options.all || options.intermediate),
        statistics_(options.statistics),
        lingers_(!options.profile.empty()) {}
  ~Report();

  // SIGTERM, SIGINT and, unless it is 0, the time limit end the run from now on. To be called before other threads.
  void watch(long long milliseconds);
  // Of a satisfaction problem solutions are written as they are found; else the last one at the end, unless the options
  // ask for more. To be called before the first.
  void setGoal(Goal goal) { immediate_ = immediate_ || goal == Goal::kSatisfy; }

  // False when it comes too late to be written.
  bool solution(std::string text);
  // Statistics as they will be written, were the run to end now.
  void setStatistics(std::string lines);
  // The search that is to be stopped; null for none. A run that is to stop already stops it.
  void setSearch(CSsearch *search);
  bool isStopping() const { return stopping_; }
  long long solutions() const { return solutions_; }

  // Writes what is left to be written. Further calls do nothing.
  void end(Outcome outcome);
  bool isUnsatisfiable() const { return unsatisfiable_; }

 private:
  void guard(long long milliseconds);
  bool stopSearch();  // false when there is none
  void write(Outcome outcome);

  std::mutex mutex_;
  bool immediate_, statistics_, lingers_;
  std::string held_, lines_;
  long long solutions_ = 0;
  CSsearch *search_ = nullptr;
  std::atomic<bool> stopping_ = false;
  std::atomic<bool> ended_ = false;
  std::atomic<bool> unsatisfiable_ = false;  // as it was written
  std::thread thread_;
};

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_REPORT_H
