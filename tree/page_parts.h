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
#tree .fold { fill-opacity: .45; }
#tree line { stroke: var(--soft); stroke-width: 1; }
#tree circle { fill: var(--open); stroke: var(--paper); cursor: pointer; }
#tree circle.dead { fill: var(--dead); }
#tree circle.found { fill: var(--found); }
#tree circle.match { fill: var(--mark); }
#tree circle.pick { stroke: var(--pick); stroke-width: 2.5; }
#tree circle.fold { stroke: var(--ink); stroke-dasharray: 2 2; }
#tree text { fill: var(--ink); font-size: 12px; pointer-events: none; }
#worth { display: block; width: 100%; height: 8rem; margin-bottom: .5rem; }
#worth polyline { fill: none; stroke: var(--found); stroke-width: 2; }
#worth text { fill: var(--soft); font-size: 12px; }
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
neighbours. Enter zooms in, Escape out. Space folds a subtree or opens it, F folds all without a solution, V changes between
icicle and nodes with links. Click picks, double click zooms.</p>
<div class="bar"><button id="in">Zoom in</button><button id="out">Zoom out</button><button id="fold">Fold</button>
<button id="failed">Fold what failed</button><button id="open">Open all</button><button id="view">Nodes and links</button>
<label>Variable <input id="variable" autocomplete="off"></label><button id="next">Next</button>
<span id="matches" role="status"></span></div>
<div class="two"><section><h2>Picked</h2><div id="picked" aria-live="polite"></div>
<details><summary>Domains here</summary><p>The record has none; in a program that has posted the model, cs_goToNode brings them
back:</p><pre id="replay"></pre></details>
<h2>Solutions</h2><svg id="worth" role="img" hidden></svg><table id="solutions"></table></section>
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
const kMostLinked = 400;  // nodes in the view with links
let picked = count > 0 ? 0 : -1, zoomed = -1, matches = [], linked = false;
const folded = new Set();
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
const methods = ["EQ", "NEQ", "LE", "LT", "GE", "GT"];
function replayOf(k) {
  const steps = [];
  for (; k >= 0; k = data.parent[k])
    if (!(data.flags[k] & kRoot)) steps.unshift(`{${data.variable[k]}, {CS_METHOD_${methods[data.method[k]]}, ${data.value[k]}}}`);
  return `const CSstep path[] = {${steps.join(", ")}};\ncs_goToNode(path, ${steps.length});`;
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
// The shown nodes of the view that do not lie in a folded subtree, in the order of the search.
function inView() {
  const nodes = [], last = zoomed < 0 ? count : endOf(zoomed);
  for (let k = zoomed < 0 ? 0 : zoomed; k < last; k = folded.has(k) ? endOf(k) : k + 1) nodes.push(k);
  return nodes;
}
function make(name, attributes, k) {
  const shape = document.createElementNS("http://www.w3.org/2000/svg", name);
  for (const each in attributes) shape.setAttribute(each, attributes[each]);
  if (k !== undefined) shape.dataset.k = k;
  return shape;
}
function classOf(k, marked) {
  const own = marked.has(k) ? "match" : colour(k);
  return [own, folded.has(k) ? "fold" : "", k === picked ? "pick" : ""].filter(c => c).join(" ");
}
function icicle(width, height, marked) {
  const view = zoomed < 0 ? all : { at: data.at[zoomed], size: data.size[zoomed] };
  const top = zoomed < 0 ? 0 : depth[zoomed], scale = width / view.size, nodes = inView();
  let deepest = 0;
  for (const k of nodes) if (data.size[k] * scale >= .4) deepest = Math.max(deepest, depth[k] - top);
  const row = Math.min(24, height / (deepest + 1)), shapes = [];
  for (const k of nodes) {
    const w = data.size[k] * scale;
    if (w < .4 && k !== picked) continue;
    const shape = make("rect", { x: (data.at[k] - view.at) * scale, y: (depth[k] - top) * row, width: Math.max(w, .4),
      height: row, class: classOf(k, marked) }, k);
    if (k === picked) shapes.push(shape); else shapes.unshift(shape);
  }
  return shapes;
}
// The largest subtrees, and the picked node with what leads to it. Ends lie side by side, others in the middle above theirs.
function links(width, height, marked) {
  const top = zoomed < 0 ? 0 : depth[zoomed];
  const largest = inView().sort((a, b) => data.size[b] - data.size[a] || a - b), shown = new Set(largest.slice(0, kMostLinked));
  if (largest.includes(picked)) for (let k = picked; k >= 0 && depth[k] >= top; k = data.parent[k]) shown.add(k);
  const nodes = [...shown].sort((a, b) => a - b), x = new Map(), ends = new Map();
  let deepest = 0, n = 0;
  for (const k of nodes) deepest = Math.max(deepest, depth[k] - top);
  for (const k of [...nodes].reverse()) {
    const span = ends.get(k);
    x.set(k, span === undefined ? n++ : (span[0] + span[1]) / 2);
    const p = data.parent[k];
    if (!shown.has(p)) continue;
    ends.set(p, [ends.get(p)?.[0] ?? x.get(k), x.get(k)]);
  }
  const across = k => width * (1 - (x.get(k) + .5) / n), row = height / (deepest + 1);
  const down = k => (depth[k] - top + .5) * row;
  const radius = Math.max(2.5, Math.min(8, width / n / 3, row / 3)), shapes = [], edges = [];
  for (const k of nodes) {
    const p = data.parent[k];
    if (shown.has(p)) edges.push(make("line", { x1: across(p), y1: down(p), x2: across(k), y2: down(k) }));
    shapes.push(make("circle", { cx: across(k), cy: down(k), r: radius, class: classOf(k, marked) }, k));
    if (width / n < 60 || row < 30) continue;
    const label = make("text", { x: across(k) + radius + 2, y: down(k) + 4 });
    label.textContent = textOf(k);
    shapes.push(label);
  }
  return [...edges, ...shapes];
}
function draw() {
  const svg = get("tree"), width = svg.clientWidth || 1000, height = svg.clientHeight || 400;
  svg.setAttribute("viewBox", `0 0 ${width} ${height}`);
  svg.replaceChildren(...(linked ? links : icicle)(width, height, new Set(matches)));
  get("view").textContent = linked ? "Icicle" : "Nodes and links";
  get("fold").textContent = folded.has(picked) ? "Unfold" : "Fold";
}
function fold(k) {
  if (k < 0) return;
  if (!folded.delete(k) && below[k].length > 0) folded.add(k);
  draw();
}
function foldFailed() {
  for (let k = 0; k < count; ++k)
    if (found[k] === 0 && below[k].length > 0 && depth[k] > 0 && (depth[k] === 1 || found[data.parent[k]] > 0)) folded.add(k);
  show(picked);
}
function openAll() {
  folded.clear();
  draw();
}
function change() {
  linked = !linked;
  draw();
}
// What lies above a node is opened, so that it can be seen.
function show(k) {
  for (let p = data.parent[k]; p >= 0; p = data.parent[p]) folded.delete(p);
  draw();
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
  get("replay").textContent = replayOf(picked);
  const rows = refusalsIn(picked).slice(0, 20);
  get("places").replaceChildren(rowOf(["refused", "by"], "th"),
    ...rows.map(([place, n]) => rowOf([n, place < 0 ? "(not by a constraint)" : data.places[place]])));
}
function pick(k) {
  if (k === undefined || k < 0 || k >= count) return;
  picked = k;
  if (zoomed >= 0 && (k < zoomed || k >= endOf(zoomed))) zoomed = -1;
  show(k);
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
  ArrowLeft: () => beside(-1), ArrowRight: () => beside(1), Enter: zoomIn, Escape: zoomOut, " ": () => fold(picked),
  f: foldFailed, v: change };
get("tree").addEventListener("keydown", event => {
  const key = event.key.length === 1 ? event.key.toLowerCase() : event.key;
  if (picked < 0 || !keys[key] || event.ctrlKey || event.metaKey || event.altKey) return;
  event.preventDefault();
  keys[key]();
});
get("tree").addEventListener("click", event => pick(Number(event.target.dataset.k ?? -1)));
get("tree").addEventListener("dblclick", event => { if (event.target.dataset.k) zoom(Number(event.target.dataset.k)); });
get("in").addEventListener("click", zoomIn);
get("out").addEventListener("click", zoomOut);
get("fold").addEventListener("click", () => fold(picked));
get("failed").addEventListener("click", foldFailed);
get("open").addEventListener("click", openAll);
get("view").addEventListener("click", change);
get("variable").addEventListener("input", event => {
  const name = event.target.value.trim();
  matches = [];
  for (let k = 0; k < count && name; ++k)
    if (!(data.flags[k] & kRoot) && nameOf(data.variable[k]) === name) matches.push(k);
  get("matches").textContent = name ? `${matches.length} decisions` : "";
  draw();
});
get("next").addEventListener("click", () => pick(matches.find(k => k > picked) ?? matches[0]));
get("totals").textContent = `${data.nodes} nodes, ${count} shown, ${data.solutionsInAll} solutions`;
get("solutions").replaceChildren(rowOf(["node", "seconds", "objective", ""], "th"), ...data.solutions.slice(-200).map(s => {
  const button = Object.assign(document.createElement("button"), { textContent: "pick" });
  button.addEventListener("click", () => pick(s[0]));
  return rowOf([s[1], (s[2] / 1000).toFixed(3), s[3] ?? "", button]);
}));
// The objective over time, as steps.
function drawWorth() {
  const known = data.solutions.filter(s => s[3] !== undefined), svg = get("worth");
  if (known.length < 2) return;
  const low = Math.min(...known.map(s => s[3])), high = Math.max(...known.map(s => s[3])), end = known.at(-1)[2] || 1;
  const x = s => 60 + 330 * s[2] / end, y = s => 10 + 80 * (high - s[3]) / (high - low || 1);
  const points = known.flatMap((s, i) => [...(i > 0 ? [`${x(s)},${y(known[i - 1])}`] : []), `${x(s)},${y(s)}`]);
  const label = (text, at) => Object.assign(make("text", at), { textContent: text });
  svg.setAttribute("viewBox", "0 0 400 110");
  svg.setAttribute("aria-label", `the objective goes from ${known[0][3]} to ${known.at(-1)[3]} in ${known.length} solutions`);
  svg.replaceChildren(make("polyline", { points: points.join(" ") }), label(high, { x: 4, y: 14 }), label(low, { x: 4, y: 94 }),
    label(`${(end / 1000).toFixed(3)} s`, { x: 330, y: 107 }));
  svg.removeAttribute("hidden");
}
drawWorth();
addEventListener("resize", draw);
draw();
tell();
</script>
)html";

}  // namespace koru::tree
