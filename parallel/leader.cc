// SPDX-License-Identifier: MIT
// Assignments are numbered; a report on one that is no longer known is of no use and dropped. So a piece can be taken
// back from a process that is silent, and dropped when a solution is found to the left of it, without an agreement.
#include <algorithm>
#include <climits>

#include "parallel/party.h"

namespace koru::parallel {

constexpr int kMostWorking = 16;  // with more processes the first one only leads
constexpr int kPiecesAskedFor = 4;
constexpr double kAlone = 2;    // seconds after which it works all the same
constexpr double kLook = 0.01;  // part of the patience between two looks at who is silent

Leader::Leader(Ground &ground, Transport &transport, Mail &mail, const Pace &pace, Wishes wishes)
    : ground_(ground),
      transport_(transport),
      mail_(mail),
      pace_(pace),
      worker_(ground, transport, pace, [this](const Report &r) { apply(0, r); }),
      wishes_(std::move(wishes)),
      pieces_(ground.task().firstOnly()),
      peers_(static_cast<std::size_t>(transport.size())),
      began_(transport.seconds()),
      progressTold_(began_),
      saved_(began_),
      watched_(began_),
      digest_(ground.digest()) {
  if (transport.size() <= kMostWorking) put(0, Peer::kIdle);
}

bool Leader::fail(const std::string &why) {
  why_ = why;
  return false;
}

void Leader::send(int to, Letter letter, const Writer &rest) const {
  Writer out;
  out.number(static_cast<unsigned>(letter));
  mail_.send(to, out.bytes + rest.bytes);
}

void Leader::sendAll(Letter letter, const Writer &rest) const {
  for (int to = 1; to < transport_.size(); ++to) send(to, letter, rest);
}

int Leader::holderOf(long long assignment) const {
  const auto holder = holders_.find(assignment);
  return holder != holders_.end() ? holder->second : -1;
}

// There may be thousands of them: what is asked after each message is not looked for among all.
void Leader::put(int who, Peer::State state, long long assignment) {
  Peer &peer = peers_[static_cast<std::size_t>(who)];
  if (peer.state == Peer::kAbsent) ++present_;
  if (peer.state == Peer::kBusy) holders_.erase(peer.assignment);
  if (state == Peer::kBusy) holders_[assignment] = who;
  if (state == Peer::kIdle) {
    idle_.insert(who);
  } else {
    idle_.erase(who);
  }
  peer.state = state;
  peer.assignment = assignment;
}

// ----- what the others say

void Leader::handle(const Message &m) {
  Reader in(m.bytes);
  peers_[static_cast<std::size_t>(m.from)].heard = transport_.seconds();
  if (static_cast<Letter>(in.number()) == Letter::kHello) {
    put(m.from, Peer::kIdle);
    if (in.number() != digest_) why_ = "process " + std::to_string(m.from) + " has another model than process 0";
    return;
  }
  apply(m.from, in.report());
}

void Leader::apply(int from, const Report &report) {
  const Peer &peer = peers_[static_cast<std::size_t>(from)];
  const bool current = peer.state == Peer::kBusy && peer.assignment == report.assignment;
  if (peer.state == Peer::kSilent || (current && report.finished)) put(from, Peer::kIdle);
  if (current)
    note(from, report.finished ? Timeline::What::kEnds : Timeline::What::kReports, report.counts.choicePoints);
  std::vector<long long> dropped;
  if (!current || !pieces_.apply(report, dropped)) {
    if (wishes_.timeline != nullptr) wishes_.timeline->noteVain(report.counts.choicePoints);
    Writer out;
    out.integer(report.assignment);
    if (from > 0) send(from, Letter::kDrop, out);
    return;
  }
  for (const long long assignment : dropped) drop(assignment);
}

void Leader::drop(long long assignment) {
  const int holder = holderOf(assignment);
  if (holder < 0) return;
  note(holder, Timeline::What::kEnds);
  put(holder, Peer::kIdle);
  Writer out;
  out.integer(assignment);
  if (holder > 0) {
    send(holder, Letter::kDrop, out);
  } else {
    worker_.drop();
  }
}

// ----- what is found

void Leader::endWith(const Ending &ending) {
  worker_.drop();
  const Counts before = ground_.counts();
  if (ending.kind == Ending::kObject) {
    ground_.endObject(ending.status, counts_);
  } else if (!ground_.end(ending)) {
    fail(ground_.failure());
    return;
  }
  if (ending.kind == Ending::kCancelled) counts_.add(ground_.counts().since(before));
  Writer out;
  out.number(result_ ? 1 : 0);
  out.number(lost_ ? 1 : 0);
  out.counts(counts_);
  out.number(ending.kind);
  out.number(ending.status);
  std::vector<Solution> last = {{ending.path, {}}};
  if (ending.kind == Ending::kObject) last.assign(passed_.end() - (passed_.empty() ? 0 : 1), passed_.end());
  out.solutions(last);
  sendAll(Letter::kEnd, out);
}

// False when the search ends with it.
bool Leader::tellSolution(const Steps &path) {
  const Task &task = ground_.task();
  result_ = true;
  if (task.mode == Mode::kFirst) {
    endWith({Ending::kAtSolution, path});
    return false;
  }
  worker_.leave();
  if (!ground_.goTo({path, 0, false})) return fail(ground_.failure());
  ++told_;
  if (task.mode == Mode::kMinimize) return improve();
  if (task.isObject()) return tellObject(path);
  task.found(task.array, task.size);
  if (!cs_isSearchCancelled()) return true;
  endWith({Ending::kCancelled, path});
  return false;
}

// In all processes, when it bounds what comes.
bool Leader::pass(const Solution &solution) {
  if (!ground_.keep(solution.until)) return fail(ground_.failure());
  if (!ground_.task().improves) passed_.clear();
  passed_.push_back(solution);
  if (!ground_.task().improves) return true;
  Writer out;
  out.solutions({solution});
  sendAll(Letter::kPass, out);
  return true;
}

// A better solution lies to the right of the one that stands: what was done there without its bound is done again.
bool Leader::tellObject(const Steps &path) {
  const Task &task = ground_.task();
  if (!pass({path, counts_})) return false;
  if (task.improves) {
    dropAll();
    pieces_ = path.empty() ? Pieces(Pieces::None{}) : Pieces(true, {path, 0, true});
  }
  if (task.foundByObject == nullptr || task.foundByObject(task.search, task.extra)) return true;
  endWith({Ending::kObject, {}, CS_STATUS_STOPPED});
  return false;
}

void Leader::dropAll() {
  worker_.drop();
  while (!holders_.empty()) {
    const int who = holders_.begin()->second;
    put(who, Peer::kIdle);
    note(who, Timeline::What::kEnds);
  }
}

// In all processes.
bool Leader::beginPass(int bound) {
  Writer out;
  out.integer(bound);
  sendAll(Letter::kBound, out);
  bounds_.push_back(bound);
  return ground_.beginPass(bound);
}

// The solution that stands ends the pass; on to the next one.
bool Leader::improve() {
  const Task &task = ground_.task();
  const int bound = cs_getMin(task.cost);
  if (task.foundCost != nullptr) task.foundCost(task.array, task.size, task.cost);
  const bool cancelled = cs_isSearchCancelled();
  dropAll();
  pieces_ = Pieces(true);
  if (!beginPass(bound)) {
    endWith({});
    return false;
  }
  if (!cancelled) return true;
  // A pass that is cancelled before it has begun may have a solution at its root.
  cs_cancelSearch();
  if (cs_goWalk(ground_.walk(), LLONG_MAX, true) == CS_STATUS_SOLUTION) {
    ++told_;
    return improve();
  }
  endWith({Ending::kCancelled, {}});
  return false;
}

// False when the search is over or cannot go on.
bool Leader::tell() {
  while (const auto finished = pieces_.takeFinished()) {
    if (!ground_.task().wantsPaths()) result_ = result_ || finished->counts.solutions > 0;
    const Counts before = counts_;
    for (const Solution &each : finished->solutions) {
      counts_ = before;
      counts_.add(each.until);
      if (!tellSolution(each.path)) return false;
    }
    counts_ = before;
    counts_.add(finished->counts);
  }
  if (!pieces_.empty()) return true;
  const bool isOptimal = ground_.task().improves && result_;
  endWith({ground_.task().isObject() ? Ending::kObject : Ending::kRestored,
           {},
           isOptimal ? CS_STATUS_OPTIMAL : CS_STATUS_EXHAUSTED});
  return false;
}

// ----- who does what

void Leader::give(int to) {
  const Piece *piece = pieces_.assign(++lastAssignment_);
  note(to, Timeline::What::kBegins);
  put(to, Peer::kBusy, lastAssignment_);
  peers_[static_cast<std::size_t>(to)].heard = transport_.seconds();
  if (to == 0) return worker_.begin(lastAssignment_, *piece);
  Writer out;
  out.integer(lastAssignment_);
  out.piece(*piece);
  send(to, Letter::kWork, out);
}

// Where nobody else can be reached the first process works itself, however many there are.
void Leader::handOut() {
  const auto reached = [](const Peer &p) { return p.state == Peer::kIdle || p.state == Peer::kBusy; };
  const bool alone = std::ranges::none_of(peers_, reached) && transport_.seconds() - began_ > kAlone;
  if (alone) put(0, Peer::kIdle);
  while (!idle_.empty() && pieces_.queued() > 0) give(*idle_.begin());
}

// As many pieces are to be queued as there are processes.
void Leader::ask() {
  if (pieces_.queued() >= peers_.size() || present_ < 2) return;
  while (const auto assignment = pieces_.toAsk()) {
    const int holder = holderOf(*assignment);
    if (holder == 0) {
      if (!worker_.split(kPiecesAskedFor)) why_ = worker_.why();
      return;
    }
    Writer out;
    out.integer(*assignment);
    out.number(kPiecesAskedFor);
    send(holder, Letter::kSplit, out);
  }
}

void Leader::watch() {
  const double now = transport_.seconds();
  if (now - watched_ < pace_.patience * kLook) return;
  watched_ = now;
  for (std::size_t i = 1; i < peers_.size(); ++i) {
    const Peer &peer = peers_[i];
    if (peer.state != Peer::kBusy || now - peer.heard < pace_.patience) continue;
    pieces_.takeBack(peer.assignment);
    put(static_cast<int>(i), Peer::kSilent);
    note(static_cast<int>(i), Timeline::What::kSilent);
    transport_.noteLost();
    lost_ = true;
  }
}

bool Leader::step() {
  bool heard = false;
  while (const auto m = mail_.poll()) {
    heard = true;
    handle(*m);
  }
  if (why_.empty() && worker_.busy() && !worker_.step()) fail(worker_.why());
  if (!why_.empty() || !tell()) return false;
  keep();
  watch();
  handOut();
  ask();
  handOut();
  if (!worker_.busy() && !heard) transport_.rest();
  return why_.empty();
}

}  // namespace koru::parallel
