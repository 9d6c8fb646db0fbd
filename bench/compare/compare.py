#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares two builds of Koru on the short programs, or one build with recorded counts of instructions.

  compare.py PROGRAMS A B [--only TEXT] [--rounds N]     A, B: folders with a shared library each
  compare.py PROGRAMS A --recorded FILE [--record]       the programs of FILE; --record writes new counts to it

PROGRAMS is the command koru_programs; it runs with the library of either build. Callgrind counts instructions, which
says more than times on a machine that is busy; the times are of runs in turn, A and B, as the median of B's share of
A's. Exits with 1 when a program takes over 1 % more instructions than before, or does not do the same, and with 77
when the counts were recorded with another compiler.
"""
import argparse
import concurrent.futures
import os
import pathlib
import re
import statistics
import subprocess
import sys

ALLOWED = 0.01
SKIPPED = 77
WORK = re.compile(r"(.*) (\d+\.\d+) s")


def library_path(folder):
    found = next(pathlib.Path(folder).rglob("libkoru.so.[0-9]"), None)
    if found is None:
        sys.exit(f"compare.py: no shared library in {folder}")
    return str(found.parent)


def run(command, library=None):
    environment = dict(os.environ, LD_BIND_NOW="1")
    if library:
        environment["LD_LIBRARY_PATH"] = library
    done = subprocess.run(command, env=environment, capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"compare.py: {' '.join(command)}:\n{done.stdout}{done.stderr}")
    return done


def measure(programs, name, library, runs):
    """What the program did, and the CPU time of its shortest run."""
    work, seconds = WORK.fullmatch(run([programs, name, str(runs)], library).stdout.strip()).groups()
    return work, float(seconds)


def instructions(programs, name, library):
    """What the program did, and how many instructions it took."""
    done = run(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", "--toggle-collect=koru_measured",
                programs, name], library)
    work = WORK.fullmatch(done.stdout.strip()).group(1)
    return work, int(re.search(r"Collected : (\d+)", done.stderr).group(1))


def count_all(programs, names, libraries):
    """The same for each program and library, a program a row."""
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        rows = [[pool.submit(instructions, programs, name, library) for library in libraries] for name in names]
        return [[cell.result() for cell in row] for row in rows]


def time_ratio(programs, name, libraries, rounds):
    ratios = []
    for _ in range(rounds):
        seconds = [measure(programs, name, library, 3)[1] for library in libraries]
        ratios.append(seconds[1] / seconds[0])
    return statistics.median(ratios)


def judge(before, after):
    """What to say of a program, empty when all is well."""
    if before[0] != after[0]:
        return f"  DIFFERENT: {before[0]} | {after[0]}"
    return "  MORE" if after[1] > before[1] * (1 + ALLOWED) else ""


def line(name, before, after, extra):
    change = 100 * (after[1] / before[1] - 1)
    return f"{name:18} {before[1]:>13,} {after[1]:>13,} {change:+8.2f} %{extra}"


def compare(options, names):
    libraries = [library_path(options.a), library_path(options.b)]
    print(f"{'program':18} {'instructions':>13} {'after':>13} {'change':>10} {'time':>7}")
    verdicts, changes, times = [], [], []
    for name, (before, after) in zip(names, count_all(options.programs, names, libraries)):
        verdicts.append(judge(before, after))
        changes.append(after[1] / before[1])
        extra = ""
        if options.rounds > 0:
            times.append(time_ratio(options.programs, name, libraries, options.rounds))
            extra = f" {times[-1]:7.3f}"
        print(line(name, before, after, extra + verdicts[-1]), flush=True)
    mean = statistics.geometric_mean(changes)
    share = f", CPU time x {statistics.geometric_mean(times):.3f}" if times else ""
    print(f"geometric mean: instructions x {mean:.4f}{share}")
    return verdicts


def compiler():
    return run([os.environ.get("CXX", "g++"), "--version"]).stdout.splitlines()[0]


def read_recorded(path):
    lines = [each for each in path.read_text().splitlines() if each and not each.startswith("#")]
    counts = dict(each.rsplit(" ", 1) for each in lines[1:])
    return lines[0], {name: int(count) for name, count in counts.items()}


def record(path, names, counted):
    comments = [each for each in path.read_text().splitlines() if each.startswith("#")]
    counts = [f"{name} {cells[0][1]}" for name, cells in zip(names, counted)]
    path.write_text("\n".join(comments + [compiler()] + counts) + "\n")


def compare_recorded(options):
    known, recorded = read_recorded(options.recorded)
    if known != compiler() and not options.record:
        print(f"skipped: counts were recorded with {known}; this is {compiler()}")
        sys.exit(SKIPPED)
    names = list(recorded)
    counted = count_all(options.programs, names, [library_path(options.a)])
    verdicts = []
    for name, ((work, now),) in zip(names, counted):
        before = (work, recorded[name])
        verdicts.append(judge(before, (work, now)))
        print(line(name, before, (work, now), verdicts[-1]))
    if options.record:
        record(options.recorded, names, counted)
        return []
    return verdicts


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("programs")
    parser.add_argument("a")
    parser.add_argument("b", nargs="?")
    parser.add_argument("--only", default="")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--recorded", type=pathlib.Path)
    parser.add_argument("--record", action="store_true")
    options = parser.parse_args()
    if (options.b is None) == (options.recorded is None):
        parser.error("give a second build, or a file of recorded counts")
    if options.recorded:
        verdicts = compare_recorded(options)
    else:
        names = [name for name in run([options.programs], library_path(options.a)).stdout.splitlines()
                 if options.only in name]
        verdicts = compare(options, names)
    sys.exit(1 if any(verdicts) else 0)


if __name__ == "__main__":
    main()
