// SPDX-License-Identifier: MIT
// What can be seen of a search while it goes on: how far it is, and its state for another run of the program.
//
// The state is taken between two steps. Everything that is finished at the left end has been told by then, and what
// processes have at work counts as of their last reports, so it can be walked again by others, however many they are.
#include <algorithm>

#include "parallel/party.h"

namespace koru::parallel {

int Leader::reached() const {
  const auto answers = [](const auto &p) { return p.state == Peer::kIdle || p.state == Peer::kBusy; };
  return 1 + static_cast<int>(std::count_if(peers_.begin() + 1, peers_.end(), answers));
}

void Leader::note(int process, Timeline::What what, long long choicePoints) {
  if (wishes_.timeline != nullptr) wishes_.timeline->note(process, what, transport_.seconds(), choicePoints);
}

void Leader::tellProgress() {
  Counts counts = counts_;
  counts.add(pieces_.counted());
  wishes_.progress(std::clamp(1 - pieces_.left(), 0.0, 1.0), counts, reached());
}

void Leader::keep() {
  const double now = transport_.seconds();
  if (wishes_.progress && now - progressTold_ >= wishes_.progressSeconds) {
    progressTold_ = now;
    tellProgress();
  }
  if (wishes_.save && now - saved_ >= wishes_.saveSeconds) {
    wishes_.save(state());
    saved_ = transport_.seconds();
  }
}

std::string Leader::state() const {
  Writer out;
  out.number(digest_);
  out.number(result_ ? 1 : 0);
  out.integer(told_);
  out.counts(counts_);
  out.number(bounds_.size());
  for (const int bound : bounds_) out.integer(bound);
  out.solutions(passed_);
  pieces_.write(out);
  return out.bytes;
}

bool Leader::restore(const std::string &state) {
  Reader in(state);
  if (in.number() != digest_) return fail("it is of another model");
  result_ = in.number() != 0;
  told_ = in.integer();
  counts_ = in.counts();
  std::vector<int> bounds(in.size());
  for (int &bound : bounds) bound = static_cast<int>(in.integer());
  const std::vector<Solution> passed = in.solutions();
  pieces_.read(in);
  if (!in.isThrough()) return fail("it cannot be read");
  for (const int bound : bounds)
    if (!beginPass(bound)) return fail("it is of another model: no solution costs less than " + std::to_string(bound));
  for (const Solution &solution : passed)
    if (!ground_.goTo({solution.path, 0, false}) || !pass(solution)) return fail("it is of another model");
  return true;
}

}  // namespace koru::parallel
