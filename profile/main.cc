// SPDX-License-Identifier: MIT
// koru-profile: shows a profiler report as a table, hottest place first, or as a page.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>

#include "profile/profile.h"

using namespace koru::profile;

namespace {

constexpr char kUsage[] =
    "usage: koru-profile [--top N] [--html FILE] [--json] [--folded [--time]] [REPORT]\n"
    "       koru-profile --diff [--top N] BEFORE AFTER\n"
    "\n"
    "Shows how often the constraints that each place of a program has posted ran, and how often they failed, from the\n"
    "report that cs_profilerWriteFile writes (standard input without one, or for -). From one with details\n"
    "(cs_profilerWriteDetailsFile) also the time they took, how many runs were in vain, and how much they narrowed.\n"
    "\n"
    "  --top N      print the N hottest places only: by time where the report has it, else by calls\n"
    "  --html FILE  write FILE, a page with the same table, which can be sorted, and the source with the heat of its\n"
    "               lines, instead\n"
    "  --json       print the whole as JSON, instead\n"
    "  --folded     print folded stacks of calls, which tools for flame graphs read, instead\n"
    "  --time       in folded stacks: nanoseconds instead of calls\n"
    "  --diff       compare two reports: who is called more, or takes longer, and who less\n"
    "  --help       print this text\n"
    "\n"
    "Exit status: 0 when the report was shown, 2 on bad input or bad arguments.\n";

struct Options {
  std::size_t top = 0;
  const char *page = nullptr;
  bool json = false;
  bool folded = false;
  bool time = false;
  bool diff = false;
  const char *report = nullptr;
  const char *second = nullptr;
};

[[noreturn]] void complain(const std::string &message) {
  std::cerr << "koru-profile: " << message << '\n';
  std::exit(2);
}

std::size_t parseTop(const char *text) {
  char *end = nullptr;
  const long number = std::strtol(text, &end, 10);
  if (end == text || *end != '\0' || number < 1) complain(std::string(text) + " is no number above 0");
  return static_cast<std::size_t>(number);
}

const char *argumentOf(char **argv, int &i) {
  if (argv[i + 1] == nullptr) complain(std::string(argv[i]) + " needs an argument");
  return argv[++i];
}

Options parseArguments(char **argv) {
  Options options;
  for (int i = 1; argv[i] != nullptr; ++i) {
    const std::string argument = argv[i];
    if (argument == "--help") {
      std::cout << kUsage;
      std::exit(0);
    } else if (argument == "--top") {
      options.top = parseTop(argumentOf(argv, i));
    } else if (argument == "--html") {
      options.page = argumentOf(argv, i);
    } else if (argument == "--json") {
      options.json = true;
    } else if (argument == "--folded") {
      options.folded = true;
    } else if (argument == "--time") {
      options.time = true;
    } else if (argument == "--diff") {
      options.diff = true;
    } else if (argument.size() > 1 && argument[0] == '-') {
      complain("unknown option " + argument);
    } else if (options.second != nullptr || (options.report != nullptr && !options.diff)) {
      complain(options.diff ? "more than two reports" : "more than one report");
    } else {
      (options.report == nullptr ? options.report : options.second) = argv[i];
    }
  }
  if (options.time && !options.folded) complain("--time is for --folded");
  if (options.diff && options.second == nullptr) complain("--diff needs two reports after it");
  return options;
}

Profile read(const char *report, const Options &options) {
  const bool isStandard = report == nullptr || std::strcmp(report, "-") == 0;
  const std::string name = isStandard ? "stdin" : report;
  std::ifstream file;
  if (!isStandard) file.open(name);
  if (!isStandard && !file) complain(name + ": cannot be opened");
  Profile profile;
  std::string error;
  if (!readProfile(isStandard ? std::cin : file, profile, error)) complain(name + ':' + error);
  if (options.time && !profile.detailed) complain(name + ": has no times");
  return profile;
}

void show(const Profile &profile, const Options &options) {
  if (options.page == nullptr) {
    const char *noColour = std::getenv("NO_COLOR");
    const bool colours = isatty(STDOUT_FILENO) != 0 && (noColour == nullptr || noColour[0] == '\0');
    if (options.diff)
      writeDifference(std::cout, profile, read(options.second, options), options.top);
    else if (options.folded)
      writeFolded(std::cout, profile, options.time);
    else if (options.json)
      writeJson(std::cout, profile);
    else
      writeTable(std::cout, profile, options.top, colours);
    if (!std::cout.flush()) complain("cannot write the output");
    return;
  }
  std::ofstream page(options.page);
  writePage(page, profile, options.report != nullptr ? options.report : "Profile");
  if (!page.flush()) complain(std::string(options.page) + ": cannot be written");
}

}  // namespace

int main(int, char **argv) {
  const Options options = parseArguments(argv);
  show(read(options.report, options), options);
  return 0;
}
