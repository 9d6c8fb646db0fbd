// SPDX-License-Identifier: MIT
#include "parallel/piece.h"

#include <algorithm>

namespace koru::parallel {

void Counts::add(const Counts &other) {
  choicePoints += other.choicePoints;
  fails += other.fails;
  solutions += other.solutions;
}

Counts Counts::since(const Counts &earlier) const {
  return {choicePoints - earlier.choicePoints, fails - earlier.fails, solutions - earlier.solutions};
}

double Piece::part() const {
  double each = 1, part = 0;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const CSwalkStep &step = steps[i];
    each /= static_cast<double>(step.greatest) - step.least + 1;
    if (i >= static_cast<std::size_t>(base)) part += each * (static_cast<double>(step.greatest) - step.value);
  }
  return done ? part : part + each;
}

static bool isSame(const CSwalkStep &a, const CSwalkStep &b) {
  return a.value == b.value && a.least == b.least && a.greatest == b.greatest && a.check == b.check;
}

// ----- writing

void Writer::number(unsigned long long n) {
  for (; n >= 128; n >>= 7) bytes.push_back(static_cast<char>(n | 128));
  bytes.push_back(static_cast<char>(n));
}

void Writer::steps(const Steps &s, std::size_t from) {
  number(s.size() - from);
  for (std::size_t i = from; i < s.size(); ++i) {
    const CSwalkStep &step = s[i];
    integer(step.value);
    integer(static_cast<long long>(step.value) - step.least);
    integer(static_cast<long long>(step.greatest) - step.value);
    number(step.check);
  }
}

void Writer::piece(const Piece &p) {
  number(static_cast<unsigned long long>(p.base));
  number(p.done ? 1 : 0);
  steps(p.steps, 0);
}

void Writer::solutions(const std::vector<Solution> &all) {
  number(all.size());
  const Steps none;
  const Steps *before = &none;
  for (const Solution &each : all) {
    const auto differs = std::ranges::mismatch(each.path, *before, isSame).in1;
    const auto common = static_cast<std::size_t>(differs - each.path.begin());
    number(common);
    steps(each.path, common);
    counts(each.until);
    before = &each.path;
  }
}

void Writer::counts(const Counts &c) {
  integer(c.choicePoints);
  integer(c.fails);
  integer(c.solutions);
}

void Writer::report(const Report &r) {
  integer(r.assignment);
  counts(r.counts);
  solutions(r.solutions);
  number((r.answers ? 2 : 0) + (r.finished ? 1 : 0));
  piece(r.rest);
  number(r.given.size());
  for (const Piece &p : r.given) piece(p);
}

// ----- reading

unsigned long long Reader::number() {
  unsigned long long n = 0;
  for (int shift = 0; good_ && shift < 64; shift += 7) {
    if (at_ >= bytes_.size()) break;
    const auto byte = static_cast<unsigned char>(bytes_[at_++]);
    n |= static_cast<unsigned long long>(byte & 127) << shift;
    if (byte < 128) return n;
  }
  good_ = false;
  return 0;
}

long long Reader::integer() {
  const unsigned long long n = number();
  return static_cast<long long>((n >> 1) ^ (n & 1 ? ~0ULL : 0ULL));
}

std::size_t Reader::size() {
  const unsigned long long n = number();
  good_ = good_ && n <= bytes_.size() - at_;
  return good_ ? static_cast<std::size_t>(n) : 0;
}

CSwalkStep Reader::step() {
  const long long value = integer();
  const long long least = value - integer();
  const long long greatest = value + integer();
  return {static_cast<int>(value), static_cast<int>(least), static_cast<int>(greatest),
          static_cast<unsigned>(number())};
}

Piece Reader::piece() {
  Piece p;
  const unsigned long long base = number();
  p.done = number() != 0;
  for (std::size_t n = size(); n > 0; --n) p.steps.push_back(step());
  good_ = good_ && base <= p.steps.size() && (!p.done || !p.steps.empty());
  p.base = good_ ? static_cast<int>(base) : 0;
  return good_ ? p : Piece{};
}

std::vector<Solution> Reader::solutions() {
  std::vector<Solution> all;
  for (std::size_t n = size(); good_ && n > 0; --n) {
    const unsigned long long common = number();
    good_ = good_ && common <= (all.empty() ? 0 : all.back().path.size());
    Steps path;
    if (good_ && common > 0) path.assign(all.back().path.begin(), all.back().path.begin() + static_cast<long>(common));
    for (std::size_t more = size(); more > 0; --more) path.push_back(step());
    all.push_back({std::move(path), counts()});
  }
  return good_ ? all : std::vector<Solution>{};
}

Counts Reader::counts() {
  const long long choicePoints = integer(), fails = integer();
  return {choicePoints, fails, integer()};
}

Report Reader::report() {
  Report r;
  r.assignment = integer();
  r.counts = counts();
  r.solutions = solutions();
  const unsigned long long flags = number();
  r.answers = (flags & 2) != 0;
  r.finished = (flags & 1) != 0;
  r.rest = piece();
  for (std::size_t n = size(); good_ && n > 0; --n) r.given.push_back(piece());
  return r;
}

}  // namespace koru::parallel
