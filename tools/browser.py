# SPDX-License-Identifier: MIT
"""For the checks of pages in a headless browser: loads a copy of a page with a script of the check's own, which leaves
what it saw as JSON in the element "seen" that it brings along."""
import html
import json
import re
import shutil
import subprocess
import sys

# The errors of all scripts, what the console is told as one, and what does not load, for the check's script to hand on.
CATCH = """<script>window.probeErrors = []; console.error = (...all) => probeErrors.push(all.join(" "));
addEventListener("error", e => probeErrors.push(e.message || "not loaded: " + (e.target.src || e.target.href)), true);</script>"""


def seen_on(browser, page, copy, profile, *options):
    """What the script saw of the page, a text with CATCH and the script in it, that is written to `copy`."""
    copy.write_text(page, encoding="utf-8")
    shutil.rmtree(profile, ignore_errors=True)
    run = subprocess.run(
        [browser, "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
         "--disable-background-networking", "--disable-component-update", "--disable-sync", f"--user-data-dir={profile}",
         *options, "--dump-dom", copy.as_uri()],
        capture_output=True, text=True, timeout=200, check=True)
    shutil.rmtree(profile, ignore_errors=True)
    found = re.search(r'<pre id="seen">(.+?)</pre>', run.stdout, re.DOTALL)
    if found is None:
        sys.exit(f"{copy}: the page's scripts did not run:\n{run.stderr[-2000:]}")
    return json.loads(html.unescape(found[1]))
