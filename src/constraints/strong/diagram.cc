// SPDX-License-Identifier: MIT
#include "constraints/strong/diagram.h"

#include <algorithm>

namespace koru::mdd {

bool Diagram::build(const Given &given) {
  const auto count = static_cast<unsigned>(given.count);
  if (!make(nodes_, std::uint64_t{2} * count) || !make(arcs_, count) || !make(cells_, std::uint64_t{3} * count))
    return false;
  std::copy_n(given.sources, given.count, nodes_.get());
  std::copy_n(given.targets, given.count, nodes_.get() + given.count);
  int *const end = nodes_.get() + 2 * static_cast<std::ptrdiff_t>(given.count);
  std::sort(nodes_.get(), end);
  nodeCount_ = static_cast<int>(std::unique(nodes_.get(), end) - nodes_.get());
  const auto nodes = static_cast<unsigned>(nodeCount_);
  if (!make(firstArc_, nodes + 1) || !make(seenIn_, nodes) || !make(layer_, nodes) || !make(next_, nodes)) return false;
  for (int k = 0; k < given.count; ++k) arcs_[k] = {find(given.sources[k]), given.values[k], find(given.targets[k])};
  std::stable_sort(arcs_.get(), arcs_.get() + given.count,
                   [](const Arc &a, const Arc &b) { return a.source < b.source; });
  for (int node = 0, k = 0; node <= nodeCount_; ++node) {
    while (k < given.count && arcs_[k].source < node) ++k;
    firstArc_[node] = k;
  }
  return true;
}

int Diagram::find(int node) const {
  const int *begin = nodes_.get();
  const int *end = begin + nodeCount_;
  const int *found = std::lower_bound(begin, end, node);
  return found != end && *found == node ? static_cast<int>(found - begin) : kNone;
}

void Diagram::begin(int root) {
  std::fill_n(seenIn_.get(), nodeCount_, 0);
  step_ = 0;
  layer_[0] = first_ = last_ = root;
  layerSize_ = 1;
}

void Diagram::step() {
  ++step_;
  rows_ = nextSize_ = 0;
  for (int i = 0; i < layerSize_; ++i) collect(layer_[i]);
  std::swap(layer_, next_);
  layerSize_ = nextSize_;
  if (isEmpty()) return;
  const auto [low, high] = std::minmax_element(layer_.get(), layer_.get() + layerSize_);
  first_ = *low;
  last_ = *high;
}

void Diagram::collect(int node) {
  for (int k = firstArc_[node]; k < firstArc_[node + 1]; ++k) {
    const Arc &arc = arcs_[k];
    int *cell = cells_.get() + static_cast<std::ptrdiff_t>(rows_) * 3;
    ++rows_;
    cell[0] = arc.source;
    cell[1] = arc.value;
    cell[2] = arc.target;
    if (seenIn_[arc.target] == step_) continue;
    seenIn_[arc.target] = step_;
    next_[nextSize_++] = arc.target;
  }
}

}  // namespace koru::mdd
