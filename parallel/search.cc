// SPDX-License-Identifier: MIT
// The functions of koru_mpi.h.
#include "koru_mpi.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "parallel/alone.h"
#include "parallel/checkpoint.h"
#include "parallel/party.h"

namespace koru::parallel {

namespace {

struct Process {
  std::unique_ptr<Transport> transport = connect();
  Mail mail{*transport};
  Pace pace;
  Counts counts;
  CSmpiProgress progress = nullptr;
  double progressSeconds = 0;
  void *progressExtra = nullptr;
  std::string checkpoint;  // a path; empty: none
  double checkpointSeconds = 0;
  bool tells = std::getenv("KORU_MPI_STATISTICS") != nullptr;
  std::string page;  // of the processes over time, a path; empty: none
  long long told = 0;

  Process() {
    if (const char *seconds = std::getenv("KORU_MPI_PATIENCE")) pace.patience = std::atof(seconds);
    if (const char *path = std::getenv("KORU_MPI_PAGE")) page = path;
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
Outcome play(Process &p, Party &party) {
  while (party.step()) continue;
  if (!party.why().empty()) p.transport->stop(party.why());
  return {party.result(), party.counts()};
}

// ----- checkpoints

void refuse(Process &p, const std::string &why) {
  p.transport->stop("the checkpoint " + p.checkpoint + " is not used, and stays as it is: " + why);
}

// That of this search or a later one, which is then not written over.
Checkpoint checkpointOf(Process &p) {
  Checkpoint checkpoint;
  std::string why;
  if (p.checkpoint.empty()) return checkpoint;
  if (!readCheckpoint(p.checkpoint, checkpoint, why)) refuse(p, why);
  if (checkpoint.search > 0 && checkpoint.search < p.mail.search()) refuse(p, "it is of an earlier search");
  return checkpoint;
}

void save(Process &p, const std::string &state) {
  std::fflush(nullptr);
  std::string why;
  if (!writeCheckpoint(p.checkpoint, {p.mail.search(), state}, why))
    std::fprintf(stderr, "koru_mpi: the checkpoint %s cannot be written: %s\n", p.checkpoint.c_str(), why.c_str());
}

void writePage(const Process &p, const Timeline &timeline, const Counts &counts) {
  const std::string page = timeline.page(counts, p.transport->seconds());
  std::FILE *file = std::fopen(p.page.c_str(), "wb");
  const bool written = file != nullptr && std::fwrite(page.data(), 1, page.size(), file) == page.size();
  if ((file != nullptr && std::fclose(file) != 0) || !written)
    std::fprintf(stderr, "koru_mpi: the page %s cannot be written\n", p.page.c_str());
}

Wishes wishesOf(Process &p, bool saves) {
  Wishes wishes;
  wishes.progressSeconds = p.progressSeconds;
  if (p.progress != nullptr)
    wishes.progress = [&p](double done, const Counts &c, int processes) {
      p.progress(done, c.choicePoints, c.solutions, processes, p.progressExtra);
    };
  wishes.saveSeconds = p.checkpointSeconds;
  if (saves) wishes.save = [&p](const std::string &state) { save(p, state); };
  return wishes;
}

// ----- the parts

Outcome lead(Process &p, Ground &ground) {
  const Checkpoint checkpoint = checkpointOf(p);
  const bool isOfThis = checkpoint.search == p.mail.search();
  const bool saves = !p.checkpoint.empty() && (isOfThis || checkpoint.search == 0);
  Wishes wishes = wishesOf(p, saves);
  Timeline timeline(p.transport->size(), p.transport->seconds());
  if (!p.page.empty()) wishes.timeline = &timeline;
  if (p.transport->size() == 1 && !wishes.any()) {
    const Outcome outcome = searchAlone(ground);
    if (!ground.failure().empty()) p.transport->stop(ground.failure());
    return outcome;
  }
  Leader leader(ground, *p.transport, p.mail, p.pace, wishes);
  if (isOfThis && !leader.restore(checkpoint.state)) refuse(p, leader.why());
  p.told = leader.told();
  const Outcome outcome = play(p, leader);
  if (saves) std::remove(p.checkpoint.c_str());
  if (!p.page.empty()) writePage(p, timeline, outcome.counts);
  return outcome;
}

Outcome follow(Process &p, Ground &ground) {
  Follower follower(ground, *p.transport, p.mail, p.pace);
  return play(p, follower);
}

// What this process has done, on the standard error.
void tellStatistics(const Process &p, const Ground &ground, double seconds) {
  std::fprintf(
      stderr, "koru_mpi: process %d of %d: %.3f s, %lld choice points tried, %lld counted, %lld messages, %lld bytes\n",
      p.transport->rank(), p.transport->size(), seconds, ground.tried(), p.counts.choicePoints, p.mail.messages(),
      p.mail.bytes());
}

bool search(const Task &task) {
  Process &p = process();
  p.counts = {};
  p.told = 0;
  Ground ground(task);
  if (!ground.failure().empty()) p.transport->stop(ground.failure());
  if (!ground.ready()) return false;
  p.mail.beginSearch();
  const double began = p.transport->seconds();
  const Outcome outcome = p.transport->rank() == 0 ? lead(p, ground) : follow(p, ground);
  p.counts = outcome.counts;
  if (p.tells) tellStatistics(p, ground, p.transport->seconds() - began);
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

CSstatus cs_mpiSolve(CSsearch *object, CSmpiSolved found, void *extra) {
  if (cs_getSearchStatus(object) != CS_STATUS_READY) return CS_STATUS_REFUSED;
  search({.mode = Mode::kObject,
          .array = nullptr,
          .size = 0,
          .select = nullptr,
          .search = object,
          .foundByObject = found,
          .extra = extra});
  const CSstatus status = cs_getSearchStatus(object);
  return status != CS_STATUS_READY ? status : CS_STATUS_REFUSED;
}

void cs_mpiSetProgress(CSmpiProgress progress, double seconds, void *extra) {
  Process &p = process();
  p.progress = progress;
  p.progressSeconds = seconds;
  p.progressExtra = extra;
}

void cs_mpiSetCheckpoint(const char *path, double seconds) {
  process().checkpoint = path != nullptr ? path : "";
  process().checkpointSeconds = seconds;
}

long long cs_mpiGetNbTold(void) { return process().told; }
long long cs_mpiGetNbFails(void) { return process().counts.fails; }
long long cs_mpiGetNbChoicePoints(void) { return process().counts.choicePoints; }
int cs_mpiRank(void) { return process().transport->rank(); }
int cs_mpiSize(void) { return process().transport->size(); }
