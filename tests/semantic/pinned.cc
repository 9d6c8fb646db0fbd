// SPDX-License-Identifier: MIT
#include "semantic/pinned.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "semantic/cases.h"

namespace koru::test::brute {
namespace {

const std::filesystem::path kHere = std::filesystem::path(__FILE__).parent_path();
const std::filesystem::path kLines = kHere / "expected.txt";
const std::filesystem::path kPage = kHere.parent_path().parent_path() / "docs" / "consistency.md";

// Below the heading of its table.
constexpr std::string_view kRule = "|---|---|---|--:|--:|--:|--:|";

// The name in "| `Name` | ...", empty for other lines.
std::string caseIn(const std::string &line) {
  if (!line.starts_with("| `")) return "";
  return line.substr(3, line.find('`', 3) - 3);
}

bool isModel(const Case &c) {
  return std::ranges::any_of(c.functions, [](const std::string &f) { return f.starts_with("model_"); });
}

bool isOfExtras(const Case &c) {
  return std::ranges::any_of(c.functions, [](const std::string &f) {
    const catalogue::Row *row = catalogue::findRow(f);
    return row != nullptr && !isOfKoruH(*row);
  });
}

// Two thirds, in two digits.
long long leastOf(long long states) {
  long long unit = 1;
  while (states * 2 / 3 / unit >= 100) unit *= 10;
  return states * 2 / 3 / unit * unit;
}

// What a line or a row stood for stays as long as it is true.
void pinLines(const std::map<std::string, Seen> &seen) {
  std::ostringstream text;
  for (const Case &c : allCases()) {
    const auto old = expectedCases().find(c.name);
    if (old == expectedCases().end() && (isModel(c) || isOfExtras(c))) continue;
    const Seen &now = seen.at(c.name);
    const bool holds = old != expectedCases().end() && now.states >= old->second.leastStates;
    text << c.name << " " << (holds ? old->second.leastStates : leastOf(now.states)) << " " << now.calls << "\n";
  }
  std::ofstream(kLines) << text.str();
}

// The rows take the place of the old ones; the text around them stays.
void pinRows(const std::map<std::string, Seen> &seen) {
  std::ifstream old(kPage);
  std::ostringstream text;
  for (std::string line; std::getline(old, line);) {
    if (caseIn(line).empty()) text << line << "\n";
    if (line != kRule) continue;
    for (const Case &c : allCases())
      if (!isModel(c)) text << rowOf(c.name, seen.at(c.name).measure) << "\n";
  }
  std::ofstream(kPage) << text.str();
}

}  // namespace

const std::map<std::string, Expected> &expectedCases() {
  static const std::map<std::string, Expected> cases = [] {
    std::map<std::string, Expected> result;
    std::ifstream file(kLines);
    std::string name;
    Expected expected;
    Calls calls;
    while (file >> name >> expected.leastStates >> calls) {
      expected.calls = calls;
      result[name] = expected;
    }
    return result;
  }();
  return cases;
}

const std::map<std::string, std::string> &documentedRows() {
  static const std::map<std::string, std::string> rows = [] {
    std::map<std::string, std::string> result;
    std::ifstream file(kPage);
    for (std::string line; std::getline(file, line);)
      if (const std::string name = caseIn(line); !name.empty()) result[name] = line;
    return result;
  }();
  return rows;
}

Expected expectedOf(const std::string &name) {
  const auto found = expectedCases().find(name);
  return found == expectedCases().end() ? Expected{} : found->second;
}

bool isPinning() { return std::getenv("KORU_PIN") != nullptr; }

void pin(const std::map<std::string, Seen> &seen) {
  pinLines(seen);
  pinRows(seen);
}

}  // namespace koru::test::brute
