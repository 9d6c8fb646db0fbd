// SPDX-License-Identifier: MIT
// fzn-koru: reads a FlatZinc file, posts it, searches.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <new>

#include "minizinc/explaining.h"
#include "minizinc/parser.h"
#include "minizinc/portfolio.h"
#include "minizinc/profiling.h"
#include "minizinc/ranks.h"
#include "minizinc/run.h"

namespace {

using namespace koru::fzn;
using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

long long millisecondsSince(Clock::time_point start) { return static_cast<long long>(secondsSince(start) * 1000); }

// There is nothing to go on with.
[[noreturn]] void exhausted() {
  static constexpr char kText[] = "fzn-koru: memory exhausted\n";
  std::fwrite(kText, 1, sizeof kText - 1, stderr);
  std::_Exit(1);
}

// Of the time limit; 0: there is none.
long long remaining(const Options &options, Clock::time_point start) {
  return options.milliseconds > 0 ? std::max(1LL, options.milliseconds - millisecondsSince(start)) : 0;
}

bool readFile(Syntax &syntax) {
  std::FILE *f = std::fopen(syntax.file.c_str(), "rb");
  if (f == nullptr) return false;
  char block[1 << 16];
  std::size_t n = 0;
  while ((n = std::fread(block, 1, sizeof block, f)) > 0) syntax.text.append(block, n);
  const bool read = std::ferror(f) == 0;
  std::fclose(f);
  return read;
}

int complain(const std::string &message) {
  std::fprintf(stderr, "%s\n", message.c_str());
  return 1;
}

int solve(const Syntax &syntax, const Options &options, Clock::time_point start, Report &report) {
  report.setGoal(syntax.solve.goal);
  cs_init();
  cs_setErrHandler(
      CS_ERR_MEMORY, [](CSint *, void *) { exhausted(); }, nullptr);
  Times times;
  times.parse = secondsSince(start);
  Mistake mistake;
  Model model(syntax, mistake);
  const Profiling profiling(syntax, model, options.profile);
  const bool posted = model.post();
  times.post = secondsSince(start) - times.parse;
  if (mistake.isSet()) return complain(describe(syntax, mistake));
  if (options.verbose) {
    std::fprintf(stderr, "read in %.3f s, posted in %.3f s, %.3f s of processor time\n", times.parse, times.post,
                 static_cast<double>(std::clock()) / CLOCKS_PER_SEC);
  }
  const bool right = run(syntax, model, posted, options, times, report);
  profiling.write();
  if (report.isStopping()) std::_Exit(right ? 0 : 1);  // undoing and freeing may take long
  cs_end();
  if (options.explain && report.isUnsatisfiable() && !explainFailure(syntax, remaining(options, start), mistake))
    return complain(describe(syntax, mistake));
  return right ? 0 : 1;
}

// Whatever the first process writes, it writes alone.
void share(Options &options, const Ranks &ranks) {
  if (!ranks) return;
  options.ranks = &ranks;
  options.processes = 1;
  if (ranks.rank == 0) return;
  options.explain = false;
  options.profile.clear();
}

}  // namespace

int main(int argc, char **argv) {
  const Clock::time_point start = Clock::now();
  std::set_new_handler(exhausted);
  Options options;
  std::string message;
  if (!readOptions(argc, argv, options, message)) return complain("fzn-koru: " + message);
  if (options.help) return std::fputs(kUsage, stdout) < 0;
  Ranks ranks;
  if (!join(ranks, message)) return complain("fzn-koru: " + message);
  share(options, ranks);
  // Threads do not outlive forking: several processes are watched from then on.
  Report report(options);
  if (options.explain) options.processes = 1;
  if (options.processes <= 1) report.watch(options.milliseconds);
  Syntax syntax;
  syntax.file = options.file;
  if (!readFile(syntax)) return complain("fzn-koru: " + options.file + " cannot be read");
  Mistake mistake;
  if (!parse(syntax, mistake)) return complain(describe(syntax, mistake));
  if (options.processes <= 1) return solve(syntax, options, start, report);
  options.milliseconds = remaining(options, start);
  const auto solveBy = [&](const Options &how) {
    Report own(how);
    own.watch(how.milliseconds);
    return solve(syntax, how, start, own);
  };
  return isForPortfolio(syntax, options) ? runPortfolio(syntax, options, solveBy) : solveBy(options);
}
