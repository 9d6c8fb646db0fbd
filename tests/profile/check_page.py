#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Check koru-profile's page in a headless browser.

    check_page.py --browser CHROMIUM --demo PROFILE_DEMO --command KORU_PROFILE --folder SCRATCH [--lines]

Profiles the demo, once with details and once without, makes the page, and loads a copy of it that ends with a script of ours: it looks at the page as the
browser has laid it out, clicks on all column heads, opens the source, and leaves what it saw in the document as JSON.
With --lines the source of each place must be shown, with its heat. Prints the faults; exit status 1 if there are any.
"""
import argparse
import json
import re
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
from browser import CATCH, seen_on  # noqa: E402

PROBE = """<pre id="seen"></pre><script>
"use strict";
const rowsNow = () => [...document.querySelectorAll("tbody tr")].map(row => [...row.cells].map(cell =>
  cell.dataset.key === undefined ? cell.textContent.trim() : Number(cell.dataset.key)));
const sorts = () => [...document.querySelectorAll("th")].map(head => head.getAttribute("aria-sort"));
const seen = { errors: window.probeErrors, title: document.title, heads: [], rows: rowsNow(), sortsAtFirst: sorts() };
const width = element => element.getBoundingClientRect().width;
seen.bars = [...document.querySelectorAll(".bar")].map(bar => [width(bar), width(bar.querySelector("i"))]);
seen.loaded = performance.getEntriesByType("resource").length;
for (const button of document.querySelectorAll("th button")) {
  const clicks = [];
  for (let i = 0; i < 2; ++i) {
    button.click();
    clicks.push({ rows: rowsNow(), sorts: sorts() });
  }
  seen.heads.push({ name: button.textContent, clicks });
}
seen.sources = [...document.querySelectorAll("tbody details")].map(details => {
  const source = details.querySelector("pre");
  const closed = source.checkVisibility();
  details.querySelector("summary").click();
  const line = source.querySelector("b");
  return { closed, open: source.checkVisibility(), line: line.textContent,
           colour: getComputedStyle(line).backgroundColor };
});
const colour = element => getComputedStyle(element).backgroundColor;
seen.heat = [...document.querySelectorAll(".heat div")].filter(line => line.querySelector("[style]")).map(line => ({
  text: line.textContent, hot: line.querySelector("span").style.getPropertyValue("--hot"),
  colour: colour(line.querySelector("span")) }));
document.querySelector("#seen").textContent = JSON.stringify(seen);
</script>"""
PLAIN = ["calls", "share", "fails", "fail rate", "posted", "posted by", "place"]
DETAILS = ["ms", "share", "calls", "in vain", "narrowings", "fails", "fail rate", "posted", "posted by", "place"]
# Where the report has what a column shows.
FIELDS = {False: {"calls": -2, "fails": -1},
          True: {"calls": -5, "fails": -4, "narrowings": -2, "ms": -1}}


def look(browser, page, folder):
    """What the probe saw of the page."""
    text = page.read_text(encoding="utf-8").replace("<style>", CATCH + "<style>", 1) + PROBE
    return seen_on(browser, text, folder / "probed.html", folder / "browser", "--window-size=1200,900")


def same_rows(a, b):
    return sorted(map(json.dumps, a)) == sorted(map(json.dumps, b))


def key(cell):
    return cell.lower() if isinstance(cell, str) else cell


def column(seen, name):
    index = [head["name"] for head in seen["heads"]].index(name)
    return [row[index] for row in seen["rows"]]


def faults_of_sorting(seen, columns):
    for at, head in enumerate(seen["heads"]):
        before = seen["sortsAtFirst"] if at == 0 else None
        # The first click sorts descending, unless the column is so already.
        order = ["ascending", "descending"] if before and before[0] == "descending" else ["descending", "ascending"]
        for click, direction in zip(head["clicks"], order):
            values = [key(row[at]) for row in click["rows"]]
            if values != sorted(values, reverse=direction == "descending"):
                yield f"{head['name']}: not sorted {direction}: {values}"
            if click["sorts"] != [direction if i == at else "none" for i in range(len(columns))]:
                yield f"{head['name']}: heads say {click['sorts']}"
            if not same_rows(click["rows"], seen["rows"]):
                yield f"{head['name']}: sorting has changed the rows"


def faults_of_bars(seen):
    shares, rates = column(seen, "share"), column(seen, "fail rate")
    widest = seen["bars"][0][0]
    if widest < 50:
        yield f"the widest bar has {widest} pixels"
    for (bar, inner), share, rate in zip(seen["bars"], shares, rates):
        if abs(bar - max(1, widest * share / shares[0])) > 1 or abs(inner - bar * rate) > 1:
            yield f"a bar of {bar} and {inner} pixels for a share of {share} and a rate of {rate}"


def faults_of_sources(seen):
    if len(seen["sources"]) != len(seen["rows"]):
        yield f"{len(seen['sources'])} sources for {len(seen['rows'])} rows"
    for source in seen["sources"]:
        if source["closed"] or not source["open"]:
            yield f"a source is seen when closed: {source['closed']}, when open: {source['open']}"
        if not re.search(r"\bcs_[A-Z]\w+\(", source["line"]):
            yield f"the marked line posts nothing: {source['line']}"
        if source["colour"] in ("rgba(0, 0, 0, 0)", "transparent"):
            yield "the marked line is not marked"


def faults_of_heat(seen, sites):
    """The lines that post stand there once each, the hottest in the strongest colour."""
    places = {(site[0], site[1]) for site in sites}
    if len(seen["heat"]) != len(places):
        yield f"{len(seen['heat'])} hot lines of {len(places)} places"
    if not all(re.search(r"\bcs_[A-Z]\w+\(", line["text"]) for line in seen["heat"]):
        yield f"a hot line posts nothing: {seen['heat']}"
    hottest = max(float(line["hot"].rstrip("%")) for line in seen["heat"])
    if hottest != 85 or len({line["colour"] for line in seen["heat"]}) < 2:
        yield f"colours do not tell lines apart: {seen['heat']}"


def faults_of(seen, report, lines, details):
    columns = DETAILS if details else PLAIN
    if seen["errors"]:
        yield f"errors: {seen['errors']}"
    if seen["loaded"]:
        yield "the page loads something"
    if [head["name"] for head in seen["heads"]] != columns:
        yield f"columns: {[head['name'] for head in seen['heads']]}"
    sites = [line.split("\t") for line in report.read_text().split("__DATA__\n")[1].splitlines()]
    for name, field in FIELDS[details].items():
        if sum(column(seen, name)) != sum(int(site[field]) for site in sites):
            yield f"{name} do not add up to those of the report"
    if sum(column(seen, "posted")) != len(sites):
        yield "the postings are not those of the report"
    heats = column(seen, columns[0])
    if heats != sorted(heats, reverse=True):
        yield "the hottest place is not first"
    yield from faults_of_sorting(seen, columns)
    yield from faults_of_bars(seen)
    if lines:
        yield from faults_of_sources(seen)
        yield from faults_of_heat(seen, sites)


def faults_of_kind(options, folder, details):
    report, page = folder / "report.txt", folder / "page.html"
    subprocess.run([options.demo, *(["--details"] if details else []), report], check=True, stdout=subprocess.DEVNULL)
    subprocess.run([options.command, "--html", page, report], check=True, stdout=subprocess.DEVNULL)
    return list(faults_of(look(options.browser, page, folder), report, options.lines, details))


def main():
    parser = argparse.ArgumentParser()
    for name in ("browser", "demo", "command", "folder"):
        parser.add_argument("--" + name, required=True)
    parser.add_argument("--lines", action="store_true")
    options = parser.parse_args()
    folder = Path(options.folder).resolve()
    folder.mkdir(parents=True, exist_ok=True)
    faults = faults_of_kind(options, folder, False) + faults_of_kind(options, folder, True)
    print("\n".join(faults) if faults else "the page is as it should be")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
