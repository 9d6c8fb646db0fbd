// SPDX-License-Identifier: MIT
// Two trees of the same problem, as before and after a change: where they part, and what either refuses more.
#include <algorithm>
#include <ostream>

#include "tree/tree.h"

namespace koru::tree {

namespace {

bool isSame(const Tree &a, const Tree &b, std::size_t i) {
  const Node &x = a.nodes[i];
  const Node &y = b.nodes[i];
  return x.parent == y.parent && x.value == y.value && x.method == y.method && x.flags == y.flags &&
         (x.is(kRoot) || x.variable == y.variable);
}

// A decision with those before it, and what became of it.
void writeNode(std::ostream &out, const char *which, const Tree &tree, std::size_t i) {
  out << "  " << which << ": ";
  if (i >= tree.nodes.size()) {
    out << "no more\n";
    return;
  }
  out << tree.textTo(static_cast<int>(i));
  const Node &n = tree.nodes[i];
  if (n.isRefused()) out << "  refused";
  if (n.isRefused() && n.place >= 0) out << " by " << tree.places[static_cast<std::size_t>(n.place)].text();
  if (n.is(kSolution)) out << "  solution";
  out << '\n';
}

std::map<std::string, std::int64_t> refusalsOf(const Tree &tree) {
  std::map<std::string, std::int64_t> counts;
  for (const Node &n : tree.nodes)
    if (n.isRefused() && n.place >= 0) ++counts[tree.places[static_cast<std::size_t>(n.place)].text()];
  return counts;
}

void writeRefusals(std::ostream &out, const Tree &a, const Tree &b) {
  std::map<std::string, std::int64_t> before = refusalsOf(a);
  std::map<std::string, std::int64_t> after = refusalsOf(b);
  for (const auto &[name, count] : before) after.try_emplace(name, 0);
  for (const auto &[name, count] : after)
    if (before[name] != count) out << "  " << before[name] << " -> " << count << "  " << name << '\n';
}

}  // namespace

bool writeDifference(std::ostream &out, const Tree &a, const Tree &b) {
  const std::size_t common = std::min(a.nodes.size(), b.nodes.size());
  std::size_t i = 0;
  while (i < common && isSame(a, b, i)) ++i;
  if (i == common && a.nodes.size() == b.nodes.size()) {
    out << "the same: " << common << " nodes\n";
    return true;
  }
  out << "the same up to node " << i << "; then\n";
  writeNode(out, "first ", a, i);
  writeNode(out, "second", b, i);
  const Totals x = totalsOf(a);
  const Totals y = totalsOf(b);
  out << "choice points " << x.choicePoints << " -> " << y.choicePoints << ", refused " << x.refused << " -> "
      << y.refused << ", solutions " << a.solutions.size() << " -> " << b.solutions.size() << '\n';
  writeRefusals(out, a, b);
  return false;
}

}  // namespace koru::tree
