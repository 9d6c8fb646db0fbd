// SPDX-License-Identifier: MIT
// koru_peers: runs the benchmark problems on Koru and on Gecode in turn, within one process, and compares CPU times,
// solutions and search trees.
//
//   koru_peers [--repeat N] [--only TEXT] [--json FILE]
//
// Gecode runs with two recomputation settings; the one with the smaller best time is reported. One more run of each
// side tells the most heap memory that it has at a time. Exits with 1 when numbers of solutions differ or a post fails.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "gecode.h"
#include "heap.h"
#include "models_strong.h"

using namespace koru::bench;

namespace {

constexpr Recomputation kRecomputations[] = {{"1/1", 1, 1}, {"8/2", 8, 2}};

struct Options {
  int repeat = 5;
  std::string only;
  std::string json;
};

struct Measured {
  Outcome outcome;
  std::vector<double> seconds;
  double inEnd = 0;         // of all runs, for Koru
  long long peakBytes = 0;  // of the heap, in a run that is not timed

  double best() const { return *std::min_element(seconds.begin(), seconds.end()); }
  double median() const {
    std::vector<double> sorted = seconds;
    std::sort(sorted.begin(), sorted.end());
    return sorted[sorted.size() / 2];
  }
  double nanoseconds() const { return best() * 1e9 / static_cast<double>(std::max(outcome.units, 1LL)); }
};

struct Comparison {
  const Model *model;
  Measured ours;
  Measured theirs;
  const char *setting;

  bool sameSolutions() const { return ours.outcome.solutions == theirs.outcome.solutions; }
  bool posted() const { return ours.outcome.units > 0 && theirs.outcome.units > 0; }
  bool sound() const { return sameSolutions() && posted(); }
  bool sameTree() const {
    return ours.outcome.choicePoints == theirs.outcome.choicePoints && ours.outcome.fails == theirs.outcome.fails;
  }
  double ratioPerUnit() const { return theirs.nanoseconds() / ours.nanoseconds(); }
  double ratio() const { return theirs.best() / ours.best(); }
};

template <class Run>
void measure(Measured &measured, Run run) {
  const double endBefore = secondsInEnd;
  const double start = cpuSeconds();
  measured.outcome = run();
  const double all = cpuSeconds() - start;
  measured.seconds.push_back(measured.outcome.seconds == Outcome::kAll ? all : measured.outcome.seconds);
  measured.inEnd += secondsInEnd - endBefore;
}

template <class Run>
void measureHeap(Measured &measured, Run run) {
  const PeakHeap heap;
  run();
  measured.peakBytes = heap.bytes();
}

Comparison compare(const Model &model, const PeerModel &peer, int repeat) {
  Comparison result{&model, {}, {}, kRecomputations[0].name};
  Measured theirs[std::size(kRecomputations)];
  for (int i = 0; i < repeat; ++i) {
    measure(result.ours, model.run);
    for (std::size_t k = 0; k < std::size(kRecomputations); ++k)
      measure(theirs[k], [&] { return peer.run(kRecomputations[k]); });
  }
  const auto *best = std::min_element(std::begin(theirs), std::end(theirs),
                                      [](const Measured &a, const Measured &b) { return a.best() < b.best(); });
  const auto k = static_cast<std::size_t>(best - theirs);
  measureHeap(result.ours, model.run);
  measureHeap(theirs[k], [&] { return peer.run(kRecomputations[k]); });
  result.theirs = *best;
  result.setting = kRecomputations[k].name;
  return result;
}

const PeerModel *peerOf(const Model &model) {
  for (const auto peers :
       {relationPeers(), arithmeticPeers(), globalPeers(), searchPeers(), eventPeers(), strongPeers(), countingPeers()})
    for (const PeerModel &peer : peers)
      if (std::strcmp(peer.name, model.name) == 0) return &peer;
  return nullptr;
}

void printHeading() {
  std::printf("%-17s %10s %10s %9s %9s %5s %9s %9s %7s %9s %9s %6s %6s %9s %9s  %s\n", "model", "units", "theirs",
              "fails", "theirs", "tree", "ns/unit", "theirs", "c_d/a_d", "median s", "theirs", "ratio", "total",
              "peak KiB", "theirs", "in cs_end");
}

void print(const Comparison &c) {
  std::printf("%-17s %10lld %10lld %9lld %9lld %5s %9.1f %9.1f %7s %9.4f %9.4f %6.2f %6.2f %9lld %9lld  %4.1f %%\n",
              c.model->name, c.ours.outcome.units, c.theirs.outcome.units, c.ours.outcome.fails, c.theirs.outcome.fails,
              c.sameTree() ? "equal" : "other", c.ours.nanoseconds(), c.theirs.nanoseconds(), c.setting,
              c.ours.median(), c.theirs.median(), c.ratioPerUnit(), c.ratio(), c.ours.peakBytes / 1024,
              c.theirs.peakBytes / 1024,
              100 * c.ours.inEnd / (c.ours.median() * static_cast<double>(c.ours.seconds.size())));
  if (!c.posted()) std::printf("  a post failed\n");
  if (!c.sameSolutions())
    std::printf("  solutions differ: %lld, theirs %lld\n", c.ours.outcome.solutions, c.theirs.outcome.solutions);
  std::fflush(stdout);
}

void writeSide(std::FILE *file, const char *name, const Measured &m) {
  std::fprintf(file,
               "\"%s\": {\"units\": %lld, \"choice_points\": %lld, \"fails\": %lld, \"solutions\": %lld, "
               "\"min_seconds\": %.6f, \"median_seconds\": %.6f, \"ns_per_unit\": %.2f, \"peak_bytes\": %lld}",
               name, m.outcome.units, m.outcome.choicePoints, m.outcome.fails, m.outcome.solutions, m.best(),
               m.median(), m.nanoseconds(), m.peakBytes);
}

bool writeJson(const std::string &path, const std::vector<Comparison> &comparisons) {
  std::FILE *file = std::fopen(path.c_str(), "w");
  if (file == nullptr) return false;
  std::fputs("[\n", file);
  for (const Comparison &c : comparisons) {
    std::fprintf(file, "  {\"model\": \"%s\", \"unit\": \"%s\", ", c.model->name, c.model->unit);
    writeSide(file, "koru", c.ours);
    std::fputs(", ", file);
    writeSide(file, "gecode", c.theirs);
    std::fprintf(file, ", \"recomputation\": \"%s\", \"same_tree\": %s, \"ratio_per_unit\": %.3f, \"ratio\": %.3f}%s\n",
                 c.setting, c.sameTree() ? "true" : "false", c.ratioPerUnit(), c.ratio(),
                 &c == &comparisons.back() ? "" : ",");
  }
  std::fputs("]\n", file);
  return std::fclose(file) == 0;
}

bool parse(int argc, char **argv, Options &options) {
  for (int i = 1; i < argc; i += 2) {
    const std::string option = argv[i];
    if (i + 1 == argc) return false;
    if (option == "--repeat") {
      options.repeat = std::atoi(argv[i + 1]);
    } else if (option == "--only") {
      options.only = argv[i + 1];
    } else if (option == "--json") {
      options.json = argv[i + 1];
    } else {
      return false;
    }
  }
  return options.repeat > 0;
}

}  // namespace

int main(int argc, char **argv) {
  Options options;
  if (!parse(argc, argv, options)) {
    std::fprintf(stderr, "usage: %s [--repeat N] [--only TEXT] [--json FILE]\n", argv[0]);
    return 2;
  }
  instances();
  std::vector<Comparison> comparisons;
  printHeading();
  for (const std::span<const Model> models : {std::span<const Model>(kModels), std::span<const Model>(kStrongModels)})
    for (const Model &model : models) {
      const PeerModel *peer = peerOf(model);
      if (peer == nullptr || std::string(model.name).find(options.only) == std::string::npos) continue;
      comparisons.push_back(compare(model, *peer, options.repeat));
      print(comparisons.back());
    }
  if (!options.json.empty() && !writeJson(options.json, comparisons)) {
    std::fprintf(stderr, "%s: cannot write %s\n", argv[0], options.json.c_str());
    return 2;
  }
  return std::all_of(comparisons.begin(), comparisons.end(), [](const Comparison &c) { return c.sound(); }) ? 0 : 1;
}
