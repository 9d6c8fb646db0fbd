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
seen.summary = document.querySelector("details pre").textContent;
seen.loaded = performance.getEntriesByType("resource").length;
document.querySelector("#seen").textContent = JSON.stringify(seen);
</script>"""

# a = 0 refused by cs_Neq, a = 1: b = 0 refused, b = 2 a solution worth -3, b = 3 accepted and left; then a = 2 refused.
RECORD = (b"koru-tree 1\n\xcb\x00\xd7\x04\x01a\x88\xd6\x06cs_Neq\x04m.c\t\xd5\x01\x00\x40\xd7\x05\x01b\x8a\x00\x42\xca\x05"
          b"\xd8\x07\x40\xc0\x00\xc0\xcc\x02")


def look(browser, page, folder):
    """What the probe saw of the page."""
    text = page.read_text(encoding="utf-8").replace("<style>", CATCH + "<style>", 1) + PROBE
    return seen_on(browser, text, folder / "probed.html", folder / "browser", "--window-size=1200,900")


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
    record.write_bytes(RECORD)
    subprocess.run([options.command, "--html", page, record], check=True, stdout=subprocess.DEVNULL)
    faults = list(faults_of(look(options.browser, page, folder)))
    print("\n".join(faults) if faults else "the page is as it should be")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
