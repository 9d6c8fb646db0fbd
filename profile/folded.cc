// SPDX-License-Identifier: MIT
// Folded stacks: a line for each place, frames with semicolons between them and the number of calls, or of nanoseconds,
// as tools for flame graphs read them. The calls that a place of a MiniZinc model stands in are frames.
#include <ostream>

#include "profile/profile.h"

namespace koru::profile {

namespace {

// A frame has no semicolon, blank or control character in it.
std::string frame(std::string text) {
  for (char &c : text)
    if (c == ';' || static_cast<unsigned char>(c) <= 0x20 || c == 0x7f) c = '_';
  return text;
}

void writeCallers(std::ostream &out, std::string callers) {
  constexpr char kBetween[] = " > ";
  for (std::size_t end = 0; end != std::string::npos && !callers.empty();) {
    end = callers.find(kBetween);
    out << ';' << frame(callers.substr(0, end));
    if (end != std::string::npos) callers.erase(0, end + sizeof kBetween - 1);
  }
}

}  // namespace

void writeFolded(std::ostream &out, const Profile &profile, bool byTime) {
  for (const Entry &e : profile.entries) {
    out << frame(e.file);
    writeCallers(out, e.caller);
    if (e.line > 0) out << ";line_" << e.line;
    out << ';' << frame(e.function) << ' ' << (byTime ? e.nanoseconds : e.calls) << '\n';
  }
}

}  // namespace koru::profile
