// SPDX-License-Identifier: MIT
// The tree of a search as the first process knows it: pieces in tree order, each queued, with a process, or finished.
//
// Finished ones hold what was found and counted there; those at the left end are taken out as soon as there are any, so
// that the solutions come out in the order of the sequential search. Where only the first solution counts, all that is
// to the right of one is dropped.
// Cost: a step over the finished and running ones for the leftmost queued piece; neighbours that are finished are one.
#pragma once

#include <list>
#include <optional>
#include <unordered_map>

#include "parallel/piece.h"

namespace koru::parallel {

class Pieces {
 public:
  struct Finished {
    Counts counts;
    std::vector<Solution> solutions;
  };

  // Everything is queued: the whole tree.
  explicit Pieces(bool firstOnly = false) : firstOnly_(firstOnly) { entries_.emplace_back(); }

  bool empty() const { return entries_.empty(); }
  std::size_t queued() const { return queued_; }

  // The leftmost queued piece, which is from now on with a process, under a number of its own; null when there is none.
  const Piece *assign(long long assignment);
  // False when the assignment is no longer known: the report is of no use. `dropped` is given those that are not, any
  // more, because of a solution to the left of them.
  bool apply(const Report &report, std::vector<long long> &dropped);
  // Back to the queue, as of the last report.
  void takeBack(long long assignment);
  // The running assignment that is to be asked to give something away: of those not yet asked since their last report,
  // the one with the lowest base. None when there is none.
  std::optional<long long> toAsk();
  // What is finished at the left end, if anything is; it is taken out.
  std::optional<Finished> takeFinished();

  // How much of the tree is left to walk (see Piece::part), and what was counted in pieces that are not taken out yet.
  double left() const;
  Counts counted() const;
  // All pieces as of their last reports, so that what is read has nothing with a process.
  void write(Writer &out) const;
  void read(Reader &in);

 private:
  enum class State { kQueued, kRunning, kFinished };
  struct Entry {
    State state = State::kQueued;
    Piece piece = {};
    Finished finished = {};
    long long assignment = 0;
    bool asked = false;
  };
  using Entries = std::list<Entry>;

  void insertFinished(Entries::iterator before, const Report &report);
  void dropFrom(Entries::iterator first, std::vector<long long> &dropped);

  bool firstOnly_;
  Entries entries_;
  std::size_t queued_ = 1;
  std::unordered_map<long long, Entries::iterator> running_;
};

}  // namespace koru::parallel
