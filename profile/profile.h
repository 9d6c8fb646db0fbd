// SPDX-License-Identifier: MIT
// A profiler report, read back: its head, and its rows summed up by place and function.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace koru::profile {

// All sites with the same function and the same place in the program.
struct Entry {
  std::string function;  // of the library
  std::string file;      // of the program; "(unknown)" when nobody looked for it
  int line = 0;          // 0 when not known
  std::string caller;    // the program's function
  std::int64_t postings = 0;
  std::int64_t calls = 0;
  std::int64_t fails = 0;

  std::string place() const;  // "file:line caller" as far as it is known
  double failRate() const { return calls > 0 ? static_cast<double>(fails) / static_cast<double>(calls) : 0; }
};

struct Profile {
  std::string version;
  std::string format;
  std::int64_t startTime = 0;
  std::int64_t endTime = 0;
  std::int64_t calls = 0;
  std::int64_t fails = 0;
  std::vector<Entry> entries;  // most calls first

  double shareOf(const Entry &e) const {
    return calls > 0 ? static_cast<double>(e.calls) / static_cast<double>(calls) : 0;
  }
};

// False, with a reason that starts with the line number, when the input is no report.
bool readProfile(std::istream &in, Profile &profile, std::string &error);

// The hottest entries as a table for people; `top` < 1 means all. Bars have colours when asked for.
void writeTable(std::ostream &out, const Profile &profile, std::size_t top, bool colours);

// One page that needs no other file: the table, which can be sorted, with bars and the source lines that can be read.
void writePage(std::ostream &out, const Profile &profile, const std::string &title);

// The text with control characters replaced: a report must not play tricks on the terminal that it is printed on.
std::string printable(std::string text);

// Folded stacks of calls, for flame graphs.
void writeFolded(std::ostream &out, const Profile &profile);

// Calls and fails of two reports, the largest differences in calls first; `top` < 1 means all.
void writeDifference(std::ostream &out, const Profile &before, const Profile &after, std::size_t top);

// An object with the sums and an array of the entries, most calls first; times in seconds since 1970, 0 for none.
void writeJson(std::ostream &out, const Profile &profile);

}  // namespace koru::profile
