// SPDX-License-Identifier: MIT
// How searches of many processes scale: the events of 10 to 10,000 of them, simulated.
//
//   koru_scaling [--in-all] [--free] [--least MILLISECONDS] [SECONDS [PROCESSES...]]
//
// SECONDS of work for each process (40), or in all, in a tree with the shape of a measured one. With --free the first
// process takes no time at all, which no tree of leaders could better; --least is the least piece that is given away,
// where that is not to be what koru_mpi makes of the number of processes. Else the first process is the real one as far
// as pieces and messages go: they are packed, unpacked, kept and looked for by the code of koru_mpi, and what that
// takes here is what it takes in the simulation. Assumed are the costs of a message and of a way to a piece.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <deque>
#include <map>
#include <memory>
#include <queue>
#include <string_view>

#include "parallel/pieces.h"
#include "worker.h"

namespace koru::bench {
namespace {

using parallel::Piece;
using parallel::Pieces;
using parallel::Reader;
using parallel::Report;
using parallel::Writer;

constexpr double kLatency = 20e-6;     // of a message between two machines
constexpr double kMessage = 1e-6;      // to send or to take one
constexpr double kLevel = 10e-6;       // of the way to a piece
constexpr double kSlice = 0.0005;      // after which a process looks at its messages
constexpr double kLeastPiece = 0.001;  // that is given away, with up to 512 processes
constexpr double kRetry = 0.002;       // after which one that had nothing to give may look again (in truth: kSlice)
constexpr int kAskedFor = 4;

double processorSeconds() {
  timespec t{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

struct Event {
  enum Kind { kDue, kWork, kSplit, kReport, kLead };

  double at;
  Kind kind;
  int who;
  long long number;  // of the assignment; of kDue: which of the times that were set
  std::string bytes = {};
  long long serial = 0;

  // The earliest is the greatest; messages keep their order.
  bool operator<(const Event &other) const { return at != other.at ? at > other.at : serial > other.serial; }
};

struct Options {
  double seconds = 40;
  bool inAll = false;
  bool isFree = false;
  double least = 0;  // 0: as koru_mpi does
  std::vector<int> processes;
};

class Simulation {
 public:
  Simulation(const Tree &tree, int processes, const Options &options)
      : interval_(std::max(0.05, 5e-4 * processes)),
        least_(options.least > 0 ? options.least : kLeastPiece * std::max(1.0, processes / 512.0)),
        isFree_(options.isFree),
        processes_(static_cast<std::size_t>(processes), Process{Worker(tree)}) {
    push({0, Event::kLead, 0, 0});
  }

  void run() {
    while (!events_.empty() && !over_) {
      const Event e = events_.top();
      events_.pop();
      now_ = e.at;
      handle(e);
    }
  }

  double seconds() const { return now_; }
  double leaderSeconds() const { return leaderSeconds_; }
  long long messages() const { return messages_; }
  long long bytes() const { return bytes_; }

 private:
  struct Process {
    Worker worker;
    long long assignment = 0;
    double until = 0;  // it has worked
    double reported = 0;
    long long due = 0;
    bool asked = false;
  };

  Process &process(int who) { return processes_[static_cast<std::size_t>(who)]; }
  void push(Event e) {
    e.serial = ++pushed_;
    events_.push(std::move(e));
  }
  void send(double at, Event::Kind kind, int who, long long number, std::string bytes) {
    ++messages_;
    bytes_ += std::ssize(bytes);
    push({at + kLatency, kind, who, number, std::move(bytes)});
  }

  // ----- those who work

  void handle(const Event &e) {
    if (e.kind == Event::kReport) inbox_.push_back(e);
    if (e.kind == Event::kReport || e.kind == Event::kLead) return leadWhenFree();
    Process &p = process(e.who);
    if (e.kind == Event::kWork) {
      Reader in(e.bytes);
      p.assignment = e.number;
      p.asked = false;
      p.until = p.reported = now_ + kLevel * p.worker.begin(in.piece());
      setDue(e.who);
    } else if (e.kind == Event::kDue ? e.number == p.due : e.number == p.assignment) {
      goOn(e.who, now_, e.kind == Event::kSplit);
    }
  }

  void setDue(int who) {
    Process &p = process(who);
    const double end = p.until + p.worker.left();
    const double next =
        p.asked ? p.until + std::max(kRetry, p.worker.untilSplit(least_)) : std::max(now_, p.reported + interval_);
    push({std::min(end, next), Event::kDue, who, ++p.due});
  }

  void goOn(int who, double until, bool splits) {
    Process &p = process(who);
    p.until += p.worker.work(until - p.until + (splits ? kSlice / 2 : 1e-9));
    Report r;
    r.assignment = p.assignment;
    r.finished = p.worker.ended();
    if (splits) p.asked = true;
    if (p.asked && !r.finished) {
      Piece piece;
      while (std::ssize(r.given) < kAskedFor && p.worker.split(least_, piece)) r.given.push_back(piece);
      std::ranges::reverse(r.given);
      r.answers = !r.given.empty();
      p.asked = p.asked && !r.answers;
    }
    const bool reports = r.finished || r.answers || p.until - p.reported >= interval_;
    if (!r.finished) r.rest = p.worker.piece();
    if (r.finished) p.assignment = 0;
    if (reports) {
      p.reported = p.until;
      Writer out;
      out.report(r);
      send(p.until, Event::kReport, who, 0, std::move(out.bytes));
    }
    ++p.due;
    if (!r.finished) setDue(who);
  }

  // ----- the first process

  void leadWhenFree() {
    if (now_ < free_) {
      if (!waits_) push({free_, Event::kLead, 0, 0});
      waits_ = true;
      return;
    }
    waits_ = false;
    const double began = processorSeconds();
    const long long before = messages_;
    std::vector<Event> letters;
    lead(letters);
    const auto handled = static_cast<double>(heard_) + static_cast<double>(letters.size());
    const double taken = isFree_ ? 0 : processorSeconds() - began + kMessage * handled;
    leaderSeconds_ += taken;
    free_ = now_ + taken;
    messages_ = before;
    for (Event &e : letters) send(free_, e.kind, e.who, e.number, std::move(e.bytes));
  }

  void lead(std::vector<Event> &letters) {
    heard_ = 0;
    std::vector<long long> dropped;
    for (; !inbox_.empty(); inbox_.pop_front(), ++heard_) {
      Reader in(inbox_.front().bytes);
      const Report r = in.report();
      pieces_.apply(r, dropped);
      if (!r.finished) continue;
      holders_.erase(r.assignment);
      idle_.push_back(inbox_.front().who);
    }
    while (pieces_.takeFinished()) continue;
    over_ = pieces_.empty();
    handOut(letters);
    while (pieces_.queued() < processes_.size()) {
      const auto assignment = pieces_.toAsk();
      if (!assignment) break;
      letters.push_back({0, Event::kSplit, holders_.at(*assignment), *assignment});
    }
  }

  void handOut(std::vector<Event> &letters) {
    if (last_ == 0)
      for (int who = static_cast<int>(processes_.size()) - 1; who >= (processes_.size() > 16 ? 1 : 0); --who)
        idle_.push_back(who);
    while (!idle_.empty() && pieces_.queued() > 0) {
      const int who = idle_.back();
      idle_.pop_back();
      const Piece *piece = pieces_.assign(++last_);
      holders_[last_] = who;
      Writer out;
      out.piece(*piece);
      letters.push_back({0, Event::kWork, who, last_, std::move(out.bytes)});
    }
  }

  double interval_;
  double least_;
  bool isFree_;
  std::vector<Process> processes_;
  std::priority_queue<Event> events_;
  long long pushed_ = 0;
  double now_ = 0;
  Pieces pieces_;
  std::deque<Event> inbox_;
  std::vector<int> idle_;
  std::unordered_map<long long, int> holders_;
  long long last_ = 0;
  double free_ = 0, leaderSeconds_ = 0;
  bool waits_ = false, over_ = false;
  long long heard_ = 0, messages_ = 0, bytes_ = 0;
};

void simulate(const std::vector<Shares> &shares, int processes, const Options &options) {
  const double each = options.inAll ? options.seconds / processes : options.seconds;
  const Tree tree(shares, each * processes);
  Simulation s(tree, processes, options);
  s.run();
  std::printf("%7d  %10.3f  %9.2f  %10.0f  %10.0f  %8.2f\n", processes, each / s.seconds(), s.seconds(),
              static_cast<double>(s.messages()) / s.seconds(), static_cast<double>(s.bytes()) / s.seconds(),
              s.leaderSeconds() / s.seconds());
  std::fflush(stdout);
}

Options optionsOf(int argc, char **argv) {
  Options options;
  int i = 1;
  for (; i < argc && argv[i][0] == '-'; ++i) {
    const std::string_view word = argv[i];
    options.inAll = options.inAll || word == "--in-all";
    options.isFree = options.isFree || word == "--free";
    if (word == "--least" && i + 1 < argc) options.least = std::atof(argv[++i]) / 1000;
  }
  if (i < argc) options.seconds = std::atof(argv[i++]);
  for (; i < argc; ++i) options.processes.push_back(std::atoi(argv[i]));
  if (options.processes.empty()) options.processes = {10, 100, 1000, 10000};
  return options;
}

}  // namespace
}  // namespace koru::bench

int main(int argc, char **argv) {
  using namespace koru::bench;
  const Options options = optionsOf(argc, argv);
  const std::vector<Shares> shares = measureShares();
  std::printf("%zu measured nodes, %g seconds of work %s\n", shares.size(), options.seconds,
              options.inAll ? "in all" : "for each process");
  std::printf("processes  efficiency    seconds  messages/s     bytes/s   leading\n");
  for (const int processes : options.processes) simulate(shares, processes, options);
}
