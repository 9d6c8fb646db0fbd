// SPDX-License-Identifier: MIT
// koru-tree: shows what cs_recordSearches has recorded.
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>

#include "tree/tree.h"

using namespace koru::tree;

namespace {

constexpr char kUsage[] =
    "usage: koru-tree [--top N] RECORD\n"
    "       koru-tree --html FILE [--nodes N] RECORD\n"
    "       koru-tree --node NODE RECORD\n"
    "       koru-tree --diff RECORD RECORD\n"
    "\n"
    "Shows the tree of a search from the record that cs_recordSearches writes, also while it is being written.\n"
    "\n"
    "  --top N      list N places, variables and subtrees (default: 10)\n"
    "  --html FILE  write FILE, a page with the tree\n"
    "  --nodes N    of so many nodes at most, those with the largest subtrees (default: 20000)\n"
    "  --node NODE  print the decisions that lead to a node, as cs_goToNode takes them\n"
    "  --diff       compare two records: where they part, and who refuses more\n"
    "  --help       print this text\n"
    "\n"
    "Exit status: 0 when it was shown, 1 when two records differ, 2 on bad input or bad arguments.\n";

struct Options {
  std::size_t top = 10;
  std::size_t nodes = 20000;
  const char *page = nullptr;
  long node = -1;
  bool diff = false;
  std::vector<const char *> records;
};

[[noreturn]] void complain(const std::string &message) {
  std::cerr << "koru-tree: " << message << '\n';
  std::exit(2);
}

const char *argumentOf(char **argv, int &i) {
  if (argv[i + 1] == nullptr) complain(std::string(argv[i]) + " needs an argument");
  return argv[++i];
}

long numberOf(char **argv, int &i, long least) {
  const char *text = argumentOf(argv, i);
  char *end = nullptr;
  const long number = std::strtol(text, &end, 10);
  if (end == text || *end != '\0' || number < least) complain(std::string(text) + " is no such number");
  return number;
}

Options parseArguments(char **argv) {
  Options options;
  for (int i = 1; argv[i] != nullptr; ++i) {
    const std::string argument = argv[i];
    if (argument == "--help") {
      std::cout << kUsage;
      std::exit(0);
    } else if (argument == "--top") {
      options.top = static_cast<std::size_t>(numberOf(argv, i, 1));
    } else if (argument == "--nodes") {
      options.nodes = static_cast<std::size_t>(numberOf(argv, i, 1));
    } else if (argument == "--node") {
      options.node = numberOf(argv, i, 0);
    } else if (argument == "--html") {
      options.page = argumentOf(argv, i);
    } else if (argument == "--diff") {
      options.diff = true;
    } else if (argument.size() > 1 && argument[0] == '-') {
      complain("unknown option " + argument);
    } else {
      options.records.push_back(argv[i]);
    }
  }
  if (options.records.size() != (options.diff ? 2U : 1U)) complain(options.diff ? "two records" : "one record");
  return options;
}

Tree read(const char *name) {
  std::ifstream file(name, std::ios::binary);
  if (!file) complain(std::string(name) + ": cannot be opened");
  const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  Tree tree;
  std::string error;
  if (!readTree(bytes, tree, error)) complain(std::string(name) + ':' + error);
  return tree;
}

void show(const Tree &tree, const Options &options) {
  if (options.page != nullptr) {
    std::ofstream page(options.page);
    writePage(page, tree, options.records[0], options.nodes);
    if (!page.flush()) complain(std::string(options.page) + ": cannot be written");
  } else if (options.node >= 0) {
    if (static_cast<std::size_t>(options.node) >= tree.nodes.size()) complain("there is no such node");
    writePath(std::cout, tree, static_cast<int>(options.node));
  } else {
    writeSummary(std::cout, tree, options.top);
  }
}

}  // namespace

int main(int, char **argv) {
  const Options options = parseArguments(argv);
  const Tree tree = read(options.records[0]);
  bool same = true;
  if (options.diff)
    same = writeDifference(std::cout, tree, read(options.records[1]));
  else
    show(tree, options);
  if (!std::cout.flush()) complain("cannot write the output");
  return same ? 0 : 1;
}
