// SPDX-License-Identifier: MIT
// Reads profiler reports back: the lines of the head, and the rows in an order that does not depend on addresses.
#pragma once

#include <algorithm>
#include <cstdio>
#include <ostream>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "koru.h"
#include "support/kit/written_text.h"

namespace koru::test {

struct ProfileRow {
  std::string text;  // up to the function name, with the tabs that it has of its own
  std::string name;
  int calls;
  int fails;

  auto tied() const { return std::tie(text, name, calls, fails); }
  bool operator==(const ProfileRow &other) const { return tied() == other.tied(); }
  bool operator<(const ProfileRow &other) const { return tied() < other.tied(); }
};

inline void PrintTo(const ProfileRow &row, std::ostream *out) {
  *out << row.text << '|' << row.name << '|' << row.calls << '|' << row.fails;
}

inline std::string reportOf(CSprofiler *profiler) {
  return textOf([profiler](std::FILE *f) { cs_profilerWrite(profiler, f); });
}

inline std::vector<std::string> linesOf(const std::string &text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// The last three fields are name, calls and fails.
inline ProfileRow rowOf(const std::string &line) {
  const std::size_t third = line.rfind('\t');
  const std::size_t second = line.rfind('\t', third - 1);
  const std::size_t first = line.rfind('\t', second - 1);
  return {line.substr(0, first), line.substr(first + 1, second - first - 1),
          std::stoi(line.substr(second + 1, third - second - 1)), std::stoi(line.substr(third + 1))};
}

inline std::vector<ProfileRow> rowsOf(CSprofiler *profiler) {
  const std::vector<std::string> lines = linesOf(reportOf(profiler));
  std::vector<ProfileRow> rows;
  auto line = std::find(lines.begin(), lines.end(), "__DATA__");
  while (line != lines.end() && ++line != lines.end()) rows.push_back(rowOf(*line));
  std::sort(rows.begin(), rows.end());
  return rows;
}

}  // namespace koru::test
