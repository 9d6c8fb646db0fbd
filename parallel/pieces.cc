// SPDX-License-Identifier: MIT
#include "parallel/pieces.h"

#include <algorithm>
#include <iterator>

namespace koru::parallel {

const Piece *Pieces::assign(long long assignment) {
  const auto entry = std::ranges::find(entries_, State::kQueued, &Entry::state);
  if (entry == entries_.end()) return nullptr;
  entry->state = State::kRunning;
  entry->assignment = assignment;
  entry->asked = false;
  running_[assignment] = entry;
  --queued_;
  return &entry->piece;
}

// Into the finished neighbour on the left, where there is one.
void Pieces::insertFinished(Entries::iterator before, const Report &report) {
  auto place = before;
  if (before == entries_.begin() || (--place)->state != State::kFinished) {
    place = entries_.emplace(before);
    place->state = State::kFinished;
  }
  Finished &finished = place->finished;
  for (const Solution &each : report.solutions) {
    finished.solutions.push_back(each);
    finished.solutions.back().until.add(finished.counts);
  }
  finished.counts.add(report.counts);
}

void Pieces::dropFrom(Entries::iterator first, std::vector<long long> &dropped) {
  for (auto entry = first; entry != entries_.end(); entry = entries_.erase(entry)) {
    if (entry->state == State::kQueued) --queued_;
    if (entry->state != State::kRunning) continue;
    dropped.push_back(entry->assignment);
    running_.erase(entry->assignment);
  }
}

bool Pieces::apply(const Report &report, std::vector<long long> &dropped) {
  const auto known = running_.find(report.assignment);
  if (known == running_.end()) return false;
  const auto entry = known->second;
  insertFinished(entry, report);
  const auto next = std::next(entry);
  entry->asked = report.answers && report.given.empty();  // then not before its next report
  entry->piece = report.rest;
  if (report.finished) {
    running_.erase(known);
    entries_.erase(entry);
  }
  if (firstOnly_ && !report.solutions.empty()) {
    dropFrom(next, dropped);
    return true;
  }
  for (const Piece &piece : report.given) {
    entries_.emplace(next)->piece = piece;
    ++queued_;
  }
  return true;
}

void Pieces::takeBack(long long assignment) {
  const auto known = running_.find(assignment);
  if (known == running_.end()) return;
  known->second->state = State::kQueued;
  running_.erase(known);
  ++queued_;
}

std::optional<long long> Pieces::toAsk() {
  Entry *best = nullptr;
  for (const auto &[assignment, entry] : running_) {
    const bool better = best == nullptr || entry->piece.base < best->piece.base ||
                        (entry->piece.base == best->piece.base && assignment < best->assignment);
    if (!entry->asked && better) best = &*entry;
  }
  if (best == nullptr) return std::nullopt;
  best->asked = true;
  return best->assignment;
}

std::optional<Pieces::Finished> Pieces::takeFinished() {
  if (entries_.empty() || entries_.front().state != State::kFinished) return std::nullopt;
  Finished finished = std::move(entries_.front().finished);
  entries_.pop_front();
  return finished;
}

double Pieces::left() const {
  double sum = 0;
  for (const Entry &entry : entries_)
    if (entry.state != State::kFinished) sum += entry.piece.part();
  return sum;
}

Counts Pieces::counted() const {
  Counts sum;
  for (const Entry &entry : entries_) sum.add(entry.finished.counts);
  return sum;
}

void Pieces::write(Writer &out) const {
  out.number(entries_.size());
  for (const Entry &entry : entries_) {
    const bool finished = entry.state == State::kFinished;
    out.number(finished ? 1 : 0);
    if (finished) {
      out.counts(entry.finished.counts);
      out.solutions(entry.finished.solutions);
    } else {
      out.piece(entry.piece);
    }
  }
}

void Pieces::read(Reader &in) {
  entries_.clear();
  running_.clear();
  queued_ = 0;
  for (std::size_t n = in.size(); n > 0; --n) {
    Entry &entry = entries_.emplace_back();
    if (in.number() != 0) {
      entry.state = State::kFinished;
      entry.finished.counts = in.counts();
      entry.finished.solutions = in.solutions();
    } else {
      entry.piece = in.piece();
      ++queued_;
    }
  }
}

}  // namespace koru::parallel
