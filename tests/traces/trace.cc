// SPDX-License-Identifier: MIT
#include "traces/trace.h"

#include <cctype>
#include <climits>
#include <cstdlib>
#include <string_view>

#include "traces/table.h"

namespace koru::traces {
namespace {

// ----- printing

std::string reference(char letter, int number) {
  return number == kNull ? "null" : std::string(1, letter) + std::to_string(number);
}

std::string item(char letter, int number) { return letter == 0 ? std::to_string(number) : reference(letter, number); }

bool isInts(char kind) { return catalogue::isList(kind); }

std::string printList(char kind, const Arg &arg) {
  if (arg.number == kNull) return "null";
  std::string result;
  for (const int number : arg.list) result += (result.empty() ? "" : " ") + item(referenceLetter(kind), number);
  return isInts(kind) ? "{" + result + "}" : "[" + result + "]";
}

bool isList(char kind) { return isInts(kind) || std::string_view("aAOQ").find(kind) != std::string_view::npos; }

std::string printArg(char kind, const Arg &arg) {
  if (isList(kind)) return printList(kind, arg);
  if (kind == 't') return arg.number == kNull ? "null" : "\"" + arg.text + "\"";
  return item(referenceLetter(kind), arg.number);
}

// ----- parsing

class Words {
 public:
  explicit Words(std::string_view text) : text_(text) {}

  // The next word, bracket or quoted text; empty at the end of the line.
  std::string_view next() {
    while (at_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[at_])) != 0) ++at_;
    if (at_ == text_.size() || text_[at_] == '#') return {};
    const std::size_t start = at_++;
    if (text_[start] == '"') {
      while (at_ < text_.size() && text_[at_] != '"') ++at_;
      if (at_ < text_.size()) ++at_;
    } else if (!single(text_[start])) {
      while (at_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[at_])) == 0 && !single(text_[at_]))
        ++at_;
    }
    return text_.substr(start, at_ - start);
  }

 private:
  static bool single(char c) { return std::string_view("[]{}=:").find(c) != std::string_view::npos; }

  std::string_view text_;
  std::size_t at_ = 0;
};

bool parseInt(std::string_view word, int &number) {
  const std::string text(word);
  char *end = nullptr;
  const long long value = std::strtoll(text.c_str(), &end, 10);
  if (text.empty() || *end != '\0' || value < INT_MIN || value > INT_MAX) return false;
  number = static_cast<int>(value);
  return true;
}

bool parseReference(std::string_view word, char letter, int &number) {
  if (word == "null") {
    number = kNull;
    return true;
  }
  if (word.size() < 2 || word[0] != letter || !parseInt(word.substr(1), number)) return false;
  return number >= 0 && number < (letter == 's' ? kScripts : kReferences);
}

bool parseItem(std::string_view word, char kind, int &number) {
  const char letter = referenceLetter(kind);
  return letter == 0 ? parseInt(word, number) : parseReference(word, letter, number);
}

bool parseList(Words &words, std::string_view word, char kind, Arg &arg) {
  arg.number = word == "null" ? kNull : 0;
  if (word == "null") return true;
  if (word != (isInts(kind) ? "{" : "[")) return false;
  const std::string_view close = isInts(kind) ? "}" : "]";
  for (word = words.next(); word != close; word = words.next())
    if (!parseItem(word, kind, arg.list.emplace_back())) return false;
  return true;
}

bool parseText(std::string_view word, Arg &arg) {
  arg.number = word == "null" ? kNull : 0;
  if (word == "null") return true;
  if (word.size() < 2 || word.front() != '"' || word.back() != '"') return false;
  arg.text = word.substr(1, word.size() - 2);
  return true;
}

bool parseArg(Words &words, char kind, Arg &arg) {
  const std::string_view word = words.next();
  if (isList(kind)) return parseList(words, word, kind, arg);
  return kind == 't' ? parseText(word, arg) : parseItem(word, kind, arg.number);
}

bool parseArgs(Words &words, Line &line, std::string &reason) {
  for (const char *kind = line.row->kinds; *kind != '\0'; ++kind) {
    if (*kind == 'x') continue;
    if (!parseArg(words, *kind, line.args.emplace_back())) {
      reason = "argument " + std::to_string(line.args.size()) + " of " + line.row->name;
      return false;
    }
  }
  const std::string_view rest = words.next();
  if (!rest.empty()) reason = "more than the arguments of " + std::string(line.row->name);
  return rest.empty();
}

bool parseTarget(std::string_view word, Line &line, std::string &reason) {
  const char letter = targetLetter(*line.row);
  if (letter != 0 && word != "null" && parseReference(word, letter, line.target)) return true;
  reason = "result of " + std::string(line.row->name);
  return false;
}

}  // namespace

std::string print(const Line &line) {
  std::string result;
  if (line.script != kNull) result += reference('s', line.script) + ": ";
  if (line.target != kNull) result += reference(targetLetter(*line.row), line.target) + " = ";
  result += line.row->name;
  std::size_t i = 0;
  for (const char *kind = line.row->kinds; *kind != '\0'; ++kind)
    if (*kind != 'x') result += " " + printArg(*kind, line.args[i++]);
  return result;
}

std::string print(const Trace &trace) {
  std::string result;
  for (const Line &line : trace) result += print(line) + "\n";
  return result;
}

bool parse(const std::string &text, Line &line, std::string &reason) {
  line = Line{};
  Words words(text);
  std::string_view first = words.next();
  if (first.empty()) return true;
  Words ahead = words;
  if (ahead.next() == ":") {
    if (!parseReference(first, 's', line.script) || line.script == kNull) return reason = "script", false;
    words = ahead;
    first = words.next();
  }
  std::string_view target;
  ahead = words;
  if (ahead.next() == "=") {
    target = first;
    words = ahead;
    first = words.next();
  }
  line.row = findRow(first);
  if (line.row == nullptr) return reason = "unknown call: " + std::string(first), false;
  return (target.empty() || parseTarget(target, line, reason)) && parseArgs(words, line, reason);
}

Trace parse(const std::string &text, std::string &reason) {
  Trace trace;
  reason.clear();
  int number = 0;
  for (std::size_t start = 0; start < text.size();) {
    std::size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    ++number;
    Line line;
    std::string fault;
    const bool parsed = parse(text.substr(start, end - start), line, fault);
    if (parsed && line.row != nullptr) trace.push_back(std::move(line));
    if (!parsed && reason.empty()) reason = "line " + std::to_string(number) + ": " + fault;
    start = end + 1;
  }
  return trace;
}

}  // namespace koru::traces
