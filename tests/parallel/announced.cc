// SPDX-License-Identifier: MIT
// A process dies between the announcement of a message and the message: the first one is to hear the others all the
// same.
//
//   mpirun --enable-recovery -n 3 announced
#include <csignal>
#include <cstdio>
#include <string>

#include "parallel/transport.h"

namespace koru::parallel {
namespace {

constexpr std::size_t kLong = 1 << 24;  // no transport sends so much before the receiver asks for it
constexpr double kAfter = 0.5;          // seconds

void restFor(Transport &transport, double seconds) {
  for (const double until = transport.seconds() + seconds; transport.seconds() < until;) transport.rest();
}

int lead(Transport &transport) {
  restFor(transport, kAfter);
  std::optional<Message> m;
  while (!m) m = transport.poll();
  std::printf("heard %s of %d\n", m->bytes.c_str(), m->from);
  transport.send(2, "enough");
  restFor(transport, kAfter);
  return 0;
}

int play(Transport &transport) {
  transport.noteLost();
  if (transport.rank() == 0) return lead(transport);
  if (transport.rank() == 1) {
    transport.send(0, std::string(kLong, 'x'));
    std::raise(SIGKILL);
  }
  restFor(transport, 2 * kAfter);
  transport.send(0, "something");
  while (!transport.poll()) transport.rest();
  return 0;
}

}  // namespace
}  // namespace koru::parallel

int main() { return koru::parallel::play(*koru::parallel::connect()); }
