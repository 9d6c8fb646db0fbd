// SPDX-License-Identifier: MIT
// Deliberate: of a search that was under way when the record began nothing is written. Deliberate: when memory is
// exhausted (reported), the record ends where it is: it is then of a part of the tree.
#include "record/recorder.h"

#include "core/constraint.h"
#include "core/lifetime.h"
#include "core/site.h"
#include "core/variable.h"

namespace koru::record {

namespace {

constexpr unsigned kBetweenTimes = 1024;  // decisions
constexpr std::chrono::milliseconds kLeastTime{100};

}  // namespace

bool Recorder::start(const char *path) {
  if (!out_.open(path)) return false;
  observer_ = {to<&Recorder::begin, Engine>,
               to<&Recorder::run, RunKind>,
               to<&Recorder::enter, const CSint *>,
               to<&Recorder::tried, const CSvalueSelection &, Tried, bool>,
               to<&Recorder::leave>,
               to<&Recorder::solution, bool, const CSint *>,
               to<&Recorder::end, CSstatus>,
               this};
  timeWritten_ = Clock::now();
  searchObserver = &observer_;
  solver::failureRecorder = {to<&Recorder::noteFailure, const Constraint *>, this};
  return true;
}

void Recorder::stop() {
  if (!out_.isOpen()) return;
  writeLeaves();
  out_.close();
  searchObserver = nullptr;
  solver::failureRecorder = {};
}

// ----- what is written between

void Recorder::writeLeaves() {
  for (; leaves_ > 0; leaves_ -= kMostLeaves) out_.byte(kLeave + std::min(leaves_, kMostLeaves) - 1);
  leaves_ = 0;
}

void Recorder::writeName(const CSint *v, int number) {
  if (number < 0) return;
  while (named_.count() <= number)
    if (!named_.add(0)) return stop();
  if (named_[number] != 0) return;
  named_[number] = 1;
  if (v->name == nullptr) return;
  out_.byte(kName);
  out_.number(static_cast<unsigned>(number));
  out_.text(v->name);
}

// Whose the refusal is, when the last one was another's.
void Recorder::writeBy() {
  if (failed_ == by_) return;
  by_ = failed_;
  out_.byte(kBy);
  out_.number(static_cast<unsigned>(by_));
}

void Recorder::writeTime() {
  if (untilTime_-- > 0) return;
  untilTime_ = kBetweenTimes;
  const Clock::time_point now = Clock::now();
  const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(now - timeWritten_);
  if (passed < kLeastTime) return;
  timeWritten_ += passed;
  out_.byte(kTime);
  out_.number(static_cast<std::uint64_t>(passed.count()));
  out_.flush();
}

// Of the solver attached: it tells one from another.
static const CSint *firstVariable() { return solver::variables.count() > 0 ? &solver::variables.at(0) : nullptr; }

// The same in every run of a program. -1 for a variable of another solver than the one whose search is open, and for
// one that is not the host's.
int Recorder::numberOf(const CSint *v) const { return first_ == firstVariable() ? solver::variables.indexOf(v) : -1; }

// ----- what is told

void Recorder::begin(Engine engine) {
  writeLeaves();
  failed_ = 0;
  if (!inSearch()) {  // the solver may be another one
    named_.cutTo(0);
    first_ = firstVariable();
  }
  if (!roots_.add(depth_)) return stop();
  out_.byte(kBegin);
  out_.number(static_cast<unsigned>(engine));
}

void Recorder::run(RunKind kind) {
  if (!inSearch()) return;
  leaves_ = 0;
  depth_ = base();
  out_.byte(kRun);
  out_.number(static_cast<unsigned>(kind));
}

void Recorder::enter(const CSint *v) {
  if (!inSearch()) return;
  writeLeaves();
  const int number = numberOf(v);
  writeName(v, number);
  if (!out_.isOpen()) return;
  if (depth_ == levels_.count() && !levels_.add({0, 0, 0, false})) return stop();
  Level &level = levels_[depth_++];
  out_.small(kLevel, zigzag(std::int64_t{number} - level.variable));
  level.variable = number;
  level.tried = false;
}

void Recorder::tried(const CSvalueSelection &decision, Tried how, bool consistent) {
  writeLeaves();
  if (depth_ == base()) return;
  writeTime();
  if (!consistent) writeBy();
  failed_ = 0;
  if (how == Tried::kOpposite) out_.byte(kOpposite);
  if (decision.method != CS_METHOD_EQ) out_.byte(kMethod + decision.method);
  Level &level = levels_[depth_ - 1];
  const std::int64_t expected = level.tried ? std::int64_t{level.last} + 1 : level.first;
  out_.small(consistent ? kAccepted : kDecision, zigzag(decision.value - expected));
  if (!level.tried) level.first = decision.value;
  level.last = decision.value;
  level.tried = true;
}

void Recorder::leave() {
  if (depth_ == base()) return;
  --depth_;
  ++leaves_;
}

void Recorder::solution(bool accepted, const CSint *objective) {
  if (!inSearch()) return;
  writeLeaves();
  if (!accepted || objective == nullptr) return out_.byte(accepted ? kSolution : kRejected);
  out_.byte(kSolutionWorth);
  out_.number(zigzag(objective->min));
}

void Recorder::end(CSstatus status) {
  if (!inSearch()) return;
  leaves_ = 0;
  depth_ = base();
  roots_.cutTo(roots_.count() - 1);
  out_.byte(kEnd);
  out_.number(static_cast<unsigned>(status));
  if (!inSearch()) out_.flush();
}

void Recorder::noteFailure(const Constraint *constraint) {
  const Site *site = constraint->site;
  const Poster poster(site->name(), site->address());
  const char *text = poster.caller == nullptr ? site->text() : nullptr;
  int place = places_.find(poster, text);
  if (place == explain::Places::kNone) {
    place = places_.add(poster, text);
    if (place == explain::Places::kNone) return stop();
    out_.byte(kPlace);
    out_.text(site->name());
    out_.text(site->text());
  }
  failed_ = place + 1;
}

}  // namespace koru::record
