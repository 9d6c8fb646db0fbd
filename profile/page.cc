// SPDX-License-Identifier: MIT
// The page: everything in one file, readable without scripts, sortable with them. Below the table stands the source
// around the lines that post, with the heat of each beside it.
#include <cstdio>
#include <ctime>
#include <ostream>

#include "profile/profile.h"
#include "profile/quoting.h"
#include "profile/source.h"

namespace koru::profile {

namespace {

constexpr char kHead[] = R"(<meta name="viewport" content="width=device-width, initial-scale=1">
<style>
:root { color-scheme: light dark; --ink: #22262b; --soft: #68717b; --line: #d9dde2; --paper: #fcfcfa; --bar: #d98e4a;
  --fail: #b8413a; --code: #f1f0ea; }
@media (prefers-color-scheme: dark) { :root { --ink: #e4e6e8; --soft: #98a1ab; --line: #3a4047; --paper: #1c1f23;
  --bar: #b9743a; --fail: #d9675f; --code: #262a30; } }
body { font: 15px/1.45 system-ui, sans-serif; color: var(--ink); background: var(--paper); margin: 2rem auto;
  max-width: 72rem; padding: 0 1rem; }
h1 { font-size: 1.5rem; margin: 0 0 .3rem; overflow-wrap: anywhere; }
p { color: var(--soft); margin: 0 0 1.4rem; }
table { border-collapse: collapse; width: 100%; }
th { text-align: left; font-weight: 600; border-bottom: 2px solid var(--line); padding: .3rem .6rem; white-space: nowrap; }
th button { font: inherit; font-weight: 600; color: inherit; background: none; border: 0; padding: 0; cursor: pointer; }
th[aria-sort] button::after { content: " \2195"; color: var(--line); }
th[aria-sort=descending] button::after { content: " \2193"; color: var(--bar); }
th[aria-sort=ascending] button::after { content: " \2191"; color: var(--bar); }
td { border-bottom: 1px solid var(--line); padding: .35rem .6rem; vertical-align: top; }
td.n { text-align: right; font-variant-numeric: tabular-nums; white-space: nowrap; }
td.share { width: 12rem; }
.bar { height: .8rem; margin-top: .3rem; background: var(--bar); border-radius: 2px; min-width: 1px; position: relative; }
.bar i { position: absolute; inset: 0 auto 0 0; background: var(--fail); border-radius: 2px; }
code { font: 13px/1.5 ui-monospace, monospace; }
pre { margin: .4rem 0 .2rem; padding: .5rem .7rem; background: var(--code); border-radius: 4px; overflow-x: auto;
  font: 13px/1.5 ui-monospace, monospace; }
pre b { display: inline-block; min-width: 100%; background: color-mix(in srgb, var(--bar) 30%, transparent); }
summary { cursor: pointer; overflow-wrap: anywhere; }
h2 { font-size: 1.1rem; margin: 1.8rem 0 .4rem; overflow-wrap: anywhere; }
.heat { background: var(--code); border-radius: 4px; overflow-x: auto; padding: .4rem 0; font: 13px/1.5 ui-monospace,
  monospace; }
.heat div { display: flex; white-space: pre; min-width: max-content; }
.heat span { flex: none; width: 9em; text-align: right; padding: 0 .8em 0 0; color: var(--ink); font-variant-numeric:
  tabular-nums; background: color-mix(in srgb, var(--bar) var(--hot, 0%), transparent); }
.heat i { flex: none; width: 4.5em; text-align: right; padding-right: 1em; color: var(--soft); font-style: normal; }
.soft { color: var(--soft); }
</style>
)";

constexpr char kScript[] = R"(<script>
"use strict";
const body = document.querySelector("tbody");
const heads = [...document.querySelectorAll("th")];
function keyOf(row, column) {
  const cell = row.cells[column];
  return cell.dataset.key === undefined ? cell.textContent.trim().toLowerCase() : Number(cell.dataset.key);
}
function sortBy(column) {
  const wasDown = heads[column].getAttribute("aria-sort") === "descending";
  const direction = wasDown ? "ascending" : "descending";
  heads.forEach((head, i) => head.setAttribute("aria-sort", i === column ? direction : "none"));
  const sign = wasDown ? 1 : -1;
  const rows = [...body.rows].map((row, i) => ({ row, i, key: keyOf(row, column) }));
  rows.sort((a, b) => (a.key < b.key ? -sign : a.key > b.key ? sign : a.i - b.i));
  body.append(...rows.map(each => each.row));
}
heads.forEach((head, i) => head.querySelector("button").addEventListener("click", () => sortBy(i)));
</script>
)";

std::string percent(double share) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f %%", share * 100);
  return text;
}

// A length in a style, where no space may stand before the sign.
std::string width(double share) {
  char text[32];
  std::snprintf(text, sizeof text, "width:%.2f%%", share * 100);
  return text;
}

std::string timeOf(std::int64_t seconds) {
  const auto time = static_cast<std::time_t>(seconds);
  char text[64] = "";
  const std::tm *parts = std::gmtime(&time);
  if (parts != nullptr) std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", parts);
  return text;
}

void writePlace(std::ostream &out, const Entry &e) {
  const std::string source = sourceAround(e);
  const std::string place = "<code>" + escaped(e.place()) + "</code>";
  if (source.empty())
    out << place;
  else
    out << "<details><summary>" << place << "</summary><pre>" << source << "</pre></details>";
}

void writeNumber(std::ostream &out, std::int64_t number) {
  out << "<td class=n data-key=" << number << '>' << number << "</td>";
}

void writeTime(std::ostream &out, std::int64_t nanoseconds) {
  out << "<td class=n data-key=" << nanoseconds << '>' << milliseconds(nanoseconds, 3) << "</td>";
}

void writeRate(std::ostream &out, double rate) {
  out << "<td class=n data-key=" << rate << '>' << percent(rate) << "</td>";
}

void writeRow(std::ostream &out, const Profile &profile, const Entry &e) {
  const double share = profile.shareOf(e);
  const double widest = profile.entries.empty() ? 1 : profile.shareOf(profile.entries.front());
  out << "<tr>";
  if (profile.detailed) writeTime(out, e.nanoseconds);
  if (!profile.detailed) writeNumber(out, e.calls);
  out << "<td class=share data-key=" << share << '>' << percent(share) << "<div class=bar style=\""
      << width(widest > 0 ? share / widest : 0) << "\"><i style=\"" << width(e.failRate()) << "\"></i></div></td>";
  if (profile.detailed) {
    writeNumber(out, e.calls);
    writeRate(out, e.idleRate());
    writeNumber(out, e.narrowings);
  }
  writeNumber(out, e.fails);
  writeRate(out, e.failRate());
  writeNumber(out, e.postings);
  out << "<td><code>" << escaped(e.function) << "</code></td><td>";
  writePlace(out, e);
  out << "</td></tr>\n";
}

void writeSummary(std::ostream &out, const Profile &profile) {
  out << "<p>";
  if (profile.detailed) out << milliseconds(profile.nanoseconds, 1) << " ms in ";
  out << profile.calls << " calls of constraints, ";
  if (profile.detailed) out << profile.idle << " in vain, " << profile.narrowings << " narrowings, ";
  out << profile.fails << " fails, from " << profile.entries.size() << " places. Koru " << escaped(profile.version)
      << '.';
  if (profile.startTime != 0) out << " From " << timeOf(profile.startTime);
  if (profile.endTime != 0) out << " to " << timeOf(profile.endTime);
  out << (profile.startTime != 0 ? ". " : " ") << "The red part of a bar is the share of calls that failed.</p>\n";
}

}  // namespace

void writePage(std::ostream &out, const Profile &profile, const std::string &title) {
  out << "<!doctype html>\n<html lang=en>\n<meta charset=utf-8>\n<title>" << escaped(title) << "</title>\n";
  out << kHead << "<h1>" << escaped(title) << "</h1>\n";
  writeSummary(out, profile);
  out << "<table>\n<thead><tr>";
  const std::vector<const char *> titles =
      profile.detailed
          ? std::vector<const char *>{"ms",    "share",     "calls",  "in vain",   "narrowings",
                                      "fails", "fail rate", "posted", "posted by", "place"}
          : std::vector<const char *>{"calls", "share", "fails", "fail rate", "posted", "posted by", "place"};
  for (const char *each : titles)
    out << "<th aria-sort=" << (each == titles.front() ? "descending" : "none") << "><button type=button>" << each
        << "</button></th>";
  out << "</tr></thead>\n<tbody>\n";
  for (const Entry &e : profile.entries) writeRow(out, profile, e);
  out << "</tbody>\n</table>\n";
  writeSources(out, profile);
  out << kScript << "</html>\n";
}

}  // namespace koru::profile
