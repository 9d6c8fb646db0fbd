// SPDX-License-Identifier: MIT
// koru_trace: run, generate and shrink API traces; campaigns of many.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string_view>

#include "traces/campaign.h"
#include "traces/shrink.h"

namespace {

using namespace koru::traces;

const char kUsage[] =
    "usage: koru_trace run FILE [--quiet]      run a trace in this process and print what it answers\n"
    "       koru_trace generate SEED           print the trace of a seed\n"
    "       koru_trace shrink FILE             make a failing trace small and print it\n"
    "       koru_trace tidy FILE               print the lines of a file that are lines of a trace\n"
    "       koru_trace campaign COUNT          run the traces of COUNT seeds\n"
    "options: --from SEED  --jobs N  --restoring  --figures  --out FOLDER\n"
    "         --fault relation|restore|leak|crash|hang|callback   be wrong on purpose\n";

int misuse(const std::string &what) {
  std::fprintf(stderr, "koru_trace: %s\n%s", what.c_str(), kUsage);
  return 2;
}

bool readTrace(const char *path, Trace &trace) {
  std::ifstream file(path);
  if (!file) return misuse(std::string("cannot read ") + path), false;
  std::string reason;
  trace = parse(std::string(std::istreambuf_iterator<char>(file), {}), reason);
  if (reason.empty()) return true;
  std::fprintf(stderr, "%s: %s\n", path, reason.c_str());
  return false;
}

int runFile(const char *path, Settings settings, bool quiet) {
  Trace trace;
  if (!readTrace(path, trace)) return 2;
  settings.transcript = !quiet;
  Tally tally{};
  const std::string failure = Machine(trace, settings, tally).run();
  if (!failure.empty()) std::printf("FAILED: %s\n", failure.c_str());
  return failure.empty() ? 0 : 1;
}

int shrinkFile(const char *path, const Settings &settings) {
  Trace trace;
  if (!readTrace(path, trace)) return 2;
  Shared &shared = *makeShared();
  const Failure failure = runInChild(trace, settings, shared);
  if (failure.empty()) return std::fprintf(stderr, "%s does not fail\n", path), 1;
  const auto same = [&](const Trace &candidate) { return sameKind(runInChild(candidate, settings, shared), failure); };
  std::printf("# %s\n%s", failure.c_str(), print(shrink(trace, same)).c_str());
  return 0;
}

int tidyFile(const char *path) {
  Trace trace;
  readTrace(path, trace);
  return std::printf("%s", print(trace).c_str()) < 0;
}

using Count = unsigned long long;

void printFigures(const Tally &tally) {
  for (std::size_t i = 0; i < rows().size(); ++i)
    std::printf("%10llu %10llu  %s\n", Count{tally.calls[i]}, Count{tally.skipped[i]}, rows()[i]->name);
}

int runCampaign(const Campaign &campaign) {
  const Result result = run(campaign);
  const Tally &tally = result.tally;
  Count calls = 0;
  Count skipped = 0;
  for (std::size_t i = 0; i < rows().size(); ++i) {
    calls += tally.calls[i];
    skipped += tally.skipped[i];
    if (isExport(*rows()[i]) && tally.calls[i] == 0) std::printf("never called: %s\n", rows()[i]->name);
  }
  if (campaign.figures) printFigures(tally);
  std::printf(
      "%llu traces, %llu calls (%llu left out), %llu solution sets compared, %llu failures confirmed, "
      "%llu restores compared, %d exports never called, %d failures\n",
      Count{tally.traces}, calls, skipped, Count{tally.solved}, Count{tally.refuted}, Count{tally.restored},
      result.neverCalled, result.failures);
  const bool mustReachAll = campaign.mix == Mix::kAll && campaign.count >= 2000;
  return result.failures > 0 || (mustReachAll && result.neverCalled > 0) ? 1 : 0;
}

bool parseFault(std::string_view name, Fault &fault) {
  static constexpr std::pair<std::string_view, Fault> kFaults[] = {
      {"relation", Fault::kRelation}, {"restore", Fault::kRestore}, {"leak", Fault::kLeak},
      {"crash", Fault::kCrash},       {"hang", Fault::kHang},       {"callback", Fault::kCallback}};
  for (const auto &[known, value] : kFaults)
    if (known == name) return fault = value, true;
  return false;
}

bool parseOption(int argc, char **argv, int &i, Campaign &campaign, bool &quiet) {
  const std::string_view option = argv[i];
  if (option == "--quiet") return quiet = true;
  if (option == "--figures") return campaign.figures = true;
  if (option == "--restoring") return campaign.mix = Mix::kRestoring, true;
  if (++i >= argc) return false;
  if (option == "--from") return campaign.from = std::strtoull(argv[i], nullptr, 10), true;
  if (option == "--jobs") return (campaign.jobs = std::atoi(argv[i])) > 0;
  if (option == "--out") return campaign.folder = argv[i], true;
  return option == "--fault" && parseFault(argv[i], campaign.settings.fault);
}

}  // namespace

int main(int argc, char **argv) {
  if (argc < 3) return misuse("a command and its argument are needed");
  Campaign campaign;
  bool quiet = false;
  for (int i = 3; i < argc; ++i)
    if (!parseOption(argc, argv, i, campaign, quiet)) return misuse("wrong option");
  const std::string_view command = argv[1];
  if (command == "run") return runFile(argv[2], campaign.settings, quiet);
  if (command == "tidy") return tidyFile(argv[2]);
  if (command == "shrink") return shrinkFile(argv[2], campaign.settings);
  campaign.count = std::strtoull(argv[2], nullptr, 10);
  if (command == "generate") return std::printf("%s", print(generate(campaign.count, campaign.mix)).c_str()) < 0;
  if (command == "campaign") return runCampaign(campaign);
  return misuse("unknown command");
}
