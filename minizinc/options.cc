// SPDX-License-Identifier: MIT
#include "minizinc/options.h"

#include <charconv>
#include <string_view>

namespace koru::fzn {

const char *const kUsage =
    "usage: fzn-koru [OPTIONS] MODEL.fzn\n"
    "\n"
    "Solve a FlatZinc model. MiniZinc calls this program; see docs/minizinc.md.\n"
    "\n"
    "  -a             all solutions; of an optimisation, every better one\n"
    "  -i             of an optimisation, every better solution as it is found\n"
    "  -n COUNT       so many solutions of a satisfaction problem\n"
    "  -t MS          stop after so many milliseconds\n"
    "  -f             do not follow the model's search annotations\n"
    "  -r SEED        of all that is random\n"
    "  -p COUNT       processes that search in different ways\n"
    "  -s             statistics\n"
    "  -v             say what is being done, on the standard error stream\n"
    "  --restart R    none, constant, luby or geometric, whatever the model says\n"
    "  --profile FILE write the report of propagator runs, by line of the model\n"
    "  --explain      of a model without a solution, name the lines that contradict each other\n"
    "  --verify       check every solution before it is printed\n"
    "\n"
    "Exit status: 0, or 1 for a file or an option that cannot be understood, or a solution that is wrong.\n";

namespace {

bool toNumber(std::string_view text, long long &number) {
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  return result.ec == std::errc{} && result.ptr == text.data() + text.size() && number >= 0;
}

class Reader {
 public:
  Reader(int argc, char **argv, Options &options, std::string &message)
      : argc_(argc), argv_(argv), o_(options), message_(message) {}

  bool run() {
    for (at_ = 1; at_ < argc_; ++at_) {
      const std::string_view word = argv_[at_];
      if (!(isFlag(word) || (word.size() > 1 && word[0] == '-' ? valued(word) : isFile(word)))) return false;
    }
    return o_.help || !o_.file.empty() || fail("a FlatZinc file is to be named");
  }

 private:
  bool fail(std::string message) {
    message_ = std::move(message);
    return false;
  }

  bool isFlag(std::string_view word) {
    bool *const flag = word == "-a"          ? &o_.all
                       : word == "-i"        ? &o_.intermediate
                       : word == "-s"        ? &o_.statistics
                       : word == "-f"        ? &o_.free
                       : word == "-v"        ? &o_.verbose
                       : word == "--verify"  ? &o_.verify
                       : word == "--explain" ? &o_.explain
                       : word == "--help"    ? &o_.help
                                             : nullptr;
    if (flag != nullptr) *flag = true;
    return flag != nullptr;
  }

  bool isFile(std::string_view word) {
    if (!o_.file.empty()) return fail("two files are named");
    o_.file = word;
    return true;
  }

  bool valued(std::string_view word) {
    if (at_ + 1 == argc_) return fail("option " + std::string(word) + " is not known, or lacks its value");
    const std::string_view value = argv_[++at_];
    if (word == "--profile") return o_.profile = value, true;
    if (word == "--restart") return restarts(value);
    long long number = 0;
    long long *const target = word == "-n"   ? &o_.solutions
                              : word == "-t" ? &o_.milliseconds
                              : word == "-p" ? &o_.processes
                              : word == "-r" ? &number
                                             : nullptr;
    if (target == nullptr) return fail("option " + std::string(word) + " is not known");
    if (!toNumber(value, *target)) return fail("option " + std::string(word) + " takes a number, not " + argv_[at_]);
    if (word == "-r") o_.seed = static_cast<unsigned long long>(number);
    return true;
  }

  bool restarts(std::string_view value) {
    o_.restarts = value;
    for (const std::string_view known : {"none", "constant", "luby", "geometric"}) {
      if (value == known) return true;
    }
    return fail("--restart takes none, constant, luby or geometric");
  }

  int argc_;
  char **argv_;
  Options &o_;
  std::string &message_;
  int at_ = 1;
};

}  // namespace

bool readOptions(int argc, char **argv, Options &options, std::string &message) {
  return Reader(argc, argv, options, message).run();
}

}  // namespace koru::fzn
