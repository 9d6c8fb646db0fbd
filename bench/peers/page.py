#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws the JSON figures of koru_peers as one self-contained HTML page: page.py FIGURES.json > PAGE.html

A bar for each model, as long as Gecode's time is a multiple of Koru's, on a logarithmic scale around 1.
"""
import html
import json
import math
import sys

WIDEST = 8  # ratios beyond it, or below its inverse, are drawn no longer

HEAD = """<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><title>Koru and Gecode</title>
<meta name="viewport" content="width=device-width, initial-scale=1">
<style>
:root { color-scheme: light dark; --ink: #22262b; --soft: #68717b; --line: #d9dde2; --paper: #fcfcfa; --ahead: #4a8f6d;
  --behind: #b8413a; }
@media (prefers-color-scheme: dark) { :root { --ink: #e4e6e8; --soft: #98a1ab; --line: #3a4047; --paper: #1c1f23;
  --ahead: #5aa581; --behind: #d9675f; } }
body { font: 15px/1.45 system-ui, sans-serif; color: var(--ink); background: var(--paper); margin: 2rem auto;
  max-width: 64rem; padding: 0 1rem; }
h1 { font-size: 1.5rem; margin: 0 0 .3rem; }
p { color: var(--soft); margin: 0 0 1.4rem; }
table { border-collapse: collapse; width: 100%; }
th, td { border-bottom: 1px solid var(--line); padding: .3rem .6rem; text-align: left; white-space: nowrap; }
.n { text-align: right; font-variant-numeric: tabular-nums; }
.bars { width: 40%; }
.bar { position: relative; height: .8rem; border-left: 1px solid var(--soft); margin-left: 50%; }
.bar i { position: absolute; top: 0; bottom: 0; border-radius: 2px; }
.ahead { left: 0; background: var(--ahead); }
.behind { right: 100%; background: var(--behind); }
</style></head><body>
<h1>Koru and Gecode</h1>
<p>Gecode's CPU time as a multiple of Koru's, both at their fastest of several runs in turn. Bars to the right: Koru is
faster; to the left: Gecode is. The scale is logarithmic. Trees: whether choice points and fails are equal.</p>
<table><thead><tr><th>model<th class="n">units<th class="n">ns / unit<th class="n">Gecode<th>trees<th class="n">ratio
<th class="bars">1/8 &hellip; 1 &hellip; 8</tr></thead><tbody>
"""


def bar(ratio):
    share = min(abs(math.log(ratio)) / math.log(WIDEST), 1)
    side = "ahead" if ratio >= 1 else "behind"
    return f'<div class="bar"><i class="{side}" style="width:{100 * share:.1f}%"></i></div>'


def row(figures):
    ours, theirs = figures["koru"], figures["gecode"]
    trees = "equal" if figures["same_tree"] else "other"
    return (f'<tr><td>{html.escape(figures["model"])}<td class="n">{ours["units"]:,} {html.escape(figures["unit"])}s'
            f'<td class="n">{ours["ns_per_unit"]:,.1f}<td class="n">{theirs["ns_per_unit"]:,.1f}<td>{trees}'
            f'<td class="n">{figures["ratio"]:.2f}<td>{bar(figures["ratio"])}</tr>\n')


def main():
    with open(sys.argv[1]) as file:
        figures = json.load(file)
    mean = math.exp(sum(math.log(each["ratio"]) for each in figures) / len(figures))
    print(HEAD + "".join(map(row, figures)) + "</tbody></table>\n"
          f"<p>Geometric mean of the {len(figures)} ratios: {mean:.2f}</p></body></html>")


if __name__ == "__main__":
    main()
