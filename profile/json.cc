// SPDX-License-Identifier: MIT
// The profile for other programs. Bytes beyond ASCII are written as they are: names in UTF-8 stay that.
#include <cstdio>
#include <ostream>

#include "profile/profile.h"

namespace koru::profile {

namespace {

std::string quoted(const std::string &text) {
  std::string result = "\"";
  for (const char c : text) {
    if (static_cast<unsigned char>(c) < 0x20) {
      char code[8];
      std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned>(c));
      result += code;
      continue;
    }
    if (c == '"' || c == '\\') result += '\\';
    result += c;
  }
  return result + '"';
}

}  // namespace

void writeJson(std::ostream &out, const Profile &profile) {
  out << "{\"version\": " << quoted(profile.version) << ", \"startTime\": " << profile.startTime
      << ", \"endTime\": " << profile.endTime << ", \"calls\": " << profile.calls << ", \"fails\": " << profile.fails
      << ", \"places\": [";
  const char *between = "\n";
  for (const Entry &e : profile.entries) {
    out << between << "{\"calls\": " << e.calls << ", \"fails\": " << e.fails << ", \"posted\": " << e.postings
        << ", \"function\": " << quoted(e.function) << ", \"file\": " << quoted(e.file) << ", \"line\": " << e.line
        << ", \"caller\": " << quoted(e.caller) << '}';
    between = ",\n";
  }
  out << "\n]}\n";
}

}  // namespace koru::profile
