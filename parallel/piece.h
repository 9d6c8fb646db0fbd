// SPDX-License-Identifier: MIT
// Pieces of a search tree, what processes tell each other, and how both are packed into bytes.
//
// A piece is a position of a walk and its base (koru_extras.h, section 17). Numbers are packed seven bits to a byte.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "koru_extras.h"

namespace koru::parallel {

using Steps = std::vector<CSwalkStep>;

struct Piece {
  Steps steps;
  int base = 0;
  bool done = false;

  CSwalkPosition position() const { return {static_cast<int>(steps.size()), base, done}; }
  // How much of the whole tree it is, if all values between a variable's bounds were worth the same.
  double part() const;
};

struct Counts {
  long long choicePoints = 0;
  long long fails = 0;
  long long solutions = 0;

  void add(const Counts &other);
  Counts since(const Counts &earlier) const;
};

// A solution, where it is to be told: the path to it, and what was counted until then in what it is a part of.
struct Solution {
  Steps path;
  Counts until;
};

// What a process has done since its last report on an assignment: atomic, so that what is left can be given to another
// process as of the last report at any time.
struct Report {
  long long assignment = 0;
  Counts counts;
  std::vector<Solution> solutions;
  bool answers = false;      // a wish for pieces, with some
  bool finished = false;     // nothing is left; else
  Piece rest;                // is, and then comes
  std::vector<Piece> given;  // in tree order
};

class Writer {
 public:
  void number(unsigned long long n);
  void integer(long long n) { number((static_cast<unsigned long long>(n) << 1) ^ (n < 0 ? ~0ULL : 0ULL)); }
  void piece(const Piece &p);
  void solutions(const std::vector<Solution> &all);  // what a path has in common with the one before is left out
  void counts(const Counts &c);
  void report(const Report &r);
  static std::size_t lengthOf(unsigned long long n) {
    std::size_t length = 1;
    for (; n >= 128; n >>= 7) ++length;
    return length;
  }

  std::string bytes;

 private:
  void steps(const Steps &s, std::size_t from);
};

// Once something is wrong with the bytes, everything that is read is zero or empty.
class Reader {
 public:
  explicit Reader(const std::string &bytes, std::size_t from = 0) : bytes_(bytes), at_(from) {}

  unsigned long long number();
  long long integer();
  Piece piece();
  std::vector<Solution> solutions();
  Counts counts();
  Report report();
  std::size_t size();  // of a list: no more than there are bytes left
  bool isThrough() const { return good_ && at_ == bytes_.size(); }

 private:
  CSwalkStep step();

  const std::string &bytes_;
  std::size_t at_;
  bool good_ = true;
};

}  // namespace koru::parallel
