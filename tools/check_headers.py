#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compile every header on its own, included twice: the public ones in each supported standard, those of src/ as C++20.

Prints what the compiler said about each header that fails, and a verdict. With neither --cc nor --cxx, gcc and g++.
"""
import argparse
import os
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
PUBLIC_WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Werror"]
INNER_WARNINGS = PUBLIC_WARNINGS + ["-Wshadow", "-Wconversion", "-Wold-style-cast"]
C_STANDARDS = ["c99", "c11", "c17"]
CXX_STANDARDS = ["c++11", "c++17", "c++20"]


def public_jobs(cc, cxx):
    """One (label, command, header) for each compilation of a header that users get."""
    for header in sorted((ROOT / "include").glob("*.h")):
        for compiler, language, standards in ((cc, "c", C_STANDARDS), (cxx, "c++", CXX_STANDARDS)):
            for standard in standards:
                flags = [f"-std={standard}", f"-I{ROOT}/include", *PUBLIC_WARNINGS]
                for build in ([], ["-DKORU_WARN_UNUSED"]):
                    label = " ".join([header.name, "as", standard, *build])
                    yield label, [compiler, "-x", language, *flags, *build], header.name


    for header in sorted((ROOT / "include").rglob("*.hpp")):
        name = header.relative_to(ROOT / "include").as_posix()
        for build in ([], ["-DKORU_WARN_UNUSED"], ["-DKORU_THREADS"]):
            command = [cxx, "-x", "c++", "-std=c++20", f"-I{ROOT}/include", *INNER_WARNINGS, *build]
            yield " ".join([name, *build]), command, name


def inner_jobs(cxx):
    for header in sorted((ROOT / "src").rglob("*.h")):
        name = header.relative_to(ROOT / "src").as_posix()
        flags = ["-std=c++20", "-fno-rtti", f"-I{ROOT}/include", f"-I{ROOT}/src", *INNER_WARNINGS]
        for build, define in (("", "-DKORU_BUILDING"), (" (checked)", "-DKORU_CHECKED=1")):
            yield f"src/{name}{build}", [cxx, "-x", "c++", *flags, define], name


def compile_alone(job):
    label, command, header = job
    source = f'#include "{header}"\n#include "{header}"\n'
    result = subprocess.run([*command, "-fsyntax-only", "-"], input=source, capture_output=True, text=True, check=False)
    return None if result.returncode == 0 else f"{label}:\n{result.stderr}"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--cc", default="gcc")
    parser.add_argument("--cxx", default="g++")
    parser.add_argument("--public", action="store_true", help="only the headers that users get")
    args = parser.parse_args()
    todo = list(public_jobs(args.cc, args.cxx)) + ([] if args.public else list(inner_jobs(args.cxx)))
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        faults = [fault for fault in pool.map(compile_alone, todo) if fault]
    print("".join(faults), end="")
    print(f"check_headers: {len(todo)} compilations, {len(faults)} failed")
    return 1 if faults or not todo else 0


if __name__ == "__main__":
    sys.exit(main())
