#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Searches of two processes beside one, in turn, on a machine that should be quiet; and what goes with them.

  real.py PROGRAM [--mpirun MPIRUN] [--only CASE] [--size SIZE] [--times N]

PROGRAM is koru_scaling_program; the other programs stand beside it. Of several times the medians. For each case:

  plain       seconds of the search of koru.h, from the start of the program to its end
  at once     seconds of two such programs at the same time: what the machine has of two processors
  1, 2        seconds of the search by one and by two processes of koru_mpi, without the start of MPI
  efficiency  plain / (2 x two)
  of machine  (at once) / (2 x two): the same, if two processors that work both are slower than one that works
  tried       choice points tried by counted, by two and by eight processes on this machine

then what a death costs, what one process costs with 10,000 variables, and how many messages the first process can take.
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

#: Names, sizes, those for eight processes, and what they are; each search takes 10 s and more.
CASES = [("count", 15, 13, "all queens, counted"), ("golomb", 11, 11, "cs_minimize, by passes"),
         ("objective", 11, 11, "a search object that minimises"), ("first", 30, 30, "the first solution of queens")]
OTHERS = ["variables", "messages"]
DYING = ("count", "golomb")
LINE = re.compile(r"process (\d+) of (\d+): ([\d.]+) s, (\d+) choice points tried, (\d+) counted, (\d+) messages, (\d+) bytes")
PATIENCE = 2
MANY = 8
VARIABLES = 10000
SOLUTIONS = {"": 100000000, "-object": 1000000}  # for some 10 s


def environment(**more):
    return {**os.environ, "KORU_MPI_STATISTICS": "1", "KORU_TEST_ROUNDS": "1", **more}


def launched(args, processes, *words):
    binding = ["--bind-to", "core"] if processes == 2 else []
    launch = [args.mpirun, "--allow-run-as-root", "--oversubscribe", *binding, *words, "-n", str(processes)]
    return launch if processes > 1 else []


def run(command):
    began = time.monotonic()
    result = subprocess.run(command, capture_output=True, text=True, check=True, env=environment())
    return time.monotonic() - began, result.stdout, result.stderr


def run_two(command):
    """Both at the same time; the seconds of one."""
    began = time.monotonic()
    both = [subprocess.Popen(command, stdout=subprocess.DEVNULL, env=environment()) for _ in range(2)]
    seconds = []
    while both:
        for one in [one for one in both if one.poll() is not None]:
            seconds.append(time.monotonic() - began)
            both.remove(one)
        time.sleep(0.01)
    return statistics.mean(seconds)


def sums(errors):
    """Of all processes of a run."""
    rows = [list(map(float, match.groups())) for match in LINE.finditer(errors)]
    first = next(row for row in rows if row[0] == 0)
    return {"seconds": first[2], "tried": sum(row[3] for row in rows) / max(first[4], 1),
            "messages": sum(row[5] for row in rows) / first[2], "bytes": sum(row[6] for row in rows) / first[2]}


def shared(args, case, size, processes, expected=None):
    _, shown, errors = run([*launched(args, processes), args.program, "mpi", case, str(size)])
    if expected not in (None, shown):
        sys.exit(f"{case} {size}: {processes} processes show something else")
    return sums(errors)


def measure(args, case, size, small, what):
    """Prints a row; the seconds of one and of two processes."""
    plain, at_once, one, two = [], [], [], []
    command = [args.program, "plain", case, str(size)]
    for _ in range(args.times):
        seconds, expected, _ = run(command)
        plain.append(seconds)
        one.append(shared(args, case, size, 1, expected)["seconds"])
        two.append(shared(args, case, size, 2, expected))
        at_once.append(run_two(command))
    many = shared(args, case, small, MANY)["tried"]
    middle = {name: statistics.median(found[name] for found in two) for name in two[0]}
    plain, at_once, one, both = *map(statistics.median, (plain, at_once, one)), middle["seconds"]
    print(f"{case + ' ' + str(size):13} {plain:7.2f} {at_once:8.2f} {one:7.2f} {both:7.2f} {plain / (2 * both):11.3f} "
          f"{at_once / (2 * both):11.3f} {middle['tried']:8.3f} {many:8.3f} {middle['messages']:10.0f} "
          f"{middle['bytes']:9.0f}  {what}", flush=True)
    return one, both


def children_of(pid):
    listed = subprocess.run(["ps", "-o", "pid=", "--ppid", str(pid)], capture_output=True, text=True, check=False)
    return sorted(int(word) for word in listed.stdout.split())


def measure_death(args, case, size, one, both):
    """Of the second of two processes, in the middle of the search; the other one goes on alone."""
    with tempfile.TemporaryDirectory() as folder:
        mark = Path(folder) / "mark"
        command = [*launched(args, 2, "--enable-recovery"), args.program, "mpi", case, str(size)]
        process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True,
                                   env=environment(KORU_TEST_MARK=str(mark), KORU_MPI_PATIENCE=str(PATIENCE)))
        while len(list(Path(folder).glob("mark.*"))) < 2 and process.poll() is None:
            time.sleep(0.01)
        time.sleep(both / 2)
        os.kill(children_of(process.pid)[-1], signal.SIGKILL)
        _, errors = process.communicate()
    first = LINE.search(errors)
    if first is None:
        sys.exit(f"the first process has not ended its search: {errors[-500:]}")
    lost = float(first[3]) - both / 2 - one / 2
    print(f"a death in the middle of {case} {size}: {lost:.2f} s lost, with a patience of {PATIENCE} s", flush=True)


def measure_variables(args):
    """One process beside the plain search, by seconds of the processor, in turn."""
    program = str(Path(args.program).with_name("koru_scaling_variables"))
    for what, solutions in SOLUTIONS.items():
        took, shown = {"plain": [], "mpi": []}, set()
        for _ in range(max(3, args.times)):
            for name, seconds in took.items():
                before = os.times().children_user
                shown.add(run([program, name + what, str(args.size or VARIABLES), str(solutions)])[1])
                seconds.append(os.times().children_user - before)
        if len(shown) > 1:
            sys.exit(f"variables: the searches find something else: {shown}")
        plain, mpi = map(statistics.median, took.values())
        print(f"{args.size or VARIABLES} variables, {solutions} solutions told of by {'cs_mpiSolve' if what else 'cs_mpiFindAll'}: "
              f"{mpi / plain:.3f} of the plain search's {plain:.2f} s", flush=True)


def measure_messages(args):
    program = str(Path(args.program).with_name("koru_scaling_messages"))
    print("the first process:", run([*launched(args, 2), program])[1].strip(), flush=True)


def measure_searches(args):
    print(f"case            plain  at once       1       2  efficiency  of machine  tried 2  tried {MANY} messages/s   bytes/s")
    for case, size, small, what in CASES:
        if args.only not in (None, case):
            continue
        one, both = measure(args, case, args.size or size, small, what)
        if case in DYING:
            measure_death(args, case, args.size or size, one, both)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program")
    parser.add_argument("--mpirun", default="mpirun")
    parser.add_argument("--only", choices=[case for case, *_ in CASES] + OTHERS)
    parser.add_argument("--size", type=int, help="another one than the case's")
    parser.add_argument("--times", type=int, default=1)
    args = parser.parse_args()
    if args.only not in OTHERS:
        measure_searches(args)
    if args.only in (None, "variables"):
        measure_variables(args)
    if args.only in (None, "messages"):
        measure_messages(args)
    return 0


if __name__ == "__main__":
    sys.exit(main())
