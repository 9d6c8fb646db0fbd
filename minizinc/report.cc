// SPDX-License-Identifier: MIT
#include "minizinc/report.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace koru::fzn {

namespace {

constexpr int kPatience = 50;  // milliseconds that a search has for ending by itself

sigset_t endingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  return signals;
}

// Until one of the signals comes, or the time is over (0: there is no limit). Whoever stops the process for a moment,
// as a shell or a leak checker does, ends the system's wait, but not this one.
void await(const sigset_t &signals, std::chrono::milliseconds limit) {
  using Clock = std::chrono::steady_clock;
  if (limit.count() <= 0) {
    while (sigwaitinfo(&signals, nullptr) < 0) continue;
    return;
  }
  const Clock::time_point end = Clock::now() + std::min<std::chrono::milliseconds>(limit, std::chrono::years(100));
  for (Clock::duration left = end - Clock::now(); left.count() > 0; left = end - Clock::now()) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    const std::timespec rest = {static_cast<time_t>(seconds.count()),
                                static_cast<long>(std::chrono::nanoseconds(left - seconds).count())};
    if (sigtimedwait(&signals, nullptr, &rest) > 0) return;
  }
}

void put(const std::string &text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

}  // namespace

Report::~Report() {
  ended_ = true;
  if (!thread_.joinable()) return;
  pthread_kill(thread_.native_handle(), SIGINT);
  thread_.join();
}

void Report::watch(long long milliseconds) {
  const sigset_t signals = endingSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  thread_ = std::thread([this, milliseconds] { guard(milliseconds); });
}

// Waits for a signal or the time, then for the search to end, then ends the process.
void Report::guard(long long milliseconds) {
  await(endingSignals(), std::chrono::milliseconds(milliseconds));
  stopping_ = true;
  for (int i = 0; i < kPatience && stopSearch() && !ended_; ++i) {
    const std::timespec pause = {0, 1'000'000};
    nanosleep(&pause, nullptr);
  }
  if (ended_) return;
  end(solutions_ > 0 ? Outcome::kSolutions : Outcome::kUnknown);
  if (!lingers_) std::_Exit(0);
}

bool Report::stopSearch() {
  const std::scoped_lock lock(mutex_);
  cs_stopSearch(search_);
  return search_ != nullptr;
}

bool Report::solution(std::string text) {
  text += "----------\n";
  const std::scoped_lock lock(mutex_);
  ++solutions_;
  if (ended_) return false;
  if (immediate_)
    put(text);
  else
    held_ = std::move(text);
  return true;
}

void Report::setStatistics(std::string lines) {
  const std::scoped_lock lock(mutex_);
  lines_ = std::move(lines);
}

void Report::setSearch(CSsearch *search) {
  const std::scoped_lock lock(mutex_);
  search_ = search;
  if (stopping_) cs_stopSearch(search_);
}

void Report::end(Outcome outcome) {
  const std::scoped_lock lock(mutex_);
  if (ended_) return;
  write(outcome);
  unsatisfiable_ = outcome == Outcome::kUnsatisfiable;
  ended_ = true;
}

void Report::write(Outcome outcome) {
  std::string text = std::move(held_);
  if (outcome == Outcome::kComplete) text += "==========\n";
  if (outcome == Outcome::kUnsatisfiable) text += "=====UNSATISFIABLE=====\n";
  if (outcome == Outcome::kUnknown) text += "=====UNKNOWN=====\n";
  if (statistics_) text += lines_ + "%%%mzn-stat-end\n";
  put(text);
}

}  // namespace koru::fzn
