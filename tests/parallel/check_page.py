#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Check the page of processes over time in a headless browser.

  check_page.py --browser CHROMIUM --program PROGRAM [--mpirun MPIRUN] --folder SCRATCH

Runs a search, in two processes where there is an mpirun, and loads a copy of its page that ends with a script of ours: it
looks at the figures and at what is drawn, moves the pointer, and leaves what it saw in the document as JSON. Prints the
faults; exit status 1 if there are any.
"""
import argparse
import os
import re
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
from browser import CATCH, seen_on  # noqa: E402

PROBE = """<pre id="seen"></pre><script>
"use strict";
const at = (id, x, y) => {
  const box = byId(id).getBoundingClientRect();
  byId(id).dispatchEvent(new PointerEvent("pointermove",
    { clientX: box.left + x * box.width, clientY: box.top + y * box.height }));
  return byId("told").textContent;
};
const drawn = id => {
  const canvas = byId(id), pixels = canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height).data;
  let n = 0;
  for (let i = 3; i < pixels.length; i += 4) n += pixels[i] > 0;
  return n / (pixels.length / 4);
};
const shown = Object.fromEntries([...byId("figures").children].map(e => [e.children[0].textContent, e.children[1].textContent]));
byId("seen").textContent = JSON.stringify({
  errors: window.probeErrors, figures: shown, told: [at("share", .5, .5), at("each", .5, .01), at("each", .5, .99)],
  drawn: ["share", "rate", "each"].map(drawn), used, share,
  points: sum(run.points.map(sum)), wide: document.documentElement.scrollWidth <= innerWidth,
  loaded: performance.getEntriesByType("resource").length });
</script>"""


def run(args, page):
    launch = [args.mpirun, "--allow-run-as-root", "--oversubscribe", "-n", "2"] if args.mpirun else []
    result = subprocess.run([*launch, args.program, "mpi", "golomb", "8"], capture_output=True, text=True, check=True,
                            timeout=300, env={**os.environ, "KORU_MPI_PAGE": str(page)})
    return re.search(r"2\.end: .* (\d+) fails, (\d+) choice points", result.stdout).groups()


def number(text):
    return float(re.sub(r"[^\d.]", "", text))


def faults_of(seen, fails, points, processes):
    figures = seen["figures"]
    yield from seen["errors"]
    if (number(figures["fails"]), number(figures["choice points"])) != (float(fails), float(points)):
        yield f"{figures['fails']} fails and {figures['choice points']} choice points instead of {fails} and {points}"
    if number(figures["processes"]) != processes:
        yield f"{figures['processes']} processes"
    if not 0 < seen["used"] <= 1 or not all(0 <= share <= 1 for share in seen["share"]):
        yield f"shares that are none: {seen['used']}"
    # Those that were reported: what was in vain and is dropped is among them.
    if not 0.5 * float(points) <= seen["points"] <= 3 * float(points) + 100:
        yield f"{seen['points']} choice points over time, {points} counted"
    if min(seen["drawn"]) <= 0:
        yield f"nothing is drawn: {seen['drawn']}"
    first, last = ("process 0", f"process {processes - 1}")
    if "of the processes had work" not in seen["told"][0] or first not in seen["told"][1] or last not in seen["told"][2]:
        yield f"told: {seen['told']}"
    if not seen["wide"] or seen["loaded"] != 0:
        yield f"too wide, or something was loaded: {seen['loaded']}"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    for option in "--browser", "--program", "--folder":
        parser.add_argument(option, required=True)
    parser.add_argument("--mpirun")
    args = parser.parse_args()
    folder = Path(args.folder)
    folder.mkdir(parents=True, exist_ok=True)
    page = folder / "processes.html"
    fails, points = run(args, page)
    text = page.read_text(encoding="utf-8")
    faults = ["it names something of the network"] if re.search(r"https?:|<link|src=", text) else []
    probed = text.replace("<style>", CATCH + "<style>", 1) + PROBE
    for width in 1000, 400:
        seen = seen_on(args.browser, probed, folder / "probed.html", folder / "browser", f"--window-size={width},800")
        faults += faults_of(seen, fails, points, 2 if args.mpirun else 1)
    print("\n".join([*faults, f"check_page: {len(faults)} faults"]))
    return min(len(faults), 1)


if __name__ == "__main__":
    sys.exit(main())
