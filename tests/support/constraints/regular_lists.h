// SPDX-License-Identifier: MIT
// The lists of live edges that the graph of cs_Regular stands for, written out.
#pragma once

#include <algorithm>
#include <vector>

#include "constraints/global/regular_graph.h"
#include "support/kit/probe.h"

namespace koru::test {

// A list, and the index of its support in it; -1 when it is empty.
struct ListedEdges {
  std::vector<regular::Edge> edges;
  int support = -1;

  void add(regular::Edge edge, const regular::Support &current) {
    if (edge.x == current.edge.x && edge.y == current.edge.y) support = static_cast<int>(edges.size());
    edges.push_back(edge);
  }
};

// To be made before any state leaves its layer.
class RegularLists {
 public:
  explicit RegularLists(const regular::Graph &graph) : graph_(graph) {
    for (int k = 0; k <= graph.length(); ++k) live_.push_back(values(graph.layer(k)));
  }

  ListedEdges source(int k, int q) const {
    ListedEdges list;
    for (int a = 0; a < graph_.symbols(); ++a)
      if (isEdge(k, q, a)) list.add({a, targetOf(q, a)}, graph_.sources(k)[q]);
    return list;
  }

  ListedEdges target(int k, int t) const {
    ListedEdges list;
    for (int q = 0; q < graph_.transitions().states(); ++q)
      for (int a = 0; a < graph_.symbols(); ++a)
        if (isEdge(k, q, a) && targetOf(q, a) == t) list.add({a, q}, graph_.targets(k)[t]);
    return list;
  }

  ListedEdges label(int k, int a) const {
    ListedEdges list;
    for (int q = 0; q < graph_.transitions().states(); ++q)
      if (isEdge(k, q, a)) list.add({q, targetOf(q, a)}, graph_.labels(k)[a]);
    return list;
  }

 private:
  int targetOf(int q, int a) const { return graph_.transitions().target(q, a); }

  bool isEdge(int k, int q, int a) const {
    return graph_.labels(k)[a].exists() && isLive(k, q) && isLive(k + 1, targetOf(q, a));
  }

  bool isLive(int k, int q) const { return std::ranges::count(live_[static_cast<std::size_t>(k)], q) > 0; }

  const regular::Graph &graph_;
  std::vector<std::vector<int>> live_;  // the states of each layer
};

}  // namespace koru::test
