// SPDX-License-Identifier: MIT
// The page: the tree as an icicle, in one file. Each decision lies below the one before it and is as wide as its
// subtree has nodes. What the page does not show it counts, so that sums are those of the whole tree.
#include <algorithm>
#include <numeric>
#include <ostream>
#include <sstream>

#include "profile/quoting.h"
#include "tree/page_parts.h"
#include "tree/tree.h"

namespace koru::tree {

namespace {

constexpr std::size_t kMostSolutions = 2000;  // the last ones, with their times

template <class Each>
void writeArray(std::ostream &out, const char *name, std::size_t n, const Each &each) {
  out << ",\n" << quoted(name) << ":[";
  for (std::size_t i = 0; i < n; ++i) {
    if (i > 0) out << ',';
    each(i);
  }
  out << ']';
}

// The nodes that are shown: those with the largest subtrees, so that with a node all above it are.
std::vector<int> choose(const Tree &tree, std::size_t most) {
  std::vector<int> chosen(tree.nodes.size());
  std::iota(chosen.begin(), chosen.end(), 0);
  if (chosen.size() <= most) return chosen;
  const auto size = [&](int i) { return tree.nodes[static_cast<std::size_t>(i)].size; };
  std::ranges::stable_sort(chosen, std::greater<>(), size);
  chosen.resize(most);
  std::ranges::sort(chosen);
  return chosen;
}

// What lies at each shown node, itself and the nodes below it that are not shown.
struct Counts {
  std::vector<int> shownAs;                   // for each node the position of the nearest shown one above it
  std::vector<std::map<int, int>> refusedBy;  // by place, -1 where it is not known
  std::vector<int> solutions;
};

Counts countAt(const Tree &tree, const std::vector<int> &chosen) {
  Counts counts{std::vector<int>(tree.nodes.size(), -1), {}, {}};
  counts.refusedBy.resize(chosen.size());
  counts.solutions.resize(chosen.size());
  for (std::size_t k = 0; k < chosen.size(); ++k)
    counts.shownAs[static_cast<std::size_t>(chosen[k])] = static_cast<int>(k);
  for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
    const Node &n = tree.nodes[i];
    int &at = counts.shownAs[i];
    if (at < 0 && n.parent >= 0) at = counts.shownAs[static_cast<std::size_t>(n.parent)];
    if (at < 0) continue;  // a root beyond the limit
    if (n.isRefused()) ++counts.refusedBy[static_cast<std::size_t>(at)][n.place];
    if (n.is(kSolution)) ++counts.solutions[static_cast<std::size_t>(at)];
  }
  return counts;
}

void writePairs(std::ostream &out, const std::map<int, int> &pairs) {
  out << '[';
  const char *comma = "";
  for (const auto &[place, count] : pairs) {
    out << comma << place << ',' << count;
    comma = ",";
  }
  out << ']';
}

void writeNodes(std::ostream &out, const Tree &tree, const std::vector<int> &chosen, const Counts &counts) {
  const auto node = [&](std::size_t k) -> const Node & { return tree.nodes[static_cast<std::size_t>(chosen[k])]; };
  const std::size_t n = chosen.size();
  writeArray(out, "at", n, [&](std::size_t k) { out << chosen[k]; });
  writeArray(out, "parent", n, [&](std::size_t k) {
    out << (node(k).parent < 0 ? -1 : counts.shownAs[static_cast<std::size_t>(node(k).parent)]);
  });
  writeArray(out, "size", n, [&](std::size_t k) { out << node(k).size; });
  writeArray(out, "variable", n, [&](std::size_t k) { out << node(k).variable; });
  writeArray(out, "value", n, [&](std::size_t k) { out << node(k).value; });
  writeArray(out, "method", n, [&](std::size_t k) { out << int{node(k).method}; });
  writeArray(out, "flags", n, [&](std::size_t k) { out << int{node(k).flags}; });
  writeArray(out, "refused", n, [&](std::size_t k) { writePairs(out, counts.refusedBy[k]); });
  writeArray(out, "solved", n, [&](std::size_t k) { out << counts.solutions[k]; });
}

void writeData(std::ostream &out, const Tree &tree, std::size_t most) {
  const std::vector<int> chosen = choose(tree, most);
  const Counts counts = countAt(tree, chosen);
  const std::size_t first = tree.solutions.size() - std::min(tree.solutions.size(), kMostSolutions);
  out << "{\"nodes\":" << tree.nodes.size() << ",\"solutionsInAll\":" << tree.solutions.size();
  writeArray(out, "places", tree.places.size(), [&](std::size_t i) { out << quoted(tree.places[i].text()); });
  writeArray(out, "solutions", tree.solutions.size() - first, [&](std::size_t i) {
    const Solution &s = tree.solutions[first + i];
    out << '[' << counts.shownAs[static_cast<std::size_t>(s.node)] << ',' << s.node << ',' << s.milliseconds;
    if (s.hasWorth) out << ',' << s.worth;
    out << ']';
  });
  out << ",\n\"names\":{";
  const char *comma = "";
  for (const auto &[number, name] : tree.names) {
    out << comma << '"' << number << "\":" << quoted(name);
    comma = ",";
  }
  out << '}';
  writeNodes(out, tree, chosen, counts);
  out << '}';
}

}  // namespace

void writePage(std::ostream &out, const Tree &tree, const std::string &title, std::size_t most) {
  std::ostringstream summary;
  writeSummary(summary, tree, 10);
  out << "<!doctype html>\n<html lang=\"en\">\n<meta charset=\"utf-8\">\n<title>" << escaped(title) << "</title>\n"
      << kPageHead << "<h1>" << escaped(title) << "</h1>\n"
      << kPageBody << "<details><summary>In words</summary><pre>" << escaped(summary.str()) << "</pre></details>\n"
      << "<script type=\"application/json\" id=\"data\">";
  writeData(out, tree, most);
  out << "</script>\n" << kPageScript << "</html>\n";
}

}  // namespace koru::tree
