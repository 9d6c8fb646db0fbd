#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Two processes of a search beside one, in turn, on a machine that should be quiet; and what the death of one costs.

  real.py PROGRAM [--mpirun MPIRUN] [--only CASE] [--times N]

"plain" are the searches of koru.h, 1 those of koru_mpi alone, 2 those of two processes; the seconds are the first search's
of a run, from the start of the program to its end for "plain". Efficiency is plain / (2 x two). Of several times the medians.
"""
import argparse
import os
import re
import signal
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

#: Names, sizes, and what they are; each takes 10 s and more.
CASES = [("count", 13, "all queens, counted"), ("golomb", 11, "cs_minimize, by passes"),
         ("objective", 11, "a search object that minimises"), ("first", 30, "the first solution of queens")]
LINE = re.compile(r"process (\d+) of (\d+): ([\d.]+) s, (\d+) choice points tried, (\d+) counted, (\d+) messages, (\d+) bytes")
PATIENCE = 2


def launched(args, processes, *words):
    launch = [args.mpirun, "--allow-run-as-root", "--oversubscribe", "--bind-to", "core", *words, "-n", str(processes)]
    return launch if processes > 1 else []


def run(command, **environment):
    began = time.monotonic()
    result = subprocess.run(command, capture_output=True, text=True, check=True,
                            env={**os.environ, "KORU_MPI_STATISTICS": "1", **environment})
    return time.monotonic() - began, result.stdout, result.stderr


def sums(errors):
    """Of all processes of both searches of a run."""
    rows = [list(map(float, match.groups())) for match in LINE.finditer(errors)]
    first = [row for row in rows if row[0] == 0]
    return {"seconds": sum(row[2] for row in first), "tried": sum(row[3] for row in rows),
            "counted": sum(row[4] for row in first), "messages": sum(row[5] for row in rows),
            "bytes": sum(row[6] for row in rows)}


def measure(args, case, size, what):
    took = {"plain": [], "1": [], "2": []}
    two = []
    for _ in range(args.times):
        seconds, expected, _ = run([args.program, "plain", case, str(size)])
        took["plain"].append(seconds)
        for processes in 1, 2:
            _, shown, errors = run([*launched(args, processes), args.program, "mpi", case, str(size)])
            if shown != expected:
                sys.exit(f"{case} {size}: {processes} processes show something else")
            found = sums(errors)
            took[str(processes)].append(found["seconds"])
            if processes == 2:
                two.append(found)
    plain, one, both = (statistics.median(took[name]) for name in ("plain", "1", "2"))
    of = {name: statistics.median(found[name] for found in two) for name in two[0]}
    print(f"{case + ' ' + str(size):14} {plain:8.2f} {one:8.2f} {both:8.2f} {plain / (2 * both):10.3f} "
          f"{of['tried'] / max(of['counted'], 1):13.3f} {of['messages'] / both:9.0f} {of['bytes'] / both:9.0f}  {what}",
          flush=True)
    return one, both


def children_of(pid):
    listed = subprocess.run(["ps", "-o", "pid=", "--ppid", str(pid)], capture_output=True, text=True, check=False)
    return sorted(int(word) for word in listed.stdout.split())


def measure_death(args, case, size, one, both):
    """Killed in the middle of the first of two searches; the second one is made by one process."""
    with tempfile.TemporaryDirectory() as folder:
        mark = Path(folder) / "mark"
        command = [*launched(args, 2, "--enable-recovery"), args.program, "mpi", case, str(size)]
        process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True,
                                   env={**os.environ, "KORU_MPI_STATISTICS": "1", "KORU_TEST_MARK": str(mark),
                                        "KORU_MPI_PATIENCE": str(PATIENCE)})
        while len(list(Path(folder).glob("mark.*"))) < 2 and process.poll() is None:
            time.sleep(0.01)
        time.sleep(both / 4)
        os.kill(children_of(process.pid)[-1], signal.SIGKILL)
        _, errors = process.communicate()
    first = LINE.search(errors)
    if first is None:
        sys.exit(f"the first process has not ended its search: {errors[-500:]}")
    first_search = float(first[3])
    share = (both / 4) / (both / 2)  # of the first search that was done by then
    lost = first_search - both / 4 - (1 - share) * one / 2
    print(f"a death in the middle of {case} {size}: {lost:.2f} s lost, {PATIENCE} s of which were patience")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program")
    parser.add_argument("--mpirun", default="mpirun")
    parser.add_argument("--only", choices=[case for case, *_ in CASES])
    parser.add_argument("--size", type=int, help="another one than the case's")
    parser.add_argument("--times", type=int, default=3)
    args = parser.parse_args()
    print("case              plain        1        2 efficiency tried/counted messages/s   bytes/s  (seconds of two searches)")
    for case, size, what in CASES:
        if args.only in (None, case):
            size = args.size or size
            one, both = measure(args, case, size, what)
            if case in ("golomb", "count"):
                measure_death(args, case, size, one, both)
    return 0


if __name__ == "__main__":
    sys.exit(main())
