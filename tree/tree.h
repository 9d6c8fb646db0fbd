// SPDX-License-Identifier: MIT
// A recorded search, read back as a tree. The format is in docs/search-trees.md.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

namespace koru::tree {

enum : std::uint8_t {
  kAccepted = 1,
  kSolution = 2,  // stands at this node
  kRejected = 4,  // a solution that the host turned down
  kOpposite = 8,  // of the decision before
  kRoot = 16,     // of a run: no decision
  kNearby = 32    // of a neighbourhood
};

// A decision that was tried. Nodes are in the order of the search, so that a subtree is a stretch of them.
struct Node {
  int parent;    // -1 for a root outside all others
  int variable;  // by number
  int value;
  int place;  // that refused it: index, -1 when not known
  int size;   // of the subtree, itself included
  std::uint8_t method;
  std::uint8_t flags;

  bool is(int flag) const { return (flags & flag) != 0; }
  bool isChoice() const { return !is(kOpposite) && !is(kRoot); }
  bool isRefused() const { return !is(kAccepted) && !is(kRoot); }
};

// Who posted a constraint, and where.
struct Place {
  std::string function;
  std::string file;
  int line = 0;

  std::string text() const;  // "cs_Neq  queens.c:12"
};

struct Solution {
  int node;
  bool hasWorth;
  std::int64_t worth;  // of the objective
  std::int64_t milliseconds;
};

struct Tree {
  std::vector<Node> nodes;
  std::vector<Place> places;
  std::map<int, std::string> names;  // of variables, by number
  std::vector<Solution> solutions;
  int searches = 0;
  std::int64_t milliseconds = 0;
  bool cut = false;  // the record ends in the midst of an item

  std::string nameOf(int variable) const;   // "x", or "v12" without a name
  std::string decisionOf(int node) const;   // "x = 3"
  std::vector<int> pathTo(int node) const;  // of decisions, from the root on
  std::string textTo(int node) const;       // "x = 3, y != 2"
};

// False, with a reason that starts with the position, when the bytes are no record. One that is cut off anywhere is a
// smaller tree.
bool readTree(const std::string &bytes, Tree &tree, std::string &error);

// What is known of a tree without looking at single nodes.
struct Totals {
  std::int64_t choicePoints = 0;
  std::int64_t refused = 0;
  std::int64_t opposites = 0;
  int runs = 0;
  int depth = 0;  // of the deepest decision
};
Totals totalsOf(const Tree &tree);

// The depth of each node: 0 for roots.
std::vector<int> depthsOf(const Tree &tree);

// Totals, depths, refusals by place, variables, and the largest subtrees without a solution.
void writeSummary(std::ostream &out, const Tree &tree, std::size_t top);

// The first decision in which two trees differ, what either refused and the other did not, and the totals of both.
// Returns whether they are the same.
bool writeDifference(std::ostream &out, const Tree &a, const Tree &b);

// The decisions that lead to a node, as the array that cs_goToNode takes.
void writePath(std::ostream &out, const Tree &tree, int node);

// One page that needs no other file, of the nodes with the largest subtrees.
void writePage(std::ostream &out, const Tree &tree, const std::string &title, std::size_t most);

}  // namespace koru::tree
