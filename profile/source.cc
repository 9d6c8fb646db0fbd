// SPDX-License-Identifier: MIT
#include "profile/source.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <ostream>

#include "profile/quoting.h"

namespace koru::profile {

namespace {

// A report may say anything: no device is read.
std::ifstream opened(const std::string &name) {
  std::error_code error;
  return std::filesystem::is_regular_file(name, error) ? std::ifstream(name) : std::ifstream();
}

// Heat by line.
using Heats = std::map<int, std::int64_t>;

std::map<std::string, Heats> heatsOf(const Profile &profile) {
  std::map<std::string, Heats> files;
  for (const Entry &e : profile.entries) {
    if (e.line < 1) continue;
    std::int64_t &heat = files[e.file][e.line];
    heat = sumOf(heat, profile.heatOf(e));
  }
  return files;
}

// Some line within `around` of this one posts.
bool isNear(const Heats &heats, int number, int around) {
  const auto next = heats.lower_bound(number > around ? number - around : 1);
  return next != heats.end() && next->first - around <= number;
}

std::string heatText(const Profile &profile, std::int64_t heat) {
  return profile.nanoseconds > 0 ? milliseconds(heat, 3) + " ms" : std::to_string(heat);
}

void writeLine(std::ostream &out, const Profile &profile, const Heats &heats, int number, std::int64_t hottest,
               const std::string &line) {
  const auto heat = heats.find(number);
  out << "<div>";
  if (heat == heats.end()) {
    out << "<span></span>";
  } else {
    char style[32];
    std::snprintf(style, sizeof style, "--hot:%.1f%%", shareOf(heat->second, hottest) * 85);
    out << "<span style=\"" << style << "\">" << heatText(profile, heat->second) << "</span>";
  }
  out << "<i>" << number << "</i>" << escaped(line) << "</div>\n";
}

void writeFile(std::ostream &out, const Profile &profile, const std::string &name, const Heats &heats,
               std::int64_t hottest) {
  constexpr int kAround = 5;
  std::ifstream file = opened(name);
  std::string line;
  int last = 0;
  for (int number = 1; number <= heats.rbegin()->first + std::int64_t{kAround} && std::getline(file, line); ++number) {
    if (!isNear(heats, number, kAround)) continue;
    if (last == 0) out << "<h2><code>" << escaped(name) << "</code></h2>\n<div class=heat>\n";
    if (last != number - 1) out << "<div><span></span><i>&#8942;</i></div>\n";
    writeLine(out, profile, heats, number, hottest, line);
    last = number;
  }
  if (last != 0) out << "</div>\n";
}

}  // namespace

std::string sourceAround(const Entry &e) {
  constexpr int kAround = 3;
  std::ifstream file = opened(e.file);
  std::string result;
  std::string line;
  for (std::int64_t number = 1; e.line > 0 && number <= e.line + std::int64_t{kAround} && std::getline(file, line);
       ++number) {
    if (number < e.line - kAround) continue;
    char label[24];
    std::snprintf(label, sizeof label, "%5lld  ", static_cast<long long>(number));
    const std::string text = label + escaped(line);
    result += number == e.line ? "<b>" + text + "</b>\n" : text + '\n';
  }
  return result;
}

void writeSources(std::ostream &out, const Profile &profile) {
  const std::map<std::string, Heats> files = heatsOf(profile);
  std::int64_t hottest = 0;
  for (const auto &[name, heats] : files)
    for (const auto &[line, heat] : heats) hottest = std::max(hottest, heat);
  for (const auto &[name, heats] : files) writeFile(out, profile, name, heats, hottest);
}

}  // namespace koru::profile
