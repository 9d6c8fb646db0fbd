// SPDX-License-Identifier: MIT
// Why there is no solution: a set that has none when it alone is posted. What would have to go: a set without which
// there is one. For either what is asked of a set holds for larger ones as well, so both are found the same way.
//
// Deliberate: a run that gives no answer counts as one that does not show what is asked, so that the set may be too
// large but is never wrong. Deliberate: the result is verified run by run, for a model need not keep to the rules: a
// constraint may refuse more than it says (cs_Cumulative), a search may be heuristic.
#include "explain/reasons.h"

#include "explain/minimal_set.h"

namespace koru::explain {

static CSexplained stateFor(Answer answer) {
  switch (answer) {
    case Answer::kMemory:
      return CS_EXPLAINED_MEMORY;
    case Answer::kSolution:
      return CS_EXPLAINED_SOLUTION;
    case Answer::kNone:
      return CS_EXPLAINED_NEVER;
    default:
      return CS_EXPLAINED_UNKNOWN;
  }
}

// The model as it is, which has to have no solution; and for what would have to go, what is left when all have gone.
// Only then is every posting come by.
CSexplained Reasons::firstRuns() {
  Answer answer = nearest() ? runs_.runAll() : runs_.record(false);
  if (answer != Answer::kNone) return stateFor(answer);
  if (nearest()) {
    if (limitReached()) return CS_EXPLAINED_UNKNOWN;
    answer = runs_.record(true);
    if (answer != Answer::kSolution) return stateFor(answer);
  }
  if (!makeRoom()) return CS_EXPLAINED_MEMORY;
  takeAll();
  return CS_EXPLAINED_MINIMAL;
}

bool Reasons::makeRoom() {
  const auto n = static_cast<unsigned>(runs_.calls().count());
  return make(elementOf_, n) && make(chosen_, n) && make(on_, n) && make(best_, n);
}

void Reasons::takeAll() {
  bestCount_ = runs_.calls().count();
  std::fill_n(best_.get(), bestCount_, true);
}

// Each place of the best set is an element.
void Reasons::playPlaces() {
  elements_ = runs_.calls().placeCount();
  for (int i = 0; i < runs_.calls().count(); ++i) elementOf_[i] = runs_.calls()[i].place;
}

// Each posting of the best set is an element.
void Reasons::playCalls() {
  elements_ = 0;
  for (int i = 0; i < runs_.calls().count(); ++i) elementOf_[i] = best_[i] ? elements_++ : Calls::kNone;
}

void Reasons::reduce() {
  const auto asks = [this] { return holds(); };
  const auto ended = [this] { return stopped_; };
  MinimalSet(chosen_.get(), asks, ended).find(elements_);
  if (!stopped_ && holds()) return;
  if (!stopped_) state_ = CS_EXPLAINED_UNSTABLE;
  stopped_ = true;
}

// Whether it holds without one element of those chosen, which then stays out.
bool Reasons::withoutOne(int element) {
  chosen_[element] = false;
  if (holds()) return true;
  chosen_[element] = true;
  return false;
}

void Reasons::verify() {
  playCalls();
  std::fill_n(chosen_.get(), elements_, true);
  for (bool smaller = true; smaller;) {
    smaller = false;
    for (int i = 0; i < elements_ && !stopped_; ++i) smaller = (chosen_[i] && withoutOne(i)) || smaller;
  }
}

bool Reasons::limitReached() const {
  if (options_.maxChecks > 0 && runs_.count() >= options_.maxChecks) return true;
  if (options_.milliseconds <= 0) return false;
  const auto spent = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - started_);
  return spent.count() >= options_.milliseconds;
}

bool Reasons::holdsFor(Answer answer) {
  if (answer == Answer::kUnknown || answer == Answer::kStop) state_ = CS_EXPLAINED_PARTLY;
  if (answer == Answer::kMemory) state_ = CS_EXPLAINED_MEMORY;
  stopped_ = answer == Answer::kStop || answer == Answer::kMemory;
  return answer == (nearest() ? Answer::kSolution : Answer::kNone);
}

// Asks about the chosen elements.
bool Reasons::holds() {
  if (stopped_) return false;
  if (limitReached()) {
    state_ = CS_EXPLAINED_PARTLY;
    stopped_ = true;
    return false;
  }
  for (int i = 0; i < runs_.calls().count(); ++i) {
    const bool inSet = elementOf_[i] != Calls::kNone && chosen_[elementOf_[i]];
    on_[i] = inSet != nearest();
  }
  const bool shown = holdsFor(runs_.run(on_.get(), nearest()));
  if (shown) keepIfSmaller();
  return shown;
}

void Reasons::keepIfSmaller() {
  const int n = runs_.calls().count();
  int count = 0;
  for (int i = 0; i < n; ++i) count += on_[i] != nearest() ? 1 : 0;
  if (count > bestCount_) return;
  bestCount_ = count;
  for (int i = 0; i < n; ++i) best_[i] = on_[i] != nearest();
}

}  // namespace koru::explain
