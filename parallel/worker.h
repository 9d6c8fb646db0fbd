// SPDX-License-Identifier: MIT
// A process at work on pieces: it walks one in slices, reports, and splits when asked.
#pragma once

#include <functional>
#include <optional>

#include "parallel/ground.h"
#include "parallel/transport.h"

namespace koru::parallel {

// How fine things are cut. Seconds are the transport's.
struct Pace {
  double slice = 0.0005;       // how long it walks before it looks at messages
  double report = 0.05;        // between two reports
  double leastPiece = 0.001;   // given away
  double patience = 60;        // how long a process may be silent
  long long choicePoints = 0;  // of a slice; 0: as many as take so long
};

class Worker {
 public:
  using Send = std::function<void(const Report &)>;

  Worker(Ground &ground, Transport &transport, const Pace &pace, Send send)
      : ground_(ground), transport_(transport), pace_(pace), send_(std::move(send)) {}

  bool busy() const { return assignment_ != 0; }
  long long assignment() const { return assignment_; }
  void begin(long long assignment, Piece piece);
  void drop() { assignment_ = 0; }
  // The walk is needed for something else; the next step comes back.
  void leave();
  // A slice. False when the run has to end: why() says so.
  bool step();
  // Gives away up to so many pieces, now or as soon as there are some, and reports that.
  bool split(int wanted);
  const std::string &why() const { return why_; }

 private:
  bool comeBack();
  void answer();
  double reportSeconds() const;
  CSstatus walkSlice();
  void noteSolution(const Counts &sliceBegan);
  void report(bool finished, bool answers, std::vector<Piece> given);
  void adapt(double taken);
  bool fail(const std::string &why);

  Ground &ground_;
  Transport &transport_;
  Pace pace_;
  Send send_;

  long long assignment_ = 0;  // 0: none
  bool away_ = false;
  int wanted_ = 0;               // pieces that it has been asked for
  Piece piece_;                  // where it was when it left
  std::vector<Solution> found_;  // since the last report
  Counts counted_;               // as well
  double reported_ = 0;
  long long slice_ = 16;
  std::string why_;
};

}  // namespace koru::parallel
