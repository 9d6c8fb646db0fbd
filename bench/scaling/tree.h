// SPDX-License-Identifier: MIT
// A tree of any size with the shape of a measured one: what share of a node's work lies below each of its values is
// taken from some node of a search that was really made.
#pragma once

#include <cstdint>
#include <vector>

namespace koru::bench {

using Shares = std::vector<double>;  // of one node, in the order of values; together 1

// Of the larger nodes of a search for all Golomb rulers of 8 marks up to a length.
std::vector<Shares> measureShares();

class Tree {
 public:
  Tree(std::vector<Shares> shares, double seconds) : shares_(std::move(shares)), seconds_(seconds) {}

  struct Node {
    std::uint64_t name;
    double seconds;  // of work below it
  };

  Node root() const { return {0x9e3779b97f4a7c15ULL, seconds_}; }
  // What takes less is not divided.
  static bool isLeaf(const Node &n) { return n.seconds < 100e-6; }
  const Shares &sharesOf(const Node &n) const { return shares_[n.name % shares_.size()]; }
  Node child(const Node &n, int i) const {
    std::uint64_t h = (n.name ^ static_cast<unsigned>(i + 1)) * 0xbf58476d1ce4e5b9ULL;
    h ^= h >> 31;
    return {h, n.seconds * sharesOf(n)[static_cast<std::size_t>(i)]};
  }

 private:
  std::vector<Shares> shares_;
  double seconds_;
};

}  // namespace koru::bench
