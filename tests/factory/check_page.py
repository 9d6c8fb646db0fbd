#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Check the page of examples/factory in a headless browser.

    check_page.py --browser CHROMIUM --command FACTORY --input CSV --folder SCRATCH

Makes a plan with its page, and loads a copy of it that ends with a script of ours: it looks at the page as it is drawn at
first, zooms with the buttons and the wheel, moves the pointer over all bars, and leaves what it saw in the document as
JSON. Prints the faults; exit status 1 if there are any.
"""
import argparse
import csv
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
from browser import CATCH, seen_on  # noqa: E402

PROBE = """<pre id="seen"></pre><script>
"use strict";
const byId = id => document.getElementById(id), frame = byId("view"), tipBox = byId("tip");
const wide = () => frame.querySelector("svg").getBoundingClientRect().width;
const widths = { first: wide() }, scrolled = {};
byId("in").click(); widths.in = wide();
byId("in").click(); widths.further = wide(); scrolled.further = frame.scrollLeft;
byId("out").click(); byId("out").click(); widths.back = wide();
const wheel = (deltaY, ctrlKey) => frame.dispatchEvent(new WheelEvent("wheel",
  { deltaY, ctrlKey, clientX: 300, cancelable: true }));
wheel(-100, false); widths.scrolledOnly = wide();
wheel(-100, true); widths.wheel = wide();
byId("all").click(); widths.all = wide();
const pointer = (element, type) => element.dispatchEvent(new PointerEvent(type, { clientX: 200, clientY: 200 }));
const hidden = () => getComputedStyle(tipBox).display === "none";
const bars = [...frame.querySelectorAll("rect")].map(rect => {
  const before = hidden();
  pointer(rect, "pointermove");
  const box = tipBox.getBoundingClientRect();
  const shown = { text: tipBox.textContent, seen: !hidden(), inside: box.right <= innerWidth && box.left >= 0 };
  pointer(rect, "pointerleave");
  return { ...shown, before, after: hidden() };
});
byId("seen").textContent = JSON.stringify({
  errors: window.probeErrors, title: byId("title").textContent, widths, scrolled, bars,
  room: frame.clientWidth, names: [...byId("names").children].map(e => e.textContent),
  orders: [...byId("orders").rows].map(row => [...row.cells].map(cell => cell.textContent)),
  late: [...byId("orders").querySelectorAll(".late")].map(row => row.cells[0].textContent),
  loaded: performance.getEntriesByType("resource").length });
</script>"""


def look(browser, page, folder):
    """What the probe saw of the page."""
    text = page.read_text(encoding="utf-8").replace("<style>", CATCH + "<style>", 1) + PROBE
    return seen_on(browser, text, folder / "probed.html", folder / "browser", "--window-size=1000,800")


def faults_of_zoom(widths, scrolled, room):
    if widths["first"] > room:
        yield f"the plan is wider than its frame at first: {widths['first']} of {room}"
    if not widths["first"] < widths["in"] < widths["further"] or scrolled["further"] <= 0:
        yield f"zooming in does not widen it around its middle: {widths}, {scrolled}"
    if abs(widths["back"] - widths["first"]) > 1 or widths["all"] != widths["first"]:
        yield f"zooming out does not lead back: {widths}"
    if widths["scrolledOnly"] != widths["back"] or widths["wheel"] <= widths["back"]:
        yield f"the wheel zooms without Ctrl, or not with it: {widths}"


def faults_of_bars(bars, rows):
    for bar in bars:
        if not (bar["before"] and bar["seen"] and bar["inside"] and bar["after"]):
            yield f"not told under the pointer alone, or beyond the window: {bar}"
    for order, number in rows["tasks"].items():
        told = [bar["text"] for bar in bars if f" of {order}, " in bar["text"]]
        if len(told) != number or not all("due " in text and ("late" in text or "early" in text) for text in told):
            yield f"{number} tasks of {order}, but the bars tell {told}"
    breaks = [bar for bar in bars if ": break from " in bar["text"]]
    if len(breaks) != rows["breaks"]:
        yield f"{len(breaks)} breaks are drawn of {rows['breaks']}"
    if not any(f" of {len(rows['machines'])} machines work from " in bar["text"] for bar in bars):
        yield "nothing tells how many machines work"


def faults_of(seen, rows):
    if seen["errors"]:
        yield f"errors: {seen['errors']}"
    if seen["loaded"]:
        yield "the page loads something"
    if seen["names"] != rows["machines"] + ["at work"]:
        yield f"machines: {seen['names']}"
    orders = {row[0]: row for row in seen["orders"][1:]}
    if sorted(orders) != sorted(rows["tasks"]):
        yield f"orders: {sorted(orders)}"
    late = [name for name, row in orders.items() if int(row[2]) > int(row[1])]
    if late != seen["late"] or not late:
        yield f"late are {late}, and marked as late {seen['late']}"
    yield from faults_of_zoom(seen["widths"], seen["scrolled"], seen["room"])
    yield from faults_of_bars(seen["bars"], rows)


def rows_of(path):
    """The names of the machines, how many breaks they have, and how many tasks each order."""
    with open(path, encoding="utf-8") as file:
        cells = [[cell.split("#")[0].strip() for cell in row] for row in csv.reader(file)]
    machines = [row for row in cells if row and row[0] == "machine"]
    tasks = [row[1] for row in cells if row and row[0] == "task"]
    return {"machines": [row[1] for row in machines], "breaks": sum(len(list(filter(None, row[2:]))) for row in machines),
            "tasks": {order: tasks.count(order) for order in tasks}}


def main():
    parser = argparse.ArgumentParser()
    for name in ("browser", "command", "input", "folder"):
        parser.add_argument("--" + name, required=True)
    options = parser.parse_args()
    folder = Path(options.folder).resolve()
    folder.mkdir(parents=True, exist_ok=True)
    page = folder / "page.html"
    subprocess.run([options.command, "--quiet", "--html", page, options.input], check=True, stdout=subprocess.DEVNULL)
    faults = list(faults_of(look(options.browser, page, folder), rows_of(options.input)))
    print("\n".join(faults) if faults else "the page is as it should be")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
