// SPDX-License-Identifier: MIT
#include "traces/campaign.h"

#include <sys/wait.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <memory>
#include <vector>

#include "traces/shrink.h"

namespace koru::traces {
namespace {

constexpr std::uint64_t kBatch = 500;
constexpr int kShrunk = 10;  // failures that are worth the time

struct Batch {
  std::uint64_t from;
  std::uint64_t end;
};

struct Running {
  Child child;
  Batch batch;
  std::size_t slot;
};

class Runner {
 public:
  explicit Runner(const Campaign &campaign) : campaign_(campaign), next_(campaign.from) {
    for (int i = 0; i < campaign.jobs; ++i) slots_.push_back(makeShared());
  }

  Result run() {
    for (std::size_t slot = 0; slot < slots_.size(); ++slot) start(slot);
    while (!running_.empty()) {
      int status = 0;
      const auto found = running_.find(waitpid(-1, &status, 0));
      if (found == running_.end()) continue;
      const Running ended = found->second;
      running_.erase(found);
      const Failure failure = ended.child.judge(status);
      if (!failure.empty()) report(failure, *slots_[ended.slot], ended.batch.end);
      start(ended.slot);
    }
    return summary();
  }

 private:
  bool nextBatch(Batch &batch) {
    if (!left_.empty()) {
      batch = left_.back();
      left_.pop_back();
      return true;
    }
    const std::uint64_t end = campaign_.from + campaign_.count;
    if (next_ >= end) return false;
    batch = {next_, std::min(next_ + kBatch, end)};
    next_ = batch.end;
    return true;
  }

  void start(std::size_t slot) {
    Batch batch{};
    if (!nextBatch(batch)) return;
    Shared &shared = *slots_[slot];
    const Child child(shared, [&] {
      for (shared.seed = batch.from; shared.seed < batch.end; ++shared.seed)
        runOne(generate(shared.seed, campaign_.mix), campaign_.settings, shared);
    });
    running_.emplace(child.pid(), Running{child, batch, slot});
  }

  // The trace that failed is named by the seed that was running; the batch goes on after it.
  void report(const Failure &failure, const Shared &shared, std::uint64_t end) {
    ++result_.failures;
    if (shared.seed + 1 < end) left_.push_back({shared.seed + 1, end});
    std::printf("seed %llu: %s\n", static_cast<unsigned long long>(shared.seed), failure.c_str());
    if (result_.failures > kShrunk) return;
    Trace trace = generate(shared.seed, campaign_.mix);
    Shared *scratch = slots_.emplace_back(makeShared());
    trace = shrink(
        std::move(trace),
        [&](const Trace &candidate) { return sameKind(runInChild(candidate, campaign_.settings, *scratch), failure); },
        failure.starts_with("time") ? 60 : 3000);
    slots_.pop_back();
    const std::string path = campaign_.folder + "/" + std::to_string(shared.seed) + ".trace";
    std::ofstream(path) << "# " << failure << "\n" << print(trace);
    std::printf("%s  replay: koru_trace run %s\n", print(trace).c_str(), path.c_str());
    std::fflush(stdout);
  }

  Result summary() {
    for (const Shared *shared : slots_) {
      const Tally &tally = shared->tally;
      for (std::size_t i = 0; i < Tally::kRows; ++i) {
        result_.tally.calls[i] += tally.calls[i];
        result_.tally.skipped[i] += tally.skipped[i];
      }
      result_.tally.solved += tally.solved;
      result_.tally.refuted += tally.refuted;
      result_.tally.restored += tally.restored;
      result_.tally.traces += tally.traces;
    }
    for (std::size_t i = 0; i < rows().size(); ++i)
      if (isExport(*rows()[i]) && result_.tally.calls[i] == 0) ++result_.neverCalled;
    return result_;
  }

  const Campaign &campaign_;
  std::vector<Shared *> slots_;
  std::map<int, Running> running_;
  std::vector<Batch> left_;
  std::uint64_t next_;
  Result result_;
};

}  // namespace

Result run(const Campaign &campaign) { return Runner(campaign).run(); }

}  // namespace koru::traces
