#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Doxygen's filter for our Markdown: prints a page with an anchor for each heading, named as other renderers name them,
with links to such anchors that Doxygen understands, and with links to other files as seen from the repository's root.

    filter.py PAGE
"""
import os
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


def anchor(page, heading):
    """The anchor of a heading, unique over all pages."""
    words = re.sub(r"[^\w\- ]", "", heading.strip().lower()).replace(" ", "-")
    return "-".join([*page.with_suffix("").parts, words])


def main(page):
    relative = page.resolve().relative_to(ROOT)

    def heading(match):
        return f"{match[0]} {{#{anchor(relative, match[2])}}}"

    def link(match):
        target = Path(os.path.normpath(relative.parent / match[1])) if match[1] else relative
        return f"](#{anchor(target, match[2])})"

    def file_link(match):
        return f"]({os.path.normpath(relative.parent / match[1])})"

    inside = False  # a block of code
    for line in page.read_text(encoding="utf-8").splitlines():
        if line.startswith("```"):
            inside = not inside
        elif not inside and not line.startswith("<!--"):
            line = re.sub(r"^(##+) (.*)$", heading, line)
            line = re.sub(r"%(?=\w)", "%%", line)  # one keeps a word from becoming a link
            line = re.sub(r"\]\(([^():#]*\.md)?#([\w-]+)\)", link, line)
            line = re.sub(r"\]\(([^():#]+)\)", lambda m: m[0] if m[1].endswith(".md") else file_link(m), line)
        print(line)


if __name__ == "__main__":
    main(Path(sys.argv[1]))
