#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What a unit of each short program takes: profile.py PROGRAMS BUILD [--only TEXT]

A unit is a node, an event or a constraint. Callgrind counts instructions, data that the first and the last cache of its
model do not hold (48 KiB and 2 MiB, as they are private to a core of the processor that docs/performance.md measures),
and jumps that its simple predictor does not foresee. None of this depends on what else the machine does.
"""
import argparse
import concurrent.futures
import os
import re

from compare import library_path, run

CACHES = ["--cache-sim=yes", "--D1=49152,12,64", "--LL=2097152,16,64", "--branch-sim=yes"]
FIELDS = ["Ir", "Dr", "Dw", "I1mr", "D1mr", "D1mw", "ILmr", "DLmr", "DLmw", "Bc", "Bcm", "Bi", "Bim"]


def profile(programs, name, library):
    done = run(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", "--toggle-collect=koru_measured"] +
               CACHES + [programs, name], library)
    units = int(re.match(r"(\d+) units", done.stdout).group(1))
    counts = re.search(r"Collected : ([\d ]+)", done.stderr).group(1).split()
    count = dict(zip(FIELDS, map(int, counts)))
    return units, [sum(count[field] for field in fields) / units
                   for fields in (["Ir"], ["D1mr", "D1mw"], ["DLmr", "DLmw"], ["Bcm", "Bim"])]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("programs")
    parser.add_argument("build")
    parser.add_argument("--only", default="")
    options = parser.parse_args()
    names = [name for name in run([options.programs], library_path(options.build)).stdout.splitlines()
             if options.only in name]
    print(f"{'program':18} {'units':>9} {'instructions':>13} {'D1 misses':>10} {'LL misses':>10} {'mispredicted':>13}")
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        profiles = pool.map(lambda name: profile(options.programs, name, library_path(options.build)), names)
        for name, (units, (instructions, first, last, jumps)) in zip(names, profiles):
            print(f"{name:18} {units:>9} {instructions:>13.1f} {first:>10.2f} {last:>10.2f} {jumps:>13.2f}", flush=True)


if __name__ == "__main__":
    main()
