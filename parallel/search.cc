// SPDX-License-Identifier: MIT
// The functions of koru_mpi.h.
#include "koru_mpi.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

#include "parallel/alone.h"
#include "parallel/party.h"

namespace koru::parallel {

namespace {

struct Process {
  std::unique_ptr<Transport> transport = connect();
  Mail mail{*transport};
  Pace pace;
  Counts counts;

  Process() {
    if (const char *seconds = std::getenv("KORU_MPI_PATIENCE")) pace.patience = std::atof(seconds);
    if (transport->rank() > 0) silence();
  }

 private:
  static void silence() {
    const int nowhere = open("/dev/null", O_WRONLY);
    if (nowhere < 0) return;
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
  }
};

Process &process() {
  static Process p;
  return p;
}

template <class Party>
Outcome play(Process &p, Party &&party) {
  while (party.step()) continue;
  if (!party.why().empty()) p.transport->stop(party.why());
  return {party.result(), party.counts()};
}

bool search(const Task &task) {
  Process &p = process();
  p.counts = {};
  Ground ground(task);
  if (!ground.failure().empty()) p.transport->stop(ground.failure());
  if (!ground.ready()) return false;
  p.mail.beginSearch();
  Outcome outcome;
  if (p.transport->size() == 1) {
    outcome = searchAlone(ground);
    if (!ground.failure().empty()) p.transport->stop(ground.failure());
  } else if (p.transport->rank() == 0) {
    outcome = play(p, Leader(ground, *p.transport, p.mail, p.pace));
  } else {
    outcome = play(p, Follower(ground, *p.transport, p.mail, p.pace));
  }
  p.counts = outcome.counts;
  return outcome.result;
}

}  // namespace
}  // namespace koru::parallel

using namespace koru::parallel;

bool cs_mpiFindAll(CSint **array, int size, CSfindFreeVar f, CSfoundCallback found) {
  return search({.mode = Mode::kAll, .array = array, .size = size, .select = f, .found = found});
}

bool cs_mpiSearch(CSint **array, int size, CSfindFreeVar f) {
  return search({.mode = Mode::kFirst, .array = array, .size = size, .select = f});
}

bool cs_mpiMinimize(CSint **array, int size, CSfindFreeVar f, CSint *cost, CSfoundCostCallback found) {
  return search({.mode = Mode::kMinimize, .array = array, .size = size, .select = f, .cost = cost, .foundCost = found});
}

long long cs_mpiGetNbFails(void) { return process().counts.fails; }
long long cs_mpiGetNbChoicePoints(void) { return process().counts.choicePoints; }
int cs_mpiRank(void) { return process().transport->rank(); }
int cs_mpiSize(void) { return process().transport->size(); }
