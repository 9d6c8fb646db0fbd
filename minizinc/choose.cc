// SPDX-License-Identifier: MIT
#include "minizinc/choose.h"

#include <unordered_set>

namespace koru::fzn {

Chooser::Chooser(const std::vector<Phase> &phases, const Plan &plan, unsigned long long seed)
    : kept_(plan.kept), state_(seed) {
  const std::unordered_set<CSint *> relaxed(plan.relaxed.begin(), plan.relaxed.end());
  int end = 0;
  for (const Phase &phase : phases) {
    end += sizeOf(phase.variables);
    for (CSint *v : phase.variables) mayKeep_.push_back(relaxed.contains(v));
    parts_.push_back({end, phase.ownOrder, phase.ownValue});
  }
}

const Chooser::Part &Chooser::partOf(int index) const {
  std::size_t i = 0;
  while (i + 1 < parts_.size() && index >= parts_[i].end) ++i;
  return parts_[i];
}

// The fewest elements, then the most constraints, within the phase of the first variable that is not bound.
int Chooser::chooseVariable(CSint **variables, int n, void *extra) {
  const auto &chooser = *static_cast<const Chooser *>(extra);
  int best = -1, end = n;
  for (int i = 0; i < end; ++i) {
    CSint *v = variables[i];
    if (cs_getMin(v) == cs_getMax(v)) continue;
    if (best < 0) end = chooser.partOf(i).end;
    const bool better = best < 0 || cs_getNbElements(v) < cs_getNbElements(variables[best]) ||
                        (cs_getNbElements(v) == cs_getNbElements(variables[best]) &&
                         cs_getNbConstraints(v) > cs_getNbConstraints(variables[best]));
    if (better) best = i;
  }
  return best;
}

// A splitmix64 (Steele, Lea, Flood 2014).
unsigned long long Chooser::draw() {
  unsigned long long z = state_ += 0x9e3779b97f4a7c15U;
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
  return z ^ (z >> 31);
}

void Chooser::chooseRelaxed(bool *relaxed, const int *, int n, void *extra) {
  auto &chooser = *static_cast<Chooser *>(extra);
  const auto kept = static_cast<unsigned long long>(chooser.kept_);
  for (int i = 0; i < n; ++i)
    relaxed[i] = !chooser.mayKeep_[static_cast<std::size_t>(i)] || chooser.draw() % 100 >= kept;
}

bool Chooser::chooseValue(CSvalueSelection *decision, int index, CSint **variables, int, void *extra) {
  auto &chooser = *static_cast<Chooser *>(extra);
  CSint *v = variables[index];
  const long long middle = (static_cast<long long>(cs_getMin(v)) + cs_getMax(v)) >> 1;
  switch (chooser.partOf(index).value) {
    case OwnValue::kNotMin:
      *decision = {CS_METHOD_NEQ, cs_getMin(v)};
      return true;
    case OwnValue::kNotMax:
      *decision = {CS_METHOD_NEQ, cs_getMax(v)};
      return true;
    case OwnValue::kRandomHalf:
      *decision = {chooser.draw() % 2 == 0 ? CS_METHOD_LE : CS_METHOD_GT, static_cast<int>(middle)};
      return true;
    default:
      return false;
  }
}

}  // namespace koru::fzn
