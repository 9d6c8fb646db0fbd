#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Check koru-tree's page in a headless browser.

    check_page.py --browser CHROMIUM --command KORU_TREE --folder SCRATCH

Makes the page of a record that is written here, and loads a copy of it that ends with a script of ours: it picks nodes by
keys and clicks, zooms, looks for a variable, and leaves what it saw in the document as JSON. Prints the faults; exit status
1 if there are any.
"""
import argparse
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
from browser import CATCH, seen_on  # noqa: E402

PROBE = """<pre id="seen"></pre><script>
"use strict";
const rects = () => [...document.querySelectorAll("#tree rect")].map(r => [Number(r.dataset.k), r.getAttribute("class"),
  Math.round(Number(r.getAttribute("width"))), Number(r.getAttribute("y"))]).sort((a, b) => a[0] - b[0]);
const press = key => document.querySelector("#tree").dispatchEvent(new KeyboardEvent("keydown", { key, bubbles: true }));
const told = () => [...document.querySelectorAll("#picked div")].map(line => line.textContent);
const refusals = () => [...document.querySelectorAll("#places tr")].slice(1).map(row => row.textContent);
const seen = { errors: window.probeErrors, totals: document.querySelector("#totals").textContent, first: rects(),
  width: document.querySelector("#tree").clientWidth, steps: [], refusals: [refusals()] };
for (const key of ["ArrowDown", "ArrowRight", "ArrowDown", "ArrowLeft", "ArrowRight", "ArrowUp", "Enter"]) {
  press(key);
  seen.steps.push([key, ...told()]);
}
seen.zoomed = rects();
seen.refusals.push(refusals());
press("Escape");
seen.out = rects();
const input = document.querySelector("#variable");
input.value = "b";
input.dispatchEvent(new Event("input"));
seen.matches = document.querySelector("#matches").textContent;
seen.marked = rects().filter(r => r[1].includes("match")).length;
document.querySelector("#next").click();
seen.next = told()[0];
document.querySelector("#solutions button").click();
seen.solution = told()[0];
document.querySelector('#tree rect[data-k="1"]').dispatchEvent(new MouseEvent("click", { bubbles: true }));
seen.clicked = told()[0];
const nodes = () => [...document.querySelectorAll("#tree circle")].map(c => [Number(c.dataset.k), c.getAttribute("class")])
  .sort((a, b) => a[0] - b[0]);
const shown = () => rects().map(r => r[0]);
input.value = "";
input.dispatchEvent(new Event("input"));
document.querySelector('#tree rect[data-k="2"]').dispatchEvent(new MouseEvent("click", { bubbles: true }));
press(" ");
seen.folded = rects().map(r => [r[0], r[1]]);
seen.label = document.querySelector("#fold").textContent;
press("ArrowDown");
seen.opened = shown();
press("v");
seen.linked = nodes();
seen.edges = document.querySelectorAll("#tree line").length;
seen.labels = [...document.querySelectorAll("#tree text")].map(t => t.textContent);
const at = k => document.querySelector(`#tree circle[data-k="${k}"]`).getAttribute("cx");
seen.ordered = [3, 4, 5].every((k, i, all) => i === 0 || Number(at(all[i - 1])) < Number(at(k)));
press("ArrowUp");
document.querySelector("#fold").click();
seen.linkedFolded = nodes().map(n => n[0]);
document.querySelector("#open").click();
seen.linkedOpen = nodes().length;
document.querySelector("#view").click();
seen.again = shown();
document.querySelector('#tree rect[data-k="0"]').dispatchEvent(new MouseEvent("click", { bubbles: true }));
press("F");
seen.failed = rects().filter(r => r[1].includes("fold")).map(r => r[0]);
document.querySelector("#open").click();
document.querySelector('#tree rect[data-k="4"]').dispatchEvent(new MouseEvent("click", { bubbles: true }));
seen.replay = document.querySelector("#replay").textContent;
seen.summary = [...document.querySelectorAll("details pre")].at(-1).textContent;
seen.loaded = performance.getEntriesByType("resource").length;
document.querySelector("#seen").textContent = JSON.stringify(seen);
</script>"""

# a = 0 refused by cs_Neq, a = 1: b = 0 refused, b = 2 a solution worth -3, b = 3 accepted and left; then a = 2 refused.
RECORD = (b"koru-tree 1\n\xcb\x00\xd7\x04\x01a\x88\xd6\x06cs_Neq\x04m.c\t\xd5\x01\x00\x40\xd7\x05\x01b\x8a\x00\x42\xca\x05"
          b"\xd8\x07\x40\xc0\x00\xc0\xcc\x02")

# Without a solution: a = 0: b = 0 refused; a = 1 refused. Then an optimisation's three solutions, of which no node is below.
FAILED = b"koru-tree 1\n\xcb\x00\x88\x40\x8a\x00\xc0\x00\xc0\xcc\x02"
IMPROVING = b"koru-tree 1\n\xcb\x00\x88\x40\xca\x14\xd8\x64\x40\xca\x10\x40\xca\x0c\xc0\xcc\x02"

FOLDING = """<pre id="seen"></pre><script>
"use strict";
document.querySelector("#failed").click();
const seen = { errors: window.probeErrors, rects: [...document.querySelectorAll("#tree rect")].map(r => [Number(r.dataset.k),
  r.getAttribute("class")]).sort(), worth: document.querySelector("#worth").getAttribute("aria-label") };
document.querySelector("#seen").textContent = JSON.stringify(seen);
</script>"""


def look(browser, page, folder, probe=PROBE):
    """What the probe saw of the page."""
    text = page.read_text(encoding="utf-8").replace("<style>", CATCH + "<style>", 1) + probe
    return seen_on(browser, text, folder / "probed.html", folder / "browser", "--window-size=1200,900")


def faults_elsewhere(page_of, browser, folder):
    """Of the pages of small records."""
    expected = {FAILED: {"errors": [], "rects": [[0, "pick"], [1, "fold"], [3, "dead"]], "worth": None},
                IMPROVING: {"errors": [], "rects": [[0, "found pick"], [1, "found"], [2, "found"], [3, "found"]],
                            "worth": "the objective goes from 10 to 6 in 3 solutions"}}
    for record, want in expected.items():
        seen = look(browser, page_of(record), folder, FOLDING)
        if seen != want:
            yield f"{seen}, not {want}"


def faults_of(seen):
    width = seen["width"]
    part = round(width / 7)
    expected = {
        "errors": [],
        "totals": "7 nodes, 7 shown, 1 solutions",
        "first": [[0, "found pick", width, 0], [1, "dead", part, 24], [2, "found", round(width * 4 / 7), 24],
                  [3, "dead", part, 48], [4, "found", part, 48], [5, "dead", part, 48], [6, "dead", part, 24]],
        "steps": [["ArrowDown", "node 2: a = 1", "4 nodes, 1 solutions in its subtree", "a = 1"],
                  ["ArrowRight", "node 6: a = 2", "1 nodes, 0 solutions in its subtree", "a = 2"],
                  ["ArrowDown", "node 6: a = 2", "1 nodes, 0 solutions in its subtree", "a = 2"],
                  ["ArrowLeft", "node 2: a = 1", "4 nodes, 1 solutions in its subtree", "a = 1"],
                  ["ArrowRight", "node 6: a = 2", "1 nodes, 0 solutions in its subtree", "a = 2"],
                  ["ArrowUp", "node 0: the root", "7 nodes, 1 solutions in its subtree", ""],
                  ["Enter", "node 0: the root", "7 nodes, 1 solutions in its subtree", ""]],
        "refusals": [["3cs_Neq  m.c"], ["3cs_Neq  m.c"]],
        "matches": "3 decisions",
        "marked": 3,
        "next": "node 3: b = 0",
        "solution": "node 4: b = 2",
        "clicked": "node 1: a = 0",
        "loaded": 0,
        "folded": [[0, "found"], [1, "dead"], [2, "found fold pick"], [6, "dead"]],
        "label": "Unfold",
        "opened": [0, 1, 2, 3, 4, 5, 6],
        "linked": [[0, "found"], [1, "dead"], [2, "found"], [3, "dead pick"], [4, "found"], [5, "dead"], [6, "dead"]],
        "edges": 6,
        "labels": ["the root", "a = 0", "a = 1", "b = 0", "b = 2", "b = 3", "a = 2"],
        "ordered": True,
        "linkedFolded": [0, 1, 2, 6],
        "linkedOpen": 7,
        "again": [0, 1, 2, 3, 4, 5, 6],
        "failed": [],
        "replay": "const CSstep path[] = {{4, {CS_METHOD_EQ, 1}}, {5, {CS_METHOD_EQ, 2}}};\ncs_goToNode(path, 2);",
    }
    for name, value in expected.items():
        if seen[name] != value:
            yield f"{name}: {seen[name]}, not {value}"
    if seen["zoomed"] != seen["first"] or seen["out"] != seen["first"]:
        yield "zooming in at the root and out changes something"
    if not seen["summary"].startswith("6 choice points, 3 refusals, 1 solution"):
        yield f"in words: {seen['summary']}"


def main():
    parser = argparse.ArgumentParser()
    for name in ("browser", "command", "folder"):
        parser.add_argument("--" + name, required=True)
    options = parser.parse_args()
    folder = Path(options.folder).resolve()
    folder.mkdir(parents=True, exist_ok=True)
    record, page = folder / "run.tree", folder / "page.html"

    def page_of(content):
        record.write_bytes(content)
        subprocess.run([options.command, "--html", page, record], check=True, stdout=subprocess.DEVNULL)
        return page

    faults = [*faults_of(look(options.browser, page_of(RECORD), folder)),
              *faults_elsewhere(page_of, options.browser, folder)]
    print("\n".join(faults) if faults else "the page is as it should be")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
