// SPDX-License-Identifier: MIT
// The table for the terminal.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ostream>
#include <vector>

#include "profile/profile.h"

namespace koru::profile {

namespace {

constexpr int kBarWidth = 12;

std::string number(std::int64_t n) {
  std::string digits = std::to_string(n);
  for (std::size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, 1, ' ');
  return digits;
}

std::string percent(double share) {
  char text[32];
  std::snprintf(text, sizeof text, "%5.1f %%", share * 100);
  return text;
}

std::string bar(double share) {
  std::string text(static_cast<std::size_t>(std::lround(share * kBarWidth)), '#');
  text.resize(kBarWidth, '.');
  return text;
}

std::string padded(const std::string &text, std::size_t width, bool right) {
  const std::string space(width > text.size() ? width - text.size() : 0, ' ');
  return right ? space + text : text + space;
}

struct Column {
  std::string title;
  bool right;
  std::vector<std::string> cells{};

  std::size_t width() const {
    std::size_t widest = title.size();
    for (const std::string &cell : cells) widest = std::max(widest, cell.size());
    return widest;
  }
};

template <class CellOf>
Column columnOf(const std::string &title, bool right, const Profile &profile, std::size_t shown, CellOf cellOf) {
  Column column{title, right};
  for (std::size_t i = 0; i < shown; ++i) column.cells.push_back(cellOf(profile.entries[i]));
  return column;
}

std::vector<Column> columnsOf(const Profile &profile, std::size_t shown) {
  std::vector<Column> columns;
  const auto add = [&](const std::string &title, bool right, auto cellOf) {
    columns.push_back(columnOf(title, right, profile, shown, cellOf));
  };
  const auto addCalls = [&] { add("calls", true, [](const Entry &e) { return number(e.calls); }); };
  if (profile.detailed)
    add("ms", true, [](const Entry &e) { return milliseconds(e.nanoseconds, 1); });
  else
    addCalls();
  add("share", true, [&](const Entry &e) { return percent(profile.shareOf(e)); });
  add("", false, [&](const Entry &e) { return bar(profile.shareOf(e)); });
  if (profile.detailed) {
    addCalls();
    add("in vain", true, [](const Entry &e) { return percent(e.idleRate()); });
    add("narrowings", true, [](const Entry &e) { return number(e.narrowings); });
  }
  add("fails", true, [](const Entry &e) { return number(e.fails); });
  add("fail rate", true, [](const Entry &e) { return percent(e.failRate()); });
  add("posted", true, [](const Entry &e) { return number(e.postings); });
  add("posted by", false, [](const Entry &e) { return printable(e.function); });
  add("place", false, [](const Entry &e) { return printable(e.place()); });
  return columns;
}

std::string coloured(const std::string &bar) {
  std::string text = bar;
  std::ranges::replace(text, '.', ' ');
  return "\033[38;5;173m" + text + "\033[0m";
}

}  // namespace

std::string printable(std::string text) {
  for (char &c : text)
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
  return text;
}

std::string milliseconds(std::int64_t nanoseconds, int decimals) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", decimals, static_cast<double>(nanoseconds) / 1e6);
  return text;
}

void writeTable(std::ostream &out, const Profile &profile, std::size_t top, bool colours) {
  const std::size_t shown = top < 1 ? profile.entries.size() : std::min(top, profile.entries.size());
  const std::vector<Column> columns = columnsOf(profile, shown);
  const auto write = [&](const auto &cellOf) {
    for (const Column &column : columns) {
      const bool last = &column == &columns.back();
      out << padded(cellOf(column),
                    last                   ? 0
                    : column.title.empty() ? kBarWidth
                                           : column.width(),
                    column.right)
          << (last ? "\n" : "  ");
    }
  };
  write([](const Column &column) { return column.title; });
  for (std::size_t i = 0; i < shown; ++i)
    write([&](const Column &column) {
      return column.title.empty() && colours ? coloured(column.cells[i]) : column.cells[i];
    });
  if (shown < profile.entries.size()) out << "and " << profile.entries.size() - shown << " more\n";
  if (profile.detailed) out << milliseconds(profile.nanoseconds, 1) << " ms, ";
  out << number(profile.calls) << " calls, ";
  if (profile.detailed) out << number(profile.idle) << " in vain, " << number(profile.narrowings) << " narrowings, ";
  out << number(profile.fails) << " fails at " << profile.entries.size()
      << (profile.entries.size() == 1 ? " place\n" : " places\n");
}

}  // namespace koru::profile
