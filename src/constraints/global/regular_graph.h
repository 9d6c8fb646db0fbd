// SPDX-License-Identifier: MIT
// The layered graph of cs_Regular: an automaton unrolled over the positions of an array.
//
// Layer k holds the states that some prefix of k symbols reaches and from which the rest can be accepted. Position k
// lies between the layers k and k + 1. Each of its live edges (source, symbol, target) stands in three lists: that of
// its source by ascending symbols, that of its target by ascending sources and symbols, that of its symbol by ascending
// sources. The lists never change; the states of a layer are a private variable, so the undo trail restores them.
//
// No list is stored: an edge is a transition of the automaton, the same for all positions, whose three parts have
// supports at its position. What is stored of a list is its support, 12 bytes for each state and symbol of a position
// that can occur there (an edge in three lists takes 24, and there are as many as states times symbols).
#pragma once

#include <cstddef>

#include "constraints/global/transitions.h"
#include "core/private_variable.h"

namespace koru::regular {

// What an edge is seen from one of its three parts: the other two.
struct Edge {
  int x;
  int y;
};

// The edge of a list that was found valid last, and its place in the order of the list: a symbol, the index of an arc,
// or a source.
struct Support {
  int place;
  Edge edge;

  // A list without edges has none, from the beginning.
  bool exists() const { return place != Transitions::kNone; }
};

// The supports of all states of a layer, or of all symbols, at one position.
class Supports {
 public:
  Supports(Support *all, std::ptrdiff_t row) : all_(all), row_(row) {}
  // A state must lie between the smallest and the largest one that its layer began with.
  Support &operator[](int i) const { return all_[row_ + i]; }

 private:
  Support *all_;
  std::ptrdiff_t row_;
};

class Graph {
 public:
  Graph() = default;
  Graph(Transitions transitions, CSint **vars, int n) : transitions_(std::move(transitions)), vars_(vars), n_(n) {}

  // False when no word of length n is accepted, or memory is exhausted (reported).
  [[nodiscard]] bool build(const Automaton &automaton);

  int length() const { return n_; }
  int symbols() const { return transitions_.symbols(); }
  const Transitions &transitions() const { return transitions_; }
  CSint *variable(int k) const { return vars_[k]; }
  CSint *layer(int k) const { return layers_[k]; }

  // The supports of position k: of its sources (symbol, target), its targets (symbol, source), its symbols (source,
  // target).
  Supports sources(int k) const { return {supports_.get(), rows_[k].sources}; }
  Supports targets(int k) const { return {supports_.get(), rows_[k].targets}; }
  Supports labels(int k) const { return {supports_.get(), rows_[k].labels}; }

 private:
  friend class Builder;

  // Where the support of state (symbol) 0 of a position would be; the first that is stored may be another.
  struct Row {
    std::ptrdiff_t sources;
    std::ptrdiff_t targets;
    std::ptrdiff_t labels;
  };

  Transitions transitions_;
  CSint **vars_ = nullptr;  // the caller's
  int n_ = 0;
  PrivateVariables layers_;  // n + 1
  Buffer<Row> rows_;
  Buffer<Support> supports_;
};

}  // namespace koru::regular
