// SPDX-License-Identifier: MIT
#include "traces/twin.h"

#include <algorithm>

#include "core/variable.h"

namespace koru::traces {
namespace {

std::uint64_t mix(std::uint64_t hash, std::uint64_t value) {
  hash = (hash ^ value) * 0x9e3779b97f4a7c15ULL;
  return hash ^ (hash >> 29);
}

std::uint64_t hashValues(const CSint &v) {
  if (v.bits == nullptr) return 1;
  if (rangeSize(v.min, v.max) == v.count) return 1;  // an interval, be there bits or not
  std::uint64_t hash = 2;
  for (std::int64_t value = v.min; value <= v.max; value = nextPresent(v.bits, static_cast<int>(value))) {
    hash = mix(hash, static_cast<std::uint64_t>(value));
    if (value == v.max) break;
  }
  return hash;
}

Digest digest(const CSint &v) {
  Digest result{v.min, v.max, v.count, hashValues(v), 0, 0};
  for (const Entry *entry = v.constraints; entry != nullptr; entry = entry->next) {
    result.entries = mix(result.entries, reinterpret_cast<std::uintptr_t>(entry->constraint));
    result.entries = mix(result.entries, static_cast<std::uint64_t>(entry->index));
    ++result.attached;
  }
  return result;
}

Copy copyAll() {
  Copy copy{{}, solver::trail.count()};
  solver::variables.forEach([&](const CSint &v) { copy.variables.push_back(digest(v)); });
  return copy;
}

std::string describe(const Digest &d) {
  return std::to_string(d.min) + ".." + std::to_string(d.max) + ", " + std::to_string(d.count) + " values, " +
         std::to_string(d.attached) + " attached";
}

std::string difference(const Copy &before, const Copy &now) {
  for (std::size_t i = 0; i < before.variables.size(); ++i)
    if (before.variables[i] != now.variables[i])
      return "restore: a variable is not as it was (" + std::to_string(i) + ": " + describe(before.variables[i]) +
             "; now " + describe(now.variables[i]) + ")";
  return before.trail == now.trail ? "" : "restore: undo records are left";
}

}  // namespace

void Twin::follow() {
  while (marks_.size() < static_cast<std::size_t>(solver::contexts.count()))
    marks_.push_back({std::nullopt, pending_.size(), true});
  marks_.resize(static_cast<std::size_t>(solver::contexts.count()));
}

void Twin::saved(int before) {
  if (solver::contexts.count() != before + 1) return;  // memory was exhausted
  follow();
  marks_.back() = {copyAll(), pending_.size(), false};
}

std::string Twin::undone(CSint *v, int index) {
  if (loose_) return "";
  if (pending_.empty()) return "callback: undone, and none is registered";
  const Pending newest = pending_.back();
  pending_.pop_back();
  return newest.v == v && newest.index == index ? "" : "callback: undone out of order";
}

std::string Twin::restored(int label, const std::vector<Mark> &before) {
  compared_ = false;
  const Mark mark = before[static_cast<std::size_t>(label - 1)];
  const bool reopened = solver::contexts.count() == label;
  if (accepted_) mixed_ = true;
  follow();
  if (reopened) marks_.back() = {copyAll(), pending_.size(), false};
  if (!loose_ && pending_.size() > mark.pending && !mark.bySearch) return "callback: not called though restored";
  if (mixed_ || !mark.copy) return "";
  compared_ = true;
  return difference(*mark.copy, copyAll());
}

void Twin::accepted(int label, const std::vector<Mark> &before) {
  const auto at = static_cast<std::size_t>(label - 1);
  for (std::size_t i = at; i < before.size(); ++i)
    if (before[i].bySearch) loose_ = true;
  pending_.resize(std::min(pending_.size(), before[at].pending));
  follow();
  accepted_ = !marks_.empty();
  if (solver::trail.undoing()) mixed_ = true;
  for (Mark &mark : marks_) mark.copy.reset();
}

}  // namespace koru::traces
