#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What koru.hpp costs over koru.h: processor time to compile and instructions to run, of the same model.

    compare.py INCLUDE LIBRARY_DIR SCRATCH_DIR [--cxx COMPILER]... [--times N]

Compiles face.cc and flat.cc in turn, so many times each (5), and takes the least; links both with the shared library of
LIBRARY_DIR, compares what they print, and counts their instructions by callgrind. Exit status 1 when they print different
things, or face.cc runs over 2 % more instructions. Times are this machine's: that a compiler takes over 1.5 s longer for
face.cc is told, and no error.
"""
import argparse
import os
import re
import resource
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).parent
PROGRAMS = ("face", "flat")


def seconds(command):
    """Processor time of a command and all that it starts."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(command, check=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def compile_times(cxx, level, options):
    least = dict.fromkeys(PROGRAMS, float("inf"))
    for _ in range(options.times):
        for name in PROGRAMS:
            command = [cxx, "-std=c++20", level, f"-I{options.include}", "-c", HERE / f"{name}.cc", "-o",
                       options.scratch / f"{name}.o"]
            least[name] = min(least[name], seconds(command))
    return least


def run(options, name):
    """What a program prints, and its instructions."""
    environment = dict(os.environ, LD_LIBRARY_PATH=str(options.library))
    result = subprocess.run(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", options.scratch / name],
                            env=environment, capture_output=True, text=True, check=True)
    return result.stdout, int(re.search(r"Collected : (\d+)", result.stderr)[1])


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("include", type=Path)
    parser.add_argument("library", type=Path)
    parser.add_argument("scratch", type=Path)
    parser.add_argument("--cxx", action="append")
    parser.add_argument("--times", type=int, default=5)
    options = parser.parse_args()
    options.scratch.mkdir(parents=True, exist_ok=True)
    print("compiler       flags  koru.h  koru.hpp  over it")
    worst = 0.0
    for cxx in options.cxx or ["g++"]:
        for level in ("-O0", "-O2"):
            least = compile_times(cxx, level, options)
            over = least["face"] - least["flat"]
            worst = max(worst, over)
            print(f"{Path(cxx).name:14} {level:5} {least['flat']:6.2f}s {least['face']:8.2f}s {over:7.2f}s")
        for name in PROGRAMS:
            subprocess.run([cxx, options.scratch / f"{name}.o", "-o", options.scratch / name, f"-L{options.library}",
                            "-lkoru"], check=True)
    runs = {name: run(options, name) for name in PROGRAMS}
    print(runs["face"][0].splitlines()[0])
    if runs["face"][0] != runs["flat"][0]:
        sys.exit("the two programs print different things")
    face, flat = runs["face"][1], runs["flat"][1]
    print(f"instructions: {flat} with koru.h, {face} with koru.hpp: {100 * (face - flat) / flat:+.2f} %, and to compile "
          f"{worst:.2f} s more at most{'' if worst < 1.5 else ', which is too long'}")
    sys.exit(face > 1.02 * flat)


if __name__ == "__main__":
    main()
