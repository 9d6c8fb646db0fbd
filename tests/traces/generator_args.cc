// SPDX-License-Identifier: MIT
// The arguments of generated calls.
#include <algorithm>
#include <climits>
#include <cstring>
#include <string_view>

#include "traces/generator.h"

namespace koru::traces {

bool Generator::wrong() { return random_.chance(wrongChance()); }

int Generator::extreme() {
  static constexpr int kExtremes[] = {INT_MIN, INT_MIN + 1, INT_MAX, INT_MAX - 1, 0, -1, 1 << 30, -46341, 65536};
  return kExtremes[random_.below(static_cast<int>(std::size(kExtremes)))];
}

int Generator::value() {
  if (wrong()) return extreme();
  const std::int64_t low = std::max<std::int64_t>(std::int64_t{last_.low} - 1, INT_MIN);
  const std::int64_t high = std::min<std::int64_t>(std::int64_t{last_.high} + 1, INT_MAX);
  return random_.between(static_cast<int>(std::min(low, high)), static_cast<int>(std::max(low, high)));
}

int Generator::someVariable() {
  if (variables_.empty() || wrong()) return kNull;
  const int number = random_.below(static_cast<int>(variables_.size()));
  last_ = variables_[static_cast<std::size_t>(number)];
  return number;
}

std::vector<int> Generator::someVariables() {
  std::vector<int> result;
  const int size = random_.chance(5) ? random_.between(0, 6) : random_.between(1, 4);
  for (int i = 0; i < size; ++i) {
    int number = someVariable();
    // The same variable at two places is common enough without this.
    if (std::ranges::count(result, number) > 0 && random_.chance(80)) number = someVariable();
    result.push_back(number);
  }
  return result;
}

int Generator::someOf(char letter) {
  if (letter == 's') return scriptCount_ == 0 || random_.chance(15) ? kNull : random_.below(scriptCount_);
  const int known = known_[std::strchr("qhgp", letter) - "qhgp"];
  return known == 0 || random_.chance(8) ? kNull : random_.below(known);
}

int Generator::label() { return wrong() ? extreme() : random_.between(random_.chance(5) ? 0 : 1, depth_ + 1); }

void Generator::fillArg(const Line &line, char kind, Arg &arg) {
  switch (kind) {
    case 'v':
      arg.number = someVariable();
      return;
    case 'a':
      arg.list = someVariables();
      if (random_.chance(50) && line.args.size() > 1 && lastSize_ > 0) arg.list.resize(lastSize_, someVariable());
      lastSize_ = arg.list.size();
      if (wrong()) arg.number = kNull;
      return;
    case 'Q':
      for (std::size_t i = 0; i < lastSize_; ++i) arg.list.push_back(someOf('q'));
      return;
    case 'o':
      arg.number = random_.chance(30) ? kNull : someVariable();
      return;
    case 'O':
      arg.list = someVariables();
      if (lastSize_ > 0) arg.list.resize(lastSize_, someVariable());
      if (random_.chance(30)) arg.number = kNull;
      return;
    case 'm':
      for (std::size_t i = lastSize_ * static_cast<std::size_t>(random_.below(5)); i > 0; --i)
        arg.list.push_back(value());
      lastRows_ = static_cast<int>(arg.list.size() / std::max<std::size_t>(lastSize_, 1));
      if (wrong()) arg.number = kNull;
      return;
    case 'r':
      arg.number = wrong() ? extreme() : lastRows_;
      return;
    case 'b':
      arg.number = random_.below(2);
      return;
    case 'c':
      arg.number = wrong() ? extreme() : random_.below(6);
      return;
    case 'k':
    case 'L':
    case 'T':
      for (int i = random_.chance(90) ? random_.between(1, 5) : 0; i > 0; --i) arg.list.push_back(value());
      lastSize_ = arg.list.size();
      if (wrong()) arg.number = kNull;
      return;
    case 'n':
      arg.number = wrong() ? extreme() : static_cast<int>(lastSize_);
      return;
    case 'i':
    case 'l':
      arg.number = value();
      return;
    case 't':
      arg.number = random_.chance(20) ? kNull : 0;
      arg.text = random_.chance(10) ? std::string(40, 'n') : std::string(1, static_cast<char>('a' + random_.below(26)));
      return;
    default:
      arg.number = someOf(kind);
  }
}

void Generator::fill(Line &line) {
  for (const char *kind = line.row->kinds; *kind != '\0'; ++kind)
    if (*kind != 'x') fillArg(line, *kind, line.args.emplace_back());
  fillInts(line);
  target(line);
}

// What the ints of a call stand for.
void Generator::fillInts(Line &line) {
  const std::string_view name = line.row->name;
  if (line.row->group == Group::kCreate) return fillCreation(line);
  if (line.row->group == Group::kSearch) return fillSearch(line);
  if (name == "cs_Regular") return fillRegular(line);
  if (name == "cs_addNoGood") return fillNoGood(line);
  if (name.ends_with("Until")) line.args[0].number = label();
  if (name == "cs_setErrHandler") line.args[0].number = random_.between(-4, 1);
  if (name == "cs_getValueSelector") line.args[0].number = random_.chance(95) ? random_.below(5) : extreme();
  if (name == "cs_createProfiler") line.args[0].number = random_.chance(90) ? 0 : extreme();
  if (name == "cs_createNoGoodSet" || name == "cs_setMaxNbNoGoods") line.args.back().number = random_.between(-1, 4);
  if (name == "cs_selectValue") line.args[1].number = random_.between(wrong() ? -1 : 0, 5);
  if (name == "cs_printf" || name == "cs_fprintf") line.args[0].number = random_.below(8);
  // Tasks and counts of a kind that has solutions.
  if ((name == "cs_InInterval" || name == "cs_NotInInterval") && !wrong() && line.args[1].number > line.args[2].number)
    std::swap(line.args[1].number, line.args[2].number);
}

void Generator::fillCreation(Line &line) {
  const std::string_view name = line.row->name;
  const bool wide = random_.chance(wideChance());
  const bool counting = random_.chance(30);
  Range range{counting ? 0 : random_.between(-3, 2), 0};
  if (wide) range.low = random_.chance(50) ? extreme() : random_.between(-100000, 100000);
  const int width = wide && random_.chance(70) ? random_.between(4001, INT_MAX) : random_.between(0, 5);
  range.high = static_cast<int>(std::min<std::int64_t>(std::int64_t{range.low} + width, INT_MAX));
  if (wrong()) std::swap(range.low, range.high);
  last_ = range;
  if (name == "cs_createCSintFromDomain") {
    for (int &each : line.args[0].list) each = random_.between(range.low, std::max(range.low, range.high));
  } else if (name == "CSINT") {
    line.args[0].number = last_.high = range.low;
  } else {
    const std::size_t first = name == "cs_createCSintArray" ? 1 : 0;
    line.args[first].number = range.low;
    line.args[first + 1].number = range.high;
    if (first == 1) line.args[0].number = wrong() ? std::min(extreme(), 16) : random_.between(0, 3);
  }
}

void Generator::fillSearch(Line &line) {
  const std::string_view name = line.row->name;
  if (line.args.empty()) return;
  const bool matrix = name.starts_with("cs_searchMatrix");
  if (matrix) {
    line.args[0].list.resize(line.args[0].list.size() < 3 ? 2 : 4, someVariable());
    line.args[1].number = static_cast<int>(line.args[0].list.size() / 2);
    line.args[2].number = wrong() ? -1 : 2;
  }
  // How to select: by a script when there are any.
  if (!matrix && line.row->kinds[2] == 'i') line.args[2].number = random_.below(scriptCount_ > 0 ? 5 : 4);
  if (name == "cs_nextSolution") {
    line.args[3].number = random_.below(INT_MAX);
    return;
  }
  const char *kinds = line.row->kinds;
  std::size_t i = 0;
  for (const char *kind = kinds; *kind != '\0'; ++kind) {
    if (*kind == 'x') continue;
    if (*kind == 's' && scriptCount_ > 0 && random_.chance(90)) line.args[i].number = random_.below(scriptCount_);
    if (*kind == 'i' && i > 3) line.args[i].number = wrong() ? extreme() : random_.between(0, 6);
    ++i;
  }
}

void Generator::fillRegular(Line &line) {
  const int states = random_.between(1, 4);
  const int symbols = random_.between(1, 4);
  line.args[2].list.clear();
  for (int i = 0; i < states * symbols; ++i) line.args[2].list.push_back(random_.between(-1, states - 1));
  line.args[3].number = wrong() ? extreme() : states;
  line.args[4].number = wrong() ? extreme() : symbols;
  line.args[5].number = wrong() ? extreme() : random_.below(states);
  for (int &state : line.args[6].list) state = random_.between(-1, states);
}

void Generator::fillNoGood(Line &line) {
  const int elements = random_.between(1, 3);
  for (std::size_t i = 1; i < 4; ++i) {
    line.args[i].list.clear();
    for (int k = 0; k < elements; ++k)
      line.args[i].list.push_back(i == 1 ? random_.below(4) : i == 2 ? random_.below(6) : value());
  }
  if (wrong()) line.args[2].list[0] = extreme();
  line.args[4].number = wrong() ? extreme() : elements;
}

void Generator::target(Line &line) {
  const char letter = targetLetter(*line.row);
  if (letter == 0 || letter == 's') return;
  if (letter != 'v') {
    int &next = known_[std::strchr("qhgp", letter) - "qhgp"];
    line.target = next;
    if (next < 20) ++next;
    return;
  }
  const int count = line.row->result == 'a' ? std::clamp(line.args[0].number, 0, 16) : 1;
  if (variables_.size() + static_cast<std::size_t>(count) >= 60 || count == 0) return;
  line.target = static_cast<int>(variables_.size());
  variables_.resize(variables_.size() + static_cast<std::size_t>(count), resultRange(line));
}

Generator::Range Generator::resultRange(const Line &line) const {
  if (line.row->group == Group::kCreate) return last_;
  if (line.row->constraint == nullptr) return {-6, 8};
  const catalogue::Span span = line.row->constraint->results;
  return {span.low, span.high};
}

}  // namespace koru::traces
