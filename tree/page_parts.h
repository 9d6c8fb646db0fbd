// SPDX-License-Identifier: MIT
// What is the same on every page.
#pragma once

namespace koru::tree {

inline constexpr char kPageHead[] = R"html(<meta name="viewport" content="width=device-width, initial-scale=1">
<style>
:root { color-scheme: light dark; --ink: #22262b; --soft: #5d666f; --line: #d9dde2; --paper: #fcfcfa; --code: #f1f0ea;
  --open: #9db8d2; --dead: #d99a8b; --found: #5f9e6e; --mark: #e0b000; --pick: #22262b; }
@media (prefers-color-scheme: dark) { :root { --ink: #e4e6e8; --soft: #a3acb5; --line: #3a4047; --paper: #1c1f23;
  --code: #262a30; --open: #4f7397; --dead: #9a5547; --found: #4c8a5c; --mark: #c79a00; --pick: #ffffff; } }
body { font: 15px/1.45 system-ui, sans-serif; color: var(--ink); background: var(--paper); margin: 1.5rem auto;
  max-width: 80rem; padding: 0 1rem; }
h1 { font-size: 1.4rem; margin: 0 0 .3rem; overflow-wrap: anywhere; }
h2 { font-size: 1rem; margin: 1rem 0 .3rem; }
p { color: var(--soft); margin: 0 0 .8rem; }
#tree { display: block; width: 100%; height: 24rem; border: 1px solid var(--line); border-radius: 4px; }
#tree:focus-visible { outline: 3px solid var(--mark); }
#tree rect { stroke: var(--paper); stroke-width: .5; fill: var(--open); cursor: pointer; }
#tree rect.dead { fill: var(--dead); }
#tree rect.found { fill: var(--found); }
#tree rect.match { fill: var(--mark); }
#tree rect.pick { stroke: var(--pick); stroke-width: 2.5; }
.bar { display: flex; gap: .6rem; flex-wrap: wrap; align-items: center; margin: .6rem 0; }
button, input { font: inherit; color: inherit; background: var(--code); border: 1px solid var(--line);
  border-radius: 4px; padding: .2rem .6rem; }
.two { display: grid; grid-template-columns: repeat(auto-fit, minmax(22rem, 1fr)); gap: 0 2rem; }
table { border-collapse: collapse; width: 100%; }
td, th { text-align: left; border-bottom: 1px solid var(--line); padding: .2rem .5rem; overflow-wrap: anywhere; }
td.n, th.n { text-align: right; font-variant-numeric: tabular-nums; white-space: nowrap; }
pre { font: 13px/1.4 ui-monospace, monospace; background: var(--code); padding: .6rem; overflow-x: auto; }
.key i { display: inline-block; width: .9rem; height: .9rem; border-radius: 2px; vertical-align: -.1rem; margin: 0 .3rem; }
</style>
)html";

inline constexpr char kPageBody[] = R"html(<p id="totals"></p>
<p class="key">Each decision lies below the one before it and is as wide as its subtree.<i style="background:var(--open)">
</i>tried further<i style="background:var(--dead)"></i>refused, or nothing found below<i style="background:var(--found)">
</i>a solution below</p>
<svg id="tree" tabindex="0" role="application" aria-describedby="keys"
  aria-label="The tree of the search"></svg>
<p id="keys">Arrows: up to the decision before, down to the largest subtree below, left and right to its
neighbours. Enter zooms in, Escape out. Click picks, double click zooms.</p>
<div class="bar"><button id="in">Zoom in</button><button id="out">Zoom out</button>
<label>Variable <input id="variable" autocomplete="off"></label><button id="next">Next</button>
<span id="matches" role="status"></span></div>
<div class="two"><section><h2>Picked</h2><div id="picked" aria-live="polite"></div>
<h2>Solutions</h2><table id="solutions"></table></section>
<section><h2>Refused in its subtree, by</h2><table id="places"></table></section></div>
)html";

inline constexpr char kPageScript[] = R"html(<script>
"use strict";
const data = JSON.parse(document.querySelector("#data").textContent);
const count = data.at.length;
const relations = [" = ", " \u2260 ", " \u2264 ", " < ", " \u2265 ", " > "];
const kSolution = 2, kAccepted = 1, kRoot = 16, kNearby = 32;
const depth = [], below = [], found = data.solved.slice();
for (let k = 0; k < count; ++k) {
  const p = data.parent[k];
  depth.push(p < 0 ? 0 : depth[p] + 1);
  below.push([]);
  if (p >= 0) below[p].push(k);
}
for (let k = count - 1; k >= 0; --k) if (data.parent[k] >= 0) found[data.parent[k]] += found[k];
const all = { at: 0, size: data.nodes };
let picked = count > 0 ? 0 : -1, zoomed = -1, matches = [];
const get = id => document.querySelector("#" + id);
const nameOf = v => data.names[v] ?? "v" + v;
function textOf(k) {
  if (data.flags[k] & kRoot) return data.flags[k] & kNearby ? "a neighbourhood" : "the root";
  return nameOf(data.variable[k]) + relations[data.method[k]] + data.value[k];
}
function pathTo(k) {
  const path = [];
  for (; k >= 0; k = data.parent[k]) if (!(data.flags[k] & kRoot)) path.unshift(textOf(k));
  return path;
}
// The last shown node of a subtree, in the order of the search.
function endOf(k) {
  let low = k + 1, high = count;
  while (low < high) {
    const middle = low + high >> 1;
    if (data.at[middle] < data.at[k] + data.size[k]) low = middle + 1; else high = middle;
  }
  return low;
}
const colour = k => found[k] > 0 ? "found" : !(data.flags[k] & (kAccepted | kRoot)) || below[k].length === 0 ? "dead" : "";
function draw() {
  const svg = get("tree"), width = svg.clientWidth || 1000, height = svg.clientHeight || 400;
  const view = zoomed < 0 ? all : { at: data.at[zoomed], size: data.size[zoomed] };
  const first = zoomed < 0 ? 0 : zoomed, last = zoomed < 0 ? count : endOf(zoomed);
  const top = zoomed < 0 ? 0 : depth[zoomed], scale = width / view.size;
  let deepest = 0;
  for (let k = first; k < last; ++k) if (data.size[k] * scale >= .4) deepest = Math.max(deepest, depth[k] - top);
  const row = Math.min(24, height / (deepest + 1));
  const marked = new Set(matches), shapes = [];
  for (let k = first; k < last; ++k) {
    const w = data.size[k] * scale;
    if (w < .4 && k !== picked) continue;
    const shape = document.createElementNS("http://www.w3.org/2000/svg", "rect");
    const at = { x: (data.at[k] - view.at) * scale, y: (depth[k] - top) * row, width: Math.max(w, .4), height: row };
    for (const name in at) shape.setAttribute(name, at[name]);
    shape.dataset.k = k;
    shape.setAttribute("class", (marked.has(k) ? "match" : colour(k)) + (k === picked ? " pick" : ""));
    if (k === picked) shapes.push(shape); else shapes.unshift(shape);
  }
  svg.setAttribute("viewBox", `0 0 ${width} ${height}`);
  svg.replaceChildren(...shapes);
}
function rowOf(cells, tag) {
  const row = document.createElement("tr");
  for (const text of cells) {
    const cell = document.createElement(tag ?? "td");
    if (typeof text === "object") cell.append(text); else cell.textContent = text;
    if (/^-?[\d.]+$/.test(cell.textContent)) cell.className = "n";
    row.append(cell);
  }
  return row;
}
function refusalsIn(k) {
  const sums = new Map();
  for (let i = k; i < endOf(k); ++i)
    for (let j = 0; j < data.refused[i].length; j += 2)
      sums.set(data.refused[i][j], (sums.get(data.refused[i][j]) ?? 0) + data.refused[i][j + 1]);
  return [...sums].sort((a, b) => b[1] - a[1]);
}
function tell() {
  if (picked < 0) return;
  const lines = [`node ${data.at[picked]}: ${textOf(picked)}`,
    `${data.size[picked]} nodes, ${found[picked]} solutions in its subtree`, pathTo(picked).join(", ")];
  get("picked").replaceChildren(...lines.map(line => Object.assign(document.createElement("div"), { textContent: line })));
  const rows = refusalsIn(picked).slice(0, 20);
  get("places").replaceChildren(rowOf(["refused", "by"], "th"),
    ...rows.map(([place, n]) => rowOf([n, place < 0 ? "(not by a constraint)" : data.places[place]])));
}
function pick(k) {
  if (k === undefined || k < 0 || k >= count) return;
  picked = k;
  if (zoomed >= 0 && (k < zoomed || k >= endOf(zoomed))) zoomed = -1;
  draw();
  tell();
}
function zoom(k) {
  zoomed = k;
  draw();
}
const zoomIn = () => zoom(picked), zoomOut = () => zoom(zoomed < 0 ? -1 : data.parent[zoomed]);
function beside(step) {
  const p = data.parent[picked];
  const row = p >= 0 ? below[p] : data.parent.flatMap((parent, k) => parent < 0 ? [k] : []);
  pick(row[row.indexOf(picked) + step]);
}
const largest = k => below[k].reduce((a, b) => a === undefined || data.size[b] > data.size[a] ? b : a, undefined);
const keys = { ArrowUp: () => pick(data.parent[picked]), ArrowDown: () => pick(largest(picked)),
  ArrowLeft: () => beside(-1), ArrowRight: () => beside(1), Enter: zoomIn, Escape: zoomOut };
get("tree").addEventListener("keydown", event => {
  if (picked < 0 || !keys[event.key]) return;
  event.preventDefault();
  keys[event.key]();
});
get("tree").addEventListener("click", event => pick(Number(event.target.dataset.k ?? -1)));
get("tree").addEventListener("dblclick", event => { if (event.target.dataset.k) zoom(Number(event.target.dataset.k)); });
get("in").addEventListener("click", zoomIn);
get("out").addEventListener("click", zoomOut);
get("variable").addEventListener("input", event => {
  const name = event.target.value.trim();
  matches = [];
  for (let k = 0; k < count && name; ++k)
    if (!(data.flags[k] & kRoot) && nameOf(data.variable[k]) === name) matches.push(k);
  get("matches").textContent = name ? `${matches.length} decisions` : "";
  draw();
});
get("next").addEventListener("click", () => pick(matches.find(k => k > picked) ?? matches[0]));
get("totals").textContent = `${data.nodes} nodes, ${count} shown, ${data.solutions.length} solutions`;
get("solutions").replaceChildren(rowOf(["node", "seconds", "objective", ""], "th"), ...data.solutions.slice(-200).map(s => {
  const button = Object.assign(document.createElement("button"), { textContent: "pick" });
  button.addEventListener("click", () => pick(s[0]));
  return rowOf([s[1], (s[2] / 1000).toFixed(3), s[3] ?? "", button]);
}));
addEventListener("resize", draw);
draw();
tell();
</script>
)html";

}  // namespace koru::tree
