#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Finish the manual that Doxygen has made: copy the files that its pages link to, and check that every link leads
somewhere. With a browser, load the pages that somebody has written and those of the headers on a screen as wide as a
phone's: no script may fail, no file be missing, nothing stick out.

    finish.py FOLDER [--browser CHROMIUM]

Prints what is wrong; exit status 1 then.
"""
import argparse
import re
import shutil
import sys
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote

sys.path.insert(0, str(Path(__file__).resolve().parents[1]))
from browser import CATCH, seen_on  # noqa: E402

ROOT = Path(__file__).resolve().parents[2]
PAGES = ["index.html", "md_*.html", "koru*_8h.html"]
PHONE = """<iframe src="probed.html" width="390" height="844"></iframe><pre id="seen"></pre>
<script>addEventListener("message", e => document.querySelector("#seen").textContent = e.data);</script>"""
PROBE = """<script>"use strict"; addEventListener("load", () => setTimeout(() => parent.postMessage(JSON.stringify({
  errors: window.probeErrors, wide: document.documentElement.clientWidth, content: document.documentElement.scrollWidth,
  search: document.querySelector("#MSearchField") !== null, text: document.body.innerText.length }), "*"), 500));</script>"""


class Page(HTMLParser):
    """The anchors of a page, and the local files that it links to."""

    def __init__(self, path):
        super().__init__()
        self.anchors = set()
        self.links = []
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attrs):
        for name, value in attrs:
            if name in ("id", "name"):
                self.anchors.add(value)
            elif name in ("href", "src") and value and not re.match(r"[a-z]+:", value):
                self.links.append(unquote(value))


def copy_linked(folder, pages):
    """Sources and the licence, which pages name as seen from the repository's root."""
    for page in pages.values():
        for link in page.links:
            source = ROOT / link
            if "#" not in link and source.is_file() and not (folder / link).exists():
                (folder / link).parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(source, folder / link)


def broken_links(pages):
    for path, page in pages.items():
        for link in page.links:
            target, _, anchor = link.partition("#")
            file = (path.parent / target).resolve() if target else path
            if not file.exists():
                yield f"{path.name}: {link} leads nowhere"
            # Doxygen 1.9 links to a list of nested classes that it leaves out when all of them are hidden.
            elif anchor and file in pages and anchor not in pages[file].anchors and anchor != "nested-classes":
                yield f"{path.name}: {link}: no such anchor"


def look(browser, folder, name):
    """In a frame: no window is as narrow as a phone."""
    probed = folder / "probed.html"
    text = (folder / name).read_text(encoding="utf-8")
    text = text.replace("<head>", "<head>" + CATCH, 1).replace("</body>", PROBE + "</body>", 1)
    probed.write_text(text, encoding="utf-8")
    phone = folder / "phone.html"
    seen = seen_on(browser, PHONE, phone, folder.parent / "browser", "--window-size=500,900", "--virtual-time-budget=5000")
    probed.unlink()
    phone.unlink()
    faults = [f"{name}: {error}" for error in seen["errors"]]
    if seen["content"] > seen["wide"]:
        faults.append(f"{name}: {seen['content']} pixels wide on a screen of {seen['wide']}")
    if not seen["search"] or seen["text"] < 500:
        faults.append(f"{name}: no search field, or hardly any text")
    return faults


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("folder", type=Path)
    arguments.add_argument("--browser")
    options = arguments.parse_args()
    folder = options.folder.resolve()
    pages = {path: Page(path) for path in sorted(folder.glob("**/*.html"))}
    copy_linked(folder, pages)
    faults = list(broken_links(pages))
    seen = [path.name for pattern in PAGES for path in sorted(folder.glob(pattern))] if options.browser else []
    for name in seen:
        faults += look(options.browser, folder, name)
    print("\n".join(faults) or f"{len(pages)} pages, every link leads somewhere; {len(seen)} looked at in a browser")
    return 1 if faults or not pages else 0


if __name__ == "__main__":
    sys.exit(main())
