// SPDX-License-Identifier: MIT
#include "parallel/party.h"

namespace koru::parallel {

static Writer letter(Letter kind) {
  Writer out;
  out.number(static_cast<unsigned>(kind));
  return out;
}

Follower::Follower(Ground &ground, Transport &transport, Mail &mail, const Pace &pace)
    : ground_(ground), transport_(transport), mail_(mail), worker_(ground, transport, pace, [this](const Report &r) {
        Writer out = letter(Letter::kReport);
        out.report(r);
        mail_.send(0, out.bytes);
      }) {
  Writer out = letter(Letter::kHello);
  out.number(ground.digest());
  mail_.send(0, out.bytes);
}

// A solution of a search object.
bool Follower::pass(const Solution &solution) {
  if (ground_.goTo({solution.path, 0, false}) && ground_.keep(solution.until)) return true;
  why_ = ground_.failure();
  return false;
}

bool Follower::end(Reader &in) {
  over_ = true;
  result_ = in.number() != 0;
  if (in.number() != 0) transport_.noteLost();
  counts_ = in.counts();
  const auto kind = static_cast<Ending::Kind>(in.number());
  const auto status = static_cast<CSstatus>(in.number());
  const std::vector<Solution> last = in.solutions();
  worker_.drop();
  if (kind == Ending::kObject) {
    if (!last.empty() && !pass(last.front())) return false;
    ground_.endObject(status, counts_);
    return true;
  }
  if (ground_.end({kind, last.empty() ? Steps{} : last.front().path})) return true;
  why_ = ground_.failure();
  return false;
}

// What is asked of an assignment that is given up or finished comes too late.
bool Follower::handle(const Message &m) {
  Reader in(m.bytes);
  const auto kind = static_cast<Letter>(in.number());
  if (kind == Letter::kEnd) return end(in);
  if (kind == Letter::kBound) {
    worker_.drop();
    ground_.beginPass(static_cast<int>(in.integer()));
    return true;
  }
  if (kind == Letter::kPass) {
    worker_.drop();
    return pass(in.solutions().front());
  }
  const long long assignment = in.integer();
  if (kind == Letter::kWork) {
    worker_.begin(assignment, in.piece());
  } else if (worker_.busy() && assignment == worker_.assignment()) {
    if (kind == Letter::kDrop) worker_.drop();
    if (kind == Letter::kSplit) return worker_.split(static_cast<int>(in.number()));
  }
  return true;
}

bool Follower::step() {
  bool heard = false;
  for (std::optional<Message> m; !over_ && (m = mail_.poll());) {
    heard = true;
    if (!handle(*m)) {
      if (why_.empty()) why_ = worker_.why();
      return false;
    }
  }
  if (over_) return false;
  if (!worker_.busy() && !heard) transport_.rest();
  if (worker_.step()) return true;
  why_ = worker_.why();
  return false;
}

}  // namespace koru::parallel
