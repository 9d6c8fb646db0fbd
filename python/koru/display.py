# SPDX-License-Identifier: MIT
"""Tables, grids and Gantt charts for notebooks: HTML and SVG as text, without any library."""
from __future__ import annotations

import html
from typing import Any, Iterable, List, NamedTuple, Optional, Sequence, Tuple

MOST_ROWS = 200
COLOURS = ("#8dd3c7", "#fb8072", "#80b1d3", "#fdb462", "#b3de69", "#fccde5", "#bc80bd", "#ffed6f", "#ccebc5", "#d9d9d9")


def table(head: Sequence[str], body: Sequence[Sequence[Any]], rows: Optional[int] = None) -> str:
    """A table of HTML. Of more than 200 rows the first are shown; `rows` is how many there are."""
    rows = len(body) if rows is None else rows
    lines = ["".join(f"<td>{html.escape(str(cell))}</td>" for cell in row) for row in body[:MOST_ROWS]]
    if rows > MOST_ROWS:
        lines.append(f"<td>... and {rows - MOST_ROWS} more</td>")
    top = "".join(f"<th>{html.escape(cell)}</th>" for cell in head)
    return f"<table><tr>{top}</tr>" + "".join(f"<tr>{line}</tr>" for line in lines) + "</table>"


class Picture:
    """A picture as SVG, which notebooks show; save() writes it to a file."""

    def __init__(self, width: int, height: int, parts: Iterable[str]) -> None:
        self.svg = (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" viewBox="0 0 {width} '
                    f'{height}" font-family="sans-serif" font-size="12">' + "".join(parts) + "</svg>")

    def _repr_svg_(self) -> str:
        return self.svg

    def save(self, path: Any) -> None:
        with open(path, "w", encoding="utf-8") as file:
            file.write(self.svg)


def _box(x: float, y: float, width: float, height: float, fill: str, title: str = "") -> str:
    inside = f"<title>{html.escape(title)}</title>" if title else ""
    return (f'<rect x="{x:g}" y="{y:g}" width="{width:g}" height="{height:g}" fill="{fill}" stroke="#555" '
            f'stroke-width="0.5">{inside}</rect>')


def _text(x: float, y: float, text: Any, anchor: str = "middle") -> str:
    return f'<text x="{x:g}" y="{y:g}" text-anchor="{anchor}">{html.escape(str(text))}</text>'


def _colour(number: int) -> str:
    return COLOURS[number % len(COLOURS)]


class Bar(NamedTuple):
    """A bar of a Gantt chart: bars of one colour belong together."""

    row: str
    start: int
    duration: int
    label: str = ""
    colour: int = 0


def gantt(bars: Iterable[Sequence[Any]], width: int = 640) -> Picture:
    """A Gantt chart: bars of (row, start, duration, label, colour), the last two as wanted. Rows come in the order in
    which they first appear.

    >>> import koru
    >>> chart = koru.gantt([("saw", 0, 3, "leg", 0), ("lathe", 3, 2, "leg", 0), ("saw", 3, 4, "top", 1)])
    >>> chart.svg.count("<rect")
    3
    """
    all_bars = [Bar(*bar) for bar in bars]
    names = list(dict.fromkeys(bar.row for bar in all_bars))
    first = min((bar.start for bar in all_bars), default=0)
    last = max((bar.start + bar.duration for bar in all_bars), default=1)
    left, high = 12 + 7 * max(map(len, names), default=0), 26
    scale = (width - left - 12) / max(last - first, 1)
    bottom = high * len(names) + 4
    parts = [_text(left - 6, high * i + 20, name, "end") for i, name in enumerate(names)]
    for bar in all_bars:
        x, y, wide = left + (bar.start - first) * scale, high * names.index(bar.row) + 4, bar.duration * scale
        parts.append(_box(x, y, wide, high - 4, _colour(bar.colour), f"{bar.label} {bar.start}..{bar.start + bar.duration}"))
        if 7 * len(bar.label) <= wide:
            parts.append(_text(x + wide / 2, y + 15, bar.label))
    parts += [_text(left + (t - first) * scale, bottom + 14, t) for t in _ticks(first, last)]
    return Picture(width, bottom + 20, parts)


def _ticks(first: int, last: int) -> List[int]:
    step = 1
    while (last - first) / step > 10:
        step *= 5 if str(step)[0] != "5" else 2
    return list(range(-(-first // step) * step, last + 1, step))


def grid(cells: Sequence[Sequence[Any]], colours: Optional[Sequence[Sequence[int]]] = None, size: int = 28,
         box: Tuple[int, int] = (0, 0)) -> Picture:
    """A grid of cells, shown as text; colours[i][j] is the number of a cell's colour, -1 for black and None for white.
    `box` is the height and width of parts that are set off by thick lines, as in a sudoku.

    >>> import koru
    >>> koru.grid([[1, 2], [3, 4]], box=(1, 2)).svg.count("<text")
    4
    """
    height, width = len(cells), max((len(row) for row in cells), default=0)
    parts: List[str] = []
    for i, row in enumerate(cells):
        for j, cell in enumerate(row):
            number = colours[i][j] if colours is not None else None
            fill = "#fff" if number is None else "#333" if number < 0 else _colour(number)
            parts.append(_box(1 + size * j, 1 + size * i, size, size, fill))
            if str(cell):
                parts.append(_text(1 + size * (j + 0.5), 1 + size * (i + 0.5) + 4, cell))
    for step, count, across in ((box[0], height, True), (box[1], width, False)):
        for at in range(0, count + 1, step) if step else ():
            ends = (0, at, width, at) if across else (at, 0, at, height)
            x1, y1, x2, y2 = (1 + size * end for end in ends)
            parts.append(f'<line x1="{x1}" y1="{y1}" x2="{x2}" y2="{y2}" stroke="#000" stroke-width="2"/>')
    return Picture(size * width + 2, size * height + 2, parts)
