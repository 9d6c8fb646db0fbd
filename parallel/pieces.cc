// SPDX-License-Identifier: MIT
#include "parallel/pieces.h"

#include <algorithm>
#include <iterator>

namespace koru::parallel {

// In the middle between its neighbours' places.
Pieces::Entries::iterator Pieces::insert(Entries::iterator before) {
  const auto placeBefore = [&] { return before == entries_.begin() ? 0 : std::prev(before)->place; };
  const auto placeAfter = [&] { return before == entries_.end() ? UINT64_MAX : before->place; };
  if (placeAfter() - placeBefore() < 2) spread();
  const std::uint64_t place = placeBefore() + (placeAfter() - placeBefore()) / 2;
  const auto entry = entries_.emplace(before);
  entry->state = State::kFinished;
  entry->place = place;
  return entry;
}

void Pieces::spread() {
  const std::uint64_t step = UINT64_MAX / (entries_.size() + 1);
  std::uint64_t place = 0;
  queued_.clear();
  for (auto entry = entries_.begin(); entry != entries_.end(); ++entry) {
    entry->place = place += step;
    if (entry->state == State::kQueued) queued_.emplace(place, entry);
  }
}

void Pieces::enqueue(Entries::iterator entry) {
  entry->state = State::kQueued;
  queued_.emplace(entry->place, entry);
}

const Piece *Pieces::assign(long long assignment) {
  if (queued_.empty()) return nullptr;
  const auto entry = queued_.begin()->second;
  queued_.erase(queued_.begin());
  entry->state = State::kRunning;
  entry->assignment = assignment;
  entry->asked = false;
  running_[assignment] = entry;
  makeAskable(*entry);
  return &entry->piece;
}

// Into the finished neighbour on the left, where there is one.
void Pieces::insertFinished(Entries::iterator before, const Report &report) {
  auto place = before;
  if (before == entries_.begin() || (--place)->state != State::kFinished) {
    place = insert(before);
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
    if (entry->state == State::kQueued) queued_.erase(entry->place);
    if (entry->state != State::kRunning) continue;
    dropped.push_back(entry->assignment);
    makeUnaskable(*entry);
    running_.erase(entry->assignment);
  }
}

bool Pieces::apply(const Report &report, std::vector<long long> &dropped) {
  const auto known = running_.find(report.assignment);
  if (known == running_.end()) return false;
  const auto entry = known->second;
  insertFinished(entry, report);
  const auto next = std::next(entry);
  makeUnaskable(*entry);
  entry->asked = entry->asked && !report.answers;
  entry->piece = report.rest;
  if (report.finished) {
    running_.erase(known);
    entries_.erase(entry);
  } else if (!entry->asked) {
    makeAskable(*entry);
  }
  if (firstOnly_ && !report.solutions.empty()) {
    dropFrom(next, dropped);
    return true;
  }
  for (const Piece &piece : report.given) {
    const auto given = insert(next);
    given->piece = piece;
    enqueue(given);
  }
  return true;
}

void Pieces::takeBack(long long assignment) {
  const auto known = running_.find(assignment);
  if (known == running_.end()) return;
  makeUnaskable(*known->second);
  enqueue(known->second);
  running_.erase(known);
}

std::optional<long long> Pieces::toAsk() {
  if (askable_.empty()) return std::nullopt;
  const long long assignment = askable_.begin()->second;
  askable_.erase(askable_.begin());
  running_.at(assignment)->asked = true;
  return assignment;
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
  askable_.clear();
  queued_.clear();
  for (std::size_t n = in.size(); n > 0; --n) {
    Entry &entry = entries_.emplace_back();
    if (in.number() != 0) {
      entry.state = State::kFinished;
      entry.finished.counts = in.counts();
      entry.finished.solutions = in.solutions();
    } else {
      entry.piece = in.piece();
    }
  }
  spread();
}

}  // namespace koru::parallel
