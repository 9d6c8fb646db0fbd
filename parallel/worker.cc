// SPDX-License-Identifier: MIT
#include "parallel/worker.h"

#include <algorithm>

namespace koru::parallel {

constexpr std::size_t kMostPaths = 1000;  // in a report
// Up to so many processes are handed pieces, and report, as often as the pace says.
constexpr double kFewProcesses = 512, kFewReporting = 100;

double Worker::reportSeconds() const { return pace_.report * std::max(1.0, transport_.size() / kFewReporting); }

bool Worker::fail(const std::string &why) {
  why_ = why;
  return false;
}

void Worker::begin(long long assignment, Piece piece) {
  assignment_ = assignment;
  piece_ = std::move(piece);
  away_ = true;
  wanted_ = 0;
  found_.clear();
  counted_ = {};
  reported_ = transport_.seconds();
}

void Worker::leave() {
  if (!busy() || away_) return;
  piece_ = ground_.here();
  away_ = true;
}

bool Worker::comeBack() {
  if (!away_) return true;
  away_ = false;
  return ground_.goTo(piece_) || fail(ground_.failure());
}

void Worker::noteSolution(const Counts &sliceBegan) {
  Counts until = counted_;
  until.add(ground_.counts().since(sliceBegan));
  found_.push_back({ground_.here().steps, until});
}

// So that a slice takes about as long as it should.
void Worker::adapt(double taken) {
  if (pace_.choicePoints > 0) {
    slice_ = pace_.choicePoints;
  } else if (taken < pace_.slice / 2) {
    slice_ = std::min(slice_ * 2, 1LL << 40);
  } else if (taken > pace_.slice * 2) {
    slice_ = std::max(slice_ / 2, 1LL);
  }
}

CSstatus Worker::walkSlice() {
  const Counts before = ground_.counts();
  const double began = transport_.seconds();
  const bool stops = ground_.task().wantsPaths();
  const long long until = before.choicePoints + slice_;
  CSstatus status = CS_STATUS_CHOICE_POINTS;
  for (long long left = slice_; left > 0; left = until - ground_.counts().choicePoints) {
    status = cs_goWalk(ground_.walk(), left, stops);
    if (status != CS_STATUS_SOLUTION) break;
    noteSolution(before);
    if (ground_.task().firstOnly() || found_.size() >= kMostPaths) break;
  }
  counted_.add(ground_.counts().since(before));
  adapt(transport_.seconds() - began);
  return status;
}

void Worker::report(bool finished, bool answers, std::vector<Piece> given) {
  Report r{assignment_, counted_, std::move(found_), answers, finished, {}, std::move(given)};
  if (!finished) r.rest = ground_.here();
  found_.clear();
  counted_ = {};
  reported_ = transport_.seconds();
  if (finished) assignment_ = 0;
  send_(r);
}

bool Worker::step() {
  if (!busy()) return true;
  if (!comeBack()) return false;
  switch (walkSlice()) {
    case CS_STATUS_EXHAUSTED:
      report(true, false, {});
      return true;
    case CS_STATUS_SOLUTION:
      if (ground_.task().firstOnly()) {
        report(true, false, {});
        return true;
      }
      break;
    case CS_STATUS_CHOICE_POINTS:
      break;
    case CS_STATUS_STOPPED:
      return fail("cs_cancelSearch was called by the selection or a constraint; only `found` may");
    case CS_STATUS_MEMORY:
      return fail("memory is exhausted");
    default:
      return fail("the contexts of the search were changed by others");
  }
  if (wanted_ > 0) answer();
  if (found_.size() >= kMostPaths || transport_.seconds() - reported_ >= reportSeconds()) report(false, false, {});
  return true;
}

bool Worker::split(int wanted) {
  if (!busy()) return true;
  wanted_ = wanted;
  if (!comeBack()) return false;
  answer();
  return true;
}

// A request stays open until there is something to give. What takes less than a millisecond to walk is not worth a
// journey; with many processes the first one has to hear less often of each, and so has what takes longer.
void Worker::answer() {
  const double seconds = pace_.leastPiece * std::max(1.0, transport_.size() / kFewProcesses);
  const long long least =
      pace_.choicePoints > 0 ? 0 : static_cast<long long>(static_cast<double>(slice_) * seconds / pace_.slice);
  std::vector<Piece> given;
  Steps steps(ground_.here().steps.size());
  const int room = static_cast<int>(steps.size());
  while (static_cast<int>(given.size()) < wanted_) {
    const int depth = cs_splitWalk(ground_.walk(), least, steps.data(), room);
    if (depth == 0) break;
    given.push_back({{steps.begin(), steps.begin() + depth}, depth - 1, true});
  }
  if (given.empty()) return;
  std::ranges::reverse(given);
  wanted_ = 0;
  report(false, true, std::move(given));
}

}  // namespace koru::parallel
