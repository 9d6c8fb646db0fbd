// SPDX-License-Identifier: MIT
#include "parallel/timeline.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace koru::parallel {

namespace {

constexpr std::size_t kColumns = 400;

// Text, then the data, then the rest.
constexpr char kHead[] = R"(<!DOCTYPE html>
<html lang="en">
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Processes of a search</title>
<style>
:root { color-scheme: light dark; --line: #8886; --busy: #1f6fb2; }
@media (prefers-color-scheme: dark) { :root { --busy: #6db3f2; } }
body { font: 15px/1.5 system-ui, sans-serif; margin: 0 auto; max-width: 70rem; padding: 1rem; }
h1 { font-size: 1.4rem; margin: 0; }
h2 { font-size: 1rem; margin: 1.5rem 0 .3rem; }
canvas { display: block; width: 100%; border: 1px solid var(--line); box-sizing: border-box; }
dl { display: flex; flex-wrap: wrap; gap: .3rem 2rem; margin: 1rem 0; }
dt { opacity: .75; }
dd { margin: 0; font-variant-numeric: tabular-nums; }
#told { min-height: 1.5em; font-variant-numeric: tabular-nums; }
</style>
<h1>Processes of a search</h1>
<dl id="figures"></dl>
<h2>Share of the processes that had work</h2>
<canvas id="share" height="120"></canvas>
<h2>Choice points a second, all together</h2>
<canvas id="rate" height="120"></canvas>
<h2>Each process, from the first one at the top: the stronger, the more of the time it had work</h2>
<canvas id="each"></canvas>
<p id="told">Point at a place to read it.</p>
<p>From left to right: the time of the search. Work is counted from when the first process hands out a piece until it hears of its end, choice points when they are
reported. Red: a process that did not answer any more.</p>
<script>
const run = )";

constexpr char kTail[] = R"(;
const byId = id => document.getElementById(id);
const columns = run.busy[0].length, count = run.busy.length;
const sum = of => of.reduce((a, b) => a + b, 0);
const widthOf = c => Math.max(Math.min(run.width, run.seconds - c * run.width), 1e-9);
const shareAt = (p, c) => Math.min(run.busy[p][c] / 1000 / widthOf(c), 1);
const seconds = Array.from({ length: columns }, (_, c) => widthOf(c));
const share = seconds.map((_, c) => sum(run.busy.map((_, p) => shareAt(p, c))) / count);
const rate = seconds.map((s, c) => sum(run.points.map(row => row[c])) / s);
const used = sum(share.map((s, c) => s * seconds[c])) / run.seconds;
const number = (n, digits = 0) => n.toLocaleString("en", { maximumFractionDigits: digits });
const figures = {
  "processes": number(count), "seconds": number(run.seconds, 2), "had work": number(used * 100, 1) + " %",
  "choice points": number(run.choicePoints), "fails": number(run.fails), "solutions": number(run.solutions),
  "choice points reported in vain": number(run.vain), "silent in the end": number(run.silent.length) };
for (const [name, value] of Object.entries(figures)) {
  const box = byId("figures").appendChild(document.createElement("div"));
  box.appendChild(document.createElement("dt")).textContent = name;
  box.appendChild(document.createElement("dd")).textContent = value;
}
const rows = Math.min(count, 200), first = r => Math.floor(r * count / rows);
const ofRow = (r, c) => {
  let all = 0;
  for (let p = first(r); p < first(r + 1); ++p) all += shareAt(p, c);
  return all / (first(r + 1) - first(r));
};
const color = () => getComputedStyle(document.documentElement).getPropertyValue("--busy").trim();
function prepared(canvas, height) {
  const scale = devicePixelRatio || 1, width = canvas.clientWidth;
  canvas.width = width * scale;
  canvas.height = height * scale;
  canvas.style.height = height + "px";
  const pen = canvas.getContext("2d");
  pen.scale(scale, scale);
  pen.fillStyle = color();
  return [pen, width, height];
}
function plot(canvas, values, most) {
  const [pen, width, height] = prepared(canvas, 120);
  values.forEach((v, c) => {
    const h = most > 0 ? v / most * (height - 2) : 0;
    pen.fillRect(c * width / columns, height - h, width / columns + .5, h);
  });
}
function draw() {
  plot(byId("share"), share, 1);
  plot(byId("rate"), rate, Math.max(...rate));
  const line = Math.max(2, Math.min(24, Math.floor(600 / rows)));
  const [pen, width] = prepared(byId("each"), rows * line);
  for (let r = 0; r < rows; ++r) {
    pen.fillStyle = run.silent.some(p => p >= first(r) && p < first(r + 1)) ? "#c62828" : color();
    for (let c = 0; c < columns; ++c) {
      pen.globalAlpha = ofRow(r, c);
      pen.fillRect(c * width / columns, r * line, width / columns + .5, line > 4 ? line - 1 : line);
    }
  }
}
for (const id of ["share", "rate", "each"])
  byId(id).addEventListener("pointermove", e => {
    const box = byId(id).getBoundingClientRect();
    const c = Math.min(columns - 1, Math.max(0, Math.floor((e.clientX - box.left) / box.width * columns)));
    const r = Math.min(rows - 1, Math.max(0, Math.floor((e.clientY - box.top) / box.height * rows)));
    const when = `${number(c * run.width, 2)} to ${number(c * run.width + seconds[c], 2)} s: `;
    const last = first(r + 1) - 1;
    const who = first(r) === last ? `process ${last}` : `processes ${first(r)} to ${last}`;
    byId("told").textContent = when + (id === "each" ? `${who} had work for ${number(ofRow(r, c) * 100)} % of the time`
      : `${number(share[c] * 100)} % of the processes had work, ${number(rate[c])} choice points a second`);
  });
addEventListener("resize", draw);
draw();
</script>
</html>
)";

template <class NumberOf>
void addList(std::string &text, std::size_t n, NumberOf numberOf) {
  text += '[';
  for (std::size_t i = 0; i < n; ++i) text += (i > 0 ? "," : "") + std::to_string(std::llround(numberOf(i)));
  text += ']';
}

}  // namespace

// Twice as much time for each column.
void Timeline::halve() {
  width_ *= 2;
  for (Row &row : rows_) {
    std::vector<Cell> half((row.cells.size() + 1) / 2);
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
      half[i / 2].busy += row.cells[i].busy;
      half[i / 2].choicePoints += row.cells[i].choicePoints;
    }
    row.cells = std::move(half);
  }
}

// Work and choice points, evenly.
void Timeline::spread(Row &row, double from, double to, double choicePoints) {
  while (to >= width_ * static_cast<double>(kColumns)) halve();
  const auto last = static_cast<std::size_t>(to / width_);
  if (row.cells.size() <= last) row.cells.resize(last + 1);
  if (to <= from) {
    row.cells[last].choicePoints += choicePoints;
    return;
  }
  for (auto i = static_cast<std::size_t>(from / width_); i <= last; ++i) {
    const double part =
        std::min(to, width_ * static_cast<double>(i + 1)) - std::max(from, width_ * static_cast<double>(i));
    row.cells[i].busy += part;
    row.cells[i].choicePoints += choicePoints * part / (to - from);
  }
}

void Timeline::note(int process, What what, double now, long long choicePoints) {
  Row &row = rows_[static_cast<std::size_t>(process)];
  const double at = std::max(now - began_, row.since);
  if (row.busy && what != What::kSilent) spread(row, row.since, at, static_cast<double>(choicePoints));
  row.since = at;
  row.silent = what == What::kSilent;
  row.busy = what == What::kBegins || what == What::kReports;
}

std::string Timeline::data(const Counts &counts, double now) const {
  char head[400];
  const double seconds = std::max(now - began_, 1e-6);
  std::snprintf(head, sizeof head,
                "{seconds: %.6f, width: %.6f, choicePoints: %lld, fails: %lld, solutions: %lld, vain: %lld", seconds,
                std::min(width_, seconds), counts.choicePoints, counts.fails, counts.solutions, vain_);
  const std::size_t columns = std::min(static_cast<std::size_t>(seconds / width_) + 1, kColumns);
  std::string text = head, silent, busy, points;
  for (std::size_t p = 0; p < rows_.size(); ++p) {
    const Row &row = rows_[p];
    const auto cell = [&](std::size_t i) { return i < row.cells.size() ? row.cells[i] : Cell{}; };
    if (row.silent) silent += (silent.empty() ? "" : ",") + std::to_string(p);
    busy += p > 0 ? "," : "";
    points += p > 0 ? "," : "";
    addList(busy, columns, [&](std::size_t i) { return cell(i).busy * 1000; });
    addList(points, columns, [&](std::size_t i) { return cell(i).choicePoints; });
  }
  return text + ", silent: [" + silent + "],\nbusy: [" + busy + "],\npoints: [" + points + "]}";
}

std::string Timeline::page(const Counts &counts, double now) const { return kHead + data(counts, now) + kTail; }

}  // namespace koru::parallel
