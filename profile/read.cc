// SPDX-License-Identifier: MIT
// Reading of reports. A row is the place, the function, the calls and the fails, separated by tabs, and of a report
// with details the calls without effect, the narrowings and the nanoseconds; the place has tabs of its own, so rows are
// read from the end.
#include <algorithm>
#include <charconv>
#include <functional>
#include <istream>
#include <limits>
#include <map>
#include <tuple>

#include "profile/profile.h"

namespace koru::profile {

namespace {

// Parts of a line between tabs.
std::vector<std::string> fieldsOf(const std::string &line) {
  std::vector<std::string> fields(1);
  for (const char c : line) {
    if (c == '\t')
      fields.emplace_back();
    else
      fields.back() += c;
  }
  return fields;
}

template <class Number>
bool parse(const std::string &text, Number &number) {
  const char *end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  return result.ec == std::errc{} && result.ptr == end && !text.empty();
}

// The four fields of a place are file, line, address and function; any other text stands for itself.
void setPlace(Entry &entry, const std::vector<std::string> &fields, std::size_t count) {
  if (count == 4 && parse(fields[1], entry.line)) {
    entry.file = fields[0];
    entry.caller = fields[3];
    return;
  }
  entry.file = fields[0];
  for (std::size_t i = 1; i < count; ++i) entry.file += ' ' + fields[i];
}

bool parseDetails(std::vector<std::string> &fields, Entry &entry) {
  const std::size_t n = fields.size();
  if (n < 7 || !parse(fields[n - 3], entry.idle) || !parse(fields[n - 2], entry.narrowings) ||
      !parse(fields[n - 1], entry.nanoseconds))
    return false;
  fields.resize(n - 3);
  return true;
}

bool parseRow(const std::string &line, bool detailed, Entry &entry) {
  std::vector<std::string> fields = fieldsOf(line);
  if (detailed && !parseDetails(fields, entry)) return false;
  const std::size_t n = fields.size();
  if (n < 4 || !parse(fields[n - 2], entry.calls) || !parse(fields[n - 1], entry.fails)) return false;
  entry.function = fields[n - 3];
  entry.postings = 1;
  setPlace(entry, fields, n - 3);
  return true;
}

bool readHead(const std::string &line, Profile &profile) {
  const std::size_t colon = line.find(": ");
  if (colon == std::string::npos) return false;
  const std::string name = line.substr(0, colon);
  const std::string value = line.substr(colon + 2);
  if (name == "Koru Version") profile.version = value;
  if (name == "format") profile.format = value;
  if (name == "start_time") return parse(value, profile.startTime);
  if (name == "end_time") return parse(value, profile.endTime);
  return true;
}

using Key = std::tuple<std::string, std::string, int, std::string>;

template <class Sums>
void addCounts(Sums &sums, const Entry &e) {
  sums.calls = sumOf(sums.calls, e.calls);
  sums.fails = sumOf(sums.fails, e.fails);
  sums.idle = sumOf(sums.idle, e.idle);
  sums.narrowings = sumOf(sums.narrowings, e.narrowings);
  sums.nanoseconds = sumOf(sums.nanoseconds, e.nanoseconds);
}

void addTo(std::map<Key, Entry> &entries, const Entry &row) {
  Entry &sum = entries[{row.function, row.file, row.line, row.caller}];
  const Entry before = sum;
  sum = row;
  sum.postings = before.postings + 1;
  addCounts(sum, before);
}

void takeEntries(Profile &profile, const std::map<Key, Entry> &entries) {
  for (const auto &[key, entry] : entries) {
    profile.entries.push_back(entry);
    addCounts(profile, entry);
  }
  std::ranges::stable_sort(profile.entries, std::greater<>(),
                           [&](const Entry &e) { return std::pair(profile.heatOf(e), e.calls); });
}

}  // namespace

std::int64_t sumOf(std::int64_t a, std::int64_t b) {
  std::int64_t sum = 0;
  if (!__builtin_add_overflow(a, b, &sum)) return sum;
  return a < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
}

std::string Entry::place() const {
  std::string result = file;
  if (line > 0) result += ':' + std::to_string(line);
  if (!caller.empty() && caller != "(unknown)") result += ' ' + caller;
  return result;
}

bool readProfile(std::istream &in, Profile &profile, std::string &error) {
  std::map<Key, Entry> entries;
  std::string line;
  bool inData = false;
  for (long number = 1; std::getline(in, line); ++number) {
    Entry row;
    const bool isFirst = number == 1;
    const char *fault = nullptr;
    profile.detailed = isFirst ? line == "Koru Profiler: Details 1.0" : profile.detailed;
    if (isFirst)
      fault = profile.detailed || line == "Koru Profiler: Constraint 1.0" ? nullptr : "not a profiler report";
    else if (!inData && line == "__DATA__")
      inData = true;
    else if (!inData)
      fault = readHead(line, profile) ? nullptr : "no line of a report's head";
    else if (line == "error")
      fault = "the program had no memory for the rows";
    else if (parseRow(line, profile.detailed, row))
      addTo(entries, row);
    else
      fault = "no row of a report";
    if (fault == nullptr) continue;
    error = std::to_string(number) + ": " + fault;
    return false;
  }
  if (!inData) error = "1: not a whole report";
  takeEntries(profile, entries);
  return inData;
}

}  // namespace koru::profile
