// SPDX-License-Identifier: MIT
// The parts that processes play in a search: the first one leads, the others follow. Both are called again and again,
// do a little each time, and never wait.
#pragma once

#include <functional>
#include <set>
#include <unordered_map>

#include "parallel/pieces.h"
#include "parallel/timeline.h"
#include "parallel/worker.h"

namespace koru::parallel {

enum class Letter : unsigned { kHello, kReport, kWork, kSplit, kDrop, kBound, kPass, kEnd };

// What the host wants to know while a search goes on.
struct Wishes {
  std::function<void(double done, const Counts &counts, int processes)> progress;
  double progressSeconds = 0;
  std::function<void(const std::string &state)> save;
  double saveSeconds = 0;
  Timeline *timeline = nullptr;

  bool any() const { return progress || save || timeline != nullptr; }
};

class Follower {
 public:
  Follower(Ground &ground, Transport &transport, Mail &mail, const Pace &pace);

  // False when the search is over, or cannot go on: why() then says so.
  bool step();
  bool result() const { return result_; }
  const Counts &counts() const { return counts_; }
  const std::string &why() const { return why_; }

 private:
  bool handle(const Message &m);
  bool end(Reader &in);
  bool pass(const Solution &solution);

  Ground &ground_;
  Transport &transport_;
  Mail &mail_;
  Worker worker_;
  bool over_ = false;
  bool result_ = false;
  Counts counts_;
  std::string why_;
};

class Leader {
 public:
  Leader(Ground &ground, Transport &transport, Mail &mail, const Pace &pace, Wishes wishes = {});

  bool step();
  bool result() const { return result_; }
  const Counts &counts() const { return counts_; }  // of all processes together, as of one
  const std::string &why() const { return why_; }
  long long told() const { return told_; }  // solutions

  // Between two steps: all that another leader needs to go on with, with other processes.
  std::string state() const;
  // Before the first step. False when the state is not of this search: why() says so.
  bool restore(const std::string &state);

 private:
  struct Peer {
    enum State { kAbsent, kIdle, kBusy, kSilent };

    State state = kAbsent;
    long long assignment = 0;
    double heard = 0;
  };

  void handle(const Message &m);
  void apply(int from, const Report &report);
  void drop(long long assignment);
  bool tell();
  bool tellSolution(const Steps &path);
  bool improve();
  bool tellObject(const Steps &path);
  bool pass(const Solution &solution);
  void dropAll();
  void note(int process, Timeline::What what, long long choicePoints = 0);
  bool beginPass(int bound);
  void tellProgress();
  void keep();
  int reached() const;
  void endWith(const Ending &ending);
  void handOut();
  void give(int to);
  void ask();
  void watch();
  int holderOf(long long assignment) const;
  void put(int who, Peer::State state, long long assignment = 0);
  bool fail(const std::string &why);
  void send(int to, Letter letter, const Writer &rest) const;
  void sendAll(Letter letter, const Writer &rest) const;

  Ground &ground_;
  Transport &transport_;
  Mail &mail_;
  Pace pace_;
  Worker worker_;  // this process's own
  Wishes wishes_;
  Pieces pieces_;
  std::vector<Peer> peers_;
  std::set<int> idle_;                          // of them
  std::unordered_map<long long, int> holders_;  // of assignments: those that are busy
  int present_ = 0;                             // that were ever heard of
  double began_;
  double progressTold_, saved_, watched_;
  unsigned long long digest_;  // of the model
  long long lastAssignment_ = 0;
  std::vector<int> bounds_;       // of the passes that have begun, but for the first one
  std::vector<Solution> passed_;  // solutions of a search object: that were improved, or the last one
  long long told_ = 0;
  bool lost_ = false;  // some process has been silent for too long
  bool result_ = false;
  Counts counts_;
  std::string why_;
};

}  // namespace koru::parallel
