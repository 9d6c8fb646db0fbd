// SPDX-License-Identifier: MIT
#include "catalogue/headers.h"

#include <filesystem>
#include <fstream>

namespace koru::catalogue {
namespace {

// The sections of the headers whose functions state nothing about variables, and functions of these that do. What a run
// that waits states is its callback's; tests/unit/core/agenda_posting_test.cc has it.
const std::set<std::string> kStateNothing = {"Types and callbacks",
                                             "Lifecycle, version and errors",
                                             "Variables: creation, names, queries",
                                             "Choice points",
                                             "Search, variable selection and statistics",
                                             "Optimisation and criteria search",
                                             "Value selectors",
                                             "Search notification",
                                             "No-goods and restarts",
                                             "Profiler",
                                             "Formatted output",
                                             "Search objects",
                                             "Runs that wait",
                                             "Failures that were not looked at",
                                             "Several solvers",
                                             "Walks",
                                             "Why there is no solution",
                                             "Records of searches",
                                             "Why a value is gone",
                                             "Profiles in detail"};
const std::set<std::string> kStateAllTheSame = {"cs_createNoGoodSet", "cs_addNoGood"};

// " * 5. Relations" is the title of a section, " *   5. Relations" a line of the table of contents.
std::string titleIn(const std::string &line) {
  const std::size_t dot = line.find(". ");
  const bool isTitle =
      line.starts_with(" * ") && dot != std::string::npos && dot > 3 && line.find_first_not_of("0123456789", 3) == dot;
  return isTitle ? line.substr(dot + 2) : "";
}

// "KORU_API int cs_getMin(const CSint *v);" and "KORU_POST_API bool cs_Eq(CSint *x, CSint *y);"
std::string functionIn(const std::string &line) {
  if (!line.starts_with("KORU_API ") && !line.starts_with("KORU_POST_API ")) return "";
  const std::string declared = line.substr(0, line.find('('));
  return declared.substr(declared.find_last_of(" *") + 1);
}

}  // namespace

std::set<std::string> statingFunctions(const std::string &header) {
  std::set<std::string> functions;
  const auto root = std::filesystem::path(__FILE__).parent_path().parent_path().parent_path();
  std::ifstream file(root / "include" / header);
  std::string section;
  for (std::string line; std::getline(file, line);) {
    if (const std::string title = titleIn(line); !title.empty()) section = title;
    const std::string function = functionIn(line);
    const bool states = !kStateNothing.contains(section) || kStateAllTheSame.contains(function);
    if (!function.empty() && states) functions.insert(function);
  }
  return functions;
}

std::set<std::string> statingFunctions() {
  std::set<std::string> all = statingFunctions("koru.h");
  all.merge(statingFunctions("koru_extras.h"));
  return all;
}

}  // namespace koru::catalogue
