// SPDX-License-Identifier: MIT
// A tree in words, for people.
#include <algorithm>
#include <iomanip>
#include <ostream>

#include "tree/tree.h"

namespace koru::tree {

namespace {

std::string plural(std::int64_t n, const char *what) { return std::to_string(n) + ' ' + what + (n == 1 ? "" : "s"); }

void writeHead(std::ostream &out, const Tree &tree) {
  const Totals t = totalsOf(tree);
  out << plural(t.choicePoints, "choice point") << ", " << plural(t.refused, "refusal") << ", "
      << plural(static_cast<std::int64_t>(tree.solutions.size()), "solution") << ", " << plural(t.runs, "run") << " of "
      << tree.searches << (tree.searches == 1 ? " search" : " searches") << ", depth " << t.depth << ", "
      << static_cast<double>(tree.milliseconds) / 1000 << " s\n";
  if (tree.cut) out << "the record is cut off\n";
}

// Columns of numbers, each as wide as its head.
void writeRow(std::ostream &out, std::initializer_list<std::int64_t> numbers) {
  for (const std::int64_t n : numbers) out << std::setw(12) << n;
}

// ----- by depth

struct AtDepth {
  std::int64_t tried = 0, refused = 0, solutions = 0;
};

constexpr std::size_t kDepths = 40;

void writeDepths(std::ostream &out, const Tree &tree) {
  const std::vector<int> depths = depthsOf(tree);
  std::vector<AtDepth> rows;
  for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
    const Node &n = tree.nodes[i];
    const auto depth = static_cast<std::size_t>(depths[i]);
    if (rows.size() <= depth) rows.resize(depth + 1);
    if (n.is(kRoot)) continue;
    ++rows[depth].tried;
    rows[depth].refused += n.isRefused() ? 1 : 0;
    rows[depth].solutions += n.is(kSolution) ? 1 : 0;
  }
  out << "\n       depth   decisions     refused   solutions\n";
  for (std::size_t d = 1; d < rows.size() && d <= kDepths; ++d) {
    writeRow(out, {static_cast<std::int64_t>(d), rows[d].tried, rows[d].refused, rows[d].solutions});
    out << '\n';
  }
  if (rows.size() > kDepths + 1) out << "         ...\n";
}

// ----- by place and by variable

struct Count {
  std::string name;
  std::int64_t refused = 0;
  std::int64_t tried = 0;
};

void writeCounts(std::ostream &out, std::vector<Count> counts, std::size_t top) {
  std::ranges::stable_sort(counts, [](const Count &a, const Count &b) { return a.refused > b.refused; });
  for (std::size_t i = 0; i < counts.size() && i < top; ++i) {
    writeRow(out, {counts[i].refused});
    if (counts[i].tried > 0) writeRow(out, {counts[i].tried});
    out << "  " << counts[i].name << '\n';
  }
}

void writePlaces(std::ostream &out, const Tree &tree, std::size_t top) {
  std::vector<Count> counts;
  for (const Place &place : tree.places) counts.push_back({place.text()});
  counts.push_back({"(not by a constraint)"});
  for (const Node &n : tree.nodes) {
    if (n.isRefused()) ++counts[n.place >= 0 ? static_cast<std::size_t>(n.place) : counts.size() - 1].refused;
  }
  std::erase_if(counts, [](const Count &c) { return c.refused == 0; });
  if (counts.empty()) return;
  out << "\n     refused  by\n";
  writeCounts(out, counts, top);
}

void writeVariables(std::ostream &out, const Tree &tree, std::size_t top) {
  std::map<int, Count> byNumber;
  for (const Node &n : tree.nodes) {
    if (n.is(kRoot)) continue;
    Count &count = byNumber[n.variable];
    count.refused += n.isRefused() ? 1 : 0;
    ++count.tried;
  }
  if (byNumber.empty()) return;
  std::vector<Count> counts;
  for (auto &[number, count] : byNumber) {
    count.name = tree.nameOf(number);
    counts.push_back(count);
  }
  out << "\n     refused       tried  on\n";
  writeCounts(out, counts, top);
}

// ----- subtrees

// Of each node, whether its subtree has a solution.
std::vector<bool> solved(const Tree &tree) {
  std::vector<bool> has(tree.nodes.size(), false);
  for (std::size_t i = tree.nodes.size(); i-- > 0;) {
    has[i] = has[i] || tree.nodes[i].is(kSolution);
    if (has[i] && tree.nodes[i].parent >= 0) has[static_cast<std::size_t>(tree.nodes[i].parent)] = true;
  }
  return has;
}

// Those without a solution that hang on a node with one, or on a root.
void writeSubtrees(std::ostream &out, const Tree &tree, std::size_t top) {
  const std::vector<bool> has = solved(tree);
  std::vector<int> heads;
  for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
    const Node &n = tree.nodes[i];
    if (n.is(kRoot) || has[i] || n.size < 2) continue;
    const auto parent = static_cast<std::size_t>(n.parent);
    if (has[parent] || tree.nodes[parent].is(kRoot)) heads.push_back(static_cast<int>(i));
  }
  if (heads.empty()) return;
  std::ranges::stable_sort(heads, std::greater<>(),
                           [&](int i) { return tree.nodes[static_cast<std::size_t>(i)].size; });
  out << "\n       nodes        node  without a solution, after\n";
  for (std::size_t k = 0; k < heads.size() && k < top; ++k) {
    writeRow(out, {tree.nodes[static_cast<std::size_t>(heads[k])].size, heads[k]});
    out << "  " << tree.textTo(heads[k]) << '\n';
  }
}

}  // namespace

void writeSummary(std::ostream &out, const Tree &tree, std::size_t top) {
  writeHead(out, tree);
  writeDepths(out, tree);
  writePlaces(out, tree, top);
  writeVariables(out, tree, top);
  writeSubtrees(out, tree, top);
}

}  // namespace koru::tree
