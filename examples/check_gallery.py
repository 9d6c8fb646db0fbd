#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The runs that examples/README.md shows: <!-- run: NAME ARGUMENT... --> before a block of what the program prints. After
a "|" its input may stand, a line for each ";".

    check_gallery.py README FOLDER [--write]

Each is run with the programs of FOLDER and compared but for times; with --write the blocks become what is printed. Every
program that the README's tables name in C or C++ must have a run.
"""
import re
import shlex
import subprocess
import sys
import tempfile
from pathlib import Path

RUN = re.compile(r"(<!-- run: (.*?) -->\n```\n)(.*?)(```\n)", re.S)
TIME = re.compile(r"\d+(\.\d+)? (ms|s)\b|\d+ (puzzles/s|per second)")
PROGRAM = re.compile(r"^\| .*?\]\(((?:cpp/)?\w+)\.cc?\)", re.M)


def printed(run, scratch, folder):
    command, _, given = run.partition(" | ")
    name, *arguments = shlex.split(command)
    output = subprocess.run([folder / name, *arguments], cwd=scratch, input=given.replace("; ", "\n") + "\n",
                            capture_output=True, text=True, check=False).stdout
    return re.sub(r" +$", "", output, flags=re.M)


def main(readme, folder, write):
    text = readme.read_text(encoding="utf-8")
    wrong = [f"no run of {name}" for name in PROGRAM.findall(text)
             if not re.search(rf"<!-- run: {name.replace('/', '_')}\b", text)]

    def compare(block):
        output = printed(block[2], scratch, folder)
        if not write and TIME.sub("TIME", output) != TIME.sub("TIME", block[3]):
            wrong.append(f"{block[2]} prints:\n{output}--- wanted\n{block[3]}")
        return block[1] + output + block[4]

    with tempfile.TemporaryDirectory() as scratch:  # where programs may write
        (Path(scratch) / "examples").symlink_to(readme.resolve().parent)
        written, runs = RUN.subn(compare, text)
    if write:
        readme.write_text(written, encoding="utf-8")
    elif wrong or runs == 0:
        sys.exit("\n".join(wrong) or "no runs")
    print(f"{runs} runs")


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    main(Path(sys.argv[1]), Path(sys.argv[2]).resolve(), sys.argv[3:] == ["--write"])
