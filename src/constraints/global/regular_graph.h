// SPDX-License-Identifier: MIT
// The layered graph of cs_Regular: an automaton unrolled over the positions of an array.
//
// Layer k holds the states that some prefix of k symbols reaches and from which the rest can be accepted. Position k
// lies between the layers k and k + 1. Each of its live edges (source, symbol, target) stands in three lists, which are
// built once and never change; the states of a layer are a private variable, so the undo trail restores them.
//
// All lists of a graph lie in one block, their heads in another, both sorted by position.
#pragma once

#include "core/alloc.h"
#include "core/private_variable.h"

namespace koru::regular {

// As the host describes it; finals and table entries that are no state are no final and no transition.
struct Automaton {
  const int *table;  // by state, then by symbol
  int states;
  int symbols;
  int start;
  const int *finals;
  int finalCount;

  bool isState(int q) const { return q >= 0 && q < states; }
  int target(int q, int a) const {
    return table[static_cast<std::size_t>(q) * static_cast<std::size_t>(symbols) + static_cast<std::size_t>(a)];
  }
};

// What an edge is seen from one of its three parts: the other two.
struct Edge {
  int x;
  int y;
};

// The support is the entry that was found valid last; a copy of it saves a look into the list.
struct EdgeList {
  Edge *edges;
  int size;
  int support;
  Edge current;

  void append(Edge edge) {
    if (size == 0) current = edge;
    edges[size++] = edge;
  }
};

class Graph {
 public:
  Graph(const Automaton &automaton, CSint **vars, int n)
      : vars_(vars), n_(n), states_(automaton.states), symbols_(automaton.symbols) {}

  // False when no word of length n is accepted, or memory is exhausted (reported).
  bool build(const Automaton &automaton);

  int length() const { return n_; }
  int symbols() const { return symbols_; }
  CSint *variable(int k) const { return vars_[k]; }
  CSint *layer(int k) const { return layers_[k]; }

  // The lists of position k: of a source (symbol, target), of a target (symbol, source), of a symbol (source, target).
  EdgeList *sources(int k) const { return lists_.get() + static_cast<std::size_t>(k) * listsPerPosition(); }
  EdgeList *targets(int k) const { return sources(k) + states_; }
  EdgeList *labels(int k) const { return targets(k) + states_; }

 private:
  friend class Builder;

  std::size_t listsPerPosition() const {
    return 2 * static_cast<std::size_t>(states_) + static_cast<std::size_t>(symbols_);
  }

  CSint **vars_;  // the caller's
  int n_;
  int states_;
  int symbols_;
  PrivateVariables layers_;  // n + 1
  Buffer<EdgeList> lists_;
  Buffer<Edge> edges_;
};

}  // namespace koru::regular
