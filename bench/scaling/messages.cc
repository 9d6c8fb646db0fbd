// SPDX-License-Identifier: MIT
// How many messages a second the first process can lead with, measured by messages that are really sent.
//
//   mpirun -n 2 koru_messages [SECONDS [PIECES]]
//
// Each of the others plays a thousand processes, one or another of which reports as soon as there is an answer to the
// report before: a piece is finished, and another one of eight levels given away. The first process takes each report,
// puts it in its place among so many pieces (10,000), and hands out the next piece, by the code of koru_mpi. What
// counts is the time from a message that is there to the answer that is sent.
#include <cstdio>
#include <cstdlib>

#include "parallel/pieces.h"
#include "parallel/transport.h"

namespace koru::bench {
namespace {

using parallel::Piece;
using parallel::Pieces;
using parallel::Reader;
using parallel::Report;
using parallel::Transport;
using parallel::Writer;

constexpr int kDepth = 8;
constexpr int kPlayed = 1000;  // processes by one
constexpr int kAhead = 16;     // reports that are under way at a time

Piece someOf(unsigned number) {
  Piece piece{{}, kDepth - 1, true};
  for (int level = 0; level < kDepth; ++level) {
    const int value = static_cast<int>((number >> (3 * level)) % 8);
    piece.steps.push_back({value, 0, 7, number * 2654435761U >> 16});
  }
  return piece;
}

void follow(Transport &transport) {
  std::vector<long long> held;
  for (unsigned number = 0;;) {
    const auto m = transport.poll();
    if (!m) continue;
    if (m->bytes.empty()) return;
    held.push_back(Reader(m->bytes).integer());
    if (held.size() <= kPlayed) continue;
    const std::size_t which = std::size_t{++number} * 2654435761U % held.size();
    std::swap(held[which], held.back());
    const Report r{held.back(), {1000, 500, 0}, {}, true, true, {}, {someOf(number)}};
    held.pop_back();
    Writer out;
    out.report(r);
    transport.send(0, std::move(out.bytes));
  }
}

class Leading {
 public:
  Leading(Transport &transport, int pieces) : transport_(transport) {
    pieces_.assign(++last_);
    Report all{last_, {}, {}, false, true, {}, {}};
    for (int i = 0; i < pieces; ++i) all.given.push_back(someOf(static_cast<unsigned>(i)));
    pieces_.apply(all, dropped_);
    for (int i = 0; i < kPlayed + kAhead; ++i)
      for (int to = 1; to < transport.size(); ++to) give(to);
  }

  void go(double seconds) {
    for (const double began = transport_.seconds(); transport_.seconds() - began < seconds;) {
      const double before = transport_.seconds();
      const auto m = transport_.poll();
      if (!m) continue;
      bytes_ += std::ssize(m->bytes);
      Reader in(m->bytes);
      pieces_.apply(in.report(), dropped_);
      while (pieces_.takeFinished()) continue;
      give(m->from);
      seconds_ += transport_.seconds() - before;
      messages_ += 2;
    }
  }

  void end() {
    for (int to = 1; to < transport_.size(); ++to) transport_.send(to, {});
    std::printf("%lld messages, %.0f bytes each, %.2f microseconds each: %.0f a second\n", messages_,
                static_cast<double>(bytes_) / static_cast<double>(messages_),
                1e6 * seconds_ / static_cast<double>(messages_), static_cast<double>(messages_) / seconds_);
  }

 private:
  void give(int to) {
    const Piece *piece = pieces_.assign(++last_);
    if (piece == nullptr) return;
    Writer out;
    out.integer(last_);
    out.piece(*piece);
    bytes_ += std::ssize(out.bytes);
    transport_.send(to, std::move(out.bytes));
  }

  Transport &transport_;
  Pieces pieces_;
  std::vector<long long> dropped_;
  long long last_ = 0, messages_ = 0, bytes_ = 0;
  double seconds_ = 0;
};

void run(Transport &transport, double seconds, int pieces) {
  if (transport.rank() > 0) return follow(transport);
  Leading leading(transport, pieces);
  leading.go(seconds);
  leading.end();
}

}  // namespace
}  // namespace koru::bench

int main(int argc, char **argv) {
  const auto transport = koru::parallel::connect();
  if (transport->size() < 2) {
    std::fprintf(stderr, "two processes are needed: mpirun -n 2 %s\n", argv[0]);
    return 2;
  }
  koru::bench::run(*transport, argc > 1 ? std::atof(argv[1]) : 3, argc > 2 ? std::atoi(argv[2]) : 10000);
  return 0;
}
