#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The same output for every number of processes: runs a program with the searches of koru.h, then with those of koru_mpi
in one process and, where there is an mpirun, in several; some of them killed on the way.

  compare.py PROGRAM [--mpirun MPIRUN] [--processes N,M,...] [--kill TIMES] [--seed SEED]
"""
import argparse
import os
import random
import signal
import subprocess
import sys
import time

SHORT = [("queens", 6), ("queens", 8), ("first", 12), ("golomb", 6), ("cancel", 8)]
LONG = [("queens", 10), ("golomb", 8), ("first", 24)]


def run(command, **environment):
    result = subprocess.run(command, capture_output=True, text=True, timeout=300, check=False,
                            env={**os.environ, **environment})
    return result.returncode, result.stdout, result.stderr


def children_of(pid):
    listed = subprocess.run(["ps", "-o", "pid=", "--ppid", str(pid)], capture_output=True, text=True, check=False)
    return sorted(int(word) for word in listed.stdout.split())


def run_and_kill(command, rng):
    """Kills one of the processes, not the first one, after a while; and says whether there was one left to kill."""
    with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                          env={**os.environ, "KORU_MPI_PATIENCE": "2"}) as process:
        time.sleep(rng.uniform(0.3, 2.5))
        others = children_of(process.pid)[1:]
        if others:
            os.kill(rng.choice(others), signal.SIGKILL)
        out, err = process.communicate(timeout=300)
    return process.returncode, out, err, bool(others)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program")
    parser.add_argument("--mpirun")
    parser.add_argument("--processes", default="2,3")
    parser.add_argument("--long", action="store_true")
    parser.add_argument("--kill", type=int, default=0)
    parser.add_argument("--seed", type=int, default=1)
    args = parser.parse_args()
    rng = random.Random(args.seed)
    faults = []
    compared = 0
    killed = 0

    def compare(what, outcome, expected):
        nonlocal compared
        compared += 1
        if outcome[:2] != (0, expected):
            faults.append(f"{what}: status {outcome[0]}, {len(outcome[1])} bytes of {len(expected)}: {outcome[2][-500:]}")

    launch = [args.mpirun, "--allow-run-as-root", "--oversubscribe", "-n"] if args.mpirun else []
    for case, size in LONG if args.long or args.kill else SHORT:
        words = [case, str(size)]
        status, expected, _ = run([args.program, "plain", *words])
        if status != 0 or not expected:
            faults.append(f"{case} {size}: plain has status {status}")
        compare(f"{case} {size} alone", run([args.program, "mpi", *words]), expected)
        for processes in args.processes.split(",") if launch else []:
            command = [*launch, processes, args.program, "mpi", *words]
            compare(f"{case} {size} with {processes} processes", run(command), expected)
            for _ in range(args.kill):
                command = [launch[0], "--enable-recovery", *launch[1:], processes, args.program, "mpi", *words]
                outcome = run_and_kill(command, rng)
                killed += outcome[3]
                compare(f"{case} {size} with {processes} processes, one killed", outcome, expected)
    if launch and not args.kill:
        for case, words in (("rank", "another model"), ("memory", "level"), ("no-goods", "cs_createNoGoodSet"),
                            ("element", "cs_VarElementOf")):
            status, _, errors = run([*launch, "3", args.program, "mpi", case, "10"])
            compared += 1
            if status != 3 or words not in errors:
                faults.append(f"{case}: status {status}, {errors[-500:]}")
    if launch and args.kill and killed == 0:
        faults.append("no process was killed")
    for fault in faults:
        print(fault)
    print(f"compare: {compared} runs, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
