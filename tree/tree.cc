// SPDX-License-Identifier: MIT
#include "tree/tree.h"

#include <algorithm>
#include <ostream>

namespace koru::tree {

namespace {

constexpr const char *kRelations[] = {" = ", " != ", " <= ", " < ", " >= ", " > "};
constexpr const char *kMethods[] = {"CS_METHOD_EQ", "CS_METHOD_NEQ", "CS_METHOD_LE",
                                    "CS_METHOD_LT", "CS_METHOD_GE",  "CS_METHOD_GT"};

}  // namespace

std::string Place::text() const {
  return function + "  " + file + (line > 0 ? ":" + std::to_string(line) : std::string());
}

std::string Tree::nameOf(int variable) const {
  const auto it = names.find(variable);
  return it != names.end() ? it->second : "v" + std::to_string(variable);
}

std::string Tree::decisionOf(int node) const {
  const Node &n = nodes[static_cast<std::size_t>(node)];
  if (n.is(kRoot)) return n.is(kNearby) ? "a neighbourhood" : "the root";
  return nameOf(n.variable) + kRelations[n.method] + std::to_string(n.value);
}

std::vector<int> Tree::pathTo(int node) const {
  std::vector<int> path;
  for (; node >= 0; node = nodes[static_cast<std::size_t>(node)].parent)
    if (!nodes[static_cast<std::size_t>(node)].is(kRoot)) path.push_back(node);
  std::ranges::reverse(path);
  return path;
}

std::string Tree::textTo(int node) const {
  std::string text;
  for (const int step : pathTo(node)) text += (text.empty() ? "" : ", ") + decisionOf(step);
  return text;
}

std::vector<int> depthsOf(const Tree &tree) {
  std::vector<int> depths;
  depths.reserve(tree.nodes.size());
  for (const Node &n : tree.nodes) depths.push_back(n.is(kRoot) ? 0 : depths[static_cast<std::size_t>(n.parent)] + 1);
  return depths;
}

Totals totalsOf(const Tree &tree) {
  Totals totals;
  for (const Node &n : tree.nodes) {
    totals.runs += n.is(kRoot) ? 1 : 0;
    totals.choicePoints += n.isChoice() ? 1 : 0;
    totals.opposites += n.is(kOpposite) ? 1 : 0;
    totals.refused += n.isRefused() ? 1 : 0;
  }
  for (const int depth : depthsOf(tree)) totals.depth = std::max(totals.depth, depth);
  return totals;
}

void writePath(std::ostream &out, const Tree &tree, int node) {
  out << "const CSstep path[] = {";
  const char *comma = "";
  for (const int step : tree.pathTo(node)) {
    const Node &n = tree.nodes[static_cast<std::size_t>(step)];
    out << comma << "\n    {" << n.variable << ", {" << kMethods[n.method] << ", " << n.value << "}}";
    comma = ",";
  }
  out << "};\n";
}

}  // namespace koru::tree
