// SPDX-License-Identifier: MIT
// The tree of a search as the first process knows it: pieces in tree order, each queued, with a process, or finished.
//
// Finished ones hold what was found and counted there; those at the left end are taken out as soon as there are any, so
// that the solutions come out in the order of the sequential search. Where only the first solution counts, all that is
// to the right of one is dropped.
// Neighbours that are finished are one.
// Cost: logarithmic in the pieces for each that is queued, handed out or asked; once in at least 60 insertions a step
// over all of them.
#pragma once

#include <list>
#include <map>
#include <optional>
#include <set>
#include <unordered_map>

#include "parallel/piece.h"

namespace koru::parallel {

class Pieces {
 public:
  struct Finished {
    Counts counts;
    std::vector<Solution> solutions;
  };

  Pieces(const Pieces &) = delete;
  Pieces(Pieces &&) = default;
  Pieces &operator=(const Pieces &) = delete;
  Pieces &operator=(Pieces &&) = default;
  ~Pieces() = default;
  // Everything is queued: the whole tree, or that piece of it.
  explicit Pieces(bool firstOnly = false, Piece piece = {}) : firstOnly_(firstOnly) {
    const auto entry = insert(entries_.end());
    entry->piece = std::move(piece);
    enqueue(entry);
  }
  // Nothing is left.
  struct None {};
  explicit Pieces(None) : firstOnly_(true) {}

  bool empty() const { return entries_.empty(); }
  std::size_t queued() const { return queued_.size(); }

  // The leftmost queued piece, which is from now on with a process, under a number of its own; null when there is none.
  const Piece *assign(long long assignment);
  // False when the assignment is no longer known: the report is of no use. `dropped` is given those that are not, any
  // more, because of a solution to the left of them.
  bool apply(const Report &report, std::vector<long long> &dropped);
  // Back to the queue, as of the last report.
  void takeBack(long long assignment);
  // The running assignment that is to be asked to give something away: of those that do not owe an
  // answer, the one with the lowest base. None when there is none.
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
    std::uint64_t place = 0;  // greater than that of the entry before
  };
  using Entries = std::list<Entry>;

  Entries::iterator insert(Entries::iterator before);  // one that is neither queued nor running
  void spread();                                       // gives all entries places anew
  void enqueue(Entries::iterator entry);
  void makeAskable(const Entry &entry) { askable_.emplace(entry.piece.base, entry.assignment); }
  void makeUnaskable(const Entry &entry) { askable_.erase({entry.piece.base, entry.assignment}); }
  void insertFinished(Entries::iterator before, const Report &report);
  void dropFrom(Entries::iterator first, std::vector<long long> &dropped);

  bool firstOnly_;
  Entries entries_;
  std::map<std::uint64_t, Entries::iterator> queued_;  // by place
  std::set<std::pair<int, long long>> askable_;        // bases and assignments of running ones that owe no answer
  std::unordered_map<long long, Entries::iterator> running_;
};

}  // namespace koru::parallel
