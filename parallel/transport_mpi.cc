// SPDX-License-Identifier: MIT
// Messages by MPI: the only file that includes mpi.h.
//
// Sends and receives are begun and forgotten until they are through, so that nobody waits for a process that has died:
// of a message of some KB MPI tells when it is announced, and its sender may not live to hand it over. At the exit
// everybody takes what is still under way before MPI ends; when processes have been lost, that would wait for them, and
// is left out. Where the launcher lets processes outlive others (--enable-recovery), one may also die at the exit: then
// the wait has an end.
// Not the bindings for C++, which need a library more.
#define OMPI_SKIP_MPICXX 1
#define MPICH_SKIP_MPICXX 1
#include <mpi.h>
#include <unistd.h>

#include <algorithm>
#include <list>

#include "parallel/transport_alone.h"

namespace koru::parallel {

namespace {

constexpr int kTag = 1;
constexpr useconds_t kRest = 50;
constexpr double kFarewell = 60;  // seconds that processes which outlive others wait for them at the exit

class ByMpi final : public Alone {
 public:
  ByMpi() {
    int started = 0;  // by the program itself
    MPI_Initialized(&started);
    ours_ = started == 0;
    if (ours_) MPI_Init(nullptr, nullptr);
    MPI_Comm_set_errhandler(MPI_COMM_WORLD, MPI_ERRORS_RETURN);
    MPI_Comm_rank(MPI_COMM_WORLD, &rank_);
    MPI_Comm_size(MPI_COMM_WORLD, &size_);
  }
  ~ByMpi() override {
    int finished = 0;
    MPI_Finalized(&finished);
    if (lost_ || finished != 0) return;
    const double until = seconds() + kFarewell;
    const auto isLate = [&] { return outlivesOthers_ && seconds() > until; };
    while (!sendsAreThrough() && !isLate()) takeAll();
    MPI_Request all;
    MPI_Ibarrier(MPI_COMM_WORLD, &all);
    int done = 0;
    for (; done == 0 && !isLate(); MPI_Test(&all, &done, MPI_STATUS_IGNORE)) takeAll();
    if (ours_ && done != 0) MPI_Finalize();
  }

  int rank() const override { return rank_; }
  int size() const override { return size_; }

  void send(int to, std::string bytes) override {
    sendsAreThrough();
    Sending &s = sending_.emplace_back(Sending{std::move(bytes), MPI_REQUEST_NULL});
    MPI_Isend(s.bytes.data(), static_cast<int>(s.bytes.size()), MPI_BYTE, to, kTag, MPI_COMM_WORLD, &s.request);
  }

  std::optional<Message> poll() override {
    do {
      if (std::optional<Message> m = takeReceived()) return m;
    } while (beginToReceive());
    return std::nullopt;
  }

  void rest() override { usleep(kRest); }
  void noteLost() override { lost_ = true; }

  [[noreturn]] void stop(const std::string &why) override {
    std::fprintf(stderr, "koru_mpi: process %d: %s\n", rank_, why.c_str());
    std::fflush(nullptr);
    MPI_Abort(MPI_COMM_WORLD, 3);
    std::_Exit(3);
  }

 private:
  struct Sending {
    std::string bytes;
    MPI_Request request;
  };

  struct Receiving {
    Message message;
    MPI_Request request;
  };

  bool beginToReceive() {
    int there = 0, size = 0;
    MPI_Status status;
    MPI_Message matched;
    if (MPI_Improbe(MPI_ANY_SOURCE, kTag, MPI_COMM_WORLD, &there, &matched, &status) != MPI_SUCCESS || there == 0)
      return false;
    MPI_Get_count(&status, MPI_BYTE, &size);
    Receiving &r = receiving_.emplace_back(
        Receiving{{status.MPI_SOURCE, std::string(static_cast<std::size_t>(size), '\0')}, MPI_REQUEST_NULL});
    if (MPI_Imrecv(r.message.bytes.data(), size, MPI_BYTE, &matched, &r.request) != MPI_SUCCESS) receiving_.pop_back();
    return true;
  }

  // One that is through, and not behind another one of the same process.
  std::optional<Message> takeReceived() {
    for (auto r = receiving_.begin(); r != receiving_.end();) {
      const auto isOfTheSame = [&](const Receiving &before) { return before.message.from == r->message.from; };
      const bool waits = std::any_of(receiving_.begin(), r, isOfTheSame);
      int done = 0;
      const bool failed = !waits && MPI_Test(&r->request, &done, MPI_STATUS_IGNORE) != MPI_SUCCESS;
      if (done == 0 && !failed) {
        ++r;
        continue;
      }
      Message m = std::move(r->message);
      r = receiving_.erase(r);
      if (!failed) return m;
    }
    return std::nullopt;
  }

  bool sendsAreThrough() {
    for (auto s = sending_.begin(); s != sending_.end();) {
      int done = 0;
      MPI_Test(&s->request, &done, MPI_STATUS_IGNORE);
      s = done != 0 ? sending_.erase(s) : std::next(s);
    }
    return sending_.empty();
  }
  void takeAll() {
    while (poll()) continue;
    rest();
  }

  int rank_ = 0;
  int size_ = 1;
  bool ours_ = true;  // MPI: who starts it ends it
  bool lost_ = false;
  bool outlivesOthers_ = std::getenv("OMPI_MCA_orte_enable_recovery") != nullptr;
  std::list<Sending> sending_;
  std::list<Receiving> receiving_;
};

bool wasLaunched() {
  for (const char *name : {"OMPI_COMM_WORLD_SIZE", "PMI_SIZE", "PMIX_RANK"})
    if (std::getenv(name) != nullptr) return true;
  return false;
}

}  // namespace

std::unique_ptr<Transport> connect() {
  if (wasLaunched()) return std::make_unique<ByMpi>();
  return std::make_unique<Alone>();
}

}  // namespace koru::parallel
