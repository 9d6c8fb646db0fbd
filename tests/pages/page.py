#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The programs of a page: <!-- program: NAME --> before a block of C or C++, and what it prints in a block after
<!-- output: NAME -->.

    page.py extract PAGE FOLDER      writes NAME.c or NAME.cc, and NAME.txt, for each; prints the file names, with ";"
    page.py run PROGRAM EXPECTED     runs a program and compares what it prints; exit status 1 when it differs
"""
import re
import subprocess
import sys
from pathlib import Path

PROGRAM = re.compile(r"<!-- program: (\w+) -->\n```(c|cpp)\n(.*?)```\n", re.S)
OUTPUT = re.compile(r"<!-- output: (\w+) -->\n```\n(.*?)```\n", re.S)
SUFFIX = {"c": ".c", "cpp": ".cc"}


def write_if_new(path, text):
    if not path.exists() or path.read_text(encoding="utf-8") != text:
        path.write_text(text, encoding="utf-8")


def extract(page, folder):
    folder.mkdir(parents=True, exist_ok=True)
    text = page.read_text(encoding="utf-8")
    programs = PROGRAM.findall(text)
    outputs = dict(OUTPUT.findall(text))
    if len(programs) != len(re.findall(r"^```c(?:pp)?$", text, re.M)) or [name for name, *_ in programs] != list(outputs):
        sys.exit(f"{page}: a block of code that is no program, or not followed by its output")
    for name, language, code in programs:
        write_if_new(folder / (name + SUFFIX[language]), code)
        write_if_new(folder / f"{name}.txt", outputs[name])
    print(";".join(name + SUFFIX[language] for name, language, _ in programs), end="")


def run(command, expected):
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    wanted = expected.read_text(encoding="utf-8")
    if result.returncode != 0 or result.stderr or result.stdout != wanted:
        sys.exit(f"exit status {result.returncode}\n{result.stderr}{result.stdout}--- wanted\n{wanted}")


if __name__ == "__main__":
    if len(sys.argv) == 4 and sys.argv[1] == "extract":
        extract(Path(sys.argv[2]), Path(sys.argv[3]))
    elif len(sys.argv) >= 4 and sys.argv[1] == "run":
        run(sys.argv[2:-1], Path(sys.argv[-1]))
    else:
        sys.exit(__doc__)
