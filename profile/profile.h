// SPDX-License-Identifier: MIT
// A profiler report, read back: its head, and its rows summed up by place and function.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace koru::profile {

// Between 0 and 1; 0 of nothing, and of counts that have wrapped.
inline double shareOf(std::int64_t part, std::int64_t all) {
  if (all <= 0 || part <= 0) return 0;
  return part < all ? static_cast<double>(part) / static_cast<double>(all) : 1;
}

// All sites with the same function and the same place in the program.
struct Entry {
  std::string function;  // of the library
  std::string file;      // of the program; "(unknown)" when nobody looked for it
  int line = 0;          // 0 when not known
  std::string caller;    // the program's function
  std::int64_t postings = 0;
  std::int64_t calls = 0;
  std::int64_t fails = 0;
  // Of a report with details: calls without effect, narrowings, time.
  std::int64_t idle = 0;
  std::int64_t narrowings = 0;
  std::int64_t nanoseconds = 0;

  std::string place() const;  // "file:line caller" as far as it is known
  double failRate() const { return shareOf(fails, calls); }
  double idleRate() const { return shareOf(idle, calls); }
};

struct Profile {
  std::string version;
  std::string format;
  std::int64_t startTime = 0;
  std::int64_t endTime = 0;
  std::int64_t calls = 0;
  std::int64_t fails = 0;
  std::vector<Entry> entries;  // hottest first
  bool detailed = false;
  std::int64_t idle = 0;
  std::int64_t narrowings = 0;
  std::int64_t nanoseconds = 0;

  // How hot a place is: by time where it is known, else by calls.
  std::int64_t heatOf(const Entry &e) const { return nanoseconds > 0 ? e.nanoseconds : e.calls; }
  double shareOf(const Entry &e) const { return profile::shareOf(heatOf(e), nanoseconds > 0 ? nanoseconds : calls); }
};

// False, with a reason that starts with the line number, when the input is no report.
bool readProfile(std::istream &in, Profile &profile, std::string &error);

// The hottest entries as a table for people; `top` < 1 means all. Bars have colours when asked for.
void writeTable(std::ostream &out, const Profile &profile, std::size_t top, bool colours);

// One page that needs no other file: the table, which can be sorted, with bars, and the source as far as it can be
// read, with the heat of its lines beside it.
void writePage(std::ostream &out, const Profile &profile, const std::string &title);

// In milliseconds, with as many decimals.
std::string milliseconds(std::int64_t nanoseconds, int decimals);

// A sum that ends at the ends of its type: a report may say anything.
std::int64_t sumOf(std::int64_t a, std::int64_t b);

// The text with control characters replaced: a report must not play tricks on the terminal that it is printed on.
std::string printable(std::string text);

// Folded stacks of calls, or of nanoseconds, for flame graphs.
void writeFolded(std::ostream &out, const Profile &profile, bool byTime);

// Two reports, the largest differences in time first where both know it, else in calls; `top` < 1 means all.
void writeDifference(std::ostream &out, const Profile &before, const Profile &after, std::size_t top);

// An object with the sums and an array of the entries, hottest first; times in seconds since 1970, 0 for none.
void writeJson(std::ostream &out, const Profile &profile);

}  // namespace koru::profile
