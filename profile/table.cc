// SPDX-License-Identifier: MIT
// The table for the terminal.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ostream>

#include "profile/profile.h"

namespace koru::profile {

namespace {

constexpr int kBarWidth = 12;

std::string number(std::int64_t n) {
  std::string digits = std::to_string(n);
  for (std::size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, " ");
  return digits;
}

std::string percent(double share) {
  char text[32];
  std::snprintf(text, sizeof text, "%5.1f %%", share * 100);
  return text;
}

std::string bar(double share, bool colours) {
  const int filled = std::min(kBarWidth, static_cast<int>(std::lround(share * kBarWidth)));
  std::string text(static_cast<std::size_t>(filled), '#');
  text.resize(kBarWidth, colours ? ' ' : '.');
  return colours ? "\033[38;5;173m" + text + "\033[0m" : text;
}

std::string padded(const std::string &text, std::size_t width, bool right) {
  const std::string space(width > text.size() ? width - text.size() : 0, ' ');
  return right ? space + text : text + space;
}

struct Row {
  std::string calls, fails, postings, function;
};

Row rowOf(const Entry &e) { return {number(e.calls), number(e.fails), number(e.postings), printable(e.function)}; }

}  // namespace

std::string printable(std::string text) {
  for (char &c : text)
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
  return text;
}

void writeTable(std::ostream &out, const Profile &profile, std::size_t top, bool colours) {
  const std::size_t shown = top < 1 ? profile.entries.size() : std::min(top, profile.entries.size());
  const Row titles{"calls", "fails", "posted", "posted by"};
  std::size_t calls = titles.calls.size(), fails = titles.fails.size(), posted = titles.postings.size(),
              function = titles.function.size();
  for (std::size_t i = 0; i < shown; ++i) {
    const Row row = rowOf(profile.entries[i]);
    calls = std::max(calls, row.calls.size());
    fails = std::max(fails, row.fails.size());
    posted = std::max(posted, row.postings.size());
    function = std::max(function, row.function.size());
  }
  const auto line = [&](const Row &row, const std::string &share, const std::string &bars, const std::string &rate,
                        const std::string &place) {
    out << padded(row.calls, calls, true) << "  " << share << "  " << bars << "  " << padded(row.fails, fails, true)
        << "  " << rate << "  " << padded(row.postings, posted, true) << "  " << padded(row.function, function, false)
        << "  " << place << '\n';
  };
  line(titles, "  share", padded("", kBarWidth, false), "fail rate", "place");
  for (std::size_t i = 0; i < shown; ++i) {
    const Entry &e = profile.entries[i];
    const double share = profile.shareOf(e);
    line(rowOf(e), percent(share), bar(share, colours), "  " + percent(e.failRate()), printable(e.place()));
  }
  if (shown < profile.entries.size()) out << "and " << profile.entries.size() - shown << " more\n";
  out << number(profile.calls) << " calls, " << number(profile.fails) << " fails at " << profile.entries.size()
      << (profile.entries.size() == 1 ? " place\n" : " places\n");
}

}  // namespace koru::profile
